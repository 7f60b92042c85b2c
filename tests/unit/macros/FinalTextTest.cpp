// Object-like macros that come to the same text at each use. It is sought at the second use, and from the third on the
// lexer writes it; so each macro is used three times here, and every use has to give the same.
#include "macros/FinalText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Text.h"
#include "tests/unit/support/Definitions.h"
#include "tests/unit/support/RunRows.h"

namespace qnpp {
namespace {

TEST(FinalTextTest, EachUseGivesTheSame) {
  expectRuns({
      {"#define A a 1\nA A A\n", "#line 2 \"a.c\"\na 1 a 1 a 1\n"},
      {"#define A\n[A] [A] [A]\n", "#line 2 \"a.c\"\n[] [] []\n"},
      {"#define A B + 1\n#define B 2\nA A A\n", "#line 3 \"a.c\"\n2 + 1 2 + 1 2 + 1\n"},
      {"#define A A B\n#define B A\nA, A, A\n", "#line 3 \"a.c\"\nA A, A A, A A\n"},
      {"#define A B\n#define B 1\n#define F(x) x A\nA A A F(A) A\n", "#line 4 \"a.c\"\n1 1 1 1 1 1\n"},
  });
}

// A text without names is known with the definition.
TEST(FinalTextTest, NumbersAndOperatorsAreFinalAtOnce) {
  expectRuns({
      {"#define A (1 + 0x2fuL)\nA A\n", "#line 2 \"a.c\"\n(1 + 0x2fuL) (1 + 0x2fuL)\n"},
      {"#define A 1\nx A\n#define B 2\nx A B\n#undef B\nA B\n",
       "#line 2 \"a.c\"\nx 1\n#line 4 \"a.c\"\nx 1 2\n#line 6 \"a.c\"\n1 B\n"},
      {"#define A 1\nA A\n#define A 2\nA A\n", "#line 2 \"a.c\"\n1 1\n#line 4 \"a.c\"\n2 2\n",
       "a.c:3: Warning: Macro \"A\" has an incompatible redefinition.\n"},
      {"#define A 1\nA A\n#undef A\n#define A(x) <x>\nA A(2)\n", "#line 2 \"a.c\"\n1 1\n#line 5 \"a.c\"\n A<2>\n"},
      {"#define B 1\n#define A B B\nA A A\n#undef B\nA A A\n",
       "#line 3 \"a.c\"\n1 1 1 1 1 1\n#line 5 \"a.c\"\nB B B B B B\n"},
      {"#define A 3\n#if A > 2 && A\nA\n#endif\n", "#line 3 \"a.c\"\n3\n\n"},
  });
}

// Behind a number a name may stand directly.
TEST(FinalTextTest, NamesInNumbersAreSeen) {
  expectRuns({
      {"#define e5 x\n#define A 1e5\nA A\n", "#line 3 \"a.c\"\n1x 1x\n"},
      {"#define g x\n#define A 0x1g\nA A\n", "#line 3 \"a.c\"\n0x1x 0x1x\n"},
      {"#define x z\n#define A 0x\nA A\n", "#line 3 \"a.c\"\n0z 0z\n"},
      {"#define L z\n#define A 1uLL\nA A\n", "#line 3 \"a.c\"\n1uLz 1uLz\n"},
      {"#define A 08\nA A\n", "#line 2 \"a.c\"\n08 08\n"},
  });
}

TEST(FinalTextTest, CommentsAndChangingTextsAreNotFinal) {
  expectRuns({
      {"#define A 1 /\\\n/ 2\n[A][A]\n", "#line 3 \"a.c\"\n[1  ][1  ]\n"},
      {"#define A 1 /\\\n* 2\nA\nA\n", "#line 3 \"a.c\"\n1  \n1  \n",
       "1: unterminated comment.\n1: unterminated comment.\n"},
      {"#define A 1 / 2\n[A][A]\n", "#line 2 \"a.c\"\n[1 / 2][1 / 2]\n"},
      {"#define __LINE__ 7\n__LINE__\n__LINE__ __LINE__\n#if __LINE__ == 4\nx\n#endif\n",
       "#line 2 \"a.c\"\n2\n3 3\n#line 5 \"a.c\"\nx\n\n",
       "a.c:1: Warning: Macro \"__LINE__\" has an incompatible redefinition.\n"},
  });
}

TEST(FinalTextTest, AnyDefinitionMayChangeIt) {
  expectRuns({
      {"#define A B\n#define B 1\nA A A\n#undef B\nA A A\n", "#line 3 \"a.c\"\n1 1 1\n#line 5 \"a.c\"\nB B B\n"},
      {"#define A B\n#define B 1\nA A A\n#undef B\n#define B 2\nA A A\n",
       "#line 3 \"a.c\"\n1 1 1\n#line 6 \"a.c\"\n2 2 2\n"},
      {"#define A B\nA A A\n#define B 1\nA A A\n", "#line 2 \"a.c\"\nB B B\n#line 4 \"a.c\"\n1 1 1\n"},
      {"#define A 1\nA A A\n#undef A\nA A A\n", "#line 2 \"a.c\"\n1 1 1\n#line 4 \"a.c\"\nA A A\n"},
  });
}

TEST(FinalTextTest, WhatDependsOnThePlaceIsNotFinal) {
  expectRuns({
      {"#define F(x) <x>\n#define A F\nA(1) A(2) A(3) A;\n", "#line 3 \"a.c\"\n<1> <2> <3> F;\n"},
      {"#define A __LINE__ B\n#define B 1\nA\nA\nA\n", "#line 3 \"a.c\"\n3 1\n4 1\n5 1\n"},
      // The operator takes two lines of the output for itself.
      {"#define A _Pragma(\"p\")\nA\nA\nA\n",
       "#line 2 \"a.c\"\n\n#pragma p\n\n#line 3 \"a.c\"\n\n#pragma p\n\n#line 4 \"a.c\"\n\n#pragma p\n\n"},
  });
}

TEST(FinalTextTest, LongTextsAndManyTokensAreNotKept) {
  const std::string word(100, 'w');
  const std::string words = word + " " + word + " " + word;
  EXPECT_EQ(preprocess("#define B " + word + "\n#define A B B B\nA;A;A\n").output,
            std::string(kFirstLine) + "#line 3 \"a.c\"\n" + words + ";" + words + ";" + words + "\n");
  const std::string empty = repeat(300, "B ") + "B";  // The blanks between them stay.
  const std::string blanks(300, ' ');
  EXPECT_EQ(preprocess("#define B\n#define A " + empty + "\n[A][A][A]\n").output,
            std::string(kFirstLine) + "#line 3 \"a.c\"\n[" + blanks + "][" + blanks + "][" + blanks + "]\n");
}

TEST(FinalTextTest, EachChangeOfADefinitionBeginsAGeneration) {
  StreamSetting setting;
  CppMacroTable table(setting.names, setting.stream);
  const auto begins = [&setting](auto change) {
    const std::uint64_t before = setting.names.generation();
    change();
    return setting.names.generation() != before;
  };
  EXPECT_TRUE(begins([&table] { table.define("A", CppMacro{"1"}); }));
  EXPECT_TRUE(begins([&table] { table.define("A", CppMacro{"2"}); }));
  EXPECT_TRUE(begins([&table] { table.undefine("A"); }));
  EXPECT_FALSE(begins([&table] { table.undefine("A"); }));
  EXPECT_TRUE(begins([&table] { table.defineFromCommandLine("A", "1"); }));
  EXPECT_FALSE(begins([&table] { table.defineFromCommandLine("A", "2"); }));
}

// ---- The search by itself ----

struct FinalTextSearchTest : testing::Test {
  // What A is found to come to in the use of the given number in this generation, under the definitions, all of them
  // used before.
  std::string found(const std::vector<std::string>& definitions, int use) {
    DefinitionSetting setting(definitions);
    for (const std::string& definition : definitions) {
      lexList(setting, definition.substr(0, 1));
    }
    Name& name = setting.streams.name("A");
    bool isFound = false;
    for (; use > 0; --use) {
      isFound = findFinalText(name, setting.streams.names, setting.streams.stream.blocks());
    }
    return isFound ? std::string(name.finalText.text()) : "none";
  }

