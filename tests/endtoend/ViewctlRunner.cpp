// SPDX-License-Identifier: Apache-2.0
#include "ViewctlRunner.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <fstream>
#include <iterator>
#include <sstream>

namespace test {
namespace {

constexpr int kLimit = 60000;

void NeedApplication() {
  static int argc = 1;
  static char name[] = "test";
  static char* argv[] = {name, nullptr};
  static QCoreApplication application(argc, argv);
}

void Start(QProcess& process, const QString& program, const QStringList& arguments, const std::string& password) {
  NeedApplication();
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.remove("VIEWCTL_PASSWORD");
  if (!password.empty()) environment.insert("VIEWCTL_PASSWORD", QString::fromStdString(password));
  process.setProcessEnvironment(environment);
  process.start(program, arguments);
}

int StatusOf(const QProcess& process) {
  return process.exitStatus() == QProcess::NormalExit && process.state() == QProcess::NotRunning ? process.exitCode()
                                                                                                 : -1;
}

std::string NextLineOf(QProcess& process, QProcess::ProcessChannel channel, int milliseconds) {
  process.setReadChannel(channel);
  QElapsedTimer waited;
  waited.start();
  while (!process.canReadLine() && waited.elapsed() < milliseconds) process.waitForReadyRead(20);
  return process.canReadLine() ? process.readLine().trimmed().toStdString() : std::string();
}

}  // namespace

Site::Site(bool seeded) {
  NeedApplication();
  server::ViewServerOptions options;
  options.dataFile = m_folder.filePath("views.db").toStdString();
  if (seeded) options.seedFile = SITE_FILE;
  m_server = std::make_unique<server::ViewServer>(options);
  std::string error;
  if (!seeded && !m_server->SetPassword("admin", "sample-admin", error)) throw std::runtime_error(error);
  m_server->Start();
}

QStringList Site::As(const std::string& user) const {
  return {"--server", QString::fromStdString(Url()), "--user", QString::fromStdString(user)};
}

QString ViewctlFile() {
  return VIEWCTL_FILE;
}

Outcome Run(const QStringList& arguments, const std::string& password, const std::string& input) {
  return RunProgram(ViewctlFile(), arguments, password, input);
}

Outcome RunProgram(const QString& program, const QStringList& arguments, const std::string& password,
                   const std::string& input) {
  QProcess process;
  Start(process, program, arguments, password);
  process.write(input.data(), static_cast<qint64>(input.size()));
  process.closeWriteChannel();
  const bool ended = process.waitForFinished(kLimit);
  if (!ended) process.kill();
  process.waitForFinished(kLimit);
  return {ended ? StatusOf(process) : -1, process.readAllStandardOutput().toStdString(),
          process.readAllStandardError().toStdString()};
}

Outcome RunAs(const Site& site, const std::string& user, const QStringList& command, const std::string& input) {
  return Run(site.As(user) + command, "sample-" + user, input);
}

Running::Running(const QStringList& arguments, const std::string& password) {
  Start(m_process, VIEWCTL_FILE, arguments, password);
}

Running::~Running() {
  Kill();
}

void Running::Kill() {
  m_process.kill();
  m_process.waitForFinished(kLimit);
}

void Running::Write(const std::string& text) {
  m_process.write(text.data(), static_cast<qint64>(text.size()));
  m_process.waitForBytesWritten(kLimit);
}

std::string Running::NextLine(int milliseconds) {
  return NextLineOf(m_process, QProcess::StandardOutput, milliseconds);
}

std::string Running::NextErrorLine(int milliseconds) {
  return NextLineOf(m_process, QProcess::StandardError, milliseconds);
}

std::vector<qint64> Running::Children() const {
  const std::string id = std::to_string(m_process.processId());
  std::istringstream list(ReadFile("/proc/" + id + "/task/" + id + "/children"));
  return {std::istream_iterator<qint64>(list), {}};
}

int Running::Finish() {
  m_process.closeWriteChannel();
  return WaitForEnd();
}

int Running::Terminate() {
  m_process.terminate();
  return WaitForEnd();
}

int Running::WaitForEnd() {
  if (m_process.state() != QProcess::NotRunning) m_process.waitForFinished(kLimit);
  return StatusOf(m_process);
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::string& name, const std::string& text) {
  std::ofstream(name, std::ios::binary) << text;
}

}  // namespace test
