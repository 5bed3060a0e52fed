// SPDX-License-Identifier: Apache-2.0
// Programs of a developer's, run with bounded waits.
#pragma once

#include <gtest/gtest.h>

#include <QProcess>
#include <QStringList>
#include <string>

namespace test {

// Runs it to its end; its whole output, both channels together, goes to `output`. Answers the exit status, -1 for none.
inline int RunTool(const QString& program, const QStringList& arguments, QString& output, const QString& folder = {}) {
  QProcess process;
  process.setProcessChannelMode(QProcess::MergedChannels);
  if (!folder.isEmpty()) process.setWorkingDirectory(folder);
  process.start(program, arguments);
  if (!process.waitForFinished(400000)) return -1;
  output = QString::fromUtf8(process.readAll());
  return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

inline testing::AssertionResult Succeeds(const QString& program, const QStringList& arguments) {
  QString output;
  const int status = RunTool(program, arguments, output);
  if (status == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << program.toStdString() << ' ' << arguments.join(' ').toStdString()
                                     << "\nended with " << status << "\n"
                                     << output.right(4000).toStdString();
}

// What another project is compiled with, so that it runs with a library that sanitizers are built into.
inline QString CompilerFlags() {
  const QString sanitize = SANITIZE;
  return sanitize.isEmpty() ? "-O0" : "-O0 -fsanitize=" + sanitize;
}

}  // namespace test
