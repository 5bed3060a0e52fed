// SPDX-License-Identifier: Apache-2.0
// The one place that knows how a compiler exports and imports symbols.
#pragma once

#if defined(_WIN32)
#define QORVI_EXPORT __declspec(dllexport)
#define QORVI_IMPORT __declspec(dllimport)
#else
#define QORVI_EXPORT __attribute__((visibility("default")))
#define QORVI_IMPORT __attribute__((visibility("default")))
#endif

// An instantiation of a template that a library owns is exported where it is declared; for Microsoft's compiler, which
// would make it anew in each file, where it is defined.
#if defined(_MSC_VER)
#define QORVI_EXPORT_DECLARED
#define QORVI_EXPORT_DEFINED __declspec(dllexport)
#else
#define QORVI_EXPORT_DECLARED QORVI_EXPORT
#define QORVI_EXPORT_DEFINED
#endif

#if defined(__MINGW32__) && !defined(__clang__)  // which has one kind of formats
#define QORVI_PRINTF(formatIndex, firstArgument) __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#elif defined(__GNUC__)
#define QORVI_PRINTF(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define QORVI_PRINTF(formatIndex, firstArgument)
#endif
