// SPDX-License-Identifier: Apache-2.0
#include "VantBase/Log.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <cstdarg>
#include <cstdio>
#include <utility>

#include "base/Mutex.h"

namespace Vant::Base {

ILogSink::~ILogSink() = default;

namespace {

constexpr int kErrorLevel = 5;

class StderrSink : public ILogSink {
 public:
  StderrSink() : m_logger("", std::make_shared<spdlog::sinks::stderr_sink_mt>()) {
    m_logger.set_pattern("%Y-%m-%d %H:%M:%S.%e [%t] %v");
    // A stderr that cannot be written to is nothing to talk about on stderr.
    m_logger.set_error_handler([](const std::string&) {});
  }

  bool Wants(int level) const override { return level >= kErrorLevel; }

  void Write(int, const char* module, const std::string& text) override { m_logger.error("{} {}", module, text); }

 private:
  spdlog::logger m_logger;
};

class CurrentSink {
 public:
  std::shared_ptr<ILogSink> Get() {
    base::MutexLock lock(m_mutex);
    if (!m_sink) m_sink = std::make_shared<StderrSink>();
    return m_sink;
  }

  void Set(std::shared_ptr<ILogSink> sink) {
    // Swapped, so that the old sink's destructor runs without the lock.
    base::MutexLock lock(m_mutex);
    m_sink.swap(sink);
  }

 private:
  base::Mutex m_mutex;
  std::shared_ptr<ILogSink> m_sink GUARDED_BY(m_mutex);
};

// Never destroyed: destructors of other static objects still log at the end of the process.
CurrentSink& TheSink() {
  static CurrentSink* const sink = new CurrentSink;
  return *sink;
}

// False when `format` cannot be applied, or its text has more than INT_MAX bytes.
QORVI_PRINTF(2, 0)
bool Format(std::string& text, const char* format, va_list arguments) {
  char buffer[1024];
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
  bool ok = length >= 0;
  if (ok && static_cast<std::size_t>(length) < sizeof buffer) {
    text.assign(buffer, static_cast<std::size_t>(length));
  } else if (ok) {
    try {
      text.resize(static_cast<std::size_t>(length));
      ok = std::vsnprintf(text.data(), text.size() + 1, format, again) == length;
    } catch (...) {
      ok = false;
    }
  }
  va_end(again);
  return ok;
}

}  // namespace

void SetLogSink(std::shared_ptr<ILogSink> sink) {
  TheSink().Set(std::move(sink));
}

namespace details {

void IOrlFormatLog(int level, const char* module, const char* format, ...) {
  try {
    const std::shared_ptr<ILogSink> sink = TheSink().Get();
    if (!format || !sink->Wants(level)) return;
    std::string text;
    va_list arguments;
    va_start(arguments, format);
    const bool formatted = Format(text, format, arguments);
    va_end(arguments);
    if (formatted) sink->Write(level, module ? module : "", text);
  } catch (...) {
    // Logging must not be the reason why a caller fails.
  }
}

}  // namespace details
}  // namespace Vant::Base
