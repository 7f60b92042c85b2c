// Rules of the lexer: which text gives which tokens.
#include "lexer/CppLexer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "tests/unit/support/TokenRows.h"

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

TEST(CppLexerTest, KindsHaveTheirFixedValues) {
  EXPECT_EQ(TK_END, 0);
  EXPECT_EQ(TK_NEWLINE, 257);
  EXPECT_EQ(TK_SPACE, 258);
  EXPECT_EQ(TK_CONTINUATION, 259);
  EXPECT_EQ(TK_PASTE, 260);
  EXPECT_EQ(TK_IF, 261);
  EXPECT_EQ(TK_IDENTIFIER, 274);
  EXPECT_EQ(TK_STRING, 275);
  EXPECT_EQ(TK_OTHER, 276);
  EXPECT_EQ(TK_SHR, 284);
  EXPECT_EQ(TK_DEFINED, 285);
  EXPECT_EQ(TK_CHAR, 286);
  EXPECT_EQ(TK_DEC_INT, 287);
  EXPECT_EQ(TK_HEX_UINT, 292);
  EXPECT_EQ(TK_PRAGMA_OP, 293);
}

TEST(CppLexerTest, NamesAreIdentifiersAndDirectiveWords) {
  EXPECT_FALSE(isName(TK_PASTE));
  EXPECT_TRUE(isName(TK_IF));
  EXPECT_TRUE(isName(TK_IDENT));
  EXPECT_TRUE(isName(TK_IDENTIFIER));
  EXPECT_FALSE(isName(TK_STRING));
  EXPECT_FALSE(isName(TK_DEFINED));
  EXPECT_FALSE(isName(TK_PRAGMA_OP));
}

TEST(CppLexerTest, LineEndsAreOneKind) {
  expectTokens({
      {"\n", "NEWLINE"},
      {"\r\n", "NEWLINE"},
      {"\r", "NEWLINE"},
      {"\r\r\n", "NEWLINE NEWLINE"},
      {"\n\r", "NEWLINE NEWLINE"},
      {"a\rb\r\nc\nd", "IDENTIFIER:a NEWLINE IDENTIFIER:b NEWLINE IDENTIFIER:c NEWLINE IDENTIFIER:d"},
  });
}

TEST(CppLexerTest, AContinuationKeepsItsBytes) {
  expectTokens({
      {"\\\n", "CONTINUATION"},
      {"\\\r\n", "CONTINUATION:\\<CR><LF>"},
      {"\\\r", "CONTINUATION:\\<CR>"},
      {"a\\\nb", "IDENTIFIER:a CONTINUATION IDENTIFIER:b"},
      {"\\\\\n", "OTHER:\\ CONTINUATION"},
      {"\\ \n", "OTHER:\\ SPACE NEWLINE"},
      {"\\\n\n", "CONTINUATION NEWLINE"},
  });
}

TEST(CppLexerTest, EveryBlankIsATokenOfItsOwn) {
  expectTokens({
      {" ", "SPACE"},
      {"\t", "SPACE:<TAB>"},
      {"\v", "SPACE:<VT>"},
      {"\f", "SPACE:<FF>"},
      {"  ", "SPACE SPACE"},
      {" \t \v\f", "SPACE SPACE:<TAB> SPACE SPACE:<VT> SPACE:<FF>"},
      {"# define", "# SPACE DEFINE"},
  });
}

TEST(CppLexerTest, OperatorsTakeTheLongestMatch) {
  expectTokens({
      {"#", "#"},
      {"##", "PASTE"},
      {"###", "PASTE #"},
      {"####", "PASTE PASTE"},
      {"(),?:", "( ) , ? :"},
      {"||", "OROR"},
      {"|||", "OROR |"},
      {"&&", "ANDAND"},
      {"&&&&&", "ANDAND ANDAND &"},
      {"|^&", "| ^ &"},
      {"==", "EQ"},
      {"===", "EQ OTHER:="},
      {"!=", "NE"},
      {"!==", "NE OTHER:="},
      {"=!", "OTHER:= !"},
      {"<>", "< >"},
      {"<=", "LE"},
      {">=", "GE"},
      {"<<", "SHL"},
      {">>", "SHR"},
      {"<<=", "SHL OTHER:="},
      {">>>", "SHR >"},
      {"<=>", "LE >"},
      {"><", "> <"},
      {"+-*/%!~", "+ - * / % ! ~"},
      {"/ /", "/ SPACE /"},
      {"*/", "* /"},
      {"/=", "/ OTHER:="},
      {"+++", "+ + +"},
      {"->", "- >"},
      {"...", "OTHER:. OTHER:. OTHER:."},
      {"a+=b", "IDENTIFIER:a + OTHER:= IDENTIFIER:b"},
      {"%:<:", "% : < :"},
      {"??"
       "=",
       "? ? OTHER:="},
      {"[]{};", "OTHER:[ OTHER:] OTHER:{ OTHER:} OTHER:;"},
  });
}

