// Inputs that fail while they are read.
#include <gtest/gtest.h>

#include <istream>
#include <memory>
#include <streambuf>
#include <string>
#include <string_view>

#include "lexer/CppFileScanner.h"
#include "lexer/InputFile.h"
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

void expectFailure(CppLexer& lexer, const std::string& where) {
  try {
    for (int count = 0; count < 1000; ++count) {
      lexer.next();
    }
    ADD_FAILURE() << "no failure: " << where;
  } catch (const FatalLexerError& error) {
    EXPECT_STREQ(error.what(), kMessage) << where;
  }
}

// Wherever the reading stands: between tokens, or in the middle of a construct that reads on by itself.
TEST(ReadErrorTest, AReadErrorIsFatal) {
  const std::string_view texts[] = {"",     "a",      "a ",     "12",   "\"a", "\"a\\", "'\\x",
                                    "/* a", "/* a *", "/* a\r", "// a", "\\",  "\r",    "\n"};
  for (const std::string_view text : texts) {
    FailingInput input(text);
    LexerSetting setting;
    CppLexer lexer(input, setting.context);
    expectFailure(lexer, visible(text));
  }
}

TEST(ReadErrorTest, SkippingAndCopyingFailAlike) {
  for (const std::string_view text : {"a b", "a /* b", "a \"b", "a // b"}) {
    FailingInput copied(text);
    LexerSetting copying;
    CppLexer copier(copied, copying.context);
    EXPECT_EQ(copier.next(), TK_IDENTIFIER);
    EXPECT_THROW(while (copier.copyText() != TK_END){}, FatalLexerError) << text;

    FailingInput skipped(text);
    LexerSetting skipping;
    CppLexer skipper(skipped, skipping.context);
    EXPECT_EQ(skipper.next(), TK_IDENTIFIER);
    EXPECT_THROW(skipper.skipLine(), FatalLexerError) << text;
  }
}

// The memory of the process as a file opens, but its first bytes cannot be read.
TEST(ReadErrorTest, AFileThatCannotBeReadIsNoEmptyFile) {
  LexerSetting setting;
  CppFileScanner scanner("mem", std::make_unique<InputFile>("/proc/self/mem"), setting.context);
  ASSERT_FALSE(scanner.openFailed());
  EXPECT_THROW(scanner.get(), FatalLexerError);
}

}  // namespace
}  // namespace qnpp
