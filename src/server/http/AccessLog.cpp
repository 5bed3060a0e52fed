// SPDX-License-Identifier: Apache-2.0
#include "server/http/AccessLog.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <exception>
#include <stdexcept>
#include <utility>

namespace server {

namespace {

constexpr size_t kMaxLines = 10000;
constexpr size_t kMaxText = 1000;  // of each of a line's texts

// Neither the quote nor the line may end early, and no terminal be told what to do.
std::string Quoted(const std::string& text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string quoted = "\"";
  for (const char c : text.empty() ? std::string("-") : text.substr(0, kMaxText)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= ' ' && byte < 0x7f && c != '"' && c != '\\') {
      quoted += c;
    } else {
      quoted.append("\\x").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
    }
  }
  return quoted + '"';
}

// "[26/Nov/2026:09:29:19 +0000]", whatever the locale.
std::string TimeText(std::chrono::system_clock::time_point time) {
  constexpr std::array<const char*, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "[%02d/%s/%d:%02d:%02d:%02d +0000]", utc.tm_mday,
                kMonths.at(static_cast<size_t>(utc.tm_mon)), utc.tm_year + 1900, utc.tm_hour, utc.tm_min, utc.tm_sec);
  return text.data();
}

int Open(const std::string& file) {
  const int opened = file == "-" ? STDERR_FILENO : open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0640);
  if (opened == -1) throw std::runtime_error("cannot write access log " + file);
  return opened;
}

}  // namespace

std::string WithoutValues(const std::string& path, const std::string& query) {
  if (query.empty()) return path;
  std::string text = path;
  for (size_t begin = 0; begin <= query.size();) {
    const size_t end = std::min(query.find('&', begin), query.size());
    const size_t equals = query.find('=', begin);
    text += begin == 0 ? '?' : '&';
    // Without a "=" the name is a value by itself.
    text += equals < end ? query.substr(begin, equals - begin) + "=*" : "*";
    begin = end + 1;
  }
  return text;
}

std::string WithoutSecrets(const std::string& url) {
  std::string text = url.substr(0, url.find_first_of("?#"));
  const size_t scheme = text.find("://");
  const size_t host = scheme == std::string::npos ? 0 : scheme + 3;
  const size_t at = text.substr(0, text.find('/', host)).rfind('@');
  if (at != std::string::npos) text.erase(host, at + 1 - host);
  return text;
}

std::string LineOf(const AccessEntry& entry) {
  return entry.peer + " - " + entry.user + ' ' + TimeText(entry.time) + ' ' + Quoted(entry.request) + ' ' +
         std::to_string(entry.status) + ' ' + (entry.bytes == 0 ? "-" : std::to_string(entry.bytes)) + ' ' +
         Quoted(entry.referer) + ' ' + Quoted(entry.agent) + '\n';
}

AccessLog::AccessLog(const std::string& file) : m_file(Open(file)), m_thread([this] { Run(); }) {}

AccessLog::~AccessLog() {
  {
    const base::MutexLock lock(m_mutex);
    m_isEnding = true;
    m_changed.NotifyAll();
  }
  m_thread.join();
  if (m_file != STDERR_FILENO) close(m_file);
}

void AccessLog::Add(const AccessEntry& entry) noexcept {
  std::list<std::string> line;
  try {
    line.push_back(LineOf(entry));
  } catch (const std::exception&) {  // want of memory: the line is lost
  }
  const base::MutexLock lock(m_mutex);
  if (line.empty() || m_lines.size() >= kMaxLines) {
    ++m_lost;
  } else {
    m_lines.splice(m_lines.end(), line);
  }
  m_changed.NotifyAll();
}

void AccessLog::Run() {
  // Who reads the log may end: that must not end the process.
  sigset_t brokenPipe;
  sigemptyset(&brokenPipe);
  sigaddset(&brokenPipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
  base::MutexLock lock(m_mutex);
  while (true) {
    m_changed.Wait(lock, [this]() REQUIRES(m_mutex) { return m_isEnding || !m_lines.empty(); });
    if (m_lines.empty()) return;
    std::list<std::string> lines;
    lines.swap(m_lines);
    const size_t lost = std::exchange(m_lost, 0);
    lock.Unlock();
    for (const std::string& line : lines) Write(line);
    std::array<char, 100> note{};
    if (lost > 0) std::snprintf(note.data(), note.size(), "viewserver: %zu requests are not in the access log\n", lost);
    Write(note.data());
    lock.Lock();
  }
}

// Waits for who reads it, but not at the end.
void AccessLog::Write(std::string_view text) {
  while (!text.empty()) {
    pollfd writable{m_file, POLLOUT, 0};
    const bool isEnding = IsEnding();
    if (poll(&writable, 1, isEnding ? 0 : 200) <= 0) {
      if (isEnding) return;
      continue;
    }
    const ssize_t count = write(m_file, text.data(), std::min<size_t>(text.size(), PIPE_BUF));
    if (count < 0) return;  // a full disk, say: the line is lost
    text.remove_prefix(static_cast<size_t>(count));
  }
}

bool AccessLog::IsEnding() {
  const base::MutexLock lock(m_mutex);
  return m_isEnding;
}

}  // namespace server
