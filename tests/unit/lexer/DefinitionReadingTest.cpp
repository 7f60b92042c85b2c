// Names, parameters and replacement lists read in one go, against the same read token by token.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include "lexer/ByteSet.h"
#include "tests/support/PiecewiseInput.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

// What a replacement list behind "x" comes to, and what is left of the input.
struct ListRead {
  std::string text;
  std::string rest;
  std::string output;
  std::string messages;
  std::int32_t line = 0;  // Where the list ends.

  bool operator==(const ListRead&) const = default;
};

void PrintTo(const ListRead& list, std::ostream* out) {
  *out << visible(list.text) << "\n  rest: " << list.rest << "\n  output: " << visible(list.output)
       << "\n  messages: " << list.messages << "\n  line: " << list.line;
}

// The rule itself: white space is one blank between two tokens, a continued line end is nothing.
CppTokenKind readByTokens(CppLexer& lexer, std::string& text) {
  bool blankWaits = false;
  CppTokenKind kind = lexer.next();
  for (; kind != TK_NEWLINE && kind != TK_END; kind = lexer.next()) {
    if (kind == TK_SPACE) {
      blankWaits = !text.empty();
    } else if (kind != TK_CONTINUATION) {
      text += blankWaits ? " " : "";
      text += lexer.text();
      blankWaits = false;
    }
  }
  return kind;
}

ListRead readList(std::istream& input, bool inOneGo) {
  LexerSetting setting;
  CppLexer lexer(input, setting.context);
  EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
  ListRead read;
  if (inOneGo) {
    std::string scratch;
    read.text = lexer.readReplacementText(scratch);
    read.line = lexer.line();
    read.rest = dumpRest(lexer);
  } else {
    const CppTokenKind end = readByTokens(lexer, read.text);
    read.line = lexer.line() - (end == TK_NEWLINE ? 1 : 0);
    const std::string rest = dumpRest(lexer);
    read.rest =
        (end == TK_NEWLINE ? "NEWLINE" : "") + std::string(end == TK_NEWLINE && !rest.empty() ? " " : "") + rest;
  }
  read.output = setting.written();
  read.messages = setting.diagnostics.str();
  return read;
}

ListRead readList(std::string_view text, std::size_t step, bool inOneGo) {
  PiecewiseInput input(text, step);
  return readList(input, inOneGo);
}

TEST(DefinitionReadingTest, WhiteSpaceIsOneBlankBetweenTwoTokens) {
  struct Row {
    std::string_view list;
    std::string_view text;
    std::string_view output = "";
    std::string_view messages = "";
  };
  constexpr Row kRows[] = {
      {"", ""},
      {" \t", ""},
      {" a  b\t\v\f c ", "a b c"},
      {"+1", "+1"},
      {" a / b/c / ", "a / b/c /"},
      {" a/**/b/* */ c// d", "a b c"},
      {" /* a\n*/b/*\r\n\r*/ ", "b", "\n\n\n"},
      {" a/* b", "a", "", "1: unterminated comment.\n"},
      {" \"a  b\"  'c\td' ", "\"a  b\" 'c\td'"},
      {" \"a /* \" b // \"", "\"a /* \" b"},
      {" it's   so", "it's so"},
      {" \"a\\\"  b\"  \"c\\d\"  e", "\"a\\\"  b\" \"c\\d\" e"},
      {" \\\n a\\\nb \\\r\nc\\\r d\\\n", "ab c d"},
      {" a\\ \\b", "a\\ \\b"},
      {" a\0 \0  b"sv, "a\0 \0 b"sv},
  };
  for (const Row& row : kRows) {
    for (const char* const end : {"", "\nx", "\r\nx", "\rx"}) {
      if (!row.messages.empty() && *end != '\0') {
        continue;
      }
      for (const std::size_t step : {1U, 2U, 3U, 100U}) {
        const std::string source = "x" + std::string(row.list) + end;
        const ListRead read = readList(source, step, true);
        EXPECT_EQ(read.text, row.text) << visible(source) << " by " << step;
        EXPECT_EQ(read.rest, *end == '\0' ? "" : "NEWLINE IDENTIFIER:x") << visible(source) << " by " << step;
        EXPECT_EQ(read.output, row.output) << visible(source) << " by " << step;
        EXPECT_EQ(read.messages, row.messages) << visible(source) << " by " << step;
      }
    }
  }
}

