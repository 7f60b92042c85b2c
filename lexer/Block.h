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

#if defined(__SSE2__)
#define QNPP_HAS_VECTORS
#include <emmintrin.h>
#elif defined(__aarch64__) && defined(__ARM_NEON)
#define QNPP_HAS_VECTORS
#include <arm_neon.h>
#endif

#include "lexer/ByteSet.h"

namespace qnpp {

/// How many bytes behind the end of a text may be read: whoever owns the text has to provide them. Their values do not
/// matter.
inline constexpr std::size_t kScanSlack = 64;

/// 64 bytes of a text, in the portable form: the tests hold the other one against it.
class ScalarBlock {
 public:
  explicit ScalarBlock(const char* at) { std::memcpy(bytes_, at, sizeof bytes_); }

  /// Which of the bytes are some that were asked for. Whether there are any and how many costs less than the mask.
  class Matches {
   public:
    explicit Matches(std::uint64_t bits) : bits_(bits) {}
    bool any() const { return bits_ != 0; }
    std::size_t count() const { return static_cast<std::size_t>(std::popcount(bits_)); }
    std::uint64_t bits() const { return bits_; }

   private:
    std::uint64_t bits_;
  };

  /// The bytes that are one of `Wanted`.
  template <char... Wanted>
  Matches match() const {
    return matches([](char byte) { return ((byte == Wanted) || ...); });
  }
  template <char... Wanted>
  std::uint64_t find() const {
    return match<Wanted...>().bits();
  }
  /// The bytes that names and numbers consist of.
  std::uint64_t words() const { return matches(isWordByte).bits(); }
  std::uint64_t digits() const {
    return matches([](char byte) { return byte >= '0' && byte <= '9'; }).bits();
  }

 private:
  template <typename Predicate>
  Matches matches(Predicate holds) const {
    std::uint64_t bits = 0;
    for (std::size_t index = 0; index < sizeof bytes_; ++index) {
      bits |= std::uint64_t{holds(bytes_[index])} << index;
    }
    return Matches(bits);
  }

  char bytes_[64];
};

#if defined(QNPP_HAS_VECTORS)

/// The same in four vectors of the compiler's. Only the way from comparisons to bits and sums differs from processor to
/// processor. Four members and no array, no loop: compilers would leave an array in memory, and the loop a loop.
class VectorBlock {
  using Bytes = unsigned char __attribute__((vector_size(16)));
  using Found = signed char __attribute__((vector_size(16)));  // What comparisons give: all bits or none.

 public:
  explicit VectorBlock(const char* at) : a_(part(at)), b_(part(at + 16)), c_(part(at + 32)), d_(part(at + 48)) {}

  class Matches {
   public:
    Matches(Found a, Found b, Found c, Found d) : a_(a), b_(b), c_(c), d_(d) {}

#if defined(__SSE2__)
    bool any() const { return bitsOf(a_ | b_ | c_ | d_) != 0; }
    std::size_t count() const {
      const __m128i sums = _mm_sad_epu8(reinterpret_cast<__m128i>(-(a_ + b_ + c_ + d_)), _mm_setzero_si128());
      return static_cast<std::size_t>(_mm_cvtsi128_si32(sums) + _mm_extract_epi16(sums, 4));
    }
    [[gnu::always_inline]] std::uint64_t bits() const {
      return bitsOf(a_) | bitsOf(b_) << 16 | bitsOf(c_) << 32 | bitsOf(d_) << 48;
    }

   private:
    static std::uint64_t bitsOf(Found part) {
      return static_cast<std::uint16_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(part)));
    }
#else
    bool any() const { return vmaxvq_u8(reinterpret_cast<uint8x16_t>(a_ | b_ | c_ | d_)) != 0; }
    std::size_t count() const { return vaddvq_u8(reinterpret_cast<uint8x16_t>(-(a_ + b_ + c_ + d_))); }
    std::uint64_t bits() const {
      const uint8x16_t half = vpaddq_u8(placesOf(a_), placesOf(b_));
      const uint8x16_t pairs = vpaddq_u8(half, vpaddq_u8(placesOf(c_), placesOf(d_)));
      return vgetq_lane_u64(vreinterpretq_u64_u8(vpaddq_u8(pairs, pairs)), 0);
    }

   private:
    // Each byte keeps the bit of its place: neighbours are added up until 64 bytes have become 64 bits.
    static uint8x16_t placesOf(Found part) {
      constexpr Found kPlaces = {1, 2, 4, 8, 16, 32, 64, -128, 1, 2, 4, 8, 16, 32, 64, -128};
      return reinterpret_cast<uint8x16_t>(part & kPlaces);
    }
#endif

    Found a_, b_, c_, d_;
  };

  template <char... Wanted>
  Matches match() const {
    return matches([](Bytes bytes) { return ((bytes == all(Wanted)) | ...); });
  }
  template <char... Wanted>
  std::uint64_t find() const {
    return match<Wanted...>().bits();
  }
  std::uint64_t words() const {
    return matches([](Bytes bytes) {
             return isWithin(bytes | all(0x20), 'a', 26) | isWithin(bytes, '0', 10) | (bytes == all('_'));
           })
        .bits();
  }
  std::uint64_t digits() const {
    return matches([](Bytes bytes) { return isWithin(bytes, '0', 10); }).bits();
  }

 private:
  static Bytes part(const char* at) {
    Bytes bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    return bytes;
  }
  static Bytes all(int byte) { return Bytes{} + static_cast<unsigned char>(byte); }
  // The bytes from `first` on, `count` of them: what lies below `first` becomes large.
  static Found isWithin(Bytes bytes, int first, int count) { return bytes - all(first) < all(count); }

  template <typename Compare>
  Matches matches(Compare compare) const {
    return {compare(a_), compare(b_), compare(c_), compare(d_)};
  }

  Bytes a_, b_, c_, d_;
};

#endif

#if defined(QNPP_HAS_VECTORS) && !defined(QNPP_WITHOUT_SHORTCUTS)
using Block = VectorBlock;
#else
using Block = ScalarBlock;
#endif

/// The first byte from `at` on that is one of `Stops`. One of them must come: a text ends in a NUL, which is to be one.
template <char... Stops, typename Byte>
Byte* findAny(Byte* at) {
  for (;; at += 64) {
    const std::uint64_t found = Block(at).find<Stops...>();
    if (found != 0) {
      return at + std::countr_zero(found);
    }
  }
}

/// Behind the bytes at `at` that `find` finds in a block: for the few places where there may be very many.
template <typename Byte, typename Find>
Byte* passMany(Byte* at, Find find) {
  for (;; at += 64) {
    if (const std::uint64_t others = ~find(Block(at)); others != 0) {
      return at + std::countr_zero(others);
    }
  }
}

}  // namespace qnpp
