// Constant expressions: values, signedness and errors.
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "directives/ExpressionEvaluator.h"
#include "macros/CppMacro.h"
#include "macros/FinalText.h"
#include "tests/support/Preprocess.h"
#include "tests/support/Text.h"
#include "tests/unit/support/Streams.h"
#include "tests/unit/support/Timing.h"

namespace qnpp {
namespace {

struct ValueRow {
  std::string_view expression;
  std::uint32_t value;
  bool isSigned;
};

constexpr ValueRow kValues[] = {
#include "tests/unit/directives/expression_rows.inc"
};

std::string hexadecimal(std::uint32_t value) {
  std::ostringstream text;
  text << "0x" << std::hex << value << 'u';
  return text.str();
}

struct Evaluated {
  CppExprValue value;
  bool isOk;
  std::string messages;
  std::string rest;
};

// Evaluates an expression with the macros ONE and F defined, but not expanded.
Evaluated evaluate(const std::string& expression) {
  const std::string line = expression + "\n";
  StreamSetting setting(line);
  CppMacro macro;
  setting.name("ONE").macro = setting.name("F").macro = &macro;
  MessageList messages;
  const auto [value, isOk] = ExpressionEvaluator(setting.stream, messages, setting.budget).evaluate();
  return {value, isOk, messages.identifiers, setting.takeAll()};
}

// Whether `#if condition` takes its group, without a message.
bool holds(const std::string& condition) {
  const Preprocessed run =
      preprocess("#define ONE 1\n#define F(x) x\n#if " + condition + "\n#define YES yes\n#endif\nYES\n");
  EXPECT_EQ(run.messages, "") << condition;
  return run.output.find("\nyes\n") != std::string::npos;
}

TEST(ExpressionTest, ValuesAndSignednessAreThoseOfTheTable) {
  int evaluated = 0;
  for (const ValueRow& row : kValues) {
    const std::string expression(row.expression);
    // The evaluator sees expressions whose macros have been expanded.
    if (expression.find("ONE") != std::string::npos && expression.find("defined") == std::string::npos) {
      continue;
    }
    ++evaluated;
    const Evaluated result = evaluate(expression);
    EXPECT_EQ(hexadecimal(result.value.value), hexadecimal(row.value)) << expression;
    EXPECT_EQ(result.value.isSigned, row.isSigned) << expression;
    EXPECT_TRUE(result.isOk) << expression;
    EXPECT_EQ(result.messages, "") << expression;
  }
  EXPECT_GE(evaluated, static_cast<int>(std::size(kValues)) - 3);
}

// Read right from its line, with ONE and F as they are.
struct LineEvaluated {
  std::optional<CppExprValue> value;
  std::string messages;
  std::string rest;
};

struct ObjectLikeMacros final : PlainLine::Macros {
  std::optional<std::string_view> textOf(const Name& macro) override { return findTextInPlace(macro); }
  std::optional<std::string_view> expand(Name& /*macro*/, const char*& /*at*/) override { return std::nullopt; }
};

LineEvaluated evaluateLine(const std::string& expression) {
  const std::string text = "x " + expression + "\nnext\n";
  StreamSetting setting(text);
  CppMacro one{"1", {}, false};
  CppMacro function{"x", {"x,", 1}, true};
  setting.name("ONE").macro = &one;
  setting.name("F").macro = &function;
  setting.names.noteMacro(setting.name("ONE"));
  setting.names.noteMacro(setting.name("F"));
  setting.stream.get();
  MessageList messages;
  ExpressionEvaluator evaluator(setting.stream, messages, setting.budget);
  ObjectLikeMacros macros;
  const std::optional<CppExprValue> value = evaluator.evaluateLine(macros);
  return {value, messages.identifiers, setting.takeAll()};
}

TEST(ExpressionTest, LinesHaveTheValuesOfTheTable) {
  int evaluated = 0;
  for (const ValueRow& row : kValues) {
    const LineEvaluated result = evaluateLine(std::string(row.expression));
    if (!result.value) {
      continue;  // For the name of a function-like macro, and a continued line end.
    }
    ++evaluated;
    EXPECT_EQ(hexadecimal(result.value->value), hexadecimal(row.value)) << row.expression;
    EXPECT_EQ(result.value->isSigned, row.isSigned) << row.expression;
    EXPECT_EQ(result.rest, "next|<LF>") << row.expression;
  }
  EXPECT_GE(evaluated, static_cast<int>(std::size(kValues)) - 3);
}

// Where something would be reported, or the program would end, the line is left as it is.
TEST(ExpressionTest, LinesWithFaultsAreLeft) {
  for (const char* const expression : {"",
                                       "1 +",
                                       "(",
                                       ")",
                                       "1 2",
                                       "(1",
                                       "(1 2)",
                                       "1 ? 2",
                                       "1 ? : 2",
                                       "foo(1)",
                                       "(1)(2)",
                                       "1(2)",
                                       "defined",
                                       "defined 1",
                                       "defined if",
                                       "defined defined",
                                       "defined ()",
                                       "defined (ONE",
                                       "defined ((ONE))",
                                       "defined ONE ONE",
                                       "_Pragma",
                                       "'abcde'",
                                       "F",
                                       "F(1)",
                                       "1 / F(0)",
                                       "1/0",
                                       "1%0",
                                       "1u/0u",
                                       "0 && 1/0",
                                       "1 ? 2 : 1/0",
                                       "1 / unknown",
                                       "(-2147483647-1) / -1",
                                       "(-2147483647-1) % -1",
                                       "1 / (",
                                       "1 / '",
                                       "1 ;",
                                       "ONE = 1"}) {
    const LineEvaluated result = evaluateLine(expression);
    EXPECT_FALSE(result.value) << expression;
    EXPECT_EQ(result.messages, "") << expression;
    const std::string whole = std::string(" ") + expression + "\nnext\n";
    StreamSetting untouched(whole);
    EXPECT_EQ(result.rest, untouched.takeAll()) << expression;
  }
}

// The same through the directive: the value by comparison, the signedness by the sign of -1.
TEST(ExpressionTest, DirectivesSeeTheValuesOfTheTable) {
  int evaluated = 0;
  for (const ValueRow& row : kValues) {
    const std::string expression(row.expression);
    if (expression.find("//") != std::string::npos && expression.find('\'') == std::string::npos) {
      continue;  // The comment would take the parenthesis with it.
    }
    ++evaluated;
    EXPECT_TRUE(holds("(" + expression + ") == " + hexadecimal(row.value))) << expression;
    EXPECT_EQ(holds("(" + expression + ") * 0 - 1 < 0"), row.isSigned) << expression;
    EXPECT_EQ(holds(expression), row.value != 0) << expression;
  }
  EXPECT_GE(evaluated, static_cast<int>(std::size(kValues)) - 1);
}

struct ErrorRow {
  const char* expression;
  const char* messages;  // Each without its place, its full stop and its line end.
};

std::string located(std::string_view messages) {
  std::string lines;
  while (!messages.empty()) {
    const std::size_t end = messages.find('\n');
    lines.append("a.c:1: ").append(messages.substr(0, end)).append(".\n");
    messages.remove_prefix(end == std::string_view::npos ? messages.size() : end + 1);
  }
  return lines;
}

// `#if` with each of these takes the `#else` group.
TEST(ExpressionTest, ErrorsMakeTheConditionFalse) {
  const ErrorRow rows[] = {
      {"", "Lexical element expected"},
      {"1 +", "Lexical element expected"},
      {"+", "Lexical element expected"},
      {"(", "Lexical element expected\n\")\" expected"},
      {"()", "Lexical element expected\n\")\" expected"},
      {")", "Lexical element expected"},
      {"1 || ", "Lexical element expected"},
      {"1 == ;", "Lexical element expected"},
      {"\"s\"", "Lexical element expected"},
      {"= 1", "Lexical element expected"},
      {"* 2", "Lexical element expected"},
      {"#", "Lexical element expected"},
      {"_Pragma", "Lexical element expected"},
      {"(1", "\")\" expected"},
      {"((1)", "\")\" expected"},
      {"(1 2)", "\")\" expected"},
      {"1 ? 2", "\":\" expected in constant expression"},
      {"1 ? 2 ; 3", "\":\" expected in constant expression"},
      {"1 ? : 2", "Lexical element expected\n\":\" expected in constant expression"},
      {"0 ? 1 : ", "Lexical element expected"},
      {"1 ? 2 : ", "Lexical element expected"},
      {"foo(1)", "A function call is not allowed in a constant expression"},
      {"foo (1)", "A function call is not allowed in a constant expression"},
      {"if(1)", "A function call is not allowed in a constant expression"},
      {"(1)(2)", "A function call is not allowed in a constant expression"},
      {"1 + foo(", "A function call is not allowed in a constant expression"},
      {"defined", "Identifier expected for 'defined' operator"},
      {"defined 1", "Identifier expected for 'defined' operator"},
      {"defined if", "Identifier expected for 'defined' operator"},
      {"defined defined", "Identifier expected for 'defined' operator"},
      {"defined ()", "Identifier expected for 'defined' operator\n\")\" expected for \"defined\" operator"},
      {"defined (1)", "Identifier expected for 'defined' operator"},
      {"defined (", "Identifier expected for 'defined' operator\n\")\" expected for \"defined\" operator"},
      {"defined (ONE", "\")\" expected for \"defined\" operator"},
      {"defined (ONE TWO)", "\")\" expected for \"defined\" operator"},
      {"defined ((ONE))", "Identifier expected for 'defined' operator\n\")\" expected for \"defined\" operator"},
      // Evaluation goes on, so that later errors are seen too; nothing is short-circuited.
      {"(foo(1) + (2", "A function call is not allowed in a constant expression\n\")\" expected"},
      {"1 || foo(2)", "A function call is not allowed in a constant expression"},
      {"0 && foo(2)", "A function call is not allowed in a constant expression"},
      {"0 ? foo(1) : 2",
       "A function call is not allowed in a constant expression\n\":\" expected in constant expression"},
      {"; + ;", "Lexical element expected\nLexical element expected"},
      {"'abcde' + ;", "Too many characters in character literal\nLexical element expected"},
  };
  for (const ErrorRow& row : rows) {
    const Preprocessed run =
        preprocess(std::string("#if ") + row.expression + "\n#define YES yes\n#else\nno\n#endif\nYES\n");
    EXPECT_EQ(run.messages, located(row.messages)) << row.expression;
    EXPECT_TRUE(run.hasError) << row.expression;
    EXPECT_NE(run.output.find("\nno\n"), std::string::npos) << row.expression;
    EXPECT_EQ(run.output.find("\nyes\n"), std::string::npos) << row.expression;
    EXPECT_FALSE(evaluate(row.expression).isOk) << row.expression;
  }
}

struct RestRow {
  const char* expression;
  std::uint32_t value;
  const char* rest;
  const char* messages = "";
};

// The evaluator by itself: an unexpected token stays, and evaluation goes on behind errors.
TEST(ExpressionTest, WhatIsBehindAnExpressionIsLeft) {
  const RestRow rows[] = {
      {"1", 1, "<LF>"},
      {"1 + 1 /* c */ ", 2, "<LF>"},
      {"1 2", 1, "2|<LF>"},
      {"1 ) + 2", 1, ")| |+| |2|<LF>"},
      {"ONE", 0, "<LF>"},
      {"defined ONE", 1, "<LF>"},
      {"defined (F) x", 1, "x|<LF>"},
      {"defined(TWO) : 1", 0, ":| |1|<LF>"},
      {"(1 ; 2", 0, ";| |2|<LF>", "expression-parenthesis"},
      {"1 ? 2 ; 3", 0, ";| |3|<LF>", "expression-colon"},
      {"F(1)", 0, "(|1|)|<LF>", "expression-call"},
      {"(3)(1)", 3, "(|1|)|<LF>", "expression-call"},
      {"; 1", 0, "1|<LF>", "expression-operand"},
      {"defined 1 + 2", 2, "<LF>", "defined-name"},
      {"defined ( 1 2", 0, "2|<LF>", "defined-name defined-parenthesis"},
      {"'abcde'", 0x61626364, "<LF>", "long-character-literal"},
  };
  for (const RestRow& row : rows) {
    const Evaluated result = evaluate(row.expression);
    EXPECT_EQ(hexadecimal(result.value.value), hexadecimal(row.value)) << row.expression;
    EXPECT_EQ(result.rest, row.rest) << row.expression;
    EXPECT_EQ(result.messages, row.messages) << row.expression;
  }
}

// A closed source ends the expression, whatever stands below.
TEST(ExpressionTest, AnOperandEndsWithItsSource) {
  StreamSetting setting("+ 2\n");
  MessageList messages;
  const TokenStream::Hold hold(setting.stream);
  {
    TokenList operand = setting.listOf({"40", " ", "+"});
    const TokenStream::Closed closed(setting.stream, operand);
    const ExpressionEvaluator::Result result = ExpressionEvaluator(setting.stream, messages, setting.budget).evaluate();
    EXPECT_EQ(result.value.value, 40U);
    EXPECT_FALSE(result.isOk);
    EXPECT_EQ(messages.identifiers, "expression-operand");
  }
  EXPECT_EQ(setting.takeAll(), "+| |2|<LF>");
}

// What is left over is reported, but the value counts.
TEST(ExpressionTest, LeftOverTokensAreReportedOnce) {
  const std::string message = "a.c:1: Invalid characters appear before a new-line in the preprocessor directive.\n";
  for (const char* const expression : {"1 2", "1 2 3", "(1) 2", "1 )", "1 ;", "1 = 1", "1 : 2", "1.5", "1e5", "08 ",
                                       "1LL", "1 defined", "defined ONE X", "1 \"s\""}) {
    const Preprocessed run = preprocess(std::string("#if ") + expression + "\nx\n#endif\n");
    EXPECT_EQ(run.messages, message) << expression;
  }
  const Preprocessed run = preprocess("#if 1 2\nx\n#endif\n#if 0 2\ny\n#endif\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 2 \"a.c\"\nx\n\n\n\n");
}

TEST(ExpressionTest, ALongCharacterLiteralIsReportedButCounts) {
  const Preprocessed run = preprocess("#if 'abcde' == 0x61626364\nx\n#endif\n");
  EXPECT_EQ(run.messages, "a.c:1: Too many characters in character literal.\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 2 \"a.c\"\nx\n\n");
  EXPECT_TRUE(run.hasError);
}

// In a condition the operand of `defined` is not expanded, wherever `defined` comes from.
TEST(ExpressionTest, TheOperandOfDefinedIsNotExpanded) {
  EXPECT_TRUE(holds("defined ONE && defined(ONE) && defined ( ONE )"));
  EXPECT_TRUE(holds("defined F && defined (F)"));
  EXPECT_TRUE(holds("!defined NONE"));
  const Preprocessed run = preprocess(
      "#define X NONE\n#define D defined X\n#define E(x) defined x\n#if D\n#define A a\n#endif\nA\n"
      "#if E(X)\n#define B b\n#endif\nB\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "\n#line 7 \"a.c\"\na\n\n\n#line 11 \"a.c\"\nB\n");
  EXPECT_EQ(run.messages, "");
}

// The program ends by the signal of the processor then; here it is an exception. What was written before arrives.
TEST(ExpressionTest, ADivisionWithoutAResultIsThrown) {
  for (const char* const condition : {"1/0", "1%0", "1u/0u", "0 && 1/0", "1 || 1%0", "1 ? 2 : 1/0", "0 ? 1/0 : 2",
                                      "(-2147483647-1) / -1", "(-2147483647-1) % -1", "1/(0*F(1))", "1 /"}) {
    const std::string source = std::string("#define F(x) x\n#if ") + condition + "\n#endif\n";
    EXPECT_EQ(preprocess(source).status, Status::DivisionByZero) << condition;
  }
  for (const char* const expression : {"1/0", "1%0", "(-2147483647-1) / -1", "1 ? 2 : 1/0"}) {
    EXPECT_THROW(evaluate(expression), DivisionByZero) << expression;
  }
  const Preprocessed run = preprocess("text\n#if (1 + 1/0\nmore\n");
  EXPECT_EQ(run.status, Status::DivisionByZero);
  EXPECT_EQ(run.output, std::string(kFirstLine) + "text\n");
  EXPECT_EQ(run.messages, "");
}

// ---- Depth ----

struct DeepRow {
  const char* name;
  std::string condition;
  bool holds;
};

TEST(ExpressionTest, DepthIsLimitedByMemoryAlone) {
  constexpr std::size_t kMany = 200000;
  constexpr std::size_t kConditions = 100000;
  const DeepRow rows[] = {
      {"parentheses", repeat(kMany, "(") + "1" + repeat(kMany, ")"), true},
      {"parentheses around sums", repeat(kConditions, "(1+") + "0" + repeat(kConditions, ")") + " == 100000", true},
      {"not, an even number", repeat(kMany, "!") + "1", true},
      {"not, an odd number", repeat(kMany + 1, "!") + "1", false},
      {"complements", repeat(kMany, "~") + "7 == 7", true},
      {"minuses", repeat(kMany + 1, "-") + "7 == -7", true},
      {"unary operators in parentheses", repeat(kConditions, "-(") + "7" + repeat(kConditions, ")") + " == 7", true},
      {"conditions in the middle", "(" + repeat(kConditions, "1 ? ") + "5" + repeat(kConditions, " : 6") + ") == 5",
       true},
      {"conditions on the right", repeat(kConditions, "0 ? 6 : ") + "5", true},
      {"conditions on the right, none true", repeat(kConditions, "0 ? 6 : ") + "0", false},
      {"sums", "0" + repeat(kMany, " + 1") + " == 200000", true},
      {"all levels", "1" + repeat(kMany / 10, " || 0 && 1 | 1 ^ 1 & 1 == 1 < 1 << 1 + 1 * 1"), true},
  };
  for (const DeepRow& row : rows) {
    bool result = !row.holds;
    const double seconds = secondsOf([&] { result = holds(row.condition); }, 1);
    EXPECT_EQ(result, row.holds) << row.name;
    EXPECT_LT(seconds, 10) << row.name;
  }
}

TEST(ExpressionTest, UnclosedDepthIsReportedForEachLevel) {
  constexpr std::size_t kMany = 20000;
  const Preprocessed run = preprocess("#if " + repeat(kMany, "(") + "1\n#endif\n");
  EXPECT_TRUE(run.messages == repeat(kMany, "a.c:1: \")\" expected.\n"));
}

}  // namespace
}  // namespace qnpp
