// Substitution of arguments, stringizing and pasting.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/unit/support/MacroRows.h"

namespace qnpp {
namespace {

TEST(SubstitutionTest, ArgumentsAreExpandedBeforeTheyAreSubstituted) {
  expectExpansions({
      {{"A(x) x", "B(y) A(y)"}, "B(B(1))", "1"},
      {{"F(x) [x]", "A 1"}, "F(A) F(A A)", "[1] [1 1]"},
      {{"F(x) x x", "A 1"}, "F(A)", "1 1"},
      {{"F(x) [ x ]", "E"}, "F(E)", "[  ]"},
      {{"F(x,y) y x"}, "F(1,2)", "2 1"},
      {{"F(x) G(x)", "G(x,y) x+y", "A 1,2"}, "F(A)", "1+2"},
      {{"F(x) x", "A F(1"}, "F(A))", "F)", "The macro invocation is improperly terminated"},
      {{"F(x) x (2)", "G(x) <x>"}, "F(G)", "<2>"},
      {{"F(x) x", "G(x) <x>"}, "F(G)(2)", "<2>"},
  });
}

TEST(SubstitutionTest, StringizingKeepsTheSpelling) {
  expectExpansions({
      {{"S(x) #x"}, "S(a)", "\"a\""},
      {{"S(x) #x"}, "S(  a   b  )", "\"a b\""},
      {{"S(x) #x"}, "S(a/**/b)", "\"a b\""},
      {{"S(x) #x", "A 1"}, "S(A)", "\"A\""},
      {{"S(x) #x"}, "S(\"s\")", R"("\"s\"")"},
      {{"S(x) #x"}, R"(S("a\"b"))", R"("\"a\\\"b\"")"},
      {{"S(x) #x"}, R"(S("\\"))", R"("\"\\\\\"")"},
      {{"S(x) #x"}, R"(S('\n'))", R"("'\\n'")"},
      {{"S(x) #x"}, R"(S('"'))", R"("'\"'")"},
      {{"S(x) #x"}, R"(S(  a   "b\n"  c ))", R"("a \"b\\n\" c")"},
      {{"S(x) #x"}, R"(S(\n))", R"("\n")"},
      {{"S(x) #x"}, R"(S(\))", R"("\")"},
      {{"S(x) #x"}, "S((a,b))", "\"(a,b)\""},
      {{"S(x) #x"}, "S(@ $)", "\"@ $\""},
      {{"S(x,y) #x #y"}, "S(a,b)", "\"a\" \"b\""},
      {{"S(x,y) #x#y"}, "S(a,b)", "\"a\"\"b\""},
      {{"S(x,y) #x y"}, "S(,b)", "\"\" b"},
      {{"S(x) # x"}, "S(a)", "\"a\""},
      {{"S(x) #x", "T(x) S(x)", "A 1"}, "T(A)", "\"1\""},
  });
}

TEST(SubstitutionTest, PastingJoinsTexts) {
  expectExpansions({
      {{"C(a,b) a##b"}, "C(x,y)", "xy"},
      {{"C(a,b) a##b"}, "C(1, 2)", "12"},
      {{"C(a,b) a ## b"}, "C(x y,z w)", "x yz w"},
      {{"C(a,b) a##b", "x 1", "xy 2"}, "C(x,y)", "2"},
      {{"C(a,b) a##b", "x 1"}, "C(x,)", "C", "There are not enough arguments in a macro invocation"},
      {{"C(a,b) a##b", "y 1"}, "C(,y)", "1"},
      {{"C(a,b) [a##b]"}, "C(,())", "[()]"},
      {{"C(a,b) a##b"}, "C(+,+) C(+,-)", "++ +-"},
      {{"C(a,b) a##b"}, "C(<,<=)", "<<="},
      {{"C(a) a##1"}, "C(x)", "x1"},
      {{"C(a) x##a##y"}, "C(1)", "x1y"},
      {{"C(a) L ## #a"}, "C(k)", "L\"k\""},
      {{"C(a) x ## ## a"}, "C(1)", "x1"},
      {{"C(a,b) a##b a b"}, "C(x,y)", "xy x y"},
      {{"C(a,b) a##b", "b 7"}, "C(a,b)", "ab"},
      {{"C(a,b) #a##b"}, "C(x,y)", "\"x\"y"},
  });
}

// A joined text is lexed by itself: it is no parameter, opens no literal with its neighbour, and merges with nothing.
TEST(SubstitutionTest, AJoinedTextStandsByItself) {
  expectExpansions({
      {{"C(a,b) a##b", "S(x) #x"}, "C(a,b) S(C(a,b))", "ab \"C(a,b)\""},
      {{"C(a,b,ab) a##b"}, "C(a,b,z)", "ab"},
      {{"C(a) a##1 a##2"}, "C(x)", "x1 x2"},
      {{"C(a) a##a(a)", "xx(y) <y>"}, "C(x)", "<x>"},
      {{"C(a) x##a+", "x1 [x2]", "x2 2"}, "C(1)", "[2]+"},
      {{"C(x) x ## x", "aa C(a)"}, "C(a)", "C(a)"},
      {{"C(a,b) a##b"}, "C(/,* x */)+", " +"},
  });
}

TEST(SubstitutionTest, MisuseIsReportedAtEachInvocation) {
  const Preprocessed run = preprocess(
      "#define F(x) # y\n#define G(x) ## x\n#define H(x) x ##\n#define I(x) a x ## b #\n"
      "F(1)\nF(2)\nG(1)\nH(1)\nI(1)\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 5 \"a.c\"\n\n\n\n1\na 1b\n");
  EXPECT_EQ(run.messages,
            "a.c:5: Macro variable expected after '#' operator.\n"
            "a.c:6: Macro variable expected after '#' operator.\n"
            "a.c:7: '##' operator cannot be at the beginning of the replacement list.\n"
            "a.c:8: '##' operator cannot be at the end of the replacement list.\n"
            "a.c:9: Macro variable expected after '#' operator.\n");
}

// What a parameter's expansion reports is reported for each of its places, and not at all beside "#" or "##".
TEST(SubstitutionTest, MessagesOfAnArgumentRepeat) {
  const std::string message = "a.c:3: There are not enough arguments in a macro invocation.\n";
  struct Row {
    const char* definition;
    const char* expanded;
    int times;
  };
  const Row rows[] = {
      {"F(x) x;", "G;", 1}, {"F(x) x;x;", "G;G;", 2},        {"F(x) #x;", "\"G()\";", 0},
      {"F(x) y", "y", 0},   {"F(x) #x##y;", "\"G()\"y;", 0}, {"F(x) x;#x;x;", "G;\"G()\";G;", 2},
  };
  for (const Row& row : rows) {
    const Preprocessed run = preprocess(std::string("#define ") + row.definition + "\n#define G(y) y\nF(G())\n");
    EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 3 \"a.c\"\n" + row.expanded + "\n") << row.definition;
    EXPECT_EQ(run.messages, repeat(static_cast<std::size_t>(row.times), message)) << row.definition;
  }
}

// Behind the joined comment F looks for a "(", and what it has looked at comes after it: a token of the joined text,
// which is lexed while it is read.
TEST(SubstitutionTest, ATokenLookedAtInAJoinedTextStays) {
  for (const std::size_t size : {5U, 17'000U, 40'000U}) {
    const std::string literal = '"' + std::string(size, 'L') + '"';
    const std::string call = "C(/,*c*/ " + literal + " " + literal + ")";
    const std::string expanded = "   F" + literal + " " + literal;
    expectExpansions({
        {{"F(x) x", "C(a,b) F a##b"}, call, expanded},
        {{"F(x) x", "C(a,b) F a##b", "G(x) x", "A 1"}, "G(" + call + " A)", expanded + " 1"},
    });
  }
}

}  // namespace
}  // namespace qnpp
