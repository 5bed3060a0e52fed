// SPDX-License-Identifier: Apache-2.0
// The built viewctl as a process of its own, against a server in the test's process. Every wait is bounded.
#pragma once

#include <gtest/gtest.h>

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <vector>

#include "server/ViewServer.h"

namespace test {

struct Outcome {
  int status = -1;  // -1: killed, or never ended
  std::string out;
  std::string err;
};

// A server on a port of its own, with the sample site unless `seeded` says otherwise; gone with the object. In it,
// admin's password is "sample-admin", maria's "sample-maria".
class Site {
 public:
  explicit Site(bool seeded = true);

  std::string Url() const { return m_server->Url(); }
  std::string Folder() const { return m_folder.path().toStdString(); }
  // Arguments that log in as that user. The password comes from RunAs.
  QStringList As(const std::string& user) const;

 private:
  QTemporaryDir m_folder;
  std::unique_ptr<server::ViewServer> m_server;
};

// The built viewctl.
QString ViewctlFile();

// Runs a program to its end.
Outcome RunProgram(const QString& program, const QStringList& arguments, const std::string& password = {},
                   const std::string& input = {});
// Runs viewctl to its end. `password` goes into VIEWCTL_PASSWORD; empty leaves it unset.
Outcome Run(const QStringList& arguments, const std::string& password = {}, const std::string& input = {});
// The same as a user of the site, whose passwords are all "sample-" and the name.
Outcome RunAs(const Site& site, const std::string& user, const QStringList& command, const std::string& input = {});

// A viewctl that runs while the test goes on.
class Running {
 public:
  Running(const QStringList& arguments, const std::string& password);
  ~Running();

  void Write(const std::string& text);
  // The next line of stdout; empty when none came within `milliseconds`.
  std::string NextLine(int milliseconds = 15000);
  // The next line of stderr, likewise.
  std::string NextErrorLine(int milliseconds = 15000);
  // The processes that it has started.
  std::vector<qint64> Children() const;
  // Ends the input and waits for the exit status.
  int Finish();
  void Kill();
  // Asks the process to terminate and waits for the exit status.
  int Terminate();

 private:
  int WaitForEnd();

  QProcess m_process;
};

std::vector<std::string> Lines(const std::string& text);
std::string ReadFile(const std::string& name);
void WriteFile(const std::string& name, const std::string& text);

}  // namespace test
