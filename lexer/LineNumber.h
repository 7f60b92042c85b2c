// Counting lines.
#pragma once

#include <cstdint>

namespace qnpp {

/// Line numbers have 32 bits and wrap, as `#line 2147483647` shows: the line behind it is number -2147483648. Signed
/// numbers may not overflow in C++, so lines are counted with these.
constexpr std::int32_t addLines(std::int32_t line, std::int32_t count) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(line) + static_cast<std::uint32_t>(count));
}
constexpr std::int32_t subtractLines(std::int32_t line, std::int32_t count) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(line) - static_cast<std::uint32_t>(count));
}

}  // namespace qnpp
