// SPDX-License-Identifier: Apache-2.0
// The library's lines in the log of the process: "[<function>]<text>[<source file>(<line>)]". The text is a printf
// format and a literal, so that the compiler holds the arguments against it.
#pragma once

#include "VantBase/Log.h"

#define QORVI_LOG(level, module, function, text, ...)                                 \
  Vant::Base::details::IOrlFormatLog(level, module, "[%s]" text "[%s(%d)]", function, \
                                     __VA_ARGS__ __VA_OPT__(, ) __FILE__, __LINE__)

#define QORVI_LOG_INFO(function, ...) QORVI_LOG(3, "ClientVFPluginInfo", function, __VA_ARGS__)
#define QORVI_LOG_ERROR(function, ...) QORVI_LOG(5, "ClientVFPluginError", function, __VA_ARGS__)
