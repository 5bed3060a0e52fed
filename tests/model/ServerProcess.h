// SPDX-License-Identifier: Apache-2.0
// `viewserver` as a process of its own, that can be killed and started again on its port.
#pragma once

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "../endtoend/ViewctlRunner.h"

// Those of the file that have the text in them.
inline size_t CountLines(const std::string& file, const std::string& text) {
  const auto lines = test::Lines(test::ReadFile(file));
  return static_cast<size_t>(std::ranges::count_if(lines, [&](const auto& line) { return test::Has(line, text); }));
}

class ServerProcess {
 public:
  // Starts it with a store, a seed and, unless empty, a fault plan in `folder`. Throws std::runtime_error when it does
  // not come up.
  ServerProcess(const std::string& folder, const std::string& seed, const std::string& faultPlan, QStringList options)
      : m_folder(folder), m_options(std::move(options)) {
    test::WriteFile(folder + "/seed.json", seed);
    SetFaultPlan(faultPlan);
    if (!faultPlan.empty()) m_options << "--faults" << QString::fromStdString(folder + "/faults.json");
    Start();
  }
  ~ServerProcess() { m_process->Terminate(); }

  uint16_t Port() const { return m_port; }
  std::string Url() const { return "http://127.0.0.1:" + std::to_string(m_port); }
  std::string StoreFile() const { return m_folder + "/site.db"; }

  void Kill() { m_process->Kill(); }  // SIGKILL
  void Start() {
    const QString folder = QString::fromStdString(m_folder);
    m_process = std::make_unique<test::Running>(
        QStringList{"-c", R"(exec "$@" 2>> "$0")", folder + "/server.log", VIEWSERVER_FILE, "--data",
                    folder + "/site.db", "--seed", folder + "/seed.json", "--listen",
                    "[127.0.0.1]:" + QString::number(m_port)} +
            m_options,
        "", "/bin/sh");
    const std::string line = m_process->NextLine();
    if (line.rfind("Listening on http://127.0.0.1:", 0) != 0) {
      throw std::runtime_error("viewserver said '" + line + "', see " + m_folder + "/server.log");
    }
    m_port = static_cast<uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
  }
  // From the next start on.
  void SetFaultPlan(const std::string& faultPlan) { test::WriteFile(m_folder + "/faults.json", faultPlan); }

  // As the server tells: how often things went wrong on purpose.
  size_t Faults() const { return CountLines(m_folder + "/server.log", "viewserver: fault "); }

 private:
  std::string m_folder;
  QStringList m_options;
  uint16_t m_port = 0;
  std::unique_ptr<test::Running> m_process;
};
