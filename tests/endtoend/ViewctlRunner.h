// SPDX-License-Identifier: Apache-2.0
// The built viewctl as a process of its own, against a server in the test's process. Every wait is bounded.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "server/ViewServer.h"
#include "system/StoppableProcess.h"

namespace test {

inline void NeedApplication() {
  static int argc = 1;
  static char name[] = "test";
  static char* argv[] = {name, nullptr};
  static QCoreApplication application(argc, argv);
}

inline std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

inline bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

inline std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteFile(const std::string& name, const std::string& text) {
  std::ofstream(name, std::ios::binary) << text;
}

// A server on a port of its own, with the sample site unless `seeded` says otherwise; gone with the object. In it,
// admin's password is "sample-admin", maria's "sample-maria".
class Site {
 public:
  explicit Site(bool seeded = true) {
    Start(seeded ? SITE_FILE : "");
    std::string error;
    if (!seeded && !m_server->SetPassword("admin", "sample-admin", error)) throw std::runtime_error(error);
  }
  // With a site of one's own, which has the users.
  explicit Site(const std::string& seed) {
    const std::string file = Folder() + "/seed.json";
    std::ofstream(file, std::ios::binary) << seed;
    Start(file);
  }

  std::string Url() const { return m_server->Url(); }
  std::string Folder() const { return m_folder.path().toStdString(); }
  // Arguments that log in as that user. The password comes from RunAs.
  QStringList As(const std::string& user) const {
    return {"--server", QString::fromStdString(Url()), "--user", QString::fromStdString(user)};
  }

 private:
  void Start(const std::string& seedFile) {
    NeedApplication();
    server::ViewServerOptions options;
    options.dataFile = m_folder.filePath("views.db").toStdString();
    options.seedFile = seedFile;
    m_server = std::make_unique<server::ViewServer>(options);
    m_server->Start();
  }

  QTemporaryDir m_folder;
  std::unique_ptr<server::ViewServer> m_server;
};

// Whoever runs the tests may have a configuration, which is none of theirs. `password` goes into VIEWCTL_PASSWORD;
// empty leaves it unset.
inline QProcessEnvironment EnvironmentWith(const std::string& password) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* name : {"VIEWCTL_PASSWORD", "VIEWCTL_SERVER", "VIEWCTL_USER", "NO_COLOR"}) environment.remove(name);
  environment.insert("VIEWCTL_CONFIG", QProcess::nullDevice());
  if (!password.empty()) environment.insert("VIEWCTL_PASSWORD", QString::fromStdString(password));
  return environment;
}

// A viewctl that runs while the test goes on.
class Running {
 public:
  Running(const QStringList& arguments, const std::string& password, const QString& program = VIEWCTL_FILE) {
    NeedApplication();
    m_process.setProcessEnvironment(EnvironmentWith(password));
    test_programs::MakeStoppable(m_process);
    m_process.start(program, arguments);
  }
  ~Running() { Kill(); }

  void Write(const std::string& text) {
    m_process.write(text.data(), static_cast<qint64>(text.size()));
    m_process.waitForBytesWritten(kLimit);
  }
  // The next line of stdout, or of stderr; empty when none came within `milliseconds`.
  std::string NextLine(int milliseconds = kLimit) { return NextLineOf(QProcess::StandardOutput, milliseconds); }
  std::string NextErrorLine() { return NextLineOf(QProcess::StandardError, kLimit); }
  // What is left of stdout and stderr.
  std::string Output() { return m_process.readAllStandardOutput().toStdString(); }
  std::string Errors() { return m_process.readAllStandardError().toStdString(); }
  qint64 Id() const { return m_process.processId(); }
  // Ends the input and waits for the exit status; -1: killed, or never ended.
  int Finish() {
    m_process.closeWriteChannel();
    return WaitForEnd();
  }
  // The same after asking the process to terminate.
  int Terminate() {
    test_programs::AskToStop(m_process);
    return WaitForEnd();
  }
  void Kill() {
    m_process.kill();
    m_process.waitForFinished(kLimit);
  }

 private:
  static constexpr int kLimit = 60000;

  std::string NextLineOf(QProcess::ProcessChannel channel, int milliseconds) {
    m_process.setReadChannel(channel);
    QElapsedTimer waited;
    waited.start();
    while (!m_process.canReadLine() && waited.elapsed() < milliseconds) m_process.waitForReadyRead(20);
    return m_process.canReadLine() ? m_process.readLine().trimmed().toStdString() : std::string();
  }
  int WaitForEnd() {
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kLimit)) return -1;
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
  }

  QProcess m_process;
};

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

// Runs a program to its end, viewctl unless said.
inline Outcome Run(const QStringList& arguments, const std::string& password = {}, const std::string& input = {},
                   const QString& program = VIEWCTL_FILE) {
  Running process(arguments, password, program);
  process.Write(input);
  const int status = process.Finish();
  return {status, process.Output(), process.Errors()};
}
// The same as a user of the site, whose passwords are all "sample-" and the name.
inline Outcome RunAs(const Site& site, const std::string& user, const QStringList& command,
                     const std::string& input = {}) {
  return Run(site.As(user) + command, "sample-" + user, input);
}

// Tests that share a site.
class SiteTest : public testing::Test {
 protected:
  static Site& TheSite() {
    static Site site;
    return site;
  }
};

}  // namespace test
