// What the parts of CppLexer look for in the scanner's buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "lexer/Block.h"
#include "lexer/ByteSet.h"
#include "lexer/CppTokenKind.h"

namespace qnpp {

/// The first byte behind the blanks of a line that may be a directive line, or whose blanks are not over.
inline constexpr ByteSet kUnsureLineStart = bytesOf(std::string_view("#/\\\r\0", 5));

/// The bits from that of `place` on.
constexpr std::uint64_t bitsFrom(std::size_t place) { return ~std::uint64_t{0} << place; }

[[gnu::noinline]] inline char* passManyBlanks(char* at) {
  return passMany(at, [](const Block& block) { return block.find<' ', '\t', '\v', '\f'>(); });
}

/// Behind the blanks at `at`, of which there are mostly none or a few.
inline char* passAllBlanks(char* at) {
  for (const char* const few = at + 16; has(kBlankBytes, *at); ++at) {
    if (at == few) {
      return passManyBlanks(at);
    }
  }
  return at;
}

/// Whether this word, and nothing longer, is at `at`.
template <std::size_t Size>
bool isWordAt(const char* at, const char (&word)[Size]) {
  return std::memcmp(at, word, Size - 1) == 0 && !isWordByte(at[Size - 1]);
}

/// Moves `at` behind the word of a directive and returns its kind; TK_END, with `at` left, where no other is there.
inline CppTokenKind passWordOfDirective(char*& at) {
  const auto pass = [&at](const auto& word, CppTokenKind kind) {
    if (!isWordAt(at, word)) {
      return CppTokenKind{TK_END};
    }
    at += sizeof word - 1;
    return kind;
  };
  switch (*at) {
    case 'd':
      return pass("define", TK_DEFINE);
    case 'e':
      switch (at[2]) {
        case 'd':
          return pass("endif", TK_ENDIF);
        case 's':
          return pass("else", TK_ELSE);
        case 'i':
          return pass("elif", TK_ELIF);
        default:
          return pass("error", TK_ERROR);
      }
    case 'i':
      switch (at[2]) {
        case 'd':
          return pass("ifdef", TK_IFDEF);
        case 'n':
          return pass("ifndef", TK_IFNDEF);
        case 'c':
          return pass("include", TK_INCLUDE);
        default:
          return pass("if", TK_IF);
      }
    case 'l':
      return pass("line", TK_LINE);
    case 'p':
      return pass("pragma", TK_PRAGMA);
    case 'u':
      return pass("undef", TK_UNDEF);
    default:
      return TK_END;
  }
}

}  // namespace qnpp
