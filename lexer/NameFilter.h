// A quick answer for most words: no macro.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace qnpp {

/// Tells of most words of a text that no definition has their name, without hashing all of their letters: by their first
/// four bytes, their length and their last byte. Sometimes says "perhaps" without need. Names that are no longer defined
/// stay in.
class NameFilter {
 public:
  NameFilter() : bits_(kFewest / 64) {}

  /// `name` is not empty.
  void add(std::string_view name) {
    std::uint32_t first = 0;
    std::memcpy(&first, name.data(), std::min(name.size(), sizeof first));
    names_.push_back(keyOf(name, first));
    if (names_.size() * kBitsPerName > bits_.size() * 64) {
      bits_.assign(std::bit_ceil(names_.size() * kBitsPerName * 2) / 64, 0);
      shift_ = 64 - std::countr_zero(bits_.size() * 64);
      for (const std::uint64_t key : names_) {
        set(key);
      }
    } else {
      set(names_.back());
    }
  }

  /// False when there is no definition of that name. Four bytes from `name.data()` on are read, whatever its size.
  bool mayHold(std::string_view name) const {
    std::uint32_t first = 0;
    std::memcpy(&first, name.data(), sizeof first);
    if (name.size() < sizeof first) {
      const std::size_t unused = 8 * (sizeof first - name.size());
      first = std::endian::native == std::endian::little ? first << unused >> unused : first >> unused << unused;
    }
    const std::uint64_t place = keyOf(name, first) >> shift_;
    return (bits_[place / 64] >> (place % 64) & 1U) != 0;
  }

 private:
  static constexpr std::size_t kFewest = 4096;
  static constexpr std::size_t kBitsPerName = 16;

  // `first` holds the first four bytes, zeros for those that the name does not have.
  static std::uint64_t keyOf(std::string_view name, std::uint32_t first) {
    const auto rest = (static_cast<std::uint64_t>(name.size()) << 8) | static_cast<unsigned char>(name.back());
    return (first ^ (rest << 32)) * 0x9E3779B97F4A7C15U;
  }

  void set(std::uint64_t key) {
    const std::uint64_t place = key >> shift_;
    bits_[place / 64] |= std::uint64_t{1} << (place % 64);
  }

  std::vector<std::uint64_t> bits_;
  int shift_ = 64 - std::countr_zero(kFewest);
  std::vector<std::uint64_t> names_;  // Their keys.
};

}  // namespace qnpp
