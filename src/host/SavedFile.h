// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFile>
#include <QSaveFile>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// A file that takes its name, and the place of an old one, once it is complete. A device, a named pipe and all else
// that is no regular file stays and is written into; a pipe that nobody reads yet is waited for. Throws Failure kUsage
// where it cannot be written: before the work that its content takes, if that is to be known.
class SavedFile {
 public:
  explicit SavedFile(const std::string& name);
  void Write(std::string_view content);

 private:
  void Require(bool isWritten);

  QFile m_direct;                     // what is written into as it stands
  std::optional<QSaveFile> m_placed;  // what takes the name
};

}  // namespace host
