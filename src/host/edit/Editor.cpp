// SPDX-License-Identifier: Apache-2.0
#include "host/edit/Editor.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryFile>

#include "base/system/StopSignal.h"
#include "host/Failure.h"
#include "host/InputFile.h"
#include "host/Shell.h"

namespace host {
namespace {

QString EditorCommand() {
  for (const char* name : {"VISUAL", "EDITOR"}) {
    if (!qEnvironmentVariableIsEmpty(name)) return qEnvironmentVariable(name);
  }
  return UsualEditor();
}

}  // namespace

EditFile::EditFile(const std::string& name, const std::string& text) {
  QTemporaryFile file(QDir::temp().filePath("viewctl-" + QString::fromStdString(name) + "-XXXXXX.json"));
  file.setAutoRemove(false);
  if (!file.open()) throw Failure(kRefused, "No file to edit can be made: " + file.errorString().toStdString());
  m_file = file.fileName().toStdString();
  file.close();
  Write(text);
}

EditFile::~EditFile() {
  if (!m_isKept) QFile::remove(QString::fromStdString(m_file));
}

void EditFile::Edit() {
  const base::WithoutInterrupt ignored;  // Ctrl-C in an editor is the editor's
  const QString command = EditorCommand();
  QProcess process;
  process.setProcessChannelMode(QProcess::ForwardedChannels);
  process.setInputChannelMode(QProcess::ForwardedInputChannel);
  StartInShell(process, command, QString::fromStdString(m_file));
  const bool isDone =
      process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
  if (isDone) return;
  throw Failure(kUsage, "The editor " + command.toStdString() + " ended with status " +
                            std::to_string(process.exitCode()) + ", so nothing was changed; EDITOR names another one");
}

std::string EditFile::Read() const {
  return ReadInput(m_file);
}

void EditFile::Write(const std::string& text) {
  QFile file(QString::fromStdString(m_file));
  const bool isWritten = file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
                         file.write(text.data(), static_cast<qint64>(text.size())) == static_cast<qint64>(text.size());
  if (!isWritten) throw Failure(kRefused, "The file " + m_file + " cannot be written");
}

const std::string& EditFile::Keep() {
  m_isKept = true;
  return m_file;
}

}  // namespace host
