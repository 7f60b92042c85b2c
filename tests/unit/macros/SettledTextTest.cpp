// Object-like macros that come to the same text at each use. It is sought at the second use, and from the third on the
// lexer writes it; so each macro is used three times here, and every use has to give the same.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/unit/support/RunRows.h"
#include "tests/unit/support/Streams.h"

namespace qnpp {
namespace {

TEST(SettledTextTest, EachUseGivesTheSame) {
  expectRuns({
      {"#define A a 1\nA A A\n", "#line 2 \"a.c\"\na 1 a 1 a 1\n"},
      {"#define A\n[A] [A] [A]\n", "#line 2 \"a.c\"\n[] [] []\n"},
      {"#define A B + 1\n#define B 2\nA A A\n", "#line 3 \"a.c\"\n2 + 1 2 + 1 2 + 1\n"},
      {"#define A A B\n#define B A\nA, A, A\n", "#line 3 \"a.c\"\nA A, A A, A A\n"},
      {"#define A B\n#define B 1\n#define F(x) x A\nA A A F(A) A\n", "#line 4 \"a.c\"\n1 1 1 1 1 1\n"},
  });
}

TEST(SettledTextTest, AnyDefinitionMayChangeIt) {
  expectRuns({
      {"#define A B\n#define B 1\nA A A\n#undef B\nA A A\n", "#line 3 \"a.c\"\n1 1 1\n#line 5 \"a.c\"\nB B B\n"},
      {"#define A B\n#define B 1\nA A A\n#undef B\n#define B 2\nA A A\n",
       "#line 3 \"a.c\"\n1 1 1\n#line 6 \"a.c\"\n2 2 2\n"},
      {"#define A B\nA A A\n#define B 1\nA A A\n", "#line 2 \"a.c\"\nB B B\n#line 4 \"a.c\"\n1 1 1\n"},
      {"#define A 1\nA A A\n#undef A\nA A A\n", "#line 2 \"a.c\"\n1 1 1\n#line 4 \"a.c\"\nA A A\n"},
  });
}

TEST(SettledTextTest, WhatDependsOnThePlaceIsNotSettled) {
  expectRuns({
      {"#define F(x) <x>\n#define A F\nA(1) A(2) A(3) A;\n", "#line 3 \"a.c\"\n<1> <2> <3> F;\n"},
      {"#define A __LINE__ B\n#define B 1\nA\nA\nA\n", "#line 3 \"a.c\"\n3 1\n4 1\n5 1\n"},
      // The operator takes two lines of the output for itself.
      {"#define A _Pragma(\"p\")\nA\nA\nA\n",
       "#line 2 \"a.c\"\n\n#pragma p\n\n#line 3 \"a.c\"\n\n#pragma p\n\n#line 4 \"a.c\"\n\n#pragma p\n\n"},
  });
}

TEST(SettledTextTest, LongTextsAndManyTokensAreNotKept) {
  const std::string word(100, 'w');
  const std::string words = word + " " + word + " " + word;
  EXPECT_EQ(preprocess("#define B " + word + "\n#define A B B B\nA;A;A\n").output,
            std::string(kFirstLine) + "#line 3 \"a.c\"\n" + words + ";" + words + ";" + words + "\n");
  const std::string empty = repeat(300, "B ") + "B";  // The blanks between them stay.
  const std::string blanks(300, ' ');
  EXPECT_EQ(preprocess("#define B\n#define A " + empty + "\n[A][A][A]\n").output,
            std::string(kFirstLine) + "#line 3 \"a.c\"\n[" + blanks + "][" + blanks + "][" + blanks + "]\n");
}

TEST(SettledTextTest, EachChangeOfADefinitionBeginsAGeneration) {
  StreamSetting setting;
  CppMacroTable table(setting.names, setting.stream);
  const auto begins = [&setting](auto change) {
    const std::uint64_t before = setting.names.generation();
    change();
    return setting.names.generation() != before;
  };
  EXPECT_TRUE(begins([&table] { table.define("A", CppMacro{"1", {}, false, nullptr}); }));
  EXPECT_TRUE(begins([&table] { table.define("A", CppMacro{"2", {}, false, nullptr}); }));
  EXPECT_TRUE(begins([&table] { table.undefine("A"); }));
  EXPECT_FALSE(begins([&table] { table.undefine("A"); }));
  EXPECT_TRUE(begins([&table] { table.defineFromCommandLine("A", "1"); }));
  EXPECT_FALSE(begins([&table] { table.defineFromCommandLine("A", "2"); }));
}

}  // namespace
}  // namespace qnpp
