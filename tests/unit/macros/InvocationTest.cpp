// Macro invocations in text: which names are expanded, and what their arguments are.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/support/MacroRows.h"

namespace qnpp {
namespace {

constexpr const char* kTooFew = "There are not enough arguments in a macro invocation";
constexpr const char* kTooMany = "A macro invocation has too many arguments";
constexpr const char* kUnterminated = "The macro invocation is improperly terminated";

TEST(InvocationTest, NamesWithADefinitionAreExpanded) {
  expectExpansions({
      {{"A 1"}, "A a A", "1 a 1"},
      {{"A 1"}, "AA A1 _A \"A\" 'A' 1A", "AA A1 _A \"A\" 'A' 11"},
      {{"A"}, "[A]", "[]"},
      {{"A   a   b "}, "A", "a b"},
      {{"A B", "B 2"}, "A", "2"},
      {{"A B C", "B 1", "C A B"}, "A", "1 A 1"},
      {{"line 7"}, "line lines", "7 lines"},
      {{"ident B", "B if", "if 3"}, "ident", "3"},
      {{"F (x) x"}, "F", "(x) x"},
      {{"A a ## b # c"}, "A", "a ## b # c"},
      {{"E", "A E E E"}, "[A]", "[  ]"},
  });
}

// The words `defined` and `_Pragma` are no names.
TEST(InvocationTest, DefinedIsNeverExpanded) {
  expectExpansions({
      {{"A defined"}, "A defined", "defined defined"},
  });
  const Preprocessed run = preprocess("#define defined 1\ndefined\n");
  EXPECT_EQ(run.messages, "a.c:1: Invalid macro name.\n");
}

TEST(InvocationTest, ANameIsNotExpandedInsideItsOwnExpansion) {
  expectExpansions({
      {{"A A"}, "A", "A"},
      {{"A A+1"}, "A A", "A+1 A+1"},
      {{"A B", "B A"}, "A B", "A B"},
      {{"A (B)", "B [A C]", "C {B}"}, "A", "([A {B}])"},
      {{"F(x) F(x) x"}, "F(1)", "F(1) 1"},
      {{"F(x) x", "A F"}, "A(A)", "F"},
      {{"F(x) x"}, "F(F(1))", "1"},
      {{"F(x) x"}, "F(F)(1)", "F(1)"},
      {{"A A+1", "F(x) x"}, "F(A)", "A+1"},
      {{"f(a) a*g", "g(a) f(a)"}, "f(2)(9)", "2*f(9)"},
      {{"g f", "f(a) a g"}, "f(1)(2)", "1 f(2)"},
  });
}

TEST(InvocationTest, AFunctionLikeNameNeedsAParenthesis) {
  expectExpansions({
      {{"F(x) <x>"}, "F(1)", "<1>"},
      {{"F(x) <x>"}, "F  (1)", "<1>"},
      {{"F(x) <x>"}, "F/**/(1)", "<1>"},
      {{"F(x) <x>"}, "F + 1", " F+ 1"},
      {{"F(x) <x>"}, "F x", " Fx"},
      {{"F(x) <x>"}, "F\tx", "\tFx"},
      {{"F(x) <x>"}, "(F)(1)", "(F)(1)"},
      {{"F(x) <x>", "A F"}, "A(1)", "<1>"},
      {{"F(x) <x>", "A F"}, "A (1)", "<1>"},
      {{"F(x) <x>", "A F("}, "A 1)", "<1>"},
      {{"F(x) <x>", "A F(1"}, "A)", "<1>"},
      {{"F(x) <x>", "L ("}, "F L 1)", " F( 1)"},
  });
}

TEST(InvocationTest, ArgumentsAreSeparatedByCommasOutsideOfParentheses) {
  expectExpansions({
      {{"F() 0"}, "F()", "0"},
      {{"F() 0"}, "F(  )", "0"},
      {{"F(x) <x>"}, "F( a )", "<a>"},
      {{"F(x) <x>"}, "F((a,b))", "<(a,b)>"},
      {{"F(x) <x>"}, "F(())", "<()>"},
      {{"F(x) <x>"}, "F((()((a))))", "<(()((a)))>"},
      {{"F(x,y) <x|y>"}, "F(a,b)", "<a|b>"},
      {{"F(x,y) <x|y>"}, "F(a,(b,c))", "<a|(b,c)>"},
      {{"F(x,y) <x|y>"}, "F(\",\",',')", "<\",\"|','>"},
      {{"F(x,y) <x|y>"}, "F(  a   b ,c  )", "<a b|c>"},
      {{"F(x,y) <x|y>"}, "F(,b)", "<|b>"},
      {{"F(x,y) <x|y>"}, "F( ,b)", "<|b>"},
      {{"F(x,y,z) <x|y|z>"}, "F(,,c)", "<||c>"},
      {{"F(x) <x>"}, "F(a /* , */ b)", "<a b>"},
      {{"F(x) <x>"}, "F([)]", "<[>]"},
      {{"F(x) <x>"}, "F(#x)", "<#x>"},
      {{"F(x) <x>"}, "F(a)(b)", "<a>(b)"},
      {{"F(x) <x>"}, "F(F(F(a)))", "<<<a>>>"},
  });
}

// A comma directly before ")" adds nothing, and "()" has no argument.
TEST(InvocationTest, ATrailingEmptyArgumentDoesNotCount) {
  expectExpansions({
      {{"F(x) <x>"}, "F(a,)", "<a>"},
      {{"F(x,y) <x|y>"}, "F(a,b,)", "<a|b>"},
      {{"F(x) <x>"}, "F(,)", "<>"},
      {{"F(x) <x>"}, "F()", "F", kTooFew},
      {{"F(x,y) <x|y>"}, "F(a,)", "F", kTooFew},
      {{"F(x,y) <x|y>"}, "F(,)", "F", kTooFew},
  });
}

TEST(InvocationTest, TheNumberOfArgumentsHasToFit) {
  expectExpansions({
      {{"F(x,y) x"}, "[F(1)]", "[F]", kTooFew},
      {{"F(x,y) x"}, "F(1,2,3)", "F", kTooMany},
      {{"F(x,y) x"}, "F(1,2,3,4)", "F4)", kTooMany},
      {{"F(x,y) x"}, "F(1,2,3,4,5)", "F4,5)", kTooMany},
      {{"F(x,y) x"}, "F(1,2,3 ,)", "F)", kTooMany},
      {{"F() x"}, "F(1)", "F", kTooMany},
      {{"F() x"}, "F(1,2)", "F2)", kTooMany},
      {{"F() x"}, "F(,)", "F)", kTooMany},
      {{"F(x) x"}, "F(1,F(2))", "F", kTooMany},
  });
}

struct SourceRow {
  const char* source;
  const char* output;
  const char* messages = "";
};

TEST(InvocationTest, AnInvocationMayGoOverLines) {
  const SourceRow rows[] = {
      {"#define F(x) <x>\nF\n(1)\nz\n", "#line 2 \"a.c\"\n<1>\n#line 4 \"a.c\"\nz\n"},
      {"#define F(x) <x>\nF(1\n+\n2) y\nz\n", "#line 2 \"a.c\"\n<1 + 2> y\n#line 5 \"a.c\"\nz\n"},
      {"#define F(x) <x>\nF(\\\n1)\n", "#line 2 \"a.c\"\n<1>\n"},
      {"#define F(x) <x>\nF\n", "#line 2 \"a.c\"\n\nF"},
      {"#define F(x) <x>\nF\n\nz\n", "#line 2 \"a.c\"\n\n\nFz\n"},
      {"#define F(x) <x>\nF(a\n#define A\nb)\n", "#line 2 \"a.c\"\n<a #define A b>\n"},
  };
  for (const SourceRow& row : rows) {
    const Preprocessed run = preprocess(row.source);
    EXPECT_EQ(run.output, std::string(kFirstLine) + row.output) << row.source;
    EXPECT_EQ(run.messages, row.messages) << row.source;
  }
}

TEST(InvocationTest, TheInputMayEndInsideAnInvocation) {
  const std::string message = std::string("a.c:3: ") + kUnterminated + ".\n";
  const SourceRow rows[] = {
      {"#define F(x) x\nF(1\n", "#line 2 \"a.c\"\nF", message.c_str()},
      {"#define F(x) x\nF(\n", "#line 2 \"a.c\"\nF", message.c_str()},
      {"#define F(x) x\nF(1,\n", "#line 2 \"a.c\"\nF", message.c_str()},
      {"#define F(x) x\nF((1)\n", "#line 2 \"a.c\"\nF", message.c_str()},
  };
  for (const SourceRow& row : rows) {
    const Preprocessed run = preprocess(row.source);
    EXPECT_EQ(run.output, std::string(kFirstLine) + row.output) << row.source;
    EXPECT_EQ(run.messages, row.messages) << row.source;
    EXPECT_TRUE(run.hasError) << row.source;
  }
}

// In the operand of a directive an invocation ends with the line.
TEST(InvocationTest, AnOperandIsClosedAtItsEnd) {
  const SourceRow rows[] = {
      {"#define F(x) 1\n#if F(2\n)\n#endif\nz\n", "\n\n#line 5 \"a.c\"\nz\n",
       "a.c:2: The macro invocation is improperly terminated.\n"},
      {"#define F(x) 1\n#if F\n(2)\n#endif\nz\n", "\n\n#line 5 \"a.c\"\nz\n"},
      {"#define F(x) 1\n#if F (2)\nyes\n#endif\n", "#line 3 \"a.c\"\nyes\n\n"},
      {"#define F(x) 1\n#if F(2,3)\nyes\n#endif\n", "\n\n", "a.c:2: A macro invocation has too many arguments.\n"},
  };
  for (const SourceRow& row : rows) {
    const Preprocessed run = preprocess(row.source);
    EXPECT_EQ(run.output, std::string(kFirstLine) + row.output) << row.source;
    EXPECT_EQ(run.messages, row.messages) << row.source;
  }
}

// Definitions of the command line are taken as they stand: blanks, line ends and comments in them are read.
TEST(InvocationTest, VerbatimDefinitionsAreReadAsTheyStand) {
  struct Row {
    std::string definition;
    const char* output;
    const char* messages = "";
  };
  const Row rows[] = {
      {"  x   y ", "[  x   y ]\n"},
      {"1 /* c */ 2", "[1   2]\n"},
      {"x // y", "[x  ]\n"},
      {"A B", "[A B]\n"},
      {"/* open", "[ ]\n", "1: unterminated comment.\n"},
      {"\"open", "[\"open]\n"},
  };
  for (const Row& row : rows) {
    const Preprocessed run = preprocess("[A]\n", {.definitions = {{"A", row.definition}}});
    EXPECT_EQ(run.output, std::string(kFirstLine) + row.output) << row.definition;
    EXPECT_EQ(run.messages, row.messages) << row.definition;
  }
}

}  // namespace
}  // namespace qnpp