TEST(CppLexerTest, DirectiveWordsAreKeywordsEverywhere) {
  expectTokens({
      {"if", "IF"},
      {"ifdef", "IFDEF"},
      {"ifndef", "IFNDEF"},
      {"else", "ELSE"},
      {"elif", "ELIF"},
      {"endif", "ENDIF"},
      {"include", "INCLUDE"},
      {"define", "DEFINE"},
      {"undef", "UNDEF"},
      {"line", "LINE"},
      {"error", "ERROR"},
      {"pragma", "PRAGMA"},
      {"ident", "IDENT"},
      {"defined", "DEFINED"},
      {"_Pragma", "PRAGMA_OP"},
      {"x=if+line;", "IDENTIFIER:x OTHER:= IF + LINE OTHER:;"},
      {"#define", "# DEFINE"},
  });
}

TEST(CppLexerTest, OnlyTheWholeWordIsAKeyword) {
  expectTokens({
      {"ifd", "IDENTIFIER:ifd"},
      {"ifdefs", "IDENTIFIER:ifdefs"},
      {"i", "IDENTIFIER:i"},
      {"If", "IDENTIFIER:If"},
      {"DEFINE", "IDENTIFIER:DEFINE"},
      {"definedx", "IDENTIFIER:definedx"},
      {"define1", "IDENTIFIER:define1"},
      {"_if", "IDENTIFIER:_if"},
      {"_pragma", "IDENTIFIER:_pragma"},
      {"__Pragma", "IDENTIFIER:__Pragma"},
      {"_Pragma_", "IDENTIFIER:_Pragma_"},
      {"warning", "IDENTIFIER:warning"},
      {"import", "IDENTIFIER:import"},
      {"identifier", "IDENTIFIER:identifier"},
  });
}

TEST(CppLexerTest, IdentifiersAreLettersDigitsAndUnderscores) {
  expectTokens({
      {"a", "IDENTIFIER:a"},
      {"_", "IDENTIFIER:_"},
      {"Zz_09", "IDENTIFIER:Zz_09"},
      {"a$b", "IDENTIFIER:a OTHER:$ IDENTIFIER:b"},
      {"a-b", "IDENTIFIER:a - IDENTIFIER:b"},
      {"a\xC3\xA9z", "IDENTIFIER:a OTHER:<C3> OTHER:<A9> IDENTIFIER:z"},
      {"a\0b"sv, "IDENTIFIER:a OTHER:<NUL> IDENTIFIER:b"},
  });
}

TEST(CppLexerTest, IntegersHaveSixKinds) {
  expectTokens({
      {"1", "DEC_INT:1"},         {"1234567890", "DEC_INT:1234567890"},
      {"1L", "DEC_INT:1L"},       {"1l", "DEC_INT:1l"},
      {"0", "OCT_INT:0"},         {"00", "OCT_INT:00"},
      {"0L", "OCT_INT:0L"},       {"01234567", "OCT_INT:01234567"},
      {"017l", "OCT_INT:017l"},   {"0x0", "HEX_INT:0x0"},
      {"0X1aF", "HEX_INT:0X1aF"}, {"0xABCDEFabcdef0123456789L", "HEX_INT:0xABCDEFabcdef0123456789L"},
      {"1u", "DEC_UINT:1u"},      {"1U", "DEC_UINT:1U"},
      {"9uL", "DEC_UINT:9uL"},    {"9ul", "DEC_UINT:9ul"},
      {"9UL", "DEC_UINT:9UL"},    {"9lU", "DEC_UINT:9lU"},
      {"9Lu", "DEC_UINT:9Lu"},    {"9LU", "DEC_UINT:9LU"},
      {"0u", "OCT_UINT:0u"},      {"07Lu", "OCT_UINT:07Lu"},
      {"0xFu", "HEX_UINT:0xFu"},  {"0xFLU", "HEX_UINT:0xFLU"},
  });
}