TEST(DefinitionReadingTest, ListsAreReadAsTheirTokensAre) {
  constexpr std::string_view kPieces[] = {"a",  "word", " ",    "  ",   "\t",      "1",        "0x1g", "+",
                                          "/",  "\\",   "\\\n", "\"",   "'",       "\"s\"",    "'c'",  "\\\"",
                                          "#",  "/*",   "*/",   "//",   "/* c */", "\\\r\n",   "\\\r", "\r",
                                          "\n", "\0"sv, "(",    "\xe9", " \\\n ",  "\"a  b\"", "*"};
  std::mt19937 random(411);
  for (int round = 0; round < 4000; ++round) {
    std::string source = "x";
    for (std::size_t count = random() % 12; count > 0; --count) {
      source += kPieces[random() % std::size(kPieces)];
    }
    if (isWordByte(source[1])) {
      source.insert(1, " ");  // Or the word would go on.
    }
    const std::size_t step = round % 4 == 0 ? 1000 : 1 + random() % 5;
    ASSERT_EQ(readList(source, step, true), readList(source, step, false)) << visible(source) << " by " << step;
  }
}

// The buffer is filled up to some 16384 bytes first; the list lies around that place.
TEST(DefinitionReadingTest, ListsSurviveTheEndOfTheBuffer) {
  constexpr std::string_view kList = " a \"b  c\" /* d\n*/ e\\\nf 'g' // h\r\nx";
  for (std::size_t before = 16384 - kList.size() - 4; before < 16390; ++before) {
    const std::string source = std::string(before, 'x') + std::string(kList);
    InputText input;
    input.reset(source);
    const ListRead read = readList(input, true);
    ASSERT_EQ(read.text, "a \"b  c\" ef 'g'") << before;
    ASSERT_EQ(read.rest, "NEWLINE IDENTIFIER:x") << before;
    ASSERT_EQ(read.output, "\n") << before;
    ASSERT_EQ(read.line, 3) << before;
  }
}

// ---- What stands before the list ----

// Name, parameters and the token behind them; "no" and that token where it is left to the rules.
std::string readHead(std::string_view text) {
  LexerSetting setting;
  InputText input;
  input.reset(text);
  CppLexer lexer(input, setting.context);
  EXPECT_EQ(lexer.next(), '#');
  MacroHead head;
  std::string read = "no";
  if (lexer.readMacroHead(head)) {
    read = head.name;
    if (head.functionLike) {
      read += '(';
      read += head.parameterList + ")";
      EXPECT_EQ(std::count(read.begin(), read.end(), ','), head.parameterCount) << text;
    }
  }
  const CppTokenKind kind = lexer.next();
  return read + " " + dumpToken(kind, lexer.text());
}

TEST(DefinitionReadingTest, AHeadIsReadIfItIsPlain) {
  struct Row {
    std::string_view text;
    const char* read;
  };
  constexpr Row kRows[] = {
      {"# A 1\n", "A SPACE"},
      {"#\t A\n", "A NEWLINE"},
      {"#A\"s\"\n", "A STRING:\"s\""},
      {"# define/**/\n", "define SPACE"},
      {"# F(x) x\n", "F(x,) SPACE"},
      {"# F()1\n", "F() DEC_INT:1"},
      {"# F( a ,\tb )+\n", "F(a,b,) +"},
      {"# F (x)\n", "F SPACE"},
      {"# F(if,line,a,a)\n", "F(if,line,a,a,) NEWLINE"},
      // With a fault, or with more than blanks between:
      {"#\n", "no NEWLINE"},
      {"# 1\n", "no SPACE"},
      {"# defined 1\n", "no SPACE"},
      {"# _Pragma 1\n", "no SPACE"},
      {"# A\\\nB 1\n", "no SPACE"},
      {"#/**/A 1\n", "no SPACE"},
      {"# F(a,) 1\n", "no SPACE"},
      {"# F(,a) 1\n", "no SPACE"},
      {"# F(a b) 1\n", "no SPACE"},
      {"# F(...) 1\n", "no SPACE"},
      {"# F(defined) 1\n", "no SPACE"},
      {"# F(a\n) 1\n", "no SPACE"},
      {"# F(a\\\n) 1\n", "no SPACE"},
      {"# F(a/**/) 1\n", "no SPACE"},
      // The buffer ends where more of it could follow.
      {"# A", "no SPACE"},
      {"# F(a", "no SPACE"},
      {"# F(a,", "no SPACE"},
      {"# F(", "no SPACE"},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(readHead(row.text), row.read) << visible(row.text);
  }
}

}  // namespace
}  // namespace qnpp
