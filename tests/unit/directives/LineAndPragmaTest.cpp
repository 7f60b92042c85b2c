// #line, #pragma, _Pragma and #error.
#include <gtest/gtest.h>

#include "tests/unit/support/RunRows.h"

namespace qnpp {
namespace {

TEST(LineTest, TheNumberIsThatOfTheDirectiveItself) {
  expectRuns({
      {"#line 10\nx\n", "#line 10 \"a.c\"\n#line 11 \"a.c\"\nx\n"},
      {"#line 10 \"b.c\"\nx\n", "#line 10 \"b.c\"\n#line 11 \"b.c\"\nx\n"},
      {"#line 10 \"b.c\"\n\nx\n", "#line 10 \"b.c\"\n\n#line 12 \"b.c\"\nx\n"},
      {"#line 10 \"\"\nx\n", "#line 10 \"\"\n#line 11 \"\"\nx\n"},
      {"#line 10 \"a\\\\b\"\nx\n", "#line 10 \"a\\\\\\\\b\"\n#line 11 \"a\\\\\\\\b\"\nx\n"},
      {"#line 7 // c\n__LINE__\n", "#line 7 \"a.c\"\n#line 8 \"a.c\"\n8\n"},
      {"#define N 30 \"n.c\"\n#line N\nx\n", "#line 30 \"n.c\"\n#line 31 \"n.c\"\nx\n"},
      {"#line __LINE__\nx\n", "#line 1 \"a.c\"\n#line 2 \"a.c\"\nx\n"},
  });
}

TEST(LineTest, NumbersWrapAt32Bits) {
  expectRuns({
      {"#line 2147483647\nx\n", "#line 2147483647 \"a.c\"\n#line -2147483648 \"a.c\"\nx\n"},
      {"#line 2147483648\nx\n", "#line -2147483648 \"a.c\"\n#line -2147483647 \"a.c\"\nx\n"},
      {"#line 4294967295\nx\n", "#line -1 \"a.c\"\n#line 0 \"a.c\"\nx\n"},
      {"#line 4294967297\nx\n", "#line 1 \"a.c\"\n#line 2 \"a.c\"\nx\n"},
      {"#line 18446744073709551626\nx\n", "#line 10 \"a.c\"\n#line 11 \"a.c\"\nx\n"},
  });
}

TEST(LineTest, TheOperandIsADecimalNumberAndAName) {
  constexpr const char* kFormat = "a.c:1: Invalid format for \"#line\" directive.\n";
  expectRuns({
      {"#line\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line x\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line \"b.c\"\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line 010\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line 00\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line 0x10\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line 10L\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line 10u\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line -1\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line 0\nx\n", "#line 2 \"a.c\"\nx\n", "a.c:1: Invalid line number.\n"},
      {"#line 0L\nx\n", "#line 2 \"a.c\"\nx\n", kFormat},
      {"#line 0 \"b.c\"\nx\n", "#line 2 \"a.c\"\nx\n", "a.c:1: Invalid line number.\n"},
      // The number is in force even if what follows is wrong.
      {"#line 20 foo\nx\n", "#line 21 \"a.c\"\nx\n", "a.c:20: Invalid format for \"#line\" directive.\n"},
      {"#line 20 20\nx\n", "#line 21 \"a.c\"\nx\n", "a.c:20: Invalid format for \"#line\" directive.\n"},
      {"#line 20 \"b.c\" x\nx\n", "#line 20 \"b.c\"\n#line 21 \"b.c\"\nx\n",
       "b.c:20: Invalid characters appear before a new-line in the preprocessor directive.\n"},
  });
}

TEST(PragmaTest, PragmasArePassedThrough) {
  expectRuns({
      {"#pragma once\nx\n", "#pragma  once\nx\n"},
      {"#pragma\nx\n", "#pragma \nx\n"},
      {"#pragma(a)\n", "#pragma (a)\n"},
      {"#define a b\n#pragma a /* c */ \\\n d\nx\n", "#pragma  a    d\n#line 4 \"a.c\"\nx\n"},
      {"x\n#pragma a\ny\n", "x\n#pragma  a\ny\n"},
      {"#if 0\n#pragma a\n#endif\n", "\n\n"},
  });
}

TEST(PragmaTest, ThePragmaOperatorStandsOnALineOfItsOwn) {
  expectRuns({
      {"_Pragma(\"a\")\n", "\n#pragma a\n\n"},
      {"x _Pragma(\"a \\\"b\\\"\") y\nz\n", "x \n#pragma a \"b\"\n y\n#line 2 \"a.c\"\nz\n"},
      {"_Pragma ( \"a\\\\b\" )x\n", "\n#pragma a\\b\nx\n"},
      {"_Pragma(\"\")\n", "\n#pragma \n\n"},
      {"#define P(x) _Pragma(#x) x\nP(a \"b\")\n", "#line 2 \"a.c\"\n\n#pragma a \"b\"\n a \"b\"\n"},
      {"_Pragma\n(\n\"a\"\n)\nx\n", "\n#pragma a\n\n#line 5 \"a.c\"\nx\n"},
  });
}

TEST(PragmaTest, ThePragmaOperatorNeedsAString) {
  constexpr const char* kMessage = "a.c:1: _Pragma requires a parenthesized string literal.\n";
  expectRuns({
      {"_Pragma x y\n", " y\n", kMessage},
      {"_Pragma(x)\n", ")\n", kMessage},
      {"_Pragma(\"a\" x)\n", ")\n", kMessage},
      {"_Pragma(L\"a\")\n", "\"a\")\n", kMessage},
      {"_Pragma()\n", "\n", kMessage},
  });
}

TEST(ErrorTest, TheTextIsTheMessage) {
  expectRuns({
      {"#error\nx\n", "#line 2 \"a.c\"\nx\n", "a.c:1: #error directive: .\n"},
      {"#error stop here\nx\n", "#line 2 \"a.c\"\nx\n", "a.c:1: #error directive:  stop here.\n"},
      {"#define a b\n#error a  \"s\"\\\n c /* d */ // e\n", "", "a.c:3: #error directive:  a  \"s\" c    .\n"},
      {"#error(x)", "", "a.c:1: #error directive: (x).\n"},
  });
}

}  // namespace
}  // namespace qnpp
