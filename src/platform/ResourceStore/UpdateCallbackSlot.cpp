// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/UpdateCallbackSlot.h"

#include <utility>

#include "VantBase/Log.h"

namespace ResourceStore {

void UpdateCallbackSlot::Set(Callback callback) {
  std::shared_ptr<const Callback> next;  // then the old one, which is destroyed without the lock
  if (callback) next = std::make_shared<const Callback>(std::move(callback));
  base::MutexLock lock(m_mutex);
  m_callback.swap(next);
  const unsigned int generation = ++m_generation;
  if (!IsInsideCall()) m_callEnded.Wait(lock, [&]() REQUIRES(m_mutex) { return !RunsBefore(generation); });
}

void UpdateCallbackSlot::Call(const std::string& data) {
  std::shared_ptr<const Callback> callback;
  RunningCall call{std::this_thread::get_id(), 0, nullptr};
  {
    base::MutexLock lock(m_mutex);
    if (!m_callback) return;
    callback = m_callback;
    call.generation = m_generation;
    call.next = std::exchange(m_running, &call);
  }
  try {
    (*callback)(data);
  } catch (...) {
    Vant::Base::details::IOrlFormatLog(4, "Platform", "A callback for changes threw an exception");
  }
  callback.reset();  // so that it is gone when a waiting setter returns
  base::MutexLock lock(m_mutex);
  RunningCall** place = &m_running;
  while (*place != &call) place = &(*place)->next;
  *place = call.next;
  m_callEnded.NotifyAll();
}

template <class Condition>
bool UpdateCallbackSlot::IsAnyRunning(Condition condition) const {
  for (const RunningCall* call = m_running; call; call = call->next) {
    if (condition(*call)) return true;
  }
  return false;
}

bool UpdateCallbackSlot::IsInsideCall() const {
  return IsAnyRunning([](const RunningCall& call) { return call.thread == std::this_thread::get_id(); });
}

bool UpdateCallbackSlot::RunsBefore(unsigned int generation) const {
  return IsAnyRunning([&](const RunningCall& call) { return call.generation < generation; });
}

}  // namespace ResourceStore
