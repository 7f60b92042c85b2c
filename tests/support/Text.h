// Texts of tests.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qnpp {

/// `text` as many times as told, one after the other.
inline std::string repeat(std::size_t times, std::string_view text) {
  const std::size_t size = times * text.size();
  std::string result(text.substr(0, size));
  result.reserve(size);
  while (result.size() < size) {
    result.append(result, 0, size - result.size());  // Twice as much each time: a text may have tens of megabytes.
  }
  return result;
}

/// For the messages of failed tests: the beginning of a text that may be very long, and its length.
inline std::string shortened(const std::string& text) {
  constexpr std::size_t kMost = 400;
  return text.substr(0, kMost) + (text.size() > kMost ? "..." : "") + " (" + std::to_string(text.size()) + " bytes)";
}

}  // namespace qnpp
