// Classes of bytes: one look into a table tells whether a byte is in one.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace qnpp {

using ByteSet = std::array<bool, 256>;

constexpr bool isOneOf(char byte, char a, char b) { return byte == a || byte == b; }

constexpr bool has(const ByteSet& set, char byte) { return set[static_cast<unsigned char>(byte)]; }

consteval ByteSet bytesOf(std::string_view bytes) {
  ByteSet set{};
  for (const char byte : bytes) {
    set[static_cast<unsigned char>(byte)] = true;
  }
  return set;
}

consteval ByteSet allBytesBut(std::string_view bytes) {
  ByteSet set = bytesOf(bytes);
  for (bool& member : set) {
    member = !member;
  }
  return set;
}

inline constexpr ByteSet kDigitBytes = bytesOf("0123456789");
inline constexpr ByteSet kOctalDigits = bytesOf("01234567");
inline constexpr ByteSet kHexDigits = bytesOf("0123456789ABCDEFabcdef");

/// Behind a backslash in a literal. In that of a character an "x" may stand there too, and a hexadecimal digit behind
/// it.
inline constexpr ByteSet kStringEscapes = bytesOf("\"\\");
inline constexpr ByteSet kCharacterEscapes = bytesOf("\"'?\\abfnrtv01234567");

inline constexpr ByteSet kBlankBytes = bytesOf(" \t\v\f");
/// What ends a line, or may end it where it is the NUL behind a text.
inline constexpr ByteSet kLineEndsAndNul = bytesOf(std::string_view("\r\n\0", 3));
inline constexpr ByteSet kQuotesAndBackslash = bytesOf("\"'\\");

/// What names and numbers consist of.
inline constexpr ByteSet kWordBytes = bytesOf("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_0123456789");

constexpr bool isWordByte(char byte) { return has(kWordBytes, byte); }

/// Behind the bytes of the set at `at`; what ends them has to follow.
template <typename Byte>
Byte* passAll(const ByteSet& set, Byte* at) {
  while (has(set, *at)) {
    ++at;
  }
  return at;
}

/// True for a text that is one word and nothing else.
inline bool isWordText(std::string_view text) {
  return !text.empty() && !has(kDigitBytes, text[0]) && std::all_of(text.begin(), text.end(), isWordByte);
}

}  // namespace qnpp
