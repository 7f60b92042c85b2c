// Tokens of a text in one line.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>

#include "lexer/CppLexer.h"
#include "lexer/InputFile.h"
#include "tests/support/Sinks.h"

namespace qnpp {

/// A text with blanks as they are and each control character or byte from 127 on as its name or code in angle brackets.
inline std::string visible(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string shown;
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    switch (character) {
      case '\0':
        shown += "<NUL>";
        break;
      case '\t':
        shown += "<TAB>";
        break;
      case '\n':
        shown += "<LF>";
        break;
      case '\v':
        shown += "<VT>";
        break;
      case '\f':
        shown += "<FF>";
        break;
      case '\r':
        shown += "<CR>";
        break;
      default:
        if (code >= 0x20 && code < 0x7F) {
          shown += character;
        } else {
          shown.append("<").append(1, kDigits[code / 16]).append(1, kDigits[code % 16]).append(">");
        }
    }
  }
  return shown;
}

/// One token: an operator of one character as itself, any other kind as its enumerator without TK_. The text follows
/// behind a colon where it is not the only one, or the commonest one, of the kind:
///
///   a + "b"  ->  IDENTIFIER:a SPACE + SPACE STRING:"b"
inline std::string dumpToken(CppTokenKind kind, std::string_view text) {
  struct Named {
    std::string_view name;
    std::string_view text;
  };
  static constexpr std::array<Named, TK_PRAGMA_OP - TK_NEWLINE + 1> kNamed = {{
      {"NEWLINE", "\n"},
      {"SPACE", " "},
      {"CONTINUATION", "\\\n"},
      {"PASTE", "##"},
      {"IF", "if"},
      {"IFDEF", "ifdef"},
      {"IFNDEF", "ifndef"},
      {"ELSE", "else"},
      {"ELIF", "elif"},
      {"ENDIF", "endif"},
      {"INCLUDE", "include"},
      {"DEFINE", "define"},
      {"UNDEF", "undef"},
      {"LINE", "line"},
      {"ERROR", "error"},
      {"PRAGMA", "pragma"},
      {"IDENT", "ident"},
      {"IDENTIFIER", ""},
      {"STRING", ""},
      {"OTHER", ""},
      {"OROR", "||"},
      {"ANDAND", "&&"},
      {"EQ", "=="},
      {"NE", "!="},
      {"LE", "<="},
      {"GE", ">="},
      {"SHL", "<<"},
      {"SHR", ">>"},
      {"DEFINED", "defined"},
      {"CHAR", ""},
      {"DEC_INT", ""},
      {"OCT_INT", ""},
      {"HEX_INT", ""},
      {"DEC_UINT", ""},
      {"OCT_UINT", ""},
      {"HEX_UINT", ""},
      {"PRAGMA_OP", "_Pragma"},
  }};
  if (kind == TK_END) {
    return "END";
  }
  if (kind > 0 && kind < 256) {
    const std::string self(1, static_cast<char>(kind));
    return text == self ? self : self + ":" + visible(text);
  }
  if (kind < TK_NEWLINE || kind > TK_PRAGMA_OP) {
    return "(kind " + std::to_string(kind) + "):" + visible(text);
  }
  const Named& named = kNamed[static_cast<std::size_t>(kind - TK_NEWLINE)];
  return std::string(named.name) + (text == named.text ? "" : ":" + visible(text));
}

/// What a lexer works with: an output kept in a string, messages, names, the counter of effects.
struct LexerSetting {
  KeptText sink;
  KeptMessages diagnostics;
  OutputBuffer output;
  NameTable names;
  std::uint64_t effectCount = 0;
  Budget budget;
  LexerContext context{output, diagnostics, names, effectCount, budget};

  LexerSetting() { output.attach(sink); }

  /// Everything written so far.
  std::string written() {
    output.flush();
    return sink.str();
  }
};

/// The tokens from where `lexer` stands to the end, in one line.
inline std::string dumpRest(CppLexer& lexer) {
  std::string tokens;
  for (CppTokenKind kind = lexer.next(); kind != TK_END; kind = lexer.next()) {
    tokens += (tokens.empty() ? "" : " ") + dumpToken(kind, lexer.text());
  }
  return tokens;
}

/// What came of lexing a text.
struct Lexed {
  std::string tokens;
  std::string output;  ///< Line ends of comments.
  std::string messages;
  std::int32_t line = 0;  ///< Of the end.
  std::uint64_t effectCount = 0;

  bool operator==(const Lexed&) const = default;
};

/// For the messages of failed tests.
inline void PrintTo(const Lexed& lexed, std::ostream* out) {
  *out << lexed.tokens << "\n  output: " << visible(lexed.output) << "\n  messages: " << visible(lexed.messages)
       << "\n  line: " << lexed.line << "\n  effects: " << lexed.effectCount;
}

inline Lexed lexFully(std::istream& input) {
  LexerSetting setting;
  CppLexer lexer(input, setting.context);
  std::string tokens = dumpRest(lexer);
  return {std::move(tokens), setting.written(), setting.diagnostics.str(), lexer.line(), setting.effectCount};
}

inline Lexed lexFully(std::string_view text) {
  InputText input;
  input.reset(text);
  return lexFully(input);
}

/// The tokens of a text in one line.
inline std::string lexAll(std::string_view text) { return lexFully(text).tokens; }

}  // namespace qnpp
