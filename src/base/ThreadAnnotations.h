// SPDX-License-Identifier: Apache-2.0
// Names for clang's thread-safety analysis; empty for other compilers.
#pragma once

#if defined(__clang__)
#define QORVI_TSA(x) __attribute__((x))
#else
#define QORVI_TSA(x)
#endif

#define CAPABILITY(name) QORVI_TSA(capability(name))
#define SCOPED_CAPABILITY QORVI_TSA(scoped_lockable)
#define GUARDED_BY(mutex) QORVI_TSA(guarded_by(mutex))
#define ACQUIRE(...) QORVI_TSA(acquire_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) QORVI_TSA(try_acquire_capability(__VA_ARGS__))
#define ACQUIRE_SHARED(...) QORVI_TSA(acquire_shared_capability(__VA_ARGS__))
#define RELEASE(...) QORVI_TSA(release_capability(__VA_ARGS__))
#define RELEASE_GENERIC(...) QORVI_TSA(release_generic_capability(__VA_ARGS__))
#define REQUIRES(...) QORVI_TSA(requires_capability(__VA_ARGS__))
#define REQUIRES_SHARED(...) QORVI_TSA(requires_shared_capability(__VA_ARGS__))
#define EXCLUDES(...) QORVI_TSA(locks_excluded(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS QORVI_TSA(no_thread_safety_analysis)
