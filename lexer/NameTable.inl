// Inlined parts of NameTable, for the scanner asks about every word of the text; and of Spelling what looks into a
// Name.
#pragma once

#include <cstring>

namespace qnpp {

/// The two halves of the product of 128 bits, one laid over the other: every bit of either factor counts in all places.
inline std::uint64_t foldedProduct(std::uint64_t a, std::uint64_t b) {
#if defined(__SIZEOF_INT128__)
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
#else
  constexpr std::uint64_t kLowHalf = 0xFFFFFFFFU;
  const std::uint64_t low = (a & kLowHalf) * (b & kLowHalf);
  const std::uint64_t cross = (a >> 32) * (b & kLowHalf) + (low >> 32);  // Neither of these two can overflow.
  const std::uint64_t middle = (a & kLowHalf) * (b >> 32) + (cross & kLowHalf);
  const std::uint64_t high = (a >> 32) * (b >> 32) + (cross >> 32) + (middle >> 32);
  return ((middle << 32) | (low & kLowHalf)) ^ high;
#endif
}

// Sixteen bytes at a time, the two halves are multiplied, each behind a secret: who does not know it can neither make a
// factor zero nor tell which texts have a product in common. The last multiplication spreads what texts that differ
// little have in common still.
inline std::uint32_t NameTable::hashOf(std::string_view text) const {
  const auto wordAt = [](const char* at, auto word) {
    std::memcpy(&word, at, sizeof word);
    return std::uint64_t{word};
  };
  const auto byteAt = [text](std::size_t at) { return std::uint64_t{static_cast<unsigned char>(text[at])}; };
  const std::size_t size = text.size();
  std::uint64_t state = secret_.first;
  // The last one to sixteen bytes: loads that overlap, so that nothing outside of the text is read.
  std::uint64_t low = 0;
  std::uint64_t high = 0;
  if (size > 16) {
    const char* at = text.data();
    const char* const last = at + size - 16;
    for (; at < last; at += 16) {
      state = foldedProduct(wordAt(at, std::uint64_t{}) ^ secret_.second, wordAt(at + 8, std::uint64_t{}) ^ state);
    }
    low = wordAt(last, std::uint64_t{});
    high = wordAt(last + 8, std::uint64_t{});
  } else if (size >= 8) {
    low = wordAt(text.data(), std::uint64_t{});
    high = wordAt(text.data() + size - 8, std::uint64_t{});
  } else if (size >= 4) {
    low = wordAt(text.data(), std::uint32_t{});
    high = wordAt(text.data() + size - 4, std::uint32_t{});
  } else if (size > 0) {
    low = byteAt(0) | (byteAt(size / 2) << 8) | (byteAt(size - 1) << 16);
  }
  const std::uint64_t product = foldedProduct(low ^ secret_.second, high ^ state);
  return static_cast<std::uint32_t>(foldedProduct(product ^ size, secret_.second));
}

inline bool NameTable::isEqual(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) {
    return false;
  }
  const auto differ = [&a, &b](auto word, std::size_t at) {
    auto other = word;
    std::memcpy(&word, a.data() + at, sizeof word);
    std::memcpy(&other, b.data() + at, sizeof word);
    return word != other;
  };
  // The last words overlap the ones before, as in hashOf.
  const std::size_t size = a.size();
  if (size > 16) {
    return a == b;
  }
  if (size >= 8) {
    return !differ(std::uint64_t{}, 0) && !differ(std::uint64_t{}, size - 8);
  }
  if (size >= 4) {
    return !differ(std::uint32_t{}, 0) && !differ(std::uint32_t{}, size - 4);
  }
  return size == 0 || (a[0] == b[0] && a[size / 2] == b[size / 2] && a[size - 1] == b[size - 1]);
}

inline bool Spelling::isWrittenAsIs() const {
  // `_Pragma` is in every table of names, so only what has a name can be it.
  return name == nullptr ? isSingleToken() && kind != TK_NEWLINE : name->macro == nullptr && kind != TK_PRAGMA_OP;
}

}  // namespace qnpp