  static void lexList(DefinitionSetting& setting, const std::string& name) {
    const TokenStream::Hold hold(setting.streams.stream);
    static_cast<void>(setting.table.replacementOf(setting.streams.name(name)));
  }
};

struct SearchRow {
  std::vector<std::string> definitions;
  std::string first;   // At the first use,
  std::string second;  // and at the second.
};

TEST_F(FinalTextSearchTest, TextsWithNamesAreSoughtAtTheSecondUse) {
  const SearchRow rows[] = {
      {{"A"}, "", ""},
      {{"A 1 + \"s\" ;"}, "1 + \"s\" ;", "1 + \"s\" ;"},
      {{"A b"}, "none", "b"},
      {{"A if b"}, "none", "if b"},
      {{"A A"}, "none", "A"},
      {{"A B+B", "B 1"}, "none", "1+1"},
      {{"A B C", "B <C>", "C [A B C]"}, "none", "<[A B C]> [A <C> C]"},
      {{"A defined"}, "none", "defined"},
      {{"A _Pragma"}, "none", "none"},
      {{"A F", "F(x) x"}, "none", "none"},
      {{"A B", "B F", "F(x) x"}, "none", "none"},
  };
  for (const SearchRow& row : rows) {
    EXPECT_EQ(found(row.definitions, 1), row.first) << row.definitions.front();
    EXPECT_EQ(found(row.definitions, 2), row.second) << row.definitions.front();
    EXPECT_EQ(found(row.definitions, 3), row.second) << row.definitions.front();
  }
}

TEST_F(FinalTextSearchTest, LongTextsAreNotKept) {
  const std::string word(250, 'w');
  EXPECT_EQ(found({"A " + word}, 2), word);
  EXPECT_EQ(found({"A " + word + "w"}, 2), "none");
  const std::string tokens = repeat(100, "x+");
  EXPECT_EQ(found({"A " + tokens}, 2), tokens);
  EXPECT_EQ(found({"A " + tokens + "x"}, 2), "none");
  const std::string fixed = repeat(100, "1+2,");
  EXPECT_EQ(found({"A " + fixed}, 1), fixed);  // That one is the definition's own.
}

TEST_F(FinalTextSearchTest, AMacroThatHasNotBeenUsedIsNotLookedInto) {
  DefinitionSetting setting({"A B", "B b"});
  Name& name = setting.streams.name("A");
  EXPECT_FALSE(findFinalText(name, setting.streams.names, setting.streams.stream.blocks()));  // Nor is A itself.
  lexList(setting, "A");
  EXPECT_FALSE(findFinalText(name, setting.streams.names, setting.streams.stream.blocks()));
  EXPECT_FALSE(findFinalText(name, setting.streams.names, setting.streams.stream.blocks()));
  lexList(setting, "B");
  EXPECT_FALSE(findFinalText(name, setting.streams.names,
                             setting.streams.stream.blocks()));  // It was sought in vain in this generation.
  setting.streams.names.beginGeneration();
  EXPECT_FALSE(findFinalText(name, setting.streams.names, setting.streams.stream.blocks()));
  EXPECT_TRUE(findFinalText(name, setting.streams.names, setting.streams.stream.blocks()));
  EXPECT_EQ(name.finalText.text(), "b");
}

TEST_F(FinalTextSearchTest, WhatLastsAsLongAsTheDefinitionNeedsNoUse) {
  DefinitionSetting setting({"A B", "B 1"});
  EXPECT_EQ(setting.streams.name("B").finalText.text(), "1");
  Name& name = setting.streams.name("A");
  lexList(setting, "A");
  EXPECT_FALSE(findFinalText(name, setting.streams.names, setting.streams.stream.blocks()));
  EXPECT_TRUE(findFinalText(name, setting.streams.names, setting.streams.stream.blocks()));
  EXPECT_EQ(name.finalText.text(), "1");
  setting.table.undefine("B");
  EXPECT_FALSE(setting.streams.name("B").finalText.holdsIn(setting.streams.names.generation()));
  EXPECT_FALSE(name.finalText.holdsIn(setting.streams.names.generation()));
}

}  // namespace
}  // namespace qnpp
