// Comments: where they end, and what they leave in the output and in the line counter.
#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>

#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

struct CommentTextRow {
  std::string_view text;
  const char* tokens;
  const char* output;
  std::int32_t line;
};

// Each comment is closed, so nothing is reported.
template <std::size_t Count>
void expectComments(const CommentTextRow (&rows)[Count]) {
  for (const CommentTextRow& row : rows) {
    const Lexed lexed = lexFully(row.text);
    EXPECT_EQ(lexed.tokens, row.tokens) << "in: " << visible(row.text);
    EXPECT_EQ(lexed.output, row.output) << "in: " << visible(row.text);
    EXPECT_EQ(lexed.line, row.line) << "in: " << visible(row.text);
    EXPECT_EQ(lexed.messages, "") << "in: " << visible(row.text);
  }
}

TEST(CommentsTest, BlockCommentsAreOneBlankAndWriteTheirLineEnds) {
  expectComments({
      {"/**/", "SPACE", "", 1},
      {"/***/", "SPACE", "", 1},
      {"/****/", "SPACE", "", 1},
      {"/* * */", "SPACE", "", 1},
      {"/* a */b", "SPACE IDENTIFIER:b", "", 1},
      {"a/**/b", "IDENTIFIER:a SPACE IDENTIFIER:b", "", 1},
      {"/*/ */", "SPACE", "", 1},
      {"/*/*/", "SPACE", "", 1},
      {"/*//*/x", "SPACE IDENTIFIER:x", "", 1},
      {"/* /* */ */", "SPACE SPACE * /", "", 1},
      {"/**//**/", "SPACE SPACE", "", 1},
      {"/* \" ' */", "SPACE", "", 1},
      {"/* \\*/x", "SPACE IDENTIFIER:x", "", 1},
      {"/*\0*/"sv, "SPACE", "", 1},
      {"/**\0/*/x"sv, "SPACE IDENTIFIER:x", "", 1},
      {"/*\x80\xFF*/", "SPACE", "", 1},
      {"/*\n*/", "SPACE", "\n", 2},
      {"/*\r\n*/", "SPACE", "\n", 2},
      {"/*\r*/", "SPACE", "\n", 2},
      {"/*\r\r\n\n*/", "SPACE", "\n\n\n", 4},
      {"/* a\r\nb\rc\n */", "SPACE", "\n\n\n", 4},
      {"/**\n/ */", "SPACE", "\n", 2},
      {"/**\r/ */", "SPACE", "\n", 2},
      {"/*\n*\n*/\n", "SPACE NEWLINE", "\n\n", 4},
      {"/*\\\n*/", "SPACE", "\n", 2},
      {"/*\n*/ /*\n*/", "SPACE SPACE SPACE", "\n\n", 3},
  });
}

TEST(CommentsTest, LineCommentsEndBeforeTheLineEnd) {
  expectComments({
      {"//", "SPACE", "", 1},
      {"// a b", "SPACE", "", 1},
      {"a// b", "IDENTIFIER:a SPACE", "", 1},
      {"// x\ny", "SPACE NEWLINE IDENTIFIER:y", "", 2},
      {"// x\r\ny", "SPACE NEWLINE IDENTIFIER:y", "", 2},
      {"// x\ry", "SPACE NEWLINE IDENTIFIER:y", "", 2},
      {"// x\r\r\ny", "SPACE NEWLINE NEWLINE IDENTIFIER:y", "", 3},
      {"//\n//\n", "SPACE NEWLINE SPACE NEWLINE", "", 3},
      {"///* a\n*/", "SPACE NEWLINE * /", "", 2},
      {"// \" '\n", "SPACE NEWLINE", "", 2},
      {"// a \\\nb", "SPACE NEWLINE IDENTIFIER:b", "", 2},
      {"/\\\n/", "/ CONTINUATION /", "", 2},
      {"// \x80\xFF\n", "SPACE NEWLINE", "", 2},
  });
}

// A NUL byte ends a line comment and is a line end from then on.
TEST(CommentsTest, ANulByteInALineCommentIsALineEnd) {
  expectComments({
      {"//\0"sv, "SPACE NEWLINE", "", 2},
      {"// a\0b\n"sv, "SPACE NEWLINE IDENTIFIER:b NEWLINE", "", 3},
      {"// a\0\n"sv, "SPACE NEWLINE NEWLINE", "", 3},
      {"// a\0// b\0c"sv, "SPACE NEWLINE SPACE NEWLINE IDENTIFIER:c", "", 3},
      {"\0//"sv, "OTHER:<NUL> SPACE", "", 1},
  });
}

struct UnterminatedRow {
  std::string_view text;
  const char* tokens;
  const char* output;
  const char* message;
};

// The line in the message is that of the end of the input.
TEST(CommentsTest, AnUnterminatedBlockCommentIsReportedWithItsLastLine) {
  const UnterminatedRow rows[] = {
      {"/*", "SPACE", "", "1: unterminated comment.\n"},
      {"/**", "SPACE", "", "1: unterminated comment.\n"},
      {"/*/", "SPACE", "", "1: unterminated comment.\n"},
      {"a /* b", "IDENTIFIER:a SPACE SPACE", "", "1: unterminated comment.\n"},
      {"/* a\n", "SPACE", "\n", "2: unterminated comment.\n"},
      {"/* a\r", "SPACE", "\n", "2: unterminated comment.\n"},
      {"/* a\r\n", "SPACE", "\n", "2: unterminated comment.\n"},
      {"/* a *\r\n/", "SPACE", "\n", "2: unterminated comment.\n"},
      {"x\n/*\n\n// */\n/* y", "IDENTIFIER:x NEWLINE SPACE NEWLINE SPACE", "\n\n", "5: unterminated comment.\n"},
      {"/*\0"sv, "SPACE", "", "1: unterminated comment.\n"},
  };
  for (const UnterminatedRow& row : rows) {
    const Lexed lexed = lexFully(row.text);
    EXPECT_EQ(lexed.tokens, row.tokens) << "in: " << visible(row.text);
    EXPECT_EQ(lexed.output, row.output) << "in: " << visible(row.text);
    EXPECT_EQ(lexed.messages, row.message) << "in: " << visible(row.text);
  }
}

struct EffectRow {
  std::string_view text;
  std::uint64_t count;
};

// A comment that is nothing but a blank has no effect: each line end that is written is one, and so is a message.
TEST(CommentsTest, WhatCommentsDoIsCounted) {
  const EffectRow rows[] = {
      {"", 0},
      {"a / b * c\n", 0},
      {"\"/* */\" '//'", 0},
      {"/**/", 0},
      {"//", 0},
      {"// x\n\n", 0},
      {"// x\0 y"sv, 0},
      {"/* // */ // /* */", 0},
      {"a \\\n b", 0},
      {"/*\n*/", 1},
      {"/*\r\n*/", 1},
      {"/* a\n\rb */", 2},
      {"/*", 1},
      {"/*\n", 2},
      {"/*\n*/ /**/ /*\r\r*/ //", 3},
  };
  for (const EffectRow& row : rows) {
    EXPECT_EQ(lexFully(row.text).effectCount, row.count) << "in: " << visible(row.text);
  }
}

}  // namespace
}  // namespace qnpp
