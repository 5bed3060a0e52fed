// SPDX-License-Identifier: Apache-2.0
// The two users of the demo. The platform is one per process, so one user is this process and the other a second
// viewctl that is driven over pipes.
#pragma once

#include <QProcess>
#include <deque>
#include <optional>
#include <string>

#include "host/Client.h"
#include "host/JsonText.h"
#include "host/Notices.h"

namespace host {

class Side {
 public:
  explicit Side(std::string name) : m_name(std::move(name)) {}
  virtual ~Side() = default;

  const std::string& Name() const { return m_name; }
  // Makes an exchange; `response` is null when it cannot be read.
  virtual bool Call(const std::string& function, const std::string& request, rapidjson::Document& response) = 0;
  virtual void Observe(int type, const std::string& id) = 0;
  // The next notice, waiting for one at most that long.
  virtual std::optional<Notice> NextNotice(std::chrono::milliseconds limit) = 0;

 private:
  const std::string m_name;
};

// The user of this process.
class OwnSide final : public Side {
 public:
  // The client notifies `queue` and must be destroyed before it.
  OwnSide(const std::string& name, const Plugin& plugin, NoticeQueue& queue)
      : Side(name), m_plugin(plugin), m_queue(queue) {}

  bool Call(const std::string& function, const std::string& request, rapidjson::Document& response) override;
  void Observe(int type, const std::string& id) override;
  std::optional<Notice> NextNotice(std::chrono::milliseconds limit) override;

 private:
  const Plugin& m_plugin;
  NoticeQueue& m_queue;
  std::deque<Notice> m_taken;
};

// The user of a second viewctl, which runs `script` against the same server. Every wait is bounded; Failure kRefused
// is thrown when the process does not answer.
class ScriptSide final : public Side {
 public:
  ScriptSide(const std::string& name, const std::string& password, const std::string& url, const std::string& plugin);
  ~ScriptSide() override;

  bool Call(const std::string& function, const std::string& request, rapidjson::Document& response) override;
  void Observe(int type, const std::string& id) override;
  std::optional<Notice> NextNotice(std::chrono::milliseconds limit) override;

 private:
  // Sends a line and reads on to its answer; notices that come before it are kept.
  rapidjson::Document Ask(const std::string& line);
  // Reads one line; false when none came in time. A notice goes to the kept ones and leaves `answer` null.
  bool ReadLine(std::chrono::milliseconds limit, rapidjson::Document& answer);

  QProcess m_process;
  std::deque<Notice> m_notices;
};

}  // namespace host
