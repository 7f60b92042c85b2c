// Names that somebody chose in order to make hide sets deep.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace qnpp {

/// How many names every name table holds from the start, and how many more every run defines before its source is read.
constexpr std::size_t kKeywords = 15;
constexpr std::size_t kPredefinedMacros = 4;

/// Out of `count` names, those whose ids, scrambled by a function that everybody may know, fall: were these their
/// priorities in a search tree, each would lie below the one before. There are about twice the square root of `count`.
inline std::vector<std::size_t> fallingSeries(std::size_t count, std::size_t firstId) {
  const auto scrambled = [firstId](std::size_t index) {
    std::uint32_t bits = static_cast<std::uint32_t>(firstId + index) + 0x9E3779B9U;
    bits = (bits ^ (bits >> 16)) * 0x85EBCA6BU;
    bits = (bits ^ (bits >> 13)) * 0xC2B2AE35U;
    return bits ^ (bits >> 16);
  };
  // For each length, the last index of the series of this length, found so far, that leaves most room below it.
  std::vector<std::size_t> lasts;
  std::vector<std::size_t> before(count, count);
  for (std::size_t index = 0; index < count; ++index) {
    const auto place = std::lower_bound(lasts.begin(), lasts.end(), scrambled(index),
                                        [&](std::size_t last, std::uint32_t bits) { return scrambled(last) > bits; });
    if (place != lasts.begin()) {
      before[index] = *std::prev(place);
    }
    if (place == lasts.end()) {
      lasts.push_back(index);
    } else {
      *place = index;
    }
  }
  std::vector<std::size_t> series;
  for (std::size_t index = lasts.back(); index != count; index = before[index]) {
    series.push_back(index);
  }
  std::reverse(series.begin(), series.end());
  return series;
}

}  // namespace qnpp
