// SPDX-License-Identifier: Apache-2.0
// A folder that nobody else may enter and that goes with its owner, files and all.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace server {

class TemporaryFolder {
 public:
  TemporaryFolder() : m_path((std::filesystem::temp_directory_path() / "viewserver-XXXXXX").string()) {
    if (!mkdtemp(m_path.data())) throw std::runtime_error("cannot make a folder in that for temporary files");
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string File(const std::string& name) const { return m_path + '/' + name; }

 private:
  std::string m_path;
};

}  // namespace server
