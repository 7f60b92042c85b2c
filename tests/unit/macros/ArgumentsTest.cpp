// Arguments of an invocation.
#include "macros/Arguments.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/unit/support/Streams.h"

namespace qnpp {
namespace {

struct Token {
  std::string_view text;
  bool afterBlank = false;
  std::string_view hideSet = "";  // Letters, each a name.
};

struct ArgumentsTest : testing::Test {
  // The tokens of an argument come from a list; the one behind it carries `hideSet`.
  void read(const std::vector<Token>& tokens, std::string_view hideSet = "") {
    add(tokens);
    arguments.finish(setting.stream, setting.hideSetOf(hideSet));
  }

  void add(const std::vector<Token>& tokens) {
    TokenList list;
    for (const Token& token : tokens) {
      list.append(setting.spell(token.text), setting.hideSetOf(token.hideSet));
    }
    const TokenStream::Closed source(setting.stream, list);
    for (const Token& token : tokens) {
      const CppTokenKind kind = setting.stream.get();
      arguments.add(setting.stream, kind, token.afterBlank);
    }
  }

  std::string tokensOf(std::size_t index) {
    std::string tokens;
    for (const Spelling* const token : arguments.tokens(index).tokens) {
      tokens += (tokens.empty() ? "" : " ") + dumpToken(token->kind, token->text());
    }
    return tokens;
  }

  std::string textOf(std::size_t index) {
    std::string text;
    arguments.appendText(index, text);
    return text;
  }

