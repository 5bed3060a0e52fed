// SPDX-License-Identifier: Apache-2.0
// The one place that knows how a compiler exports and imports symbols.
#pragma once

#if defined(_WIN32)
#define QORVI_EXPORT __declspec(dllexport)
#define QORVI_IMPORT __declspec(dllimport)
#define QORVI_PRINTF(formatIndex, firstArgument)
#else
#define QORVI_EXPORT __attribute__((visibility("default")))
#define QORVI_IMPORT __attribute__((visibility("default")))
#define QORVI_PRINTF(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#endif
