// Token kinds: how every piece of source text is classified.
#pragma once

namespace qnpp {

/// Kind of a token. 0 is the end of input, an operator of one character is its own character code, and everything else
/// has one of the values below. The values are fixed: a range of them is a rule of its own (see isName).
using CppTokenKind = int;

enum : CppTokenKind {
  TK_END = 0,
  TK_NEWLINE = 257,  ///< One line end; LF, CR LF and CR alike, the text is always "\n".
  TK_SPACE,          ///< One blank character, or a whole comment, whose text is then " ".
  TK_CONTINUATION,   ///< A backslash and the line end behind it.
  TK_PASTE,          ///< "##"
  TK_IF,             ///< The first of the names; a directive word has its kind wherever it stands.
  TK_IFDEF,
  TK_IFNDEF,
  TK_ELSE,
  TK_ELIF,
  TK_ENDIF,
  TK_INCLUDE,
  TK_DEFINE,
  TK_UNDEF,
  TK_LINE,
  TK_ERROR,
  TK_PRAGMA,
  TK_IDENT,
  TK_IDENTIFIER,  ///< Any other identifier; the last of the names.
  TK_STRING,
  TK_OTHER,  ///< A character that is no token of its own kind: "=", ";", "[", a lone quote ...
  TK_OROR,
  TK_ANDAND,
  TK_EQ,
  TK_NE,
  TK_LE,
  TK_GE,
  TK_SHL,
  TK_SHR,
  TK_DEFINED,  ///< "defined": no name, so it can be neither a macro nor a parameter.
  TK_CHAR,
  TK_DEC_INT,
  TK_OCT_INT,
  TK_HEX_INT,
  TK_DEC_UINT,
  TK_OCT_UINT,
  TK_HEX_UINT,
  TK_PRAGMA_OP,  ///< "_Pragma"
};
static_assert(TK_IDENTIFIER == 274 && TK_PRAGMA_OP == 293);

/// True for the kinds that may name a macro or a parameter: identifiers and the directive words.
constexpr bool isName(CppTokenKind kind) { return kind >= TK_IF && kind <= TK_IDENTIFIER; }

/// True for the kinds that look like a name: the names, `defined` and `_Pragma`.
constexpr bool isWord(CppTokenKind kind) { return isName(kind) || kind == TK_DEFINED || kind == TK_PRAGMA_OP; }

/// True for white space inside a line: a blank, a comment or a continued line end.
constexpr bool isBlank(CppTokenKind kind) { return kind == TK_SPACE || kind == TK_CONTINUATION; }

/// True for the word of a directive that opens, divides or closes a conditional.
constexpr bool isConditional(CppTokenKind kind) { return kind >= TK_IF && kind <= TK_ENDIF; }
static_assert(isConditional(TK_IFDEF) && isConditional(TK_IFNDEF) && isConditional(TK_ELSE) && isConditional(TK_ELIF));

/// True for white space of any sort, line ends included.
constexpr bool isWhiteSpace(CppTokenKind kind) { return isBlank(kind) || kind == TK_NEWLINE; }

}  // namespace qnpp
