// SPDX-License-Identifier: Apache-2.0
#include "server/site/SiteWatch.h"

#include <chrono>
#include <cstdio>
#include <new>

namespace server {

namespace {

constexpr std::chrono::milliseconds kInterval{400};  // what is promised within a second has time to happen
constexpr std::chrono::seconds kAfterFailure{10};

}  // namespace

SiteWatch::~SiteWatch() {
  {
    const base::MutexLock lock(m_mutex);
    m_isStopping = true;
  }
  m_stopping.NotifyAll();
  m_thread.join();
}

void SiteWatch::Run() {
  base::MutexLock lock(m_mutex);
  std::chrono::milliseconds interval = kInterval;
  while (!m_stopping.WaitFor(lock, interval, [this]() REQUIRES(m_mutex) { return m_isStopping; })) {
    lock.Unlock();
    interval = Follow() ? kInterval : kAfterFailure;
    lock.Lock();
  }
}

bool SiteWatch::Follow() {
  try {
    m_site.FollowAccounts();
    return true;
  } catch (const std::bad_alloc&) {
    return true;  // the next time will do
  } catch (const std::exception& e) {
    std::fprintf(stderr, "viewserver: cannot see to users changed elsewhere: %s\n", e.what());
    return false;
  }
}

}  // namespace server
