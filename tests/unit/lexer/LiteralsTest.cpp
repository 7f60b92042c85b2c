// String and character literals, and quotes that open none.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/unit/support/TokenRows.h"

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

TEST(LiteralsTest, StringsReachFromQuoteToQuote) {
  expectTokens({
      {R"("")", R"(STRING:"")"},
      {R"("a")", R"(STRING:"a")"},
      {R"("a b")", R"(STRING:"a b")"},
      {R"("it's")", R"(STRING:"it's")"},
      {R"("a""b")", R"(STRING:"a" STRING:"b")"},
      {R"("a"b"c")", R"(STRING:"a" IDENTIFIER:b STRING:"c")"},
      {R"(L"a")", R"(IDENTIFIER:L STRING:"a")"},
      {R"("/* a */ // b")", R"(STRING:"/* a */ // b")"},
      {R"("#if")", R"(STRING:"#if")"},
  });
}

TEST(LiteralsTest, StringsTakeAnyByteButTheLineFeed) {
  expectTokens({
      {"\"\t\v\f\"", "STRING:\"<TAB><VT><FF>\""},
      {"\"a\rb\"", "STRING:\"a<CR>b\""},
      {"\"\0\"\"a\0\""sv, "STRING:\"<NUL>\" STRING:\"a<NUL>\""},
      {"\"\x01\x7F\x80\xFF\"", "STRING:\"<01><7F><80><FF>\""},
      {"\"a\nb\"", "OTHER:\" IDENTIFIER:a NEWLINE IDENTIFIER:b OTHER:\""},
      {"\"a\r\nb\"", "OTHER:\" IDENTIFIER:a NEWLINE IDENTIFIER:b OTHER:\""},
      {"\"\n\"", "OTHER:\" NEWLINE OTHER:\""},
  });
}

TEST(LiteralsTest, StringsKnowTwoEscapesOnly) {
  expectTokens({
      {R"("\"")", R"(STRING:"\"")"},
      {R"("\\")", R"(STRING:"\\")"},
      {R"("a\"b")", R"(STRING:"a\"b")"},
      {R"("\\\"")", R"(STRING:"\\\"")"},
      {R"("\\"\)", R"(STRING:"\\" OTHER:\)"},
      {R"("a\tb")", R"(OTHER:" IDENTIFIER:a OTHER:\ IDENTIFIER:tb OTHER:")"},
      {R"("a\q"b")", R"(OTHER:" IDENTIFIER:a OTHER:\ IDENTIFIER:q STRING:"b")"},
      {R"("\n" "x")", R"(OTHER:" OTHER:\ IDENTIFIER:n STRING:" " IDENTIFIER:x OTHER:")"},
      {"\"a\\\nb\"", "OTHER:\" IDENTIFIER:a CONTINUATION IDENTIFIER:b OTHER:\""},
      {"\"a\\\r\nb\"", "OTHER:\" IDENTIFIER:a CONTINUATION:\\<CR><LF> IDENTIFIER:b OTHER:\""},
      {"\"a\\\0\""sv, "OTHER:\" IDENTIFIER:a OTHER:\\ OTHER:<NUL> OTHER:\""},
  });
  for (int code = 0; code < 256; ++code) {
    const std::string text = std::string("\"\\") + static_cast<char>(code) + "x\"";
    const bool isEscape = code == '"' || code == '\\';
    EXPECT_EQ(lexAll(text) == "STRING:" + visible(text), isEscape) << visible(text);
  }
}

TEST(LiteralsTest, EscapesStandAtAnyPlaceOfALiteral) {
  for (std::size_t before = 0; before < 70; ++before) {
    for (std::size_t escapes = 1; escapes < 70; ++escapes) {
      std::string items(before, 'a');
      for (std::size_t index = 0; index < escapes; ++index) {
        items += index % 3 == 0 ? "\\\"" : "\\\\";
      }
      const std::string text = '"' + items + "b\"'" + items + "b'";
      EXPECT_EQ(lexAll(text), "STRING:\"" + items + "b\" CHAR:'" + items + "b'");
    }
  }
}

TEST(LiteralsTest, AnUnclosedStringIsALoneQuote) {
  expectTokens({
      {"\"", "OTHER:\""},
      {"\"a", "OTHER:\" IDENTIFIER:a"},
      {"\"a\n", "OTHER:\" IDENTIFIER:a NEWLINE"},
      {R"("a\")", R"(OTHER:" IDENTIFIER:a OTHER:\ OTHER:")"},
      {R"("\\\")", R"(OTHER:" OTHER:\ OTHER:\ OTHER:\ OTHER:")"},
      {R"("a\)", R"(OTHER:" IDENTIFIER:a OTHER:\)"},
      {R"(a"b"c"d)", R"(IDENTIFIER:a STRING:"b" IDENTIFIER:c OTHER:" IDENTIFIER:d)"},
      {R"("a 'b')", R"(OTHER:" IDENTIFIER:a SPACE CHAR:'b')"},
      {"\"a\n\"b\"", "OTHER:\" IDENTIFIER:a NEWLINE STRING:\"b\""},
      {"\"a // b\n\"c\"", "OTHER:\" IDENTIFIER:a SPACE SPACE NEWLINE STRING:\"c\""},
      {"\"a /* \\\" \n */\"b\"", "OTHER:\" IDENTIFIER:a SPACE SPACE STRING:\"b\""},
      {"\"\\\" \\\"\n\"x\" \"", R"(OTHER:" OTHER:\ OTHER:" SPACE OTHER:\ OTHER:" NEWLINE STRING:"x" SPACE OTHER:")"},
  });
}

TEST(LiteralsTest, CharactersHaveOneOrMoreItems) {
  expectTokens({
      {"'a'", "CHAR:'a'"},
      {"'abcdefgh'", "CHAR:'abcdefgh'"},
      {"' '", "CHAR:' '"},
      {"'\"'", "CHAR:'\"'"},
      {"'a' 'b'", "CHAR:'a' SPACE CHAR:'b'"},
      {"L'a'", "IDENTIFIER:L CHAR:'a'"},
      {"'/*'", "CHAR:'/*'"},
      {"'//'", "CHAR:'//'"},
      {"'\t\r'", "CHAR:'<TAB><CR>'"},
      {"'\0'"sv, "CHAR:'<NUL>'"},
      {"'\x80\xFF'", "CHAR:'<80><FF>'"},
  });
}

TEST(LiteralsTest, TwoQuotesAreNoCharacter) {
  expectTokens({
      {"''", "OTHER:' OTHER:'"},
      {"'''", "OTHER:' OTHER:' OTHER:'"},
      {"''a'", "OTHER:' CHAR:'a'"},
      {"'a''b'", "CHAR:'a' CHAR:'b'"},
      {"''''", "OTHER:' OTHER:' OTHER:' OTHER:'"},
  });
}

TEST(LiteralsTest, CharactersKnowTheEscapesOfC) {
  expectTokens({
      {R"('\'')", R"(CHAR:'\'')"},
      {R"('\\')", R"(CHAR:'\\')"},
      {R"('\0')", R"(CHAR:'\0')"},
      {R"('\012')", R"(CHAR:'\012')"},
      {R"('\01234')", R"(CHAR:'\01234')"},
      {R"('\x41')", R"(CHAR:'\x41')"},
      {R"('\xfFg')", R"(CHAR:'\xfFg')"},
      {R"('a\nb\x0c')", R"(CHAR:'a\nb\x0c')"},
      {R"('\x')", R"(OTHER:' OTHER:\ IDENTIFIER:x OTHER:')"},
      {R"('\xg')", R"(OTHER:' OTHER:\ IDENTIFIER:xg OTHER:')"},
      {R"('\X41')", R"(OTHER:' OTHER:\ IDENTIFIER:X41 OTHER:')"},
      {R"('\e')", R"(OTHER:' OTHER:\ IDENTIFIER:e OTHER:')"},
      {R"('\8')", R"(OTHER:' OTHER:\ DEC_INT:8 OTHER:')"},
      {R"('a\q'b')", R"(OTHER:' IDENTIFIER:a OTHER:\ IDENTIFIER:q CHAR:'b')"},
      {"'\\\n'", "OTHER:' CONTINUATION OTHER:'"},
  });
  constexpr std::string_view kEscapes = "\"'?\\abfnrtv01234567";
  for (int code = 0; code < 256; ++code) {
    const std::string text = std::string("'\\") + static_cast<char>(code) + "z'";
    const bool isEscape = kEscapes.find(static_cast<char>(code)) != std::string_view::npos;
    EXPECT_EQ(lexAll(text) == "CHAR:" + visible(text), isEscape) << visible(text);
  }
  for (int code = 0; code < 256; ++code) {
    const std::string text = std::string("'\\x") + static_cast<char>(code) + "z'";
    const bool isHex = (code >= '0' && code <= '9') || (code >= 'a' && code <= 'f') || (code >= 'A' && code <= 'F');
    EXPECT_EQ(lexAll(text) == "CHAR:" + visible(text), isHex) << visible(text);
  }
}

TEST(LiteralsTest, AnUnclosedCharacterIsALoneQuote) {
  expectTokens({
      {"'", "OTHER:'"},
      {"'a", "OTHER:' IDENTIFIER:a"},
      {"'a\n'", "OTHER:' IDENTIFIER:a NEWLINE OTHER:'"},
      {"'a\r\n'", "OTHER:' IDENTIFIER:a NEWLINE OTHER:'"},
      {R"('\')", R"(OTHER:' OTHER:\ OTHER:')"},
      {R"('\'a)", R"(OTHER:' OTHER:\ OTHER:' IDENTIFIER:a)"},
      {R"('\)", R"(OTHER:' OTHER:\)"},
      {R"('\x)", R"(OTHER:' OTHER:\ IDENTIFIER:x)"},
      {R"(don't "x")", R"(IDENTIFIER:don OTHER:' IDENTIFIER:t SPACE STRING:"x")"},
      {R"('a "b" 'c)", R"(CHAR:'a "b" ' IDENTIFIER:c)"},
      {R"("a' "b')", R"(STRING:"a' " IDENTIFIER:b OTHER:')"},
  });
}

// The two kinds of quotes are searched for independently: one that closes nothing says nothing about the other.
TEST(LiteralsTest, ALoneQuoteOfOneSortLeavesTheOtherSortAlone) {
  expectTokens({
      {R"('\" "s")", R"(OTHER:' OTHER:\ STRING:" " IDENTIFIER:s OTHER:")"},
      {R"("\' 'c')", R"(OTHER:" OTHER:\ CHAR:' ' IDENTIFIER:c OTHER:')"},
      {R"("\'a')", R"(OTHER:" OTHER:\ CHAR:'a')"},
      {R"('\"a")", R"(OTHER:' OTHER:\ STRING:"a")"},
      {R"('x "y)", R"(OTHER:' IDENTIFIER:x SPACE OTHER:" IDENTIFIER:y)"},
  });
}

}  // namespace
}  // namespace qnpp
