// SPDX-License-Identifier: Apache-2.0
// Makes guessing passwords slow: failed log-ins of one user name are answered later and later, and while three such
// answers are due at one address, its further guesses of that name count for nothing. An address at which a hundred
// more failed than a second for each allows, whatever the names, waits, but for those who have got in there before.
// Otherwise a right password is answered at once, so that nobody can lock out a user who is elsewhere. Any thread.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "base/Mutex.h"

namespace server {

class LoginGuard {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // False: too many answers are due there; the attempt counts as failed, whatever the password.
  bool Admits(const std::string& userName, const std::string& peer, Time now = std::chrono::steady_clock::now());
  // How long to wait before answering this failure: nothing for the first three, then 250 ms, doubling to 8 s.
  std::chrono::milliseconds Failed(const std::string& userName, const std::string& peer,
                                   Time now = std::chrono::steady_clock::now());
  void Succeeded(const std::string& userName, const std::string& peer, Time now = std::chrono::steady_clock::now());
  // How long no log-in of that name from that address is looked at; 0 where it is.
  std::chrono::seconds WaitAt(const std::string& userName, const std::string& peer,
                              Time now = std::chrono::steady_clock::now());

 private:
  void CountAt(const std::string& peer, Time now) REQUIRES(m_mutex);

  struct Failures {
    int count = 0;
    Time last;
  };

  // User names are kept as digests: strangers choose them as long as they like.
  using Guesser = std::pair<std::string, std::string>;  // digest of the user name, address

  base::Mutex m_mutex;  // leaf
  std::map<std::string, Failures> m_failures GUARDED_BY(m_mutex);
  // When an address, at one failure a second, would have made those that it has made.
  std::map<std::string, Time> m_paidUntil GUARDED_BY(m_mutex);
  std::map<Guesser, std::vector<Time>> m_due GUARDED_BY(m_mutex);  // when the answers that wait are given
  std::map<Guesser, Time> m_gotIn GUARDED_BY(m_mutex);             // when they last did
};

}  // namespace server
