// SPDX-License-Identifier: Apache-2.0
#include "host/Shell.h"

#ifdef Q_OS_WIN
#include <QDir>
#endif

namespace host {

#ifdef Q_OS_WIN

// The shell takes all between the first quote and the last one as it stands, and Qt would mark those between.
void StartInShell(QProcess& process, const QString& command, const QString& file) {
  const QString argument = file.isEmpty() ? "" : " \"" + QDir::toNativeSeparators(file) + "\"";
  process.setProgram("cmd.exe");
  process.setNativeArguments("/d /s /c \"" + command + argument + "\"");
  process.start();
}

const char* UsualEditor() {
  return "notepad";
}

#else

void StartInShell(QProcess& process, const QString& command, const QString& file) {
  const QStringList words =
      file.isEmpty() ? QStringList{"-c", command} : QStringList{"-c", command + " \"$1\"", "sh", file};
  process.start("/bin/sh", words);
}

const char* UsualEditor() {
  return "vi";
}

#endif

}  // namespace host
