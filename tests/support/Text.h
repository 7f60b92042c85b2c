// Texts of tests.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qnpp {

/// `text` as many times as told, one after the other.
inline std::string repeat(std::size_t times, std::string_view text) {
  std::string result;
  result.reserve(times * text.size());
  for (std::size_t count = 0; count < times; ++count) {
    result += text;
  }
  return result;
}

/// For the messages of failed tests: the beginning of a text that may be very long, and its length.
inline std::string shortened(const std::string& text) {
  constexpr std::size_t kMost = 400;
  return text.substr(0, kMost) + (text.size() > kMost ? "..." : "") + " (" + std::to_string(text.size()) + " bytes)";
}

}  // namespace qnpp
