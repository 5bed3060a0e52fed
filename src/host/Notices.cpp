// SPDX-License-Identifier: Apache-2.0
#include "host/Notices.h"

#include <utility>

#include "host/JsonText.h"

namespace host {

std::string NoticeLine(const Notice& notice) {
  const std::string fields = ObjectText()
                                 .Add("id", notice.id)
                                 .Add("enum_state", notice.enum_state)
                                 .Add("name", notice.name)
                                 .Add("reserved", notice.reserved)
                                 .Add("child_id", notice.child_id)
                                 .Add("child_type", notice.child_type)
                                 .Add("other_change_info", notice.other_change_info)
                                 .Text();
  return ObjectText().AddRaw("notice", fields).Text();
}

bool SameEvent(const Notice& left, const Notice& right) {
  return left.id == right.id && left.enum_state == right.enum_state && left.child_id == right.child_id;
}

void NoticePrinter::UpdateResourceInfos(const Param& notice) {
  m_out.Write(NoticeLine(notice));
  std::lock_guard<std::mutex> lock(m_mutex);
  ++m_count;
  m_came.notify_all();
}

void NoticePrinter::WaitUntilQuiet(std::chrono::milliseconds quiet) {
  std::unique_lock<std::mutex> lock(m_mutex);
  size_t seen = m_count;
  while (m_came.wait_for(lock, quiet, [&] { return m_count != seen; })) seen = m_count;
}

void NoticeQueue::UpdateResourceInfos(const Param& notice) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_notices.push_back(notice);
  m_came.notify_all();
}

std::vector<Notice> NoticeQueue::Take(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_came.wait_for(lock, limit, [&] { return !m_notices.empty(); });
  return std::exchange(m_notices, {});
}

}  // namespace host
