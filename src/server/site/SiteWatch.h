// SPDX-License-Identifier: Apache-2.0
// Has a site follow, from its construction to its destruction, what other processes do to users and sessions in the
// store, on a thread of its own.
#pragma once

#include <thread>

#include "base/Mutex.h"
#include "server/site/Site.h"

namespace server {

class SiteWatch {
 public:
  explicit SiteWatch(Site& site) : m_site(site), m_thread([this] { Run(); }) {}
  ~SiteWatch();
  SiteWatch(const SiteWatch&) = delete;
  SiteWatch& operator=(const SiteWatch&) = delete;

 private:
  void Run();
  bool Follow();  // false: it failed

  Site& m_site;
  base::Mutex m_mutex;  // leaf
  base::Condition m_stopping;
  bool m_isStopping GUARDED_BY(m_mutex) = false;
  std::thread m_thread;  // last: it uses the others
};

}  // namespace server