  StreamSetting setting;
  TokenStream::Hold hold{setting.stream};
  Arguments arguments;
};

struct ReadRow {
  std::vector<Token> tokens;
  const char* text;
  const char* lexed;
};

// An argument is its text, lexed: tokens of different origin merge, and quotes find each other.
TEST_F(ArgumentsTest, AnArgumentIsTheTokensOfItsText) {
  const ReadRow rows[] = {
      {{}, "", ""},
      {{{"a"}}, "a", "IDENTIFIER:a"},
      {{{"a", true}}, "a", "IDENTIFIER:a"},
      {{{"a"}, {"+"}, {"1"}}, "a+1", "IDENTIFIER:a + DEC_INT:1"},
      {{{"a"}, {"b", true}}, "a b", "IDENTIFIER:a SPACE IDENTIFIER:b"},
      {{{"a"}, {"b"}}, "ab", "IDENTIFIER:ab"},
      {{{"+"}, {"+"}}, "++", "+ +"},
      {{{"<"}, {"<="}}, "<<=", "SHL OTHER:="},
      {{{"<"}, {"<=", true}}, "< <=", "< SPACE LE"},
      {{{"#"}, {"#"}}, "##", "PASTE"},
      {{{"0"}, {"x"}, {"1"}}, "0x1", "HEX_INT:0x1"},
      {{{"de"}, {"fined"}}, "defined", "DEFINED"},
      {{{"1"}, {"L"}}, "1L", "DEC_INT:1L"},
      {{{"\""}, {"a", true}, {"\"", true}}, "\" a \"", "STRING:\" a \""},
      {{{"'"}, {"a"}, {"'"}}, "'a'", "CHAR:'a'"},
      {{{"'"}, {"t"}, {"s", true}}, "'t s", "OTHER:' IDENTIFIER:t SPACE IDENTIFIER:s"},
      {{{"/"}, {"/"}, {"x", true}}, "// x", "SPACE"},
      {{{"("}, {"a"}, {","}, {"b"}, {")"}}, "(a,b)", "( IDENTIFIER:a , IDENTIFIER:b )"},
      {{{"\"s\""}, {"\"t\""}}, "\"s\"\"t\"", "STRING:\"s\" STRING:\"t\""},
  };
  std::size_t index = 0;
  for (const ReadRow& row : rows) {
    read(row.tokens);
    EXPECT_EQ(textOf(index), row.text);
    EXPECT_EQ(tokensOf(index), row.lexed) << row.text;
    ++index;
  }
  // All of them stand side by side.
  EXPECT_EQ(arguments.count(), std::size(rows));
  index = 0;
  for (const ReadRow& row : rows) {
    EXPECT_EQ(textOf(index), row.text);
    EXPECT_EQ(tokensOf(index), row.lexed) << row.text;
    ++index;
  }
}

TEST_F(ArgumentsTest, EachTokenHasItsOwnHideSetAndThatOfTheTokenBehind) {
  read({{"a", false, "A"}}, "X");
  read({{"b"}, {"+", false, "B"}, {"c", false, "BC"}}, "X");
  read({{"b", false, "D"}, {"c"}, {"d"}}, "");
  read({}, "X");
  EXPECT_EQ(setting.dumpRange(arguments.tokens(0)), "a{AX}");
  EXPECT_EQ(setting.dumpRange(arguments.tokens(1)), "b{X} +{BX} c{BCX}");
  EXPECT_EQ(setting.dumpRange(arguments.tokens(2)), "bcd{D}");
  EXPECT_EQ(setting.dumpRange(arguments.tokens(3)), "");
}

struct LexedAnewRow {
  std::vector<Token> tokens;
  const char* lexed;
};

// A token that the text lexes into anew has the sets of all the tokens that some of its bytes were of.
TEST_F(ArgumentsTest, TokensLexedAnewHaveTheSetsOfAllThatTheyAreMadeOf) {
  const LexedAnewRow rows[] = {
      {{{"a", false, "A"}, {"b", false, "B"}}, "ab{ABX}"},
      {{{"a", false, "A"}, {"b", false, "B"}, {"c", false, "C"}, {"+", false, "D"}}, "abc{ABCX} +{DX}"},
      {{{"a", false, "A"}, {"b", false, "B"}, {"+", true, "C"}, {"c", false, "D"}}, "ab{ABX}  {X} +{CX} c{DX}"},
      // A blank may be a comment, of which it is not known what it was made of; it can be no macro in any case.
      {{{"/", false, "A"}, {"*", false, "B"}, {"x", false, "C"}, {"*", false, "D"}, {"/", false, "E"}}, " {X}"},
      {{{"/", false, "A"}, {"/", false, "B"}, {"x", false, "C"}}, " {X}"},
      // One token falls apart, and its pieces merge with the neighbours: "<" and "<=" are "<<" and "=".
      {{{"<", false, "A"}, {"<=", false, "B"}, {"y", false, "C"}}, "<<{ABX} ={BX} y{CX}"},
      {{{"0", false, "A"}, {"x1", false, "B"}, {"\"s\"", false, "C"}}, "0x1{ABX} \"s\"{CX}"},
      {{{"0", false, "A"}, {"x", false, "B"}, {"y", false, "C"}}, "0{AX} xy{BCX}"},
      // A quote finds its partner, and what stood between is in the string.
      {{{"\"", false, "A"}, {"a", false, "B"}, {"\"", true, "C"}, {"b", false, "D"}}, "\"a \"{ABCX} b{DX}"},
      {{{"'", false, "A"}, {"\"a\"", false, "B"}, {"'", false, "C"}}, "'\"a\"'{ABCX}"},
      // A string falls apart where the quote before it takes its first one.
      {{{"\"", false, "A"}, {"\"a b\"", true, "B"}, {"c", false, "C"}}, "\" \"{ABX} a{BX}  {X} b{BX} \"{BX} c{CX}"},
      {{{"'", false, "A"}, {"t", false, "B"}}, "'{AX} t{BX}"},
  };
  std::size_t index = 0;
  for (const LexedAnewRow& row : rows) {
    read(row.tokens, "X");
    EXPECT_EQ(setting.dumpRange(arguments.tokens(index)), row.lexed);
    ++index;
  }
}

// The next one begins behind it, with nothing of its sets.
TEST_F(ArgumentsTest, ALexedAnewArgumentStandsAmongOthers) {
  read({{"a", false, "A"}, {"+", false, "B"}});
  read({{"a", false, "C"}, {"b", false, "D"}, {"/", false, "E"}, {"/", false, "F"}});
  read({{"c", false, "G"}}, "X");
  EXPECT_EQ(setting.dumpRange(arguments.tokens(0)), "a{A} +{B}");
  EXPECT_EQ(setting.dumpRange(arguments.tokens(1)), "ab{CD}  ");
  EXPECT_EQ(setting.dumpRange(arguments.tokens(2)), "c{GX}");
}

TEST_F(ArgumentsTest, MergingIsForgottenWithItsArgument) {
  read({{"a"}, {"b"}});
  read({{"\"", false}});
  read({{"a"}, {"+"}, {"\"s\""}});
  EXPECT_EQ(tokensOf(2), "IDENTIFIER:a + STRING:\"s\"");
  arguments.clear();
  EXPECT_EQ(arguments.count(), 0U);
  add({{"a"}, {"b"}});
  arguments.clear();
  read({{"c"}, {"d", true}});
  EXPECT_EQ(arguments.count(), 1U);
  EXPECT_EQ(textOf(0), "c d");
}

TEST_F(ArgumentsTest, ArgumentsCanBeUsedInPlace) {
  TokenList list = setting.listOf({"f", "(", "a"}, setting.hideSetOf("A"));
  const TokenList rest = setting.listOf({" ", "+", ")", "z"}, setting.hideSetOf("B"));
  list.append(rest.spellings(), setting.hideSetOf("B"));
  TokenRange range = list.all().part(2, 3);
  range.hideSet = setting.hideSetOf("X");
  arguments.addInPlace(range, nullptr);
  EXPECT_EQ(arguments.tokens(0).tokens.data(), list.spellings().data() + 2);
  EXPECT_EQ(tokensOf(0), "IDENTIFIER:a SPACE +");
  EXPECT_EQ(textOf(0), "a +");
  EXPECT_EQ(setting.dumpRange(arguments.tokens(0)), "a{AX}  {BX} +{BX}");
  read({{"b"}});
  EXPECT_EQ(tokensOf(0), "IDENTIFIER:a SPACE +");
  EXPECT_EQ(tokensOf(1), "IDENTIFIER:b");
}

TEST_F(ArgumentsTest, SurroundingsAreThoseGivenOrTheArgumentItself) {
  const TokenList list = setting.listOf({"(", "(", "a", ")", ")"});
  NormalizedTokens outer;
  outer.reset(list.spellings());
  arguments.addInPlace(list.all().part(1, 3), &outer);
  arguments.addInPlace(list.all().part(1, 3), nullptr);
  EXPECT_EQ(&arguments.surroundings(0), &outer);
  NormalizedTokens& own = arguments.surroundings(1);
  EXPECT_NE(&own, &outer);
  EXPECT_EQ(own.closing(&arguments.tokens(1).tokens[0]), &arguments.tokens(1).tokens[2]);
}

TEST(NormalizedTokensTest, FindsTheClosingParenthesis) {
  struct Row {
    const char* text;  // One character a token.
    std::size_t open;
    std::size_t closing;  // npos: there is none.
  };
  constexpr std::size_t kNone = std::string::npos;
  const Row rows[] = {
      {"()", 0, 1},      {"(x)", 0, 2},     {"(x", 0, kNone},     {"((", 0, kNone}, {"((", 1, kNone}, {"(()", 0, kNone},
      {"(()", 1, 2},     {"(())", 0, 3},    {"(())", 1, 2},       {"()()", 2, 3},   {")(", 1, kNone}, {"))(x)", 2, 4},
      {"(,(,),)", 0, 6}, {"(,(,),)", 2, 4}, {"x(y(z)", 1, kNone}, {"x(y(z)", 3, 5},
  };
  for (const Row& row : rows) {
    std::vector<const Spelling*> tokens;
    for (const char character : std::string_view(row.text)) {
      tokens.push_back(characterSpelling(character));
    }
    NormalizedTokens normalized;
    normalized.reset(tokens);
    const Spelling* const* const expected = row.closing == kNone ? nullptr : &tokens[row.closing];
    EXPECT_EQ(normalized.closing(&tokens[row.open]), expected) << row.text << ", " << row.open;
    EXPECT_EQ(normalized.closing(&tokens[row.open]), expected) << row.text << ", " << row.open;
  }
}

struct MergeRow {
  const char* before;
  const char* token;
  bool mayMerge;
};

TEST_F(ArgumentsTest, TokensThatFormAnotherMayMerge) {
  const MergeRow rows[] = {
      {"a", "b", true},    {"a", "1", true},          {"1", "a", true},   {"1", "2", true},      {"0", "x", true},
      {"if", "def", true}, {"1L", "u", true},         {"#", "#", true},   {"|", "|", true},      {"&", "&", true},
      {"=", "=", true},    {"!", "=", true},          {"<", "<", true},   {"<", "=", true},      {"<", "<<", true},
      {">", ">", true},    {">", "=", true},          {">", ">=", true},  {"/", "/", true},      {"/", "*", true},
      {"=", "==", true},   {"!", "==", true},         {"a", "(", false},  {")", "a", false},     {"a", "+", false},
      {"+", "+", false},   {"-", ">", false},         {"<", ">", false},  {"=", "<", false},     {"*", "/", false},
      {"##", "#", false},  {"<<", "=", false},        {"==", "=", false}, {"a", "\"s\"", false}, {"\"s\"", "a", false},
      {"'c'", "1", false}, {"\"s\"", "\"t\"", false}, {",", "a", false},  {"\\", "a", false},    {".", "1", false},
      {"1", ".", false},   {"\x80", "\x80", false},
  };
  for (const MergeRow& row : rows) {
    EXPECT_EQ(mayMerge(*setting.spell(row.before), *setting.spell(row.token)), row.mayMerge)
        << row.before << " and " << row.token;
  }
}

TEST_F(ArgumentsTest, OnlyAQuoteByItselfIsALoneQuote) {
  for (const char* const text : {"\"", "'"}) {
    EXPECT_TRUE(isLoneQuote(*setting.spell(text))) << text;
  }
  for (const char* const text : {"\"\"", "'a'", "a", "\\", "+", " ", ";"}) {
    EXPECT_FALSE(isLoneQuote(*setting.spell(text))) << text;
  }
}

// Where no two neighbours may merge and no quote stands alone, the text of all tokens lexes into just these tokens.
TEST_F(ArgumentsTest, WhatCannotMergeStaysApart) {
  constexpr std::string_view kTokens[] = {
      "a", "L",  "x1", "if", "0",  "1", "08",   "1L",      "0x1u",    "'c'", "\"s\"", "\"\\\"\"", "\"",
      "'", "\\", "#",  "##", "(",  ")", ",",    "?",       ":",       "|",   "||",    "&",        "&&",
      "^", "=",  "==", "!",  "!=", "<", "<=",   "<<",      ">",       ">=",  ">>",    "+",        "-",
      "*", "/",  "%",  "~",  ".",  "$", "\xFF", "_Pragma", "defined", "e5",
  };
  std::vector<const Spelling*> single;
  for (const std::string_view text : kTokens) {
    const Spelling* const spelling = setting.spell(text);
    if (spelling->isSingleToken()) {
      single.push_back(spelling);
    }
  }
  EXPECT_EQ(single.size(), std::size(kTokens) - 1);  // "08" is two tokens.
  std::mt19937 random(8);
  int checked = 0;
  for (int round = 0; round < 60000; ++round) {
    const Spelling* before = nullptr;
    std::string text;
    std::string tokens;
    bool staysApart = true;
    for (std::size_t left = 2 + random() % 3; left > 0; --left) {
      const Spelling& token = *single[random() % single.size()];
      staysApart = staysApart && !isLoneQuote(token) && (before == nullptr || !mayMerge(*before, token));
      text += token.text();
      tokens += (tokens.empty() ? "" : " ") + dumpToken(token.kind, token.text());
      before = &token;
    }
    if (staysApart) {
      ++checked;
      ASSERT_EQ(lexAll(text), tokens) << text;
    }
  }
  EXPECT_GT(checked, 10000);
}

}  // namespace
}  // namespace qnpp
