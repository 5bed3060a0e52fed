// SPDX-License-Identifier: Apache-2.0
#include "server/http/Strangers.h"

namespace server {

bool Strangers::Enter(Stranger& who, const std::string& address, bool isCrowded) {
  std::shared_ptr<Stranger> leaving;
  {
    const base::MutexLock lock(m_mutex);
    who.m_address = address;
    Place& place = m_places[address];
    const bool isFull = !address.empty() && place.count >= m_limitPerAddress;
    // Counted first, so that the place stays where the one that leaves is its last.
    who.m_isCounted = true;
    ++m_count;
    ++place.count;
    if (isFull || isCrowded || m_count > m_limit) {
      leaving = isFull ? TakeLongestIdle(place.idle) : TakeLongestIdle(m_idle);
      if (!leaving) {
        Forget(who);
        return false;
      }
    }
    Link(who);
  }
  if (leaving) leaving->Dismiss();
  return true;
}

void Strangers::Leave(Stranger& who) {
  const base::MutexLock lock(m_mutex);
  if (who.m_isCounted) Forget(who);
}

void Strangers::SetBusy(Stranger& who, bool isBusy) {
  const base::MutexLock lock(m_mutex);
  if (!who.m_isCounted) return;
  Unlink(who);
  if (!isBusy) Link(who);
}

template <class List>
std::shared_ptr<Stranger> Strangers::TakeLongestIdle(List& idle) {
  for (Stranger& one : idle) {
    // Where it is ending, its end will wait for the lock and then take it from the lists.
    if (std::shared_ptr<Stranger> alive = one.Alive()) {
      Forget(one);
      return alive;
    }
  }
  return nullptr;
}

void Strangers::Link(Stranger& who) {
  m_idle.push_back(who);
  m_places[who.m_address].idle.push_back(who);
}

void Strangers::Unlink(Stranger& who) {
  if (!who.m_inAll.is_linked()) return;
  m_idle.erase(m_idle.iterator_to(who));
  AtAddress& idle = m_places[who.m_address].idle;
  idle.erase(idle.iterator_to(who));
}

void Strangers::Forget(Stranger& who) {
  Unlink(who);
  who.m_isCounted = false;
  --m_count;
  const auto place = m_places.find(who.m_address);
  if (--place->second.count == 0) m_places.erase(place);
}

}  // namespace server
