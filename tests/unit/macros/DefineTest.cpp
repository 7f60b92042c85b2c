// #define and #undef.
#include <gtest/gtest.h>

#include "tests/unit/support/RunRows.h"

namespace qnpp {
namespace {

TEST(DefineTest, ReplacementTextIsNormalized) {
  expectRuns({
      {"#define X   a    b   \nX\n", "#line 2 \"a.c\"\na b\n"},
      {"#define X a\t/* c */\v b // d\nX\n", "#line 2 \"a.c\"\na b\n"},
      {"#define X a\\\nb \\\n c\nX\n", "#line 4 \"a.c\"\nab c\n"},
      {"#define X\nX.\n", "#line 2 \"a.c\"\n.\n"},
      {"# define X 1\nX\n", "#line 2 \"a.c\"\n1\n"},
      {"#define X 1", ""},
      {"#define/**/X/**/1\nX\n", "#line 2 \"a.c\"\n1\n"},
      {"#define X\"s\"\nX\n", "#line 2 \"a.c\"\n\"s\"\n"},
  });
}

TEST(DefineTest, LiteralsKeepTheirWhiteSpace) {
  expectRuns({
      {"#define X \"a  b\"   'c\t'\nX\n", "#line 2 \"a.c\"\n\"a  b\" 'c\t'\n"},
      {"#define X it's  \"a  b\"\nX\n", "#line 2 \"a.c\"\nit's \"a  b\"\n"},
      {"#define X \"a // b\" // c\n[X]\n", "#line 2 \"a.c\"\n[\"a // b\"]\n"},
  });
}

// The line ends of a comment come out where it stands, and count in messages behind it.
TEST(DefineTest, ACommentMayHoldLineEnds) {
  expectRuns({
      {"#define X a/*\n*/b\nX\n", "\n#line 3 \"a.c\"\na b\n"},
      {"#define X 1\n#define X /*\n*/ 2 /*\n*/\nX\n", "\n\n#line 5 \"a.c\"\n2\n",
       "a.c:4: Warning: Macro \"X\" has an incompatible redefinition.\n"},
      {"#define X a /* b", "", "1: unterminated comment.\n"},
  });
}

TEST(DefineTest, AContinuationMaySplitAName) {
  expectRuns({
      {"#define A\\\nB 1\nAB\n", "#line 3 \"a.c\"\n1\n"},
      {"#define A\\\nif\\\nline 1\nAifline\n", "#line 4 \"a.c\"\n1\n"},
      {"#define AB 1\n#undef A\\\nB\nAB\n", "#line 4 \"a.c\"\nAB\n"},
  });
}

TEST(DefineTest, AParenthesisBehindTheNameBeginsParameters) {
  expectRuns({
      {"#define F (x) x\nF(1)\n", "#line 2 \"a.c\"\n(x) x(1)\n"},
      {"#define F(x) x\nF(1)\n", "#line 2 \"a.c\"\n1\n"},
      {"#define F() 1\nF()\n", "#line 2 \"a.c\"\n1\n"},
      {"#define F( x , y )x y\nF(1,2)\n", "#line 2 \"a.c\"\n1 2\n"},
      {"#define F(a,a) a\nF(1,2)\n", "#line 2 \"a.c\"\n2\n"},
      {"#define F(a,\nb) a+b\nF(1,2)\n", "#line 3 \"a.c\"\n1+2\n"},
      {"#define F(\n\na\n)a\nF(1)\n", "#line 5 \"a.c\"\n1\n"},
      {"#define F(if,line) line if\nF(1,2)\n", "#line 2 \"a.c\"\n2 1\n"},
  });
}

TEST(DefineTest, ABadParameterListDropsTheLine) {
  constexpr const char* kNoIdentifier = "a.c:1: An identifier is expected.\n";
  constexpr const char* kNoComma = "a.c:1: An ')' or ',' was expected.\n";
  expectRuns({
      {"#define F(a,) 1\nF\n", "#line 2 \"a.c\"\nF\n", kNoIdentifier},
      {"#define F(,a) 1\nF\n", "#line 2 \"a.c\"\nF\n", kNoIdentifier},
      {"#define F(1) 1\nF\n", "#line 2 \"a.c\"\nF\n", kNoIdentifier},
      {"#define F(defined) 1\nF\n", "#line 2 \"a.c\"\nF\n", kNoIdentifier},
      {"#define F(...) 1\nF\n", "#line 2 \"a.c\"\nF\n", kNoIdentifier},
      {"#define F(a a) 1\nF\n", "#line 2 \"a.c\"\nF\n", kNoComma},
      {"#define F(a;b) 1\nF\n", "#line 2 \"a.c\"\nF\n", kNoComma},
      {"#define F(a) 1\n#define F(2) 2\nF(0)\n", "#line 3 \"a.c\"\n1\n", "a.c:2: An identifier is expected.\n"},
  });
}

TEST(DefineTest, ANameIsNeeded) {
  expectRuns({
      {"#define\nx\n", "\nx\n", "a.c:1: Invalid macro name.\n"},
      {"#undef\nx\n", "\nx\n", "a.c:1: Invalid macro name.\n"},
      {"#define 1 2\n", "1 2\n", "a.c:1: Invalid macro name.\n"},
      {"#define defined\n", "defined\n", "a.c:1: Invalid macro name.\n"},
      {"#define A 1\n#define #undef A\nA\n", "#line 3 \"a.c\"\nA\n", "a.c:2: Invalid macro name.\n"},
  });
}

TEST(DefineTest, OnlyTextsAreComparedByARedefinition) {
  constexpr const char* kWarning = "a.c:2: Warning: Macro \"A\" has an incompatible redefinition.\n";
  expectRuns({
      {"#define A a b\n#define A  a  b \nA\n", "#line 3 \"a.c\"\na b\n"},
      {"#define A a b\n#define A ab\nA\n", "#line 3 \"a.c\"\nab\n", kWarning},
      {"#define A a+b\n#define A a + b\nA\n", "#line 3 \"a.c\"\na + b\n", kWarning},
      {"#define A 1\n#define A() 1\nA()\n", "#line 3 \"a.c\"\n1()\n"},
      {"#define A(x) x\n#define A x\nA(1)\n", "#line 3 \"a.c\"\n1\n"},
      {"#define A(x,y) x y\n#define A(y,x) x y\nA(1,2)\n", "#line 3 \"a.c\"\n1 2\n"},
      {"#define A 1\n#define A() 2\nA()\n", "#line 3 \"a.c\"\n2\n", kWarning},
      {"#define A\n#define A\nA.\n", "#line 3 \"a.c\"\n.\n"},
      {"#define A 1\n#undef A\n#define A 2\nA\n", "#line 4 \"a.c\"\n2\n"},
  });
}

TEST(DefineTest, AWarningIsNoError) {
  EXPECT_FALSE(preprocess("#define A 1\n#define A 2\n").hasError);
  EXPECT_TRUE(preprocess("#define\n").hasError);
}

TEST(DefineTest, UndefTakesOneTokenBehindTheName) {
  expectRuns({
      {"#define A 1\n#undef A\nA\n", "#line 3 \"a.c\"\nA\n"},
      {"#undef NONE\nx\n", "#line 2 \"a.c\"\nx\n"},
      {"#undef A B\nx\n", "\nx\n"},
      {"#undef A B C\nx\n", " C\nx\n"},
      {"#undef A // c\nx\n", "#line 2 \"a.c\"\nx\n"},
  });
}

// What a name stands for is settled where it is used: a definition is looked up anew at every use.
TEST(DefineTest, DefinitionsTakeEffectAtOnce) {
  expectRuns({
      {"#define A 1\nA\n#undef A\n#define A 2\nA\n#undef A\nA\n",
       "#line 2 \"a.c\"\n1\n#line 5 \"a.c\"\n2\n#line 7 \"a.c\"\nA\n"},
      {"#define A B\n#define B 1\nA\n#undef B\nA\n#define B 2\nA\n",
       "#line 3 \"a.c\"\n1\n#line 5 \"a.c\"\nB\n#line 7 \"a.c\"\n2\n"},
  });
}

}  // namespace
}  // namespace qnpp
