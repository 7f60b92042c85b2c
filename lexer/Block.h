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
#include <emmintrin.h>
#elif defined(__aarch64__) && defined(__ARM_NEON)
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

#if defined(__SSE2__) || (defined(__aarch64__) && defined(__ARM_NEON))

/// The same in four vectors of the compiler's. Only the way from comparisons to bits differs from processor to
/// processor.
class VectorBlock {
 public:
  explicit VectorBlock(const char* at) { std::memcpy(parts_, at, sizeof parts_); }

  template <char... Wanted>
  std::uint64_t find() const {
    return mask([](Bytes bytes) { return ((bytes == all(Wanted)) | ...); });
  }
  std::uint64_t words() const {
    return mask([](Bytes bytes) {
      return isWithin(bytes | all(0x20), 'a', 26) | isWithin(bytes, '0', 10) | (bytes == all('_'));
    });
  }

 private:
  using Bytes = unsigned char __attribute__((vector_size(16)));
  using Found = signed char __attribute__((vector_size(16)));  // What comparisons give: all bits or none.

  static Bytes all(int byte) { return Bytes{} + static_cast<unsigned char>(byte); }
  // The bytes from `first` on, `count` of them: what lies below `first` becomes large.
  static Found isWithin(Bytes bytes, int first, int count) { return bytes - all(first) < all(count); }

  // Without a loop, which compilers would leave one.
  template <typename Compare>
  std::uint64_t mask(Compare compare) const {
#if defined(__SSE2__)
    const auto bits = [compare](Bytes part) {
      return std::uint64_t{static_cast<std::uint16_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(compare(part))))};
    };
    return bits(parts_[0]) | bits(parts_[1]) << 16 | bits(parts_[2]) << 32 | bits(parts_[3]) << 48;
#else
    // Each byte keeps the bit of its place, and neighbours are added up until 64 bytes have become 64 bits.
    const auto bits = [compare](Bytes part) {
      constexpr Bytes kPlaces = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
      return reinterpret_cast<uint8x16_t>(reinterpret_cast<Bytes>(compare(part)) & kPlaces);
    };
    const uint8x16_t half = vpaddq_u8(bits(parts_[0]), bits(parts_[1]));
    const uint8x16_t pairs = vpaddq_u8(half, vpaddq_u8(bits(parts_[2]), bits(parts_[3])));
    return vgetq_lane_u64(vreinterpretq_u64_u8(vpaddq_u8(pairs, pairs)), 0);
#endif
  }

  Bytes parts_[4];
};

#endif

#if defined(QNPP_WITHOUT_SHORTCUTS) || !(defined(__SSE2__) || (defined(__aarch64__) && defined(__ARM_NEON)))
using Block = ScalarBlock;
#else
using Block = VectorBlock;
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
