// Tokens of a megabyte: their texts, and that time and buffer grow no faster than the input.
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

#include "tests/support/PiecewiseInput.h"
#include "tests/support/Preprocess.h"
#include "tests/support/Text.h"
#include "tests/unit/support/Timing.h"
#include "tests/unit/support/TokenDump.h"

// Gets the generated scanner its buffers.
void* yyCpprealloc(void* old, std::size_t size);

namespace qnpp {
namespace {

constexpr std::size_t kMegabyte = 1024 * 1024;

struct LongToken {
  const char* name;
  CppTokenKind kind;
  std::string text;
};

TEST(LongTokensTest, KeepTheirTexts) {
  const LongToken tokens[] = {
      {"identifier", TK_IDENTIFIER, std::string(kMegabyte, 'a')},
      {"decimal", TK_DEC_INT, std::string(kMegabyte, '7')},
      {"octal", TK_OCT_INT, "0" + std::string(kMegabyte, '7')},
      {"hexadecimal", TK_HEX_UINT, "0x" + std::string(kMegabyte, 'f') + "uL"},
      {"string", TK_STRING, "\"" + std::string(kMegabyte, '-') + "\""},
      {"string of escapes", TK_STRING, "\"" + repeat(kMegabyte / 2, "\\\"") + "\""},
      {"character", TK_CHAR, "'" + std::string(kMegabyte, '-') + "'"},
      {"character of escapes", TK_CHAR, "'" + repeat(kMegabyte / 4, "\\x4g") + "'"},
  };
  for (const LongToken& token : tokens) {
    const std::string text = "x " + token.text + ";";
    InputText input;
    input.reset(text);
    LexerSetting setting;
    CppLexer lexer(input, setting.context);
    EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
    EXPECT_EQ(lexer.next(), TK_SPACE);
    EXPECT_EQ(lexer.next(), token.kind) << token.name;
    EXPECT_TRUE(lexer.text() == token.text) << token.name;
    EXPECT_EQ(lexer.next(), TK_OTHER) << token.name;
    EXPECT_EQ(lexer.text(), ";") << token.name;
    EXPECT_EQ(lexer.next(), TK_END) << token.name;
  }
}

// A comment is not kept: the scanner asks for no more at once than its first buffer holds.
TEST(LongTokensTest, CommentsAndSkippedLinesNeedNoBuffer) {
  const std::string texts[] = {
      "/*" + std::string(kMegabyte, '-') + "*/",
      "/*" + std::string(kMegabyte, '*') + "*/",
      "/*" + repeat(kMegabyte / 2, "\r\n") + "*/",
      "//" + std::string(kMegabyte, '-') + "\n",
  };
  for (const std::string& text : texts) {
    PiecewiseInput input(text, kMegabyte);
    LexerSetting setting;
    CppLexer lexer(input, setting.context);
    EXPECT_EQ(lexer.next(), TK_SPACE);
    EXPECT_LE(input.mostAskedFor(), kReadSize) << visible(text.substr(0, 10));
  }
  const std::string line = "x" + repeat(kMegabyte / 8, " a + b\\;") + "\n";
  PiecewiseInput input(line, kMegabyte);
  LexerSetting setting;
  CppLexer lexer(input, setting.context);
  EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
  EXPECT_TRUE(lexer.skipLine());
  EXPECT_LE(input.mostAskedFor(), kReadSize);
}

// Words that are copied are kept no longer than it takes to know what is in them.
TEST(LongTokensTest, CopiedWordsNeedNoBuffer) {
  const std::string words[] = {
      std::string(kMegabyte, 'a'), "_" + std::string(kMegabyte, 'P'),  // Begins like `_Pragma`.
      repeat(kMegabyte / 2, "a1"), std::string(kMegabyte, '7'),       "0" + repeat(kMegabyte / 2, "10"),
  };
  for (const std::string& word : words) {
    const std::string text = "x " + word + "_Pragma _Pragma";
    PiecewiseInput input(text, kMegabyte);
    LexerSetting setting;
    CppLexer lexer(input, setting.context);
    EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
    std::string written = " " + word;
    if (word.front() == '7' || word.front() == '0') {  // A name may follow a number directly.
      EXPECT_EQ(lexer.copyText(), TK_PRAGMA_OP);
      EXPECT_TRUE(setting.written() == written) << word.substr(0, 10);
      written += ' ';
    } else {
      written += "_Pragma ";
    }
    EXPECT_EQ(lexer.copyText(), TK_PRAGMA_OP);
    EXPECT_TRUE(setting.written() == written) << word.substr(0, 10);
    EXPECT_EQ(lexer.copyText(), TK_END);
    EXPECT_LE(input.mostAskedFor(), kReadSize) << word.substr(0, 10);
  }
}

// Where the name of a macro is hardly shorter than the buffer, little of it would get free each time. Only its length
// matters here.
TEST(LongTokensTest, CopiedWordsAreReadInLargeSteps) {
  for (const std::size_t room : {kReadSize / 2, kReadSize, 2 * kReadSize}) {
    for (std::size_t size = room - 8; size <= room + 2; ++size) {
      LexerSetting setting;
      setting.names.noteMacro(*setting.names.intern(std::string(size, 'm')));
      const std::string text = "x " + std::string(kMegabyte, 'm');
      PiecewiseInput input(text, kMegabyte);
      CppLexer lexer(input, setting.context);
      EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
      EXPECT_EQ(lexer.copyText(), TK_END);
      EXPECT_TRUE(setting.written() == text.substr(1)) << size;
      EXPECT_LT(input.timesAsked(), 100U) << size;
    }
  }
}

enum class Pass { Next, Copy, Skip };

double secondsToRead(const std::string& text, Pass pass) {
  return secondsOf([&text, pass] {
    InputText input;
    input.reset(text);
    LexerSetting setting;
    CppLexer lexer(input, setting.context);
    lexer.next();
    switch (pass) {
      case Pass::Next:
        while (lexer.next() != TK_END) {
        }
        break;
      case Pass::Copy:
        while (lexer.copyText() != TK_END) {
        }
        break;
      case Pass::Skip:
        while (lexer.skipLine()) {
        }
        break;
    }
  });
}

struct Shape {
  const char* name;
  std::string text;
};

// Texts that would take a careless reader a time that grows with the square of their length: reading a token again from
// its start for every block of input, or a line to its end again for every quote in it, is hundreds of times slower.
TEST(LongTokensTest, TakeNoLongerThanPlainText) {
  const Shape shapes[] = {
      {"identifier", "x " + std::string(kMegabyte, 'a')},
      {"number", "x " + std::string(kMegabyte, '7')},
      {"string", "x \"" + std::string(kMegabyte, '-') + "\""},
      {"character", "x '" + std::string(kMegabyte, '-') + "'"},
      {"block comment", "x /*" + std::string(kMegabyte, '-') + "*/"},
      {"line comment", "x //" + std::string(kMegabyte, '-')},
      {"blanks", "x" + std::string(kMegabyte, ' ')},
      {"backslashes", "x" + std::string(kMegabyte, '\\')},
      {"unclosed string", "x \"" + std::string(kMegabyte, '-') + "\n"},
      {"escaped quotes without an end", "x \"" + repeat(kMegabyte / 8, "\\\"") + "\n"},
      {"escaped single quotes without an end", "x '" + repeat(kMegabyte / 8, "\\'") + "\n"},
      {"quotes of both sorts without an end", "x '" + repeat(kMegabyte / 8, "\\'\\\"") + "\n"},
      {"quotes of both sorts behind a bad escape", "x \"" + repeat(kMegabyte / 8, "\\'\\\"") + "\n"},
      {"pairs of backslashes and a quote", "x \"" + repeat(kMegabyte / 8, "\\\\'") + "\n"},
      {"single quotes", "x" + std::string(kMegabyte / 4, '\'')},
      {"0x without digits", "x " + repeat(kMegabyte / 3, "0x ")},
      {"continuations", "x" + repeat(kMegabyte / 2, "\\\n")},
      {"carriage returns", "x" + std::string(kMegabyte, '\r')},
      {"NUL bytes", "x" + std::string(kMegabyte, '\0')},
      {"a string of NUL bytes", "x \"" + std::string(kMegabyte, '\0') + "\""},
  };
  const std::string plain = repeat(kMegabyte / 16, "word (a + b);  \n");
  for (const Pass pass : {Pass::Next, Pass::Copy, Pass::Skip}) {
    const double bound = 20 * secondsToRead(plain, Pass::Next) + 0.02;
    for (const Shape& shape : shapes) {
      EXPECT_LT(secondsToRead(shape.text, pass), bound) << shape.name << ", pass " << static_cast<int>(pass);
    }
  }
}

// The scanner's sizes are of the type int. It takes a refusal for the end of its buffer's growth, and says so; memory
// that runs out is an exception.
TEST(LongTokensTest, NoBufferIsLargerThanTheScannerCanTell) {
  const int tooLarge[] = {std::numeric_limits<int>::min(), -2'118'184'958, -1};
  for (const int size : tooLarge) {
    EXPECT_EQ(yyCpprealloc(nullptr, static_cast<std::size_t>(size)), nullptr) << size;
  }
  EXPECT_EQ(yyCpprealloc(nullptr, static_cast<std::size_t>(std::numeric_limits<int>::max()) + 1), nullptr);
}

}  // namespace
}  // namespace qnpp
