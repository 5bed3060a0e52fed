// SPDX-License-Identifier: Apache-2.0
#include "ServerProcess.h"

#include <fstream>
#include <map>
#include <stdexcept>

namespace {

constexpr int kWaitMs = 20000;
const std::string kListening = "Listening on http://127.0.0.1:";

}  // namespace

ServerProcess::ServerProcess(const std::string& folder, const std::string& seed, const std::string& faultPlan)
    : m_folder(folder), m_hasFaults(!faultPlan.empty()) {
  std::ofstream(folder + "/seed.json") << seed;
  if (m_hasFaults) SetFaultPlan(faultPlan);
  m_process.setStandardErrorFile(QString::fromStdString(folder + "/server.log"), QIODevice::Append);
  Start();
}

ServerProcess::~ServerProcess() {
  m_process.terminate();
  if (!m_process.waitForFinished(kWaitMs)) Kill();
}

void ServerProcess::Kill() {
  m_process.kill();
  m_process.waitForFinished(kWaitMs);
}

void ServerProcess::SetFaultPlan(const std::string& faultPlan) {
  std::ofstream(m_folder + "/faults.json") << faultPlan;
}

void ServerProcess::Start() {
  const QString folder = QString::fromStdString(m_folder);
  QStringList arguments{"--data",   folder + "/site.db",
                        "--seed",   folder + "/seed.json",
                        "--listen", "127.0.0.1:" + QString::number(m_port)};
  if (m_hasFaults) arguments << "--faults" << folder + "/faults.json";
  m_process.start(VIEWSERVER_FILE, arguments);
  while (!m_process.canReadLine()) {
    if (m_process.waitForReadyRead(kWaitMs)) continue;
    throw std::runtime_error("viewserver did not start: see " + m_folder + "/server.log");
  }
  const std::string line = m_process.readLine().trimmed().toStdString();
  if (line.rfind(kListening, 0) != 0) throw std::runtime_error("viewserver said " + line);
  m_port = static_cast<uint16_t>(std::stoi(line.substr(kListening.size())));
}

std::string ServerProcess::Faults(size_t& count) const {
  static const std::string kFault = "viewserver: fault ";
  std::map<std::string, size_t> counts;
  count = 0;
  std::ifstream log(m_folder + "/server.log");
  for (std::string line; std::getline(log, line);) {
    if (line.rfind(kFault, 0) != 0) continue;
    ++counts[line.substr(kFault.size(), line.find(',') - kFault.size())];
    ++count;
  }
  std::string text;
  for (const auto& [fault, number] : counts) text += (text.empty() ? "" : ", ") + fault + " " + std::to_string(number);
  return text;
}
