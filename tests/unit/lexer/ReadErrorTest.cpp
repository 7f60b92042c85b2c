// Inputs that fail while they are read.
#include <gtest/gtest.h>

#include <istream>
#include <streambuf>
#include <string>
#include <string_view>

#include "lexer/CppFileScanner.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

// Delivers `text`, then fails.
class FailingInput : public std::istream {
 public:
  explicit FailingInput(std::string_view text) : std::istream(nullptr), buffer_(text) { rdbuf(&buffer_); }

 private:
  struct Buffer : std::streambuf {
    explicit Buffer(std::string_view bytes) : left(bytes) {}
    std::streamsize xsgetn(char* to, std::streamsize size) override {
      if (left.empty()) {
        throw std::ios_base::failure("read error");
      }
      const std::size_t count = left.copy(to, static_cast<std::size_t>(size));
      left.remove_prefix(count);
      return static_cast<std::streamsize>(count);
    }
    std::string_view left;
  };
  Buffer buffer_;
};

constexpr const char* kMessage = "input in flex scanner failed";

void expectFailure(CppLexer& lexer, LexerSetting& setting, const std::string& where) {
  try {
    for (int count = 0; count < 1000; ++count) {
      lexer.next();
    }
    ADD_FAILURE() << "no failure: " << where;
  } catch (const FatalLexerError& error) {
    EXPECT_STREQ(error.what(), kMessage) << where;
  }
  EXPECT_EQ(setting.diagnostics.str(), std::string(kMessage) + "\n") << where;
}

// Wherever the reading stands: between tokens, or in the middle of a construct that reads on by itself.
TEST(ReadErrorTest, AReadErrorIsFatal) {
  const std::string_view texts[] = {"",     "a",      "a ",     "12",   "\"a", "\"a\\", "'\\x",
                                    "/* a", "/* a *", "/* a\r", "// a", "\\",  "\r",    "\n"};
  for (const std::string_view text : texts) {
    FailingInput input(text);
    LexerSetting setting;
    CppLexer lexer(input, setting.context);
    expectFailure(lexer, setting, visible(text));
  }
}

TEST(ReadErrorTest, SkippingAndCopyingFailAlike) {
  for (const std::string_view text : {"a b", "a /* b", "a \"b", "a // b"}) {
    FailingInput copied(text);
    LexerSetting copying;
    CppLexer copier(copied, copying.context);
    EXPECT_EQ(copier.next(), TK_IDENTIFIER);
    EXPECT_THROW(while (copier.copyText() != TK_END){}, FatalLexerError) << text;
    EXPECT_EQ(copying.diagnostics.str(), std::string(kMessage) + "\n") << text;

    FailingInput skipped(text);
    LexerSetting skipping;
    CppLexer skipper(skipped, skipping.context);
    EXPECT_EQ(skipper.next(), TK_IDENTIFIER);
    EXPECT_THROW(skipper.skipLine(), FatalLexerError) << text;
    EXPECT_EQ(skipping.diagnostics.str(), std::string(kMessage) + "\n") << text;
  }
}

TEST(ReadErrorTest, OutputWrittenBeforeItArrives) {
  FailingInput input("/*\n\n");
  LexerSetting setting;
  CppLexer lexer(input, setting.context);
  EXPECT_THROW(lexer.next(), FatalLexerError);
  EXPECT_EQ(setting.sink.str(), "\n\n");
}

// The memory of the process as a file opens, but its first bytes cannot be read.
TEST(ReadErrorTest, AFileThatCannotBeReadIsNoEmptyFile) {
  std::istringstream none;
  LexerSetting setting;
  CppFileScanner scanner("/proc/self/mem", none, setting.context);
  ASSERT_FALSE(scanner.openFailed());
  EXPECT_THROW(scanner.get(), FatalLexerError);
  EXPECT_EQ(setting.diagnostics.str(), std::string(kMessage) + "\n");
}

}  // namespace
}  // namespace qnpp
