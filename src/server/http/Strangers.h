// SPDX-License-Identifier: Apache-2.0
// The connections over which no session has been used yet. Whoever comes anew takes the place of the one that has been
// idle for the longest time, so that those who hold connections without using them keep nobody out.
#pragma once

#include <boost/intrusive/list.hpp>
#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>

#include "base/Mutex.h"

namespace server {

// Derived from by connections.
class Stranger {
 public:
  Stranger() = default;
  Stranger(const Stranger&) = delete;
  Stranger& operator=(const Stranger&) = delete;

 protected:
  ~Stranger() = default;

 private:
  friend class Strangers;
  using Hook = boost::intrusive::list_member_hook<>;

  // Null where it is ending already.
  virtual std::shared_ptr<Stranger> Alive() = 0;
  // Ends the connection soon. Any thread, no lock held.
  virtual void Dismiss() = 0;

  // All under the lock of Strangers.
  Hook m_inAll, m_atAddress;  // linked while it is idle
  std::string m_address;
  bool m_isCounted = false;
};

// Any thread.
class Strangers {
 public:
  Strangers(size_t limit, size_t limitPerAddress) : m_limit(limit), m_limitPerAddress(limitPerAddress) {}

  // Counts `who` as an idle stranger. `address` is empty for whom the limit of an address does not concern;
  // `isCrowded`: there is no room for another one, even if the limits have it. False, and not counted: all others are
  // busy.
  bool Enter(Stranger& who, const std::string& address, bool isCrowded);
  void Leave(Stranger& who);  // harmless where it is not counted
  // Being answered it stays. Harmless where it is not counted.
  void SetBusy(Stranger& who, bool isBusy);

 private:
  using InAll =
      boost::intrusive::list<Stranger, boost::intrusive::member_hook<Stranger, Stranger::Hook, &Stranger::m_inAll>>;
  using AtAddress =
      boost::intrusive::list<Stranger, boost::intrusive::member_hook<Stranger, Stranger::Hook, &Stranger::m_atAddress>>;
  struct Place {
    size_t count = 0;
    AtAddress idle;  // the longest first
  };
  template <class List>
  std::shared_ptr<Stranger> TakeLongestIdle(List& idle) REQUIRES(m_mutex);
  void Link(Stranger& who) REQUIRES(m_mutex);
  void Unlink(Stranger& who) REQUIRES(m_mutex);
  void Forget(Stranger& who) REQUIRES(m_mutex);

  const size_t m_limit, m_limitPerAddress;
  base::Mutex m_mutex;  // leaf
  size_t m_count GUARDED_BY(m_mutex) = 0;
  InAll m_idle GUARDED_BY(m_mutex);  // the longest first
  std::unordered_map<std::string, Place> m_places GUARDED_BY(m_mutex);
};

}  // namespace server
