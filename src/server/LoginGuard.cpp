// SPDX-License-Identifier: Apache-2.0
#include "server/LoginGuard.h"

#include <algorithm>

#include "server/Secrets.h"

namespace server {

namespace {

constexpr int kFree = 3;
constexpr std::chrono::minutes kForgetAfter{15};
constexpr size_t kMaxNames = 10000;

}  // namespace

std::chrono::milliseconds LoginGuard::Failed(const std::string& userName, Time now) {
  const std::string key = Digest(userName);
  const std::lock_guard lock(m_mutex);
  if (m_failures.size() >= kMaxNames && m_failures.count(key) == 0) {
    m_failures.erase(std::min_element(m_failures.begin(), m_failures.end(), [](const auto& left, const auto& right) {
      return left.second.last < right.second.last;
    }));
  }
  Failures& failures = m_failures[key];
  if (failures.last + kForgetAfter < now) failures.count = 0;
  failures.last = now;
  const int beyond = ++failures.count - kFree;
  return beyond <= 0 ? std::chrono::milliseconds(0) : std::chrono::milliseconds(250 << std::min(beyond - 1, 5));
}

void LoginGuard::Succeeded(const std::string& userName) {
  const std::string key = Digest(userName);
  const std::lock_guard lock(m_mutex);
  m_failures.erase(key);
}

}  // namespace server
