// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "VantBase/Export.h"

namespace Vant::Base {

// Receives the log lines of the process. Both functions are called from any thread, several at once.
class VANTBASE_API ILogSink {
 public:
  virtual ~ILogSink();
  // Whether lines of this level are wanted at all; others are never formatted.
  virtual bool Wants(int level) const = 0;
  virtual void Write(int level, const char* module, const std::string& text) = 0;
};

// Host set-up: replaces the sink; null restores the default one, which writes errors (level 5 and up) to stderr
// through spdlog. The old sink may still be in use by running log calls until they return.
VANTBASE_API void SetLogSink(std::shared_ptr<ILogSink> sink);

namespace details {

// Formats like printf and hands (level, module, text) to the sink, if the sink wants that level. Levels: 3 information,
// 4 warning, 5 error. Never throws: a line that cannot be formatted or written is dropped.
VANTBASE_API void IOrlFormatLog(int level, const char* module, const char* format, ...) QORVI_PRINTF(3, 4);

}  // namespace details
}  // namespace Vant::Base
