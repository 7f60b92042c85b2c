// Tokens that lie across the end of the scanner's buffer, or of what the input delivers at once.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/PiecewiseInput.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

// Texts with every construct in whose middle more input may have to be read, and what each of them gives.
struct Construct {
  std::string_view text;
  const char* tokens;
  std::int32_t lines;
};

constexpr Construct kConstructs[] = {
    {"name_of_a_macro1 ", "IDENTIFIER:name_of_a_macro1 SPACE", 0},
    {"include defined", "INCLUDE SPACE DEFINED", 0},
    {"1234567890uL+", "DEC_UINT:1234567890uL +", 0},
    {"0123456789", "OCT_INT:01234567 DEC_INT:89", 0},
    {"0x1234abcdL;", "HEX_INT:0x1234abcdL OTHER:;", 0},
    {"0x", "OCT_INT:0 IDENTIFIER:x", 0},
    {"0xyz", "OCT_INT:0 IDENTIFIER:xyz", 0},
    {"\"a string\"", "STRING:\"a string\"", 0},
    {R"("\"\\\"")", R"(STRING:"\"\\\"")", 0},
    {R"("a\tb")", R"(OTHER:" IDENTIFIER:a OTHER:\ IDENTIFIER:tb OTHER:")", 0},
    {"\"a\0b\""sv, "STRING:\"a<NUL>b\"", 0},
    {"\"open", "OTHER:\" IDENTIFIER:open", 0},
    {R"('\x41\'\012')", R"(CHAR:'\x41\'\012')", 0},
    {R"('\xg')", R"(OTHER:' OTHER:\ IDENTIFIER:xg OTHER:')", 0},
    {R"('\x)", R"(OTHER:' OTHER:\ IDENTIFIER:x)", 0},
    {"''", "OTHER:' OTHER:'", 0},
    {"/* a *** comment */x", "SPACE IDENTIFIER:x", 0},
    {"/*\r\n*\r*\n**/x", "SPACE IDENTIFIER:x", 3},
    {"/*\0\0*/x"sv, "SPACE IDENTIFIER:x", 0},
    {"/ *", "/ SPACE *", 0},
    {"// a comment\r\nx", "SPACE NEWLINE IDENTIFIER:x", 1},
    {"//a\0x"sv, "SPACE NEWLINE IDENTIFIER:x", 1},
    {"//a", "SPACE", 0},
    {"\\\r\nx", "CONTINUATION:\\<CR><LF> IDENTIFIER:x", 1},
    {"\\\rx", "CONTINUATION:\\<CR> IDENTIFIER:x", 1},
    {"\\\nx", "CONTINUATION IDENTIFIER:x", 1},
    {"\\x", "OTHER:\\ IDENTIFIER:x", 0},
    {"\r\n\r\nx", "NEWLINE NEWLINE IDENTIFIER:x", 2},
    {"\r\rx", "NEWLINE NEWLINE IDENTIFIER:x", 2},
    {"##<<=>>=!=", "PASTE SHL OTHER:= SHR OTHER:= NE", 0},
    {"\0\0"sv, "OTHER:<NUL> OTHER:<NUL>", 0},
    {"_Pragma", "PRAGMA_OP", 0},
};

// The constructs begin at every place around the end of the first block that is read into the buffer. What stands
// before them decides what the scanner still holds at that moment: nothing, or one long token.
TEST(BufferBoundariesTest, ConstructsSurviveTheEndOfTheBuffer) {
  for (const Construct& construct : kConstructs) {
    for (std::size_t offset = kReadSize - 14; offset <= kReadSize + 16; ++offset) {
      const std::string expected = *construct.tokens == '\0' ? "" : std::string(" ") + construct.tokens;
      const std::string where = visible(construct.text) + " at " + std::to_string(offset);

      const Lexed afterComment = lexFully("/*" + std::string(offset - 4, '-') + "*/" + std::string(construct.text));
      ASSERT_EQ(afterComment.tokens, "SPACE" + expected) << where;
      ASSERT_EQ(afterComment.line, 1 + construct.lines) << where;

      const std::string longName(offset - 1, 'n');
      const Lexed afterName = lexFully(longName + ";" + std::string(construct.text));
      ASSERT_EQ(afterName.tokens, "IDENTIFIER:" + longName + " OTHER:;" + expected) << where;
      ASSERT_EQ(afterName.line, 1 + construct.lines) << where;

      const std::string lines = "/*" + std::string(offset - 105, '-') + "*/" + std::string(100, '\n');
      const Lexed afterLines = lexFully(lines + ";" + std::string(construct.text));
      ASSERT_EQ(afterLines.tokens.substr(std::strlen("SPACE ") + 100 * std::strlen("NEWLINE ")), "OTHER:;" + expected)
          << where;
      ASSERT_EQ(afterLines.line, 101 + construct.lines) << where;
    }
  }
}

TEST(BufferBoundariesTest, ConstructsSurviveInputInSmallPieces) {
  for (const Construct& construct : kConstructs) {
    for (std::size_t step = 1; step <= 8; ++step) {
      PiecewiseInput input(construct.text, step);
      const Lexed lexed = lexFully(input);
      EXPECT_EQ(lexed.tokens, construct.tokens) << visible(construct.text) << " by " << step;
      EXPECT_EQ(lexed.line, 1 + construct.lines) << visible(construct.text) << " by " << step;
    }
  }
}

// The last byte of the input is the last of the buffer too.
TEST(BufferBoundariesTest, TheInputMayEndWithTheBuffer) {
  for (std::size_t size = kReadSize - 4; size <= kReadSize + 4; ++size) {
    const std::string name(size, 'n');
    EXPECT_EQ(lexAll(name), "IDENTIFIER:" + name);
    EXPECT_EQ(lexAll("\"" + std::string(size - 2, '-') + "\""), "STRING:\"" + std::string(size - 2, '-') + "\"");
    EXPECT_EQ(lexAll("//" + std::string(size - 2, '-')), "SPACE");
    const Lexed open = lexFully("/*" + std::string(size - 3, '-') + "\r");
    EXPECT_EQ(open.tokens, "SPACE");
    EXPECT_EQ(open.messages, "2: unterminated comment.\n");
  }
}

// Any mixture of the constructs, whatever its pieces.
TEST(BufferBoundariesTest, MixturesGiveTheSameTokensInPieces) {
  std::mt19937 random(20240229);
  constexpr std::string_view kJoints[] = {"", " ", "\n", "\r\n", "\"", "'", "/", "*", "\\"};
  for (int round = 0; round < 400; ++round) {
    std::string text;
    for (int part = 0; part < 30; ++part) {
      text += kConstructs[random() % std::size(kConstructs)].text;
      text += kJoints[random() % std::size(kJoints)];
    }
    const Lexed whole = lexFully(text);
    for (const std::size_t step : {1U, 2U, 3U, 5U, 7U, 64U}) {
      PiecewiseInput input(text, step);
      ASSERT_EQ(lexFully(input), whole) << visible(text) << " by " << step;
    }
  }
}

}  // namespace
}  // namespace qnpp
