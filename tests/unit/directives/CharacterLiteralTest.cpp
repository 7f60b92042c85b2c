// Values of character literals, among them texts that the lexer hands out as no literal.
#include "directives/CharacterLiteral.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

struct LiteralRow {
  std::string_view literal;
  std::uint32_t value;
  bool isSigned = true;
  bool isTooLong = false;
};

template <std::size_t Count>
void expectValues(const LiteralRow (&rows)[Count]) {
  for (const LiteralRow& row : rows) {
    const CharacterLiteral read = evaluateCharacterLiteral(row.literal);
    EXPECT_EQ(read.value.value, row.value) << row.literal;
    EXPECT_EQ(read.value.isSigned, row.isSigned) << row.literal;
    EXPECT_EQ(read.isTooLong, row.isTooLong) << row.literal;
  }
}

TEST(CharacterLiteralTest, EachCharacterShiftsAndAddsItsCode) {
  expectValues({
      {"''", 0},
      {"'a'", 0x61},
      {"'ab'", 0x6162},
      {"'abc'", 0x616263},
      {"'abcd'", 0x61626364},
      {"'abcde'", 0x61626364, true, true},
      {"'abcdefgh'", 0x61626364, true, true},
      {"'\"'", 0x22},
      {"'\0'"sv, 0},
      {"'a\0b'"sv, 0x610062},
      // Codes from 0x80 on are negative numbers: 0x100 * 'a' - 1, and so on.
      {"'\x7F'", 0x7F},
      {"'\x80'", 0xFFFFFF80, false},
      {"'\xFF'", 0xFFFFFFFF, false},
      {"'a\xFF'", 0x60FF, false},
      {"'\xFF"
       "a'",
       0xFFFFFF61, false},
      {"'\xC3\xA9'", 0xFFFFC2A9, false},
      {"'ab\xFF"
       "c'",
       0x6161FF63, false},
      {"'abcd\xFF'", 0x61626364, true, true},
      {"'zzz\x80'", 0x7A7A7980, false},
  });
}

TEST(CharacterLiteralTest, EscapesAreOneCharacter) {
  expectValues({
      {R"('\"')", 0x22},
      {R"('\'')", 0x27},
      {R"('\?')", 0x3F},
      {R"('\\')", 0x5C},
      {R"('\a')", 7},
      {R"('\b')", 8},
      {R"('\f')", 12},
      {R"('\n')", 10},
      {R"('\r')", 13},
      {R"('\t')", 9},
      {R"('\v')", 11},
      {R"('a\n')", 0x610A},
      {R"('\na')", 0x0A61},
      {R"('\\n')", 0x5C6E},
      {R"('\a\b\f\n')", 0x07080C0A},
      {R"('\a\b\f\n\r')", 0x07080C0A, true, true},
      // Any other escape is a zero byte.
      {R"('\q')", 0},
      {R"('\e')", 0},
      {R"('a\q')", 0x6100},
      {R"('a\qb')", 0x610062},
      {R"('\8')", 0},
      {R"('\89')", 0x39},
      {R"('\X41')", 0x3431},
  });
}

// As many digits as there are; eight bits of their value are kept.
TEST(CharacterLiteralTest, NumericEscapesHaveNoLimit) {
  expectValues({
      {R"('\0')", 0},
      {R"('\7')", 7},
      {R"('\12')", 10},
      {R"('\101')", 0x41},
      {R"('\177')", 0x7F},
      {R"('\200')", 0xFFFFFF80, false},
      {R"('\377')", 0xFFFFFFFF, false},
      {R"('\400')", 0},
      {R"('\1234')", 0xFFFFFF9C, false},
      {R"('\00000000000000000000101')", 0x41},
      {R"('\7777777777777777777777')", 0xFFFFFFFF, false},
      {R"('\18')", 0x0138},
      {R"('\1a')", 0x0161},
      {R"('\1+')", 0x012B},
      {R"('\x0')", 0},
      {R"('\x41')", 0x41},
      {R"('\xaF')", 0xFFFFFFAF, false},
      {R"('\x4142')", 0x42},
      {R"('\x100')", 0},
      {R"('\x0000000000000000000000041')", 0x41},
      {R"('\xFFFFFFFFFFFFFFFFFFFFFFFFF')", 0xFFFFFFFF, false},
      {R"('\x41g')", 0x4167},
      {R"('\x1+')", 0x012B},
      {R"('\x1:')", 0x013A},
      {R"('\x1[')", 0x015B},
      {R"('\x')", 0},
      {R"('\xg')", 0x67},
      {R"('\x41\102\x43D')", 0x41423D},
  });
}

// Four characters fit, however long they are written.
TEST(CharacterLiteralTest, OnlyTheNumberOfCharactersCounts) {
  const std::string digits(100000, '7');
  const CharacterLiteral four = evaluateCharacterLiteral("'\\" + digits + "\\" + digits + "ab'");
  EXPECT_EQ(four.value.value, 0xFEFF6162U);
  EXPECT_FALSE(four.isTooLong);
  EXPECT_TRUE(evaluateCharacterLiteral("'" + digits + "'").isTooLong);
}

}  // namespace
}  // namespace qnpp
