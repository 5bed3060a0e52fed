// SPDX-License-Identifier: Apache-2.0
#include "host/Password.h"

#include <QByteArray>
#include <fstream>

#include "host/Failure.h"

namespace host {
namespace {

bool HasByteOrderMark(const std::string& line) {
  return line.starts_with("\xEF\xBB\xBF") || line.starts_with("\xFF\xFE") || line.starts_with("\xFE\xFF");
}

std::string FirstLine(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
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

}  // namespace

std::string PasswordFor(const GlobalOptions& options) {
  if (!options.passwordFile.empty()) return FirstLine(options.passwordFile);
  if (!qEnvironmentVariableIsSet("VIEWCTL_PASSWORD")) {
    throw Failure(kUsage, "The server wants a password: set VIEWCTL_PASSWORD or give --password-file FILE");
  }
  return qgetenv("VIEWCTL_PASSWORD").toStdString();
}

}  // namespace host
