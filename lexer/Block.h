// Looking at 64 bytes at a time.
//
// Most bytes of a text need no thought: blanks, operators, letters of words that are no macros, the inside of comments
// and literals, everything in a skipped group. All readers that pass over text therefore work alike: they take 64
// bytes, turn what interests them into a mask with a bit for each byte, the first byte in the lowest bit, and go from
// one set bit to the next.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(QNPP_SCALAR_BLOCKS)
// The portable form, which the tests hold the others against.
#elif defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__) && defined(__ARM_NEON)
#include <arm_neon.h>
#endif

#include "lexer/ByteSet.h"

namespace qnpp {

/// How many bytes behind the end of a text may be read: whoever owns the text has to provide them. Their values do not
/// matter.
inline constexpr std::size_t kScanSlack = 64;

// Each form gives three operations on a vector of bytes: which are equal to a byte, which belong to words, and the mask
// of four vectors.
#if defined(QNPP_SCALAR_BLOCKS) || !(defined(__SSE2__) || (defined(__aarch64__) && defined(__ARM_NEON)))

/// 64 bytes of a text.
class Block {
 public:
  explicit Block(const char* at) { std::memcpy(bytes_, at, sizeof bytes_); }

  /// The bytes that are one of `Wanted`.
  template <char... Wanted>
  std::uint64_t find() const {
    return mask([](char byte) { return ((byte == Wanted) || ...); });
  }
  /// The bytes that names and numbers consist of.
  std::uint64_t words() const { return mask(isWordByte); }

 private:
  template <typename Predicate>
  std::uint64_t mask(Predicate holds) const {
    std::uint64_t bits = 0;
    for (std::size_t index = 0; index < sizeof bytes_; ++index) {
      bits |= std::uint64_t{holds(bytes_[index])} << index;
    }
    return bits;
  }

  char bytes_[64];
};

#elif defined(__SSE2__)

class Block {
 public:
  explicit Block(const char* at) {
    for (std::size_t part = 0; part < 4; ++part) {
      parts_[part] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + 16 * part));
    }
  }

  template <char... Wanted>
  std::uint64_t find() const {
    return mask([](__m128i bytes) {
      __m128i found = _mm_setzero_si128();
      ((found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(Wanted)))), ...);
      return found;
    });
  }
  std::uint64_t words() const {
    return mask([](__m128i bytes) {
      const __m128i letters = isWithin(_mm_or_si128(bytes, _mm_set1_epi8(0x20)), 'a', 26);
      const __m128i underscores = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('_'));
      return _mm_or_si128(_mm_or_si128(letters, underscores), isWithin(bytes, '0', 10));
    });
  }

 private:
  // The bytes from `first` on, `count` of them. Comparisons are of signed bytes, so the range is moved to the lowest
  // ones.
  static __m128i isWithin(__m128i bytes, char first, char count) {
    const __m128i moved = _mm_add_epi8(bytes, _mm_set1_epi8(static_cast<char>(-128 - first)));
    return _mm_cmplt_epi8(moved, _mm_set1_epi8(static_cast<char>(-128 + count)));
  }
  template <typename Compare>
  std::uint64_t mask(Compare compare) const {
    std::uint64_t bits = 0;
    for (std::size_t part = 0; part < 4; ++part) {
      bits |= std::uint64_t{static_cast<std::uint32_t>(_mm_movemask_epi8(compare(parts_[part])))} << (16 * part);
    }
    return bits;
  }

  __m128i parts_[4];
};

#else

class Block {
 public:
  explicit Block(const char* at) {
    for (std::size_t part = 0; part < 4; ++part) {
      parts_[part] = vld1q_u8(reinterpret_cast<const std::uint8_t*>(at) + 16 * part);
    }
  }

  template <char... Wanted>
  std::uint64_t find() const {
    return mask([](uint8x16_t bytes) {
      uint8x16_t found = vdupq_n_u8(0);
      ((found = vorrq_u8(found, vceqq_u8(bytes, vdupq_n_u8(static_cast<std::uint8_t>(Wanted))))), ...);
      return found;
    });
  }
  std::uint64_t words() const {
    return mask([](uint8x16_t bytes) {
      const uint8x16_t letters = vcltq_u8(vsubq_u8(vorrq_u8(bytes, vdupq_n_u8(0x20)), vdupq_n_u8('a')), vdupq_n_u8(26));
      const uint8x16_t digits = vcltq_u8(vsubq_u8(bytes, vdupq_n_u8('0')), vdupq_n_u8(10));
      return vorrq_u8(vorrq_u8(letters, digits), vceqq_u8(bytes, vdupq_n_u8('_')));
    });
  }

 private:
  // Each byte keeps the bit of its place, and neighbours are added up until 64 bytes have become 64 bits.
  template <typename Compare>
  std::uint64_t mask(Compare compare) const {
    const uint8x16_t places = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    uint8x16_t bits[4];
    for (std::size_t part = 0; part < 4; ++part) {
      bits[part] = vandq_u8(compare(parts_[part]), places);
    }
    const uint8x16_t pairs = vpaddq_u8(vpaddq_u8(bits[0], bits[1]), vpaddq_u8(bits[2], bits[3]));
    return vgetq_lane_u64(vreinterpretq_u64_u8(vpaddq_u8(pairs, pairs)), 0);
  }

  uint8x16_t parts_[4];
};

#endif

/// The first byte from `at` on that is one of `Stops`. One of them must come: a text ends in a NUL, which is to be one.
template <char... Stops>
char* findAny(char* at) {
  for (;; at += 64) {
    const std::uint64_t found = Block(at).find<Stops...>();
    if (found != 0) {
      return at + std::countr_zero(found);
    }
  }
}

/// The first byte from `at` on that no word consists of.
inline char* passWord(char* at) {
  for (;; at += 64) {
    const std::uint64_t others = ~Block(at).words();
    if (others != 0) {
      return at + std::countr_zero(others);
    }
  }
}

}  // namespace qnpp