TEST(CppLexerTest, ANumberEndsWhereItsRuleEnds) {
  expectTokens({
      {"08", "OCT_INT:0 DEC_INT:8"},
      {"0189", "OCT_INT:01 DEC_INT:89"},
      {"018L", "OCT_INT:01 DEC_INT:8L"},
      {"0x", "OCT_INT:0 IDENTIFIER:x"},
      {"0X", "OCT_INT:0 IDENTIFIER:X"},
      {"0xg", "OCT_INT:0 IDENTIFIER:xg"},
      {"0xL", "OCT_INT:0 IDENTIFIER:xL"},
      {"0xu", "OCT_INT:0 IDENTIFIER:xu"},
      {"0x.", "OCT_INT:0 IDENTIFIER:x OTHER:."},
      {"00x1", "OCT_INT:00 IDENTIFIER:x1"},
      {"0x0x1", "HEX_INT:0x0 IDENTIFIER:x1"},
      {"0xfg", "HEX_INT:0xf IDENTIFIER:g"},
      {"0b1", "OCT_INT:0 IDENTIFIER:b1"},
      {"1LL", "DEC_INT:1L IDENTIFIER:L"},
      {"1ll2", "DEC_INT:1l IDENTIFIER:l2"},
      {"1L2", "DEC_INT:1L DEC_INT:2"},
      {"1ULL", "DEC_UINT:1UL IDENTIFIER:L"},
      {"1LUL", "DEC_UINT:1LU IDENTIFIER:L"},
      {"1uu", "DEC_UINT:1u IDENTIFIER:u"},
      {"0uu", "OCT_UINT:0u IDENTIFIER:u"},
      {"0x1ull", "HEX_UINT:0x1ul IDENTIFIER:l"},
      {"12abc", "DEC_INT:12 IDENTIFIER:abc"},
      {"1.5", "DEC_INT:1 OTHER:. DEC_INT:5"},
      {".5", "OTHER:. DEC_INT:5"},
      {"1e5", "DEC_INT:1 IDENTIFIER:e5"},
      {"1e+5", "DEC_INT:1 IDENTIFIER:e + DEC_INT:5"},
      {"0x1p3", "HEX_INT:0x1 IDENTIFIER:p3"},
      {"1_0", "DEC_INT:1 IDENTIFIER:_0"},
      {"1'2'3", "DEC_INT:1 CHAR:'2' DEC_INT:3"},
  });
}

// What is no blank, no line end, no word character, no quote and no operator.
TEST(CppLexerTest, AnyOtherByteIsATokenOfItsOwn) {
  constexpr std::string_view kOthers = "$.;=@[\\]`{}";
  constexpr std::string_view kOperators = "!#%&()*+,-/:<>?^|~";
  for (int code = 0; code < 256; ++code) {
    const char byte = static_cast<char>(code);
    const std::string text(1, byte);
    const bool isControl = code < 0x20 && (code < '\t' || code > '\r');
    if (isControl || code >= 0x7F || kOthers.find(byte) != std::string_view::npos) {
      EXPECT_EQ(lexAll(text), "OTHER:" + visible(text));
    } else if (kOperators.find(byte) != std::string_view::npos) {
      EXPECT_EQ(lexAll(text), text);
    } else if (byte == '"' || byte == '\'') {
      EXPECT_EQ(lexAll(text), "OTHER:" + text);
    } else {
      EXPECT_EQ(lexAll(text).find("OTHER"), std::string::npos) << code;
    }
  }
}

struct CountedRow {
  std::string_view text;
  std::int32_t line;
};

