// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace host {

// A file of the user's alone that is edited and then goes, unless it is kept.
class EditFile {
 public:
  // `name` is a part of the file's name. Throws Failure kRefused when it cannot be made.
  EditFile(const std::string& name, const std::string& text);
  ~EditFile();
  EditFile(const EditFile&) = delete;
  EditFile& operator=(const EditFile&) = delete;

  // Opens it in VISUAL, EDITOR or the usual editor, and waits. Throws Failure kUsage where that cannot be run, or
  // fails.
  void Edit();
  // Throw Failure.
  std::string Read() const;
  void Write(const std::string& text);
  // The file stays; answers its name.
  const std::string& Keep();

 private:
  std::string m_file;
  bool m_isKept = false;
};

}  // namespace host
