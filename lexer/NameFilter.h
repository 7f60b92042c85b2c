// A quick answer for most words: no macro.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace qnpp {

/// Tells of most words of a text that no definition has their name, without hashing all of their letters: of nearly all
/// by their first two bytes, of most others by four, the length and the last byte. Sometimes says "perhaps" without
/// need. Names that are no longer defined stay in.
class NameFilter {
 public:
  NameFilter() : beginnings_(kBeginningsOfNumbers.begin(), kBeginningsOfNumbers.end()), bits_(kFewest / 64) {}

  /// Adds a name, which is not empty. Returns false, with nothing added, where that takes a larger filter.
  bool add(std::string_view name) {
    if ((count_ + 1) * kBitsPerName > bits_.size() * 64) {
      return false;
    }
    ++count_;
    if (name.size() == 1) {
      allowBeginning(beginnings_, name[0]);
    } else {
      set(beginnings_, beginningOf(name.data()));
    }
    std::uint32_t first = 0;
    if (name.size() >= sizeof first) {
      std::memcpy(&first, name.data(), sizeof first);
    } else {
      std::memcpy(&first, name.data(), name.size());
    }
    set(bits_, keyOf(name, first) >> shift_);
    return true;
  }

  /// Makes a larger filter, to which all names have to be added anew.
  void beginLarger() {
    bits_.assign(bits_.size() * 4, 0);
    shift_ = 64 - std::countr_zero(bits_.size() * 64);
    count_ = 0;
  }

  /// False when there is no definition of a name that begins with the two bytes at `word`; of a word of one letter the
  /// second is the one behind it. Never false for a number.
  bool mayBegin(const char* word) const { return has(beginnings_, beginningOf(word)); }

  /// False when there is no definition of that name. Four bytes from `name.data()` on are read, whatever its size.
  bool mayHold(std::string_view name) const {
    std::uint32_t first = 0;
    std::memcpy(&first, name.data(), sizeof first);
    if (name.size() < sizeof first) {
      const std::size_t unused = 8 * (sizeof first - name.size());
      first = std::endian::native == std::endian::little ? first << unused >> unused : first >> unused << unused;
    }
    return has(bits_, keyOf(name, first) >> shift_);
  }

 private:
  static constexpr std::size_t kFewest = 4096;
  static constexpr std::size_t kBitsPerName = 16;

  // `first` holds the first four bytes, zeros for those that the name does not have.
  static std::uint64_t keyOf(std::string_view name, std::uint32_t first) {
    const auto rest = (static_cast<std::uint64_t>(name.size()) << 8) | static_cast<unsigned char>(name.back());
    return (first ^ (rest << 32)) * 0x9E3779B97F4A7C15U;
  }

  static std::uint64_t beginningOf(const char* word) {
    std::uint16_t first = 0;
    std::memcpy(&first, word, sizeof first);
    return first;
  }

  static bool has(const std::vector<std::uint64_t>& bits, std::uint64_t place) {
    return (bits[place / 64] >> (place % 64) & 1U) != 0;
  }
  template <typename Bits>
  static constexpr void set(Bits& bits, std::uint64_t place) {
    bits[place / 64] |= std::uint64_t{1} << (place % 64);
  }

  using Beginnings = std::array<std::uint64_t, 0x10000 / 64>;

  // Any word may be a name that begins with this byte.
  template <typename Bits>
  static constexpr void allowBeginning(Bits& beginnings, char byte) {
    for (std::size_t second = 0; second < 256; ++second) {
      set(beginnings, std::bit_cast<std::uint16_t>(std::array<char, 2>{byte, static_cast<char>(second)}));
    }
  }
  // Made by the compiler: a small run would spend a third of its time on it.
  static const Beginnings kBeginningsOfNumbers;

  std::vector<std::uint64_t> beginnings_;
  std::vector<std::uint64_t> bits_;
  int shift_ = 64 - std::countr_zero(kFewest);
  std::size_t count_ = 0;
};

inline constexpr NameFilter::Beginnings NameFilter::kBeginningsOfNumbers = [] {
  Beginnings beginnings{};
  for (char digit = '0'; digit <= '9'; ++digit) {
    allowBeginning(beginnings, digit);
  }
  return beginnings;
}();

}  // namespace qnpp
