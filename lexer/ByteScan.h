// Searching for the next byte that matters.
#pragma once

#include <cstddef>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qnpp {

/// How many bytes behind the end of a text `findAny` may read: whoever owns the text has to provide them. Their values
/// do not matter.
inline constexpr std::size_t kScanSlack = 16;

/// The first byte from `at` on that is one of `Stops`. One of them must come: a text ends in a NUL, which is to be one.
template <char... Stops>
char* findAny(char* at) {
#if defined(__SSE2__)
  // Sixteen bytes at a time: comments, skipped lines and literals are mostly bytes that do not matter.
  for (;; at += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    __m128i found = _mm_setzero_si128();
    ((found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(Stops)))), ...);
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(found));
    if (mask != 0) {
      return at + __builtin_ctz(mask);
    }
  }
#else
  while (((*at != Stops) && ...)) {
    ++at;
  }
  return at;
#endif
}

}  // namespace qnpp
