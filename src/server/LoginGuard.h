// SPDX-License-Identifier: Apache-2.0
// Makes guessing passwords slow: failed log-ins of one user name are answered later and later. A right password is
// answered at once, so that nobody can lock another user out; who guesses over many connections at a time is therefore
// slowed by the hashing alone. Any thread.
#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>

namespace server {

class LoginGuard {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // How long to wait before answering this failure: nothing for the first three, then 250 ms, doubling to 8 s.
  std::chrono::milliseconds Failed(const std::string& userName, Time now = std::chrono::steady_clock::now());
  void Succeeded(const std::string& userName);

 private:
  struct Failures {
    int count = 0;
    Time last;
  };

  std::mutex m_mutex;                          // leaf; guards what follows
  std::map<std::string, Failures> m_failures;  // by digest of the name, which strangers choose as long as they like
};

}  // namespace server
