// Copies of words.
#pragma once

#include <cstddef>
#include <cstring>

namespace qnpp {

/// Copies Half to 2 * Half bytes by the first and the last Half of them, which may overlap.
template <std::size_t Half>
void copyEnds(char* to, const char* from, std::size_t size) {
  std::memcpy(to, from, Half);
  std::memcpy(to + size - Half, from + size - Half, Half);
}

/// Like memcpy, for texts of which most are words of a few letters: the call would cost more than the copy.
inline void copyShort(char* to, const char* from, std::size_t size) {
  if (size > 16) {
    std::memcpy(to, from, size);
  } else if (size >= 8) {
    copyEnds<8>(to, from, size);
  } else if (size >= 4) {
    copyEnds<4>(to, from, size);
  } else if (size > 0) {
    to[0] = from[0];
    to[size / 2] = from[size / 2];
    to[size - 1] = from[size - 1];
  }
}

}  // namespace qnpp
