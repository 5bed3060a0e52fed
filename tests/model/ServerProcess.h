// SPDX-License-Identifier: Apache-2.0
// `viewserver` as a process of its own, that can be killed and started again on its port.
#pragma once

#include <QProcess>
#include <cstdint>
#include <string>

class ServerProcess {
 public:
  // Starts it with a store, a seed and, unless empty, a fault plan in `folder`. Throws std::runtime_error when it does
  // not come up.
  ServerProcess(const std::string& folder, const std::string& seed, const std::string& faultPlan);
  ~ServerProcess();

  uint16_t Port() const { return m_port; }
  std::string Url() const { return "http://127.0.0.1:" + std::to_string(m_port); }
  qint64 Pid() const { return m_process.processId(); }
  std::string StoreFile() const { return m_folder + "/site.db"; }

  void Kill();  // SIGKILL
  void Start();
  void SetFaultPlan(const std::string& faultPlan);  // from the next start on

  // As the server tells: how often things went wrong on purpose, in all and by fault.
  std::string Faults(size_t& count) const;

 private:
  std::string m_folder;
  bool m_hasFaults;
  uint16_t m_port = 0;
  QProcess m_process;
};
