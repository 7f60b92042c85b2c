// Tokens found without the scanner.
#pragma once

#include <string_view>

#include "lexer/ByteSet.h"
#include "lexer/CppTokenKind.h"

namespace qnpp {

/// The operator of two bytes, or TK_END.
inline CppTokenKind operatorOfTwo(char first, char second) {
  switch (first) {
    case '|':
      return second == '|' ? TK_OROR : TK_END;
    case '&':
      return second == '&' ? TK_ANDAND : TK_END;
    case '=':
      return second == '=' ? TK_EQ : TK_END;
    case '!':
      return second == '=' ? TK_NE : TK_END;
    case '<':
      return second == '=' ? TK_LE : second == '<' ? TK_SHL : TK_END;
    default:
      return second == '=' ? TK_GE : second == '>' ? TK_SHR : TK_END;
  }
}

/// `number` is all of one token.
inline CppTokenKind kindOfNumber(std::string_view number) {
  const auto isSuffix = [number](std::size_t fromEnd) {
    return number.size() > fromEnd && (number[number.size() - fromEnd] | 0x20) == 'u';
  };
  const bool isUnsigned = isSuffix(1) || isSuffix(2);
  if (number[0] != '0') {
    return isUnsigned ? TK_DEC_UINT : TK_DEC_INT;
  }
  if (number.size() > 1 && (number[1] | 0x20) == 'x') {
    return isUnsigned ? TK_HEX_UINT : TK_HEX_INT;
  }
  return isUnsigned ? TK_OCT_UINT : TK_OCT_INT;
}

inline bool isCommentAt(const char* at) { return *at == '/' && (at[1] == '*' || at[1] == '/'); }
/// From `at` in a comment: the "*/" that ends it, or the first of kLineEndsAndNul before that.
const char* findEndOfComment(const char* at, bool isBlock);
/// Whether lexing `text` could meet a comment. One in a literal counts here, which only costs time.
bool mayHoldComment(std::string_view text);

/// From `at` in a literal that begins with `quote`: the first byte that ends it or is more than itself.
inline const char* findEndOfLiteral(char quote, const char* at) {
  while (*at != quote && *at != '\\' && *at != '\n' && *at != '\0') {
    ++at;
  }
  return at;
}
/// True for a text that is one string literal, as stringizing makes it of most arguments.
bool isStringLiteral(std::string_view text);

/// Behind the number that begins at `at`, by the rules of the tokens: the longest one. What ends it has to follow.
inline const char* passNumber(const char* at) {
  if (*at != '0') {
    at = passAll(kDigitBytes, at);
  } else if (isOneOf(at[1], 'x', 'X') && has(kHexDigits, at[2])) {
    at = passAll(kHexDigits, at + 2);
  } else {
    at = passAll(kOctalDigits, at);
  }
  if (isOneOf(*at, 'u', 'U')) {
    return isOneOf(at[1], 'l', 'L') ? at + 2 : at + 1;
  }
  if (isOneOf(*at, 'l', 'L')) {
    return isOneOf(at[1], 'u', 'U') ? at + 2 : at + 1;
  }
  return at;
}

/// Behind the token at `at`, whose kind is put into `kind`: that of the scanner, but of any word it may be
/// TK_IDENTIFIER. Null where it takes the scanner to know: for a literal that is not simple, a NUL, and what may be a
/// comment or a line end. A NUL has to be behind the text.
const char* passPlainToken(const char* at, CppTokenKind& kind);

}  // namespace qnpp
