// __FILE__, __LINE__, __DATE__ and __TIME__.
#include <gtest/gtest.h>

#include <array>
#include <ctime>
#include <string>

#include "tests/support/Files.h"
#include "tests/unit/support/RunRows.h"

namespace qnpp {
namespace {

// The local time in a format of strftime, whose "%e" pads the day with a blank.
std::string formatted(std::time_t time, const char* format) {
  std::tm local{};
  std::array<char, 64> text{};
  localtime_r(&time, &local);
  const std::size_t size = std::strftime(text.data(), text.size(), format, &local);
  return {text.data(), size};
}

TEST(PredefinedTest, DateAndTimeAreThoseOfTheBeginningWithoutQuotes) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    const std::time_t before = std::time(nullptr);
    const Preprocessed run = preprocess("__DATE__\n__TIME__\n");
    if (std::time(nullptr) == before) {
      EXPECT_EQ(run.output, kFirstLine + formatted(before, "%b %e %Y\n%H:%M:%S\n"));
      EXPECT_EQ(run.messages, "");
      return;
    }
  }
  FAIL() << "no run within one second";
}

TEST(PredefinedTest, TheDateIsThreeTokens) {
  const std::time_t now = std::time(nullptr);
  const Preprocessed run = preprocess("#define F(x) #x\n#define G(x) F(x)\nG(__DATE__)\n");
  // The two blanks before a day of one digit are one blank in an argument.
  std::string date = formatted(now, "\"%b %e %Y\"\n");
  if (const auto blanks = date.find("  "); blanks != std::string::npos) {
    date.erase(blanks, 1);
  }
  if (formatted(std::time(nullptr), "%e") == formatted(now, "%e")) {
    EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 3 \"a.c\"\n" + date);
  }
}

TEST(PredefinedTest, DateAndTimeCanBeRedefined) {
  const Preprocessed run = preprocess("#undef __DATE__\n__DATE__\n#define __DATE__ today\n__DATE__\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 2 \"a.c\"\n__DATE__\n#line 4 \"a.c\"\ntoday\n");
  EXPECT_EQ(run.messages, "");
}

TEST(PredefinedTest, LineAndFileFollowTheSource) {
  expectRuns({
      {"__LINE__\n\n__LINE__\n", "1\n\n3\n"},
      {"__FILE__\n", "\"a.c\"\n"},
      {"__LINE__ __LINE__\n", "1 1\n"},
      {"#define L __LINE__\n\nL\n", "\n#line 3 \"a.c\"\n3\n"},
      {"#if __LINE__ == 1\nyes\n#endif\n", "#line 2 \"a.c\"\nyes\n\n"},
      {"#line 10 \"x.c\"\n__FILE__ __LINE__\n", "#line 10 \"x.c\"\n#line 11 \"x.c\"\n\"x.c\" 11\n"},
      {"#define F(x) x\nF(__LINE__\n__LINE__)\n__LINE__\n", "#line 2 \"a.c\"\n3 3\n#line 4 \"a.c\"\n4\n"},
      {"/*\n*/ __LINE__\n", "\n#line 2 \"a.c\"\n  2\n"},
      {"a \\\n__LINE__\n", "a \\\n2\n"},
      {"__LINE__ /*\n\n*/ __LINE__\n", "1 \n\n  3\n"},
      {"#line 2147483647\n__LINE__\n", "#line 2147483647 \"a.c\"\n#line -2147483648 \"a.c\"\n-2147483648\n"},
  });
}

// Only the name counts: a definition of the source's own is overwritten at the next use.
TEST(PredefinedTest, LineAndFileAreRefreshedAtEachUse) {
  expectRuns({
      {"#define __LINE__ x\n__LINE__\n", "#line 2 \"a.c\"\n2\n",
       "a.c:1: Warning: Macro \"__LINE__\" has an incompatible redefinition.\n"},
      {"__LINE__\n#define __LINE__ 1\n__LINE__\n", "1\n#line 3 \"a.c\"\n3\n"},
      {"__LINE__\n#define __LINE__ 2\n__LINE__\n", "1\n#line 3 \"a.c\"\n3\n",
       "a.c:2: Warning: Macro \"__LINE__\" has an incompatible redefinition.\n"},
      {"#undef __FILE__\n__FILE__\n", "#line 2 \"a.c\"\n__FILE__\n"},
      {"#undef __FILE__\n#define __FILE__ x\n__FILE__\n", "#line 3 \"a.c\"\n\"a.c\"\n"},
      {"#undef __LINE__\n#ifdef __LINE__\nx\n#endif\n__LINE__\n", "\n\n#line 5 \"a.c\"\n__LINE__\n"},
  });
}

TEST(PredefinedTest, TheCommandLineCannotChangeThem) {
  const Preprocessed run = preprocess("__LINE__ __FILE__\n", {.definitions = {{"__LINE__", "x"}, {"__FILE__", "y"}}});
  EXPECT_EQ(run.output, std::string(kFirstLine) + "1 \"a.c\"\n");
}

TEST(PredefinedTest, FileNamesAreNotEscaped) {
  EXPECT_EQ(preprocess("__FILE__\n", {.sourceName = "d\\a \"b\".c"}).output,
            "#line 1 \"d\\\\a \"b\".c\"\n\"d\\a \"b\".c\"\n");
  EXPECT_EQ(preprocess("__FILE__\n", {.sourceName = ""}).output, "#line 1 \"source\"\n\"source\"\n");
}

TEST(PredefinedTest, AnIncludedFileHasItsOwn) {
  const TemporaryFolder folder;
  const std::string header = folder.write("h.h", "\n__FILE__ __LINE__\n");
  const Preprocessed run = preprocess("#include <h.h>\n__FILE__ __LINE__\n", {.includeDirectories = {folder.path()}});
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 1 \"" + header + "\"\n\n\"" + header +
                            "\" 2\n#line 2 \"a.c\"\n\"a.c\" 2\n");
}

}  // namespace
}  // namespace qnpp
