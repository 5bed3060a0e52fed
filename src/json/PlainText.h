// SPDX-License-Identifier: Apache-2.0
// What stands for itself within a JSON text. Stateless: any thread.
#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <bit>

namespace json {

inline bool IsPlain(char c) {
  return static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\';
}

// The first character from `at` on that does not stand for itself: a quote, a backslash or a control character; or
// `end`.
inline const char* EndOfPlain(const char* at, const char* end) {
#ifdef __SSE2__
  const __m128i quote = _mm_set1_epi8('"'), backslash = _mm_set1_epi8('\\'), control = _mm_set1_epi8(0x1F);
  for (; end - at >= 16; at += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i found = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash)),
                                       _mm_cmpeq_epi8(_mm_min_epu8(bytes, control), bytes));
    if (const int mask = _mm_movemask_epi8(found)) return at + std::countr_zero(static_cast<unsigned int>(mask));
  }
#endif
  while (at != end && IsPlain(*at)) ++at;
  return at;
}

}  // namespace json
