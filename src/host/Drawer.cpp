// SPDX-License-Identifier: Apache-2.0
#include "host/Drawer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStandardPaths>

#include "host/Failure.h"
#include "host/JsonText.h"

namespace host {
namespace {

constexpr int kLimit = 60000;

const char* NameOf(DrawingFormat format) {
  switch (format) {
    case DrawingFormat::kPng:
      return "png";
    case DrawingFormat::kShort:
      return "short";
    default:
      return "svg";
  }
}

QString ProgramFile() {
  return QStandardPaths::findExecutable("viewdraw", {QCoreApplication::applicationDirPath()});
}

}  // namespace

bool Drawer::IsInstalled() {
  return !ProgramFile().isEmpty();
}

Drawer::Drawer() {
  const QString program = ProgramFile();
  if (program.isEmpty()) throw Failure(kUsage, "Pictures are drawn by viewdraw, which was not found beside viewctl");
  m_process.setStandardErrorFile(QProcess::nullDevice());
  m_process.start(program, QStringList());
  if (!m_process.waitForStarted(kLimit)) {
    throw Failure(kUsage, program.toStdString() + ": " + m_process.errorString().toStdString());
  }
}

Drawer::~Drawer() {
  m_process.closeWriteChannel();
  if (m_process.waitForFinished(kLimit)) return;
  m_process.kill();
  m_process.waitForFinished(kLimit);
}

std::string Drawer::Draw(const std::string& plan, int page, const DrawingOptions& options) {
  ObjectText request;
  request.Add("Page", page).Add("Format", NameOf(options.format)).Add("Dark", options.isDark);
  return Ask(request.AddRaw("Plan", plan).Text());
}

std::string Drawer::DrawingRules() {
  return Ask(ObjectText().Add("Format", "rules").Text());
}

std::string Drawer::Ask(const std::string& request) {
  const std::string line = request + "\n";
  m_process.write(line.data(), static_cast<qint64>(line.size()));
  rapidjson::Document answer;
  ParseAnswer(ReadLine().toStdString(), answer);
  const int size = NumberOf(answer, "Size");
  if (size <= 0) throw Failure(kRefused, "viewdraw does not draw the page: " + TextOf(answer, "Error"));
  WaitForBytes(size);
  return m_process.read(size).toStdString();
}

QByteArray Drawer::ReadLine() {
  QElapsedTimer waited;
  waited.start();
  while (!m_process.canReadLine() && waited.elapsed() < kLimit && m_process.state() == QProcess::Running) {
    m_process.waitForReadyRead(100);
  }
  if (!m_process.canReadLine()) throw Failure(kRefused, "viewdraw does not answer");
  return m_process.readLine();
}

void Drawer::WaitForBytes(qint64 count) {
  QElapsedTimer waited;
  waited.start();
  while (m_process.bytesAvailable() < count && waited.elapsed() < kLimit) {
    if (!m_process.waitForReadyRead(100) && m_process.state() != QProcess::Running) break;
  }
  if (m_process.bytesAvailable() < count) throw Failure(kRefused, "viewdraw ended within a picture");
}

}  // namespace host
