// SPDX-License-Identifier: Apache-2.0
#include "host/Password.h"

#include <QProcess>
#include <fstream>

#include "base/system/Files.h"
#include "base/system/Process.h"
#include "host/Failure.h"
#include "host/PasswordPrompt.h"
#include "host/Shell.h"
#include "host/Terminal.h"

namespace host {
namespace {

bool HasByteOrderMark(const std::string& line) {
  return line.starts_with("\xEF\xBB\xBF") || line.starts_with("\xFF\xFE") || line.starts_with("\xFE\xFF");
}

std::string FirstLine(const std::string& file) {
  std::ifstream stream(base::PathOf(file), std::ios::binary);
  std::string line;
  if (!stream || (!std::getline(stream, line) && stream.bad())) {
    throw Failure(kUsage, "The password file " + file + " cannot be read: is it there, and yours to read?");
  }
  while (!line.empty() && line.back() == '\r') line.pop_back();
  if (HasByteOrderMark(line)) {
    throw Failure(kUsage, "The password file " + file + " begins with a byte-order mark; save it as UTF-8 without one");
  }
  if (line.empty()) throw Failure(kUsage, "The password file " + file + " is empty: its first line is the password");
  return line;
}

// Somebody may have to unlock what it asks.
constexpr int kCommandLimit = 300000;

QString FailureOf(QProcess& process) {
  if (process.error() == QProcess::Timedout) return "did not end within five minutes";
  return process.error() == QProcess::FailedToStart ? process.errorString()
                                                    : QString("ended with status %1").arg(process.exitCode());
}

std::string PrintedBy(const std::string& command) {
  QProcess process;
  process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  process.setInputChannelMode(QProcess::ForwardedInputChannel);
  StartInShell(process, QString::fromStdString(command));
  const bool isDone =
      process.waitForFinished(kCommandLimit) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
  const std::string advice = "; run it by itself to see why: " + command;
  if (!isDone) throw Failure(kUsage, "The password-command " + FailureOf(process).toStdString() + advice);
  const std::string printed = process.readAllStandardOutput().toStdString();
  std::string line = printed.substr(0, printed.find('\n'));
  while (!line.empty() && line.back() == '\r') line.pop_back();
  if (line.empty()) throw Failure(kUsage, "The password-command printed no password" + advice);
  return line;
}

}  // namespace

std::string PasswordFor(const GlobalOptions& options) {
  if (!options.passwordFile.empty()) return FirstLine(options.passwordFile);
  if (const auto password = base::Environment("VIEWCTL_PASSWORD")) return *password;
  if (!options.passwordCommand.empty()) return PrintedBy(options.passwordCommand);
  if (CanAsk() && !options.isUnattended)
    return AskForPassword(Printable("Password of " + options.user + " at " + options.server));
  throw Failure(kUsage, "The server wants a password: set VIEWCTL_PASSWORD or give --password-file FILE");
}

}  // namespace host
