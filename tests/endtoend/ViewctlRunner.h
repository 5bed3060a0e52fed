// SPDX-License-Identifier: Apache-2.0
// The built viewctl as a process of its own, against a server in the test's process. Every wait is bounded.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../Cases.h"
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

inline std::string ReadFile(const QString& name) {
  return ReadFile(name.toStdString());
}

inline void WriteFile(const std::string& name, const std::string& text) {
  std::ofstream(name, std::ios::binary) << text;
}
inline void WriteFile(const QString& name, const std::string& text) {
  WriteFile(name.toStdString(), text);
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
    WriteFile(File("seed.json"), seed);
    Start(File("seed.json").toStdString());
  }

  std::string Url() const { return m_server->Url(); }
  QString Address() const { return QString::fromStdString(Url()); }
  // A place for a file of the test's.
  QString File(const QString& name) const { return m_folder.filePath(name); }
  // Arguments that log in as that user. The password comes from RunAs.
  QStringList As(const std::string& user) const {
    return {"--server", Address(), "--user", QString::fromStdString(user)};
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
  std::string command;  // what was run

  std::string LastLine() const {
    const auto lines = Lines(out);
    return lines.empty() ? "" : lines.back();
  }
};
inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << outcome.command << "\n" << outcome.out << outcome.err;
}

// Expects that status and, in all that was said, that part.
inline void ExpectSaid(const Outcome& outcome, int status, const std::string& part) {
  EXPECT_EQ(outcome.status, status) << outcome;
  EXPECT_TRUE(Has(outcome.out + outcome.err, part)) << "no " << part << " of " << outcome;
}
// Expects that status and that part of a message, and nothing on stdout.
inline void ExpectMessage(const Outcome& outcome, int status, const std::string& part) {
  EXPECT_EQ(outcome.status, status) << outcome;
  EXPECT_TRUE(Has(outcome.err, part)) << "no " << part << " of " << outcome;
  EXPECT_EQ(outcome.out, "") << outcome;
}

// The arguments of a line; a pair of ' or of " around one holds together what has blanks, or nothing.
inline QStringList Words(const QString& line) {
  static const QRegularExpression word("'([^']*)'|\"([^\"]*)\"|\\S+");
  QStringList words;
  for (auto found = word.globalMatch(line); found.hasNext();) {
    const QRegularExpressionMatch one = found.next();
    words += one.captured(one.lastCapturedIndex());
  }
  return words;
}

// A row of a table: what is run, and what comes of it.
struct Row {
  int status = 0;
  QString command;
  std::vector<std::string> parts;  // of what is said
};
// The running test's table, or that of the name: lines "STATUS COMMAND", and below each the parts. $SITE stands for the
// site's host and port, $FOLDER for where its files are, \n for a new line.
inline std::vector<Row> RowsOf(const char* file, const Site& site, const std::string& name = {}) {
  const auto filledIn = [&site](const std::string& text) {
    QString filled = QString::fromStdString(text).replace("\\n", "\n");
    return filled.replace("$SITE", site.Address().mid(7)).replace("$FOLDER", site.File({}));
  };
  std::vector<Row> rows;
  for (const auto& [line, parts] : name.empty() ? testing_support::Cases(file) : testing_support::Cases(file, name)) {
    const QString row = filledIn(line);
    bool hasStatus = false;
    rows.push_back({row.section(' ', 0, 0).toInt(&hasStatus), row.section(' ', 1), {}});
    EXPECT_TRUE(hasStatus) << line;
    for (const std::string& part : parts) rows.back().parts.push_back(filledIn(part).toStdString());
  }
  return rows;
}
// Expects that of the row: its status and each part. One behind "= " is all of stdout, which an empty one leaves empty.
inline void ExpectRow(const Outcome& outcome, const Row& row) {
  EXPECT_EQ(outcome.status, row.status) << outcome;
  for (const std::string& part : row.parts) {
    if (part.empty() || part.starts_with("= ")) {
      EXPECT_EQ(outcome.out, part.empty() ? part : part.substr(2)) << outcome;
    } else {
      ExpectSaid(outcome, row.status, part);
    }
  }
}

// Runs a program to its end, viewctl unless said.
inline Outcome Run(const QStringList& arguments, const std::string& password = {}, const std::string& input = {},
                   const QString& program = VIEWCTL_FILE) {
  Running process(arguments, password, program);
  process.Write(input);
  const int status = process.Finish();
  return {status, process.Output(), process.Errors(), arguments.join(' ').toStdString()};
}
// The same as a user of the site, whose passwords are all "sample-" and the name.
inline Outcome RunAs(const Site& site, const std::string& user, const QStringList& command,
                     const std::string& input = {}) {
  return Run(site.As(user) + command, "sample-" + user, input);
}

// Runs of a shell that finds viewctl by its name.
inline Outcome RunShell(const QString& script, const QString& argument = {}, const QString& shell = "sh") {
  return Run({"-c", "PATH=$(dirname '" VIEWCTL_FILE "'):$PATH; " + script, shell, argument}, {}, {}, shell);
}

// Tests that share a site.
class SiteTest : public testing::Test {
 protected:
  static Site& TheSite() {
    static Site site;
    return site;
  }
  static Outcome Maria(const QStringList& command, const std::string& input = {}) {
    return RunAs(TheSite(), "maria", command, input);
  }
};

// Tests that have a site for themselves.
class OwnSiteTest : public testing::Test {
 protected:
  Outcome Maria(const QStringList& command) const { return RunAs(m_site, "maria", command); }
  Outcome Admin(const QStringList& command) const { return RunAs(m_site, "admin", command); }
  // Goes through the running test's table as maria.
  void ExpectTable(const char* file) const {
    for (const Row& row : RowsOf(file, m_site)) ExpectRow(Maria(Words(row.command)), row);
  }
  QString File(const char* name) const { return m_site.File(name); }
  // The same, with that in it.
  QString File(const char* name, const std::string& content) const {
    WriteFile(File(name), content);
    return File(name);
  }

  Site m_site;
};

}  // namespace test
