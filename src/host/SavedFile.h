// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSaveFile>
#include <string>
#include <string_view>

namespace host {

// A file that takes its name, and the place of an old one, once it is complete. Throws Failure kUsage where it cannot
// be written: before the work that its content takes, if that is to be known.
class SavedFile {
 public:
  explicit SavedFile(const std::string& name);
  void Write(std::string_view content);

 private:
  QSaveFile m_file;
};

}  // namespace host
