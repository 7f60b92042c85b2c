// Values and signedness of constant expressions, as rows of a table.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <string>

#include "directives/CharacterLiteral.h"
#include "tests/unit/support/Preprocess.h"

namespace qnpp {
namespace {

struct ExpressionRow {
  const char* text;
  std::uint32_t value;
  bool isSigned;
};

constexpr ExpressionRow kRows[] = {
#include "tests/unit/directives/expression_rows.inc"
};

// "T" when the condition holds and "F" when not; "?" when anything was reported. `E` in it is `expression`.
std::string outcome(const std::string& condition, const std::string& expression = "0") {
  const Preprocessed run =
      preprocess("#define F(x) x\n#define E " + expression + "\n#if " + condition + "\nyes\n#else\nno\n#endif\n",
                 {.definitions = {{"ONE", "1"}}});
  if (run.hasError) {
    return "? " + run.messages;
  }
  return run.output.find("\nyes\n") != std::string::npos ? "T" : "F";
}

TEST(ExpressionTest, EachRowHasItsValueAndItsSign) {
  for (const ExpressionRow& row : kRows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(outcome("(E) == " + std::to_string(row.value) + "u", row.text), "T");
    EXPECT_EQ(outcome("(E) != " + std::to_string(row.value) + "u", row.text), "F");
    // -1 is below 0 only among signed numbers, and one unsigned operand makes all of it unsigned.
    EXPECT_EQ(outcome("(E) * 0 - 1 < 0", row.text), row.isSigned ? "T" : "F");
  }
}

struct CharacterRow {
  const char* literal;
  std::uint32_t value;
  bool isSigned;
  bool isTooLong;
};

TEST(CharacterLiteralTest, EachRowHasItsValue) {
  constexpr CharacterRow kLiterals[] = {
      {"''", 0, true, false},
      {"'a'", 0x61, true, false},
      {"'ab'", 0x6162, true, false},
      {"'abcd'", 0x61626364, true, false},
      {"'abcde'", 0x61626364, true, true},
      {R"('\n')", 10, true, false},
      {R"('\a\b\f\r')", 0x07080C0D, true, false},
      {R"('\t\v')", 0x090B, true, false},
      {R"('\"\'\?\\')", 0x22273F5C, true, false},
      {R"('\0')", 0, true, false},
      {R"('\101')", 0x41, true, false},
      {R"('\377')", 0xFFFFFFFF, false, false},
      {R"('\400')", 0, true, false},        // 256, of which the low eight bits stay
      {R"('\1018')", 0x4138, true, false},  // 8 is no octal digit
      {R"('\x41')", 0x41, true, false},
      {R"('\x141')", 0x41, true, false},
      {R"('\x80')", 0xFFFFFF80, false, false},
      {R"('a\x80')", 0x6080, false, false},  // 0x6100 + 0xFFFFFF80
      {R"('\q')", 0, true, false},
      {R"('a\qb')", 0x610062, true, false},
  };
  for (const CharacterRow& row : kLiterals) {
    SCOPED_TRACE(row.literal);
    const CharacterLiteral read = evaluateCharacterLiteral(row.literal);
    EXPECT_EQ(read.value.value, row.value);
    EXPECT_EQ(read.value.isSigned, row.isSigned);
    EXPECT_EQ(read.isTooLong, row.isTooLong);
  }
}

TEST(ExpressionTest, NestingIsLimitedByMemoryAlone) {
  EXPECT_EQ(outcome(repeat(200'000, "(") + "1" + repeat(200'000, ")")), "T");
  EXPECT_EQ(outcome(repeat(200'001, "!") + "1"), "F");
  EXPECT_EQ(outcome(repeat(100'000, "1 ? ") + "1" + repeat(100'000, " : 0")), "T");
}

TEST(ExpressionDeathTest, AZeroDivisorEndsTheProcessByTheArithmeticFault) {
  EXPECT_EXIT(outcome("1 / 0"), testing::KilledBySignal(SIGFPE), "");
  EXPECT_EXIT(outcome("1 % 0"), testing::KilledBySignal(SIGFPE), "");
  EXPECT_EXIT(outcome("1u / 0"), testing::KilledBySignal(SIGFPE), "");
  EXPECT_EXIT(outcome("(-2147483647 - 1) / -1"), testing::KilledBySignal(SIGFPE), "");
  EXPECT_EXIT(outcome("(-2147483647 - 1) % -1"), testing::KilledBySignal(SIGFPE), "");
  EXPECT_EXIT(outcome("1 || 1 / 0"), testing::KilledBySignal(SIGFPE), "");
}

}  // namespace
}  // namespace qnpp
