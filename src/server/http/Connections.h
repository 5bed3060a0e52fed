// SPDX-License-Identifier: Apache-2.0
// What all connections of a server share, and how one begins. Beast stays within this folder.
#pragma once

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <memory>
#include <unordered_map>
#include <vector>

#include "base/Mutex.h"
#include "server/http/AccessLog.h"
#include "server/http/Addresses.h"
#include "server/http/Answers.h"
#include "server/http/BodyBudget.h"
#include "server/http/Compression.h"
#include "server/http/HttpHandler.h"
#include "server/http/HttpSettings.h"
#include "server/http/Strangers.h"
#include "server/http/WorkLane.h"

namespace server {

// How many connections each user holds. Any thread.
class Holders {
 public:
  bool Add(int32_t user, size_t limit) {
    const base::MutexLock lock(m_mutex);
    size_t& count = m_counts[user];
    if (count >= limit) return false;
    ++count;
    return true;
  }
  void Remove(int32_t user) {
    const base::MutexLock lock(m_mutex);
    const auto it = m_counts.find(user);
    if (it != m_counts.end() && --it->second == 0) m_counts.erase(it);
  }

 private:
  base::Mutex m_mutex;  // leaf
  std::unordered_map<int32_t, size_t> m_counts GUARDED_BY(m_mutex);
};

// Threads wake connections through it. A thread that wakes a connection holds it for a moment. After the server is gone
// it must not be the last holder. Any thread.
class WakeGate {
 public:
  // Does nothing once the gate is closed.
  template <class Wake>
  void Pass(const Wake& wake) {
    const base::MutexLock lock(m_mutex);
    if (m_isOpen) wake();
  }
  // Returns when nobody is inside any more.
  void Close() {
    const base::MutexLock lock(m_mutex);
    m_isOpen = false;
  }

 private:
  base::Mutex m_mutex;  // held while a connection ends, so that all that its end takes comes after
  bool m_isOpen GUARDED_BY(m_mutex) = true;
};

struct Connections {
  const HttpSettings settings;
  HttpHandler& handler;
  const TrustedProxies proxies;
  std::unique_ptr<AccessLog> accessLog;  // null: none
  std::atomic<size_t> count{0};
  Holders holders;
  Strangers strangers;
  BodyBudget bodies;
  Answers answers;
  PackedEvents packedEvents;
  const std::shared_ptr<WakeGate> wakeGate = std::make_shared<WakeGate>();
  // One for each thread. Connections die with them, so that what connections use is declared before.
  std::vector<std::unique_ptr<boost::asio::io_context>> ios;
  WorkLane logins, largeBodies;

  Connections(const HttpSettings& how, HttpHandler& who)
      : settings(how),
        handler(who),
        proxies(how.trustedProxies),
        accessLog(how.accessLog.empty() ? nullptr : std::make_unique<AccessLog>(how.accessLog)),
        strangers(how.maxConnections - how.maxConnections / 4, how.maxStrangersPerAddress),
        bodies(how.maxBodyBytes),
        logins(how.loginThreads, how.maxWaitingLogins, how.maxWaitingLoginsPerAddress),
        largeBodies(how.bodyThreads, how.maxWaitingBodies, how.maxWaitingBodiesPerUser) {
    for (int i = 0; i < how.threads; ++i) ios.push_back(std::make_unique<boost::asio::io_context>(1));
  }
};

// Serves a client until one of the two has had enough. `tls` is null for plain HTTP.
void StartConnection(Connections& connections, boost::asio::ip::tcp::socket&& socket, boost::asio::ssl::context* tls);

}  // namespace server
