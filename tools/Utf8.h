// Characters in bytes that may be anything.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qnpp {

/// Length of the UTF-8 character at the front; 0 if there is none.
inline std::size_t utf8Size(std::string_view text) {
  const auto byte = [text](std::size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U; };
  const auto follows = [byte](std::size_t at) { return (byte(at) & 0xC0U) == 0x80U; };
  if (byte(0) < 0x80U) {
    return 1;
  }
  if (byte(0) >= 0xC2U && byte(0) < 0xE0U) {
    return follows(1) ? 2 : 0;
  }
  if (byte(0) >= 0xE0U && byte(0) < 0xF0U) {
    const bool isWellFormed = (byte(0) != 0xE0U || byte(1) >= 0xA0U) && (byte(0) != 0xEDU || byte(1) < 0xA0U);
    return follows(1) && follows(2) && isWellFormed ? 3 : 0;
  }
  const bool isWellFormed =
      byte(0) < 0xF5U && (byte(0) != 0xF0U || byte(1) >= 0x90U) && (byte(0) != 0xF4U || byte(1) < 0x90U);
  return byte(0) >= 0xF0U && isWellFormed && follows(1) && follows(2) && follows(3) ? 4 : 0;
}

/// Control characters as C writes them, so that a name with line ends makes no lines of its own, and steers no
/// terminal.
inline std::string withEscapes(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::string_view kLetters = "abtnvfr";  // From 7 on.
  std::string shown;
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code >= 7 && code < 7 + kLetters.size()) {
      shown.append({'\\', kLetters[code - 7U]});
    } else if (code < 0x20U || code == 0x7fU) {
      shown.append({'\\', 'x', kDigits[code / 16U], kDigits[code % 16U]});
    } else {
      shown.push_back(character);
    }
  }
  return shown;
}

}  // namespace qnpp
