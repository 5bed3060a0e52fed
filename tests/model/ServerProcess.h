// SPDX-License-Identifier: Apache-2.0
// `viewserver` as a process of its own, that can be killed and started again on its port.
#pragma once

#include <QProcess>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>

#include "system/StoppableProcess.h"

// Those of the file that have the text in them.
inline size_t CountLines(const std::string& file, const std::string& text) {
  size_t count = 0;
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) count += line.find(text) != std::string::npos;
  return count;
}

class ServerProcess {
 public:
  // Starts it with a store, a seed and, unless empty, a fault plan in `folder`. Throws std::runtime_error when it does
  // not come up.
  ServerProcess(const std::string& folder, const std::string& seed, const std::string& faultPlan,
                const QStringList& options = {})
      : m_folder(folder), m_hasFaults(!faultPlan.empty()), m_options(options) {
    std::ofstream(folder + "/seed.json") << seed;
    if (m_hasFaults) SetFaultPlan(faultPlan);
    m_process.setStandardErrorFile(QString::fromStdString(folder + "/server.log"), QIODevice::Append);
    Start();
  }
  ~ServerProcess() {
    test_programs::AskToStop(m_process);
    if (!m_process.waitForFinished(kWaitMs)) Kill();
  }

  uint16_t Port() const { return m_port; }
  std::string Url() const { return "http://127.0.0.1:" + std::to_string(m_port); }
  qint64 Pid() const { return m_process.processId(); }
  std::string StoreFile() const { return m_folder + "/site.db"; }

  void Kill() {  // SIGKILL
    m_process.kill();
    m_process.waitForFinished(kWaitMs);
  }
  void Start() {
    const QString folder = QString::fromStdString(m_folder);
    QStringList arguments{"--data",   folder + "/site.db",
                          "--seed",   folder + "/seed.json",
                          "--listen", "[127.0.0.1]:" + QString::number(m_port)};
    if (m_hasFaults) arguments << "--faults" << folder + "/faults.json";
    test_programs::MakeStoppable(m_process);
    m_process.start(VIEWSERVER_FILE, arguments + m_options);
    while (!m_process.canReadLine()) {
      if (m_process.waitForReadyRead(kWaitMs)) continue;
      throw std::runtime_error("viewserver did not start: see " + m_folder + "/server.log");
    }
    const std::string line = m_process.readLine().trimmed().toStdString();
    if (line.rfind("Listening on http://127.0.0.1:", 0) != 0) throw std::runtime_error("viewserver said " + line);
    m_port = static_cast<uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
  }
  // From the next start on.
  void SetFaultPlan(const std::string& faultPlan) { std::ofstream(m_folder + "/faults.json") << faultPlan; }

  // As the server tells: how often things went wrong on purpose.
  size_t Faults() const { return CountLines(m_folder + "/server.log", "viewserver: fault "); }

 private:
  static constexpr int kWaitMs = 20000;

  std::string m_folder;
  bool m_hasFaults;
  QStringList m_options;
  uint16_t m_port = 0;
  QProcess m_process;
};
