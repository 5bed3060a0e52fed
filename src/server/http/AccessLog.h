// SPDX-License-Identifier: Apache-2.0
// The log of requests in the combined form. It holds no tokens and no values of queries.
#pragma once

#include <chrono>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <thread>

#include "base/Mutex.h"
#include "base/system/Files.h"

namespace server {

struct AccessEntry {
  std::string peer;
  std::string user;  // "-" where nobody is known
  std::chrono::system_clock::time_point time;
  std::string request;  // "GET /path?After=* HTTP/1.1"; "-" where it was none
  int status = 0;
  uint64_t bytes = 0;  // of the answer's body, as far as they were sent
  std::string referer, agent;
};

// "path?name=*&name=*": a value might be a secret.
std::string WithoutValues(const std::string& path, const std::string& query);
// Without user, password, query and fragment.
std::string WithoutSecrets(const std::string& url);
std::string LineOf(const AccessEntry& entry);

// Any thread. Nobody waits for the file or who reads it: lines that it does not take are left out and counted.
class AccessLog {
 public:
  // "-" is stderr. Throws std::runtime_error with one plain line where the file cannot be written.
  explicit AccessLog(const std::string& file);
  ~AccessLog();  // writes what is left, as far as it is taken

  void Add(const AccessEntry& entry) noexcept;

 private:
  void Run();
  void Write(std::string_view text);
  bool IsEnding();

  const base::AppendedFile m_file;
  base::Mutex m_mutex;  // leaf
  base::Condition m_changed;
  std::list<std::string> m_lines GUARDED_BY(m_mutex);  // a list: an empty one takes no memory
  size_t m_lost GUARDED_BY(m_mutex) = 0;
  bool m_isEnding GUARDED_BY(m_mutex) = false;
  std::thread m_thread;
};

}  // namespace server
