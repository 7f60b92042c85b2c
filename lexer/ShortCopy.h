// Copies of words.
#pragma once

#include <cstddef>
#include <cstring>

namespace qnpp {

/// Copies the first and the last Half of at least Half bytes; they may overlap.
template <std::size_t Half>
void copyEnds(char* to, const char* from, std::size_t size) {
  std::memcpy(to, from, Half);
  std::memcpy(to + size - Half, from + size - Half, Half);
}

/// Like memcpy, for texts of which most are words of a few letters or what a macro comes to: the call would cost more
/// than the copy. Few cases, so that the processor mostly knows which one comes next.
inline void copyShort(char* to, const char* from, std::size_t size) {
  if (size > 48) {
    std::memcpy(to, from, size);
  } else if (size > 16) {
    const std::size_t middle = size < 32 ? size - 16 : 16;  // What the ends leave out, if anything.
    copyEnds<16>(to, from, size);
    std::memcpy(to + middle, from + middle, 16);
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
