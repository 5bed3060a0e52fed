// SPDX-License-Identifier: Apache-2.0
// Observers of change notices. None of them calls back into the plugin: the notice of a removed group comes under a
// lock of the plugin's.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ResourceStore/ResourceObserver.h"
#include "host/Terminal.h"

namespace host {

using Notice = ResourceData::IResourceObserver::Param;

// What a notice says happened.
enum NoticeState : int { kRenamed = 2, kChildAdded = 3, kChildRemoved = 4, kChanged = 7 };

// {"notice":{"id":"5","enum_state":3,...}}
std::string NoticeLine(const Notice& notice);

// Whether both tell of the same event: what has changed, how, and by which child.
bool SameEvent(const Notice& left, const Notice& right);

// Prints each notice as it comes.
class NoticePrinter final : public ResourceData::IResourceObserver {
 public:
  explicit NoticePrinter(LineWriter& out) : m_out(out) {}
  void UpdateResourceInfos(const Param& notice) override;

  // Returns when no notice has come for that long, counted from the call on.
  void WaitUntilQuiet(std::chrono::milliseconds quiet);

 private:
  LineWriter& m_out;
  std::mutex m_mutex;  // guards m_count
  std::condition_variable m_came;
  size_t m_count = 0;
};

// Keeps notices until somebody takes them.
class NoticeQueue final : public ResourceData::IResourceObserver {
 public:
  void UpdateResourceInfos(const Param& notice) override;

  // All notices that came since the last call; waits for one, at most that long.
  std::vector<Notice> Take(std::chrono::milliseconds limit);

 private:
  std::mutex m_mutex;  // guards m_notices
  std::condition_variable m_came;
  std::vector<Notice> m_notices;
};

}  // namespace host
