// SPDX-License-Identifier: Apache-2.0
// A folder that nobody else may enter and that goes with its owner, files and all.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "base/system/Files.h"

namespace server {

class TemporaryFolder {
 public:
  TemporaryFolder() : m_path(base::MakeTemporaryFolder("viewserver-")) {
    if (m_path.empty()) throw std::runtime_error("cannot make a folder in that for temporary files");
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(base::PathOf(m_path), ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string File(const std::string& name) const { return m_path + '/' + name; }

 private:
  const std::string m_path;
};

}  // namespace server
