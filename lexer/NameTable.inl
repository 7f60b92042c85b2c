// Inlined parts of NameTable, for the scanner asks about every word of the text; and of Spelling what looks into a Name.
#pragma once

#include <cstring>

namespace qnpp {

inline std::uint32_t NameTable::hashOf(std::string_view text) {
  constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15U;
  const char* at = text.data();
  std::size_t left = text.size();
  std::uint64_t hash = left * kMultiplier;
  const auto mix = [&hash](std::uint64_t word) {
    hash = (hash ^ word) * kMultiplier;
    hash ^= hash >> 32;
  };
  for (; left > 8; left -= 8, at += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, 8);
    mix(word);
  }
  // The last one to eight bytes: two loads that overlap, so that nothing behind the text is read.
  std::uint64_t word = 0;
  if (left >= 4) {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    std::memcpy(&low, at, 4);
    std::memcpy(&high, at + left - 4, 4);
    word = (std::uint64_t{high} << 32) | low;
  } else if (left > 0) {
    word = static_cast<unsigned char>(at[0]) | (std::uint64_t{static_cast<unsigned char>(at[left / 2])} << 8) |
           (std::uint64_t{static_cast<unsigned char>(at[left - 1])} << 16);
  }
  mix(word);
  return static_cast<std::uint32_t>(hash);
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

inline bool Spelling::isPlainText() const {
  return isSingleToken() && kind != TK_NEWLINE && kind != TK_PRAGMA_OP && (name == nullptr || name->macro == nullptr);
}

}  // namespace qnpp