TEST(CppLexerTest, EveryLineEndCounts) {
  const CountedRow rows[] = {
      {"", 1},
      {"a", 1},
      {"\n", 2},
      {"\r\n", 2},
      {"\r", 2},
      {"\r\r\n", 3},
      {"a\nb\rc\r\n", 4},
      {"\\\n", 2},
      {"\\\r\n", 2},
      {"\\\r", 2},
      {"/*\n*/", 2},
      {"/*\r\n\r*/", 3},
      {"/*\n\n\n", 4},
      {"// a", 1},
      {"// a\n", 2},
      {"// a\r\n", 2},
      {"//\0b"sv, 2},
      {"\"a\rb\"", 1},
      {"\"a\r\nb\"", 2},
      {"'a\r'", 1},
      {"/* */\n/*\n*/\\\n//\n", 5},
  };
  for (const CountedRow& row : rows) {
    EXPECT_EQ(lexFully(row.text).line, row.line) << "in: " << visible(row.text);
  }
}

TEST(CppLexerTest, TheLineNumberWraps) {
  LexerSetting setting;
  std::istringstream input("\n\n");
  CppLexer lexer(input, setting.context);
  lexer.setLine(std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(lexer.next(), TK_NEWLINE);
  EXPECT_EQ(lexer.line(), std::numeric_limits<std::int32_t>::min());
  lexer.setLine(-1);
  EXPECT_EQ(lexer.next(), TK_NEWLINE);
  EXPECT_EQ(lexer.line(), 0);
}

TEST(CppLexerTest, TheEndIsFinal) {
  // A source that has more to give after it has said that it had ended, as a terminal does.
  struct Restless : std::streambuf {
    std::streamsize xsgetn(char* to, std::streamsize) override {
      ++calls;
      *to = 'a';
      return calls % 2;
    }
    int calls = 0;
  } buffer;
  std::istream input(&buffer);
  LexerSetting setting;
  CppLexer lexer(input, setting.context);
  EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
  EXPECT_EQ(lexer.text(), "a");
  for (int again = 0; again < 3; ++again) {
    EXPECT_EQ(lexer.next(), TK_END);
  }
  EXPECT_EQ(buffer.calls, 2);
}

TEST(CppLexerTest, RestartForgetsTheInputBefore) {
  LexerSetting setting;
  // The rest of the line, an open literal and the end of the first input must not reach into the second.
  std::istringstream first("x\n\"\\\"\\\"\\\" rest");
  CppLexer lexer(first, setting.context);
  EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
  EXPECT_EQ(lexer.next(), TK_NEWLINE);
  EXPECT_EQ(lexer.next(), TK_OTHER);
  EXPECT_EQ(lexer.line(), 2);

  std::istringstream second("\"s\" 'c'\n");
  lexer.restart(second);
  EXPECT_EQ(lexer.line(), 1);
  EXPECT_EQ(dumpRest(lexer), "STRING:\"s\" SPACE CHAR:'c' NEWLINE");
  EXPECT_EQ(lexer.line(), 2);
}

TEST(CppLexerTest, RestartBeforeTheFirstTokenReadsTheNewInput) {
  LexerSetting setting;
  std::istringstream first("first");
  std::istringstream second("second");
  CppLexer lexer(first, setting.context);
  lexer.restart(second);
  EXPECT_EQ(dumpRest(lexer), "IDENTIFIER:second");
  EXPECT_EQ(first.str(), "first");
}

TEST(CppLexerTest, OwnsAnInputThatIsHandedOver) {
  struct Watched : std::istringstream {
    explicit Watched(bool& isGone) : std::istringstream("a b"), gone(isGone) {}
    ~Watched() override { gone = true; }
    bool& gone;
  };
  bool firstGone = false;
  LexerSetting setting;
  {
    CppLexer lexer(std::make_unique<Watched>(firstGone), setting.context);
    EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
    EXPECT_FALSE(firstGone);
    std::istringstream second("c d");
    lexer.restart(second);
    EXPECT_TRUE(firstGone);
    EXPECT_EQ(dumpRest(lexer), "IDENTIFIER:c SPACE IDENTIFIER:d");
  }
  bool secondGone = false;
  {
    const CppLexer lexer(std::make_unique<Watched>(secondGone), setting.context);
    EXPECT_FALSE(secondGone);
  }
  EXPECT_TRUE(secondGone);
}

}  // namespace
}  // namespace qnpp
