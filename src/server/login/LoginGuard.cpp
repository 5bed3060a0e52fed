// SPDX-License-Identifier: Apache-2.0
#include "server/login/LoginGuard.h"

#include <algorithm>

#include "server/login/Secrets.h"

namespace server {

namespace {

constexpr int kFailuresWithoutDelay = 3;
constexpr std::chrono::minutes kForgetAfter{15};
constexpr size_t kMaxNames = 10000;
constexpr size_t kMaxDue = 3;
constexpr std::chrono::seconds kForEachAtAddress{1};
constexpr std::chrono::seconds kAheadAtAddress{100};
constexpr size_t kMaxAddresses = 10000;

template <class Times>
void EraseEarliest(Times& times) {
  times.erase(std::min_element(times.begin(), times.end(),
                               [](const auto& one, const auto& other) { return one.second < other.second; }));
}

}  // namespace

bool LoginGuard::Admits(const std::string& userName, const std::string& peer, Time now) {
  const Guesser guesser(Digest(userName), peer);
  const base::MutexLock lock(m_mutex);
  const auto due = m_due.find(guesser);
  if (due == m_due.end()) return true;
  std::erase_if(due->second, [now](Time time) { return time <= now; });
  return due->second.size() < kMaxDue;
}

std::chrono::milliseconds LoginGuard::Failed(const std::string& userName, const std::string& peer, Time now) {
  const std::string key = Digest(userName);
  const base::MutexLock lock(m_mutex);
  CountAt(peer, now);
  if (m_failures.size() >= kMaxNames && m_failures.count(key) == 0) {
    m_failures.erase(std::min_element(m_failures.begin(), m_failures.end(), [](const auto& left, const auto& right) {
      return left.second.last < right.second.last;
    }));
  }
  Failures& failures = m_failures[key];
  if (failures.last + kForgetAfter < now) failures.count = 0;
  failures.last = now;
  const int beyond = ++failures.count - kFailuresWithoutDelay;
  if (beyond <= 0) return std::chrono::milliseconds(0);
  const std::chrono::milliseconds delay(250 << std::min(beyond - 1, 5));
  if (m_due.size() >= kMaxNames) {
    std::erase_if(m_due, [now](const auto& entry) { return entry.second.empty() || entry.second.back() <= now; });
  }
  // The latest three times suffice to tell whether three are due. More would make each look-up slower in a flood.
  std::vector<Time>& due = m_due[{key, peer}];
  due.push_back(now + delay);
  if (due.size() > kMaxDue) due.erase(due.begin());
  return delay;
}

void LoginGuard::Succeeded(const std::string& userName, const std::string& peer, Time now) {
  const Guesser who(Digest(userName), peer);
  const base::MutexLock lock(m_mutex);
  m_failures.erase(who.first);
  if (m_gotIn.size() >= kMaxNames && m_gotIn.count(who) == 0) EraseEarliest(m_gotIn);
  m_gotIn[who] = now;
}

std::chrono::seconds LoginGuard::WaitAt(const std::string& userName, const std::string& peer, Time now) {
  const Guesser who(Digest(userName), peer);
  const base::MutexLock lock(m_mutex);
  if (m_gotIn.count(who) > 0) return std::chrono::seconds(0);
  const auto paid = m_paidUntil.find(peer);
  if (paid == m_paidUntil.end()) return std::chrono::seconds(0);
  return std::max(std::chrono::ceil<std::chrono::seconds>(paid->second - now - kAheadAtAddress), {});
}

void LoginGuard::CountAt(const std::string& peer, Time now) {
  if (m_paidUntil.size() >= kMaxAddresses && m_paidUntil.count(peer) == 0) EraseEarliest(m_paidUntil);
  Time& paidUntil = m_paidUntil[peer];
  paidUntil = std::max(paidUntil, now) + kForEachAtAddress;
}

}  // namespace server
