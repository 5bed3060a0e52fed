// SPDX-License-Identifier: Apache-2.0
#include "server/http/AccessLog.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <utility>

#include "base/system/StopSignal.h"

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
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::seconds>(time - day));
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "[%02u/%s/%d:%02d:%02d:%02d +0000]", static_cast<unsigned>(date.day()),
                kMonths.at(static_cast<unsigned>(date.month()) - 1), static_cast<int>(date.year()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
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

AccessLog::AccessLog(const std::string& file) : m_file(file) {
  if (!m_file.IsOpen()) throw std::runtime_error("cannot write access log " + file);
  m_thread = std::thread([this] { Run(); });
}

AccessLog::~AccessLog() {
  {
    const base::MutexLock lock(m_mutex);
    m_isEnding = true;
    m_changed.NotifyAll();
  }
  m_thread.join();
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
  base::IgnoreBrokenPipesInThread();
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
    const bool isEnding = IsEnding();
    if (!m_file.AwaitSpace(isEnding ? 0 : 200)) {
      if (isEnding) return;
      continue;
    }
    const int64_t count = m_file.Write(text);
    if (count < 0) return;  // a full disk, say: the line is lost
    text.remove_prefix(static_cast<size_t>(count));
  }
}

bool AccessLog::IsEnding() {
  const base::MutexLock lock(m_mutex);
  return m_isEnding;
}

}  // namespace server
