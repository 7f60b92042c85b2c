// Arguments of an invocation.
#include "macros/Arguments.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/unit/support/Spellings.h"

namespace qnpp {
namespace {

struct Token {
  std::string_view text;
  bool afterBlank = false;
};

struct ArgumentsTest : testing::Test {
  void read(const std::vector<Token>& tokens, const HideSet& hideSet = {}) {
    for (const Token& token : tokens) {
      arguments.add(setting.spell(token.text), token.afterBlank);
    }
    arguments.finish(hideSet, setting.pool);
  }

  std::string tokensOf(std::size_t index) {
    std::string tokens;
    for (const Spelling* const token : arguments.tokens(index)) {
      tokens += (tokens.empty() ? "" : " ") + dumpToken(token->kind, token->text());
    }
    return tokens;
  }

  std::string textOf(std::size_t index) {
    std::string text;
    arguments.appendText(index, text);
    return text;
  }

  SpellingSetting setting;
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

TEST_F(ArgumentsTest, EachArgumentHasAHideSet) {
  read({{"a"}}, setting.hideSetOf("A"));
  read({{"b"}, {"c"}}, setting.hideSetOf("BC"));
  read({});
  EXPECT_EQ(setting.lettersOf(arguments.hideSet(0)), "A");
  EXPECT_EQ(setting.lettersOf(arguments.hideSet(1)), "BC");
  EXPECT_TRUE(arguments.hideSet(2).empty());
}

TEST_F(ArgumentsTest, MergingIsForgottenWithItsArgument) {
  read({{"a"}, {"b"}});
  read({{"\"", false}});
  read({{"a"}, {"+"}, {"\"s\""}});
  EXPECT_EQ(tokensOf(2), "IDENTIFIER:a + STRING:\"s\"");
  arguments.clear();
  EXPECT_EQ(arguments.count(), 0U);
  arguments.add(setting.spell("a"), false);
  arguments.add(setting.spell("b"), false);
  arguments.clear();
  read({{"c"}, {"d", true}});
  EXPECT_EQ(arguments.count(), 1U);
  EXPECT_EQ(textOf(0), "c d");
}

TEST_F(ArgumentsTest, ArgumentsCanBeUsedInPlace) {
  const TokenList list = setting.listOf({"f", "(", "a", " ", "+", ")", "z"});
  const SpellingRange outer = list.spellings();
  arguments.addInPlace(outer.subspan(2, 3), nullptr, setting.hideSetOf("A"));
  EXPECT_EQ(arguments.tokens(0).data(), outer.data() + 2);
  EXPECT_EQ(tokensOf(0), "IDENTIFIER:a SPACE +");
  EXPECT_EQ(textOf(0), "a +");
  EXPECT_EQ(setting.lettersOf(arguments.hideSet(0)), "A");
  read({{"b"}});
  EXPECT_EQ(tokensOf(0), "IDENTIFIER:a SPACE +");
  EXPECT_EQ(tokensOf(1), "IDENTIFIER:b");
}

TEST_F(ArgumentsTest, SurroundingsAreThoseGivenOrTheArgumentItself) {
  const TokenList list = setting.listOf({"(", "(", "a", ")", ")"});
  NormalizedTokens outer;
  outer.reset(list.spellings());
  arguments.addInPlace(list.spellings().subspan(1, 3), &outer, HideSet());
  arguments.addInPlace(list.spellings().subspan(1, 3), nullptr, HideSet());
  EXPECT_EQ(&arguments.surroundings(0), &outer);
  NormalizedTokens& own = arguments.surroundings(1);
  EXPECT_NE(&own, &outer);
  EXPECT_EQ(own.closing(&arguments.tokens(1)[0]), &arguments.tokens(1)[2]);
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
