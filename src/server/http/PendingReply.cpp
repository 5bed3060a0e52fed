// SPDX-License-Identifier: Apache-2.0
#include "server/http/HttpHandler.h"

namespace server {

std::optional<HttpReply> PendingReply::Take() {
  std::optional<HttpReply> reply;
  std::function<void(HttpReply&)> change;
  {
    const base::MutexLock lock(m_mutex);
    if (!m_reply) return std::nullopt;
    reply = std::exchange(m_reply, std::nullopt);
    change = std::move(m_change);
  }
  if (change) change(*reply);
  return reply;
}

HttpReply PendingReply::Wait() {
  {
    base::MutexLock lock(m_mutex);
    m_given.Wait(lock, [this]() REQUIRES(m_mutex) { return m_reply.has_value(); });
  }
  return *Take();
}

void PendingReply::OnReady(std::function<void()> wake) {
  {
    const base::MutexLock lock(m_mutex);
    if (!m_reply) {
      m_wake = std::move(wake);
      return;
    }
  }
  wake();
}

void PendingReply::Change(std::function<void(HttpReply&)> change) {
  const base::MutexLock lock(m_mutex);
  m_change = std::move(change);
}

void PendingReply::Give(HttpReply reply) noexcept {
  std::function<void()> wake;
  {
    const base::MutexLock lock(m_mutex);
    m_reply = std::move(reply);
    wake = std::move(m_wake);
    m_given.NotifyAll();
  }
  if (wake) wake();
}

}  // namespace server
