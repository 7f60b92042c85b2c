// Messages: their form, their place, and the error flag.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "tests/support/Files.h"
#include "tests/support/Preprocess.h"
#include "tests/support/Text.h"

namespace qnpp {
namespace {

constexpr const char* kUnknown = "the indicated directive is not a recognized preprocessing directive";

struct MessageRow {
  const char* source;
  const char* messages;
  bool hasError = true;
};

TEST(DiagnosticsTest, AMessageShowsNameAndLine) {
  const MessageRow rows[] = {
      {"x\n", "", false},
      {"#error stop\n", "a.c:1: #error directive:  stop.\n"},
      {"\n\n#error stop", "a.c:3: #error directive:  stop.\n"},
      {"#define A 1\n#define A 2\n", "a.c:2: Warning: Macro \"A\" has an incompatible redefinition.\n", false},
      {"#endif\n#else\n#elif 1\n",
       "a.c:1: No \"#if\" directive associated to \"#endif\".\n"
       "a.c:2: No \"#if\" directive associated to \"#else\".\n"
       "a.c:3: No \"#if\" directive associated to \"elif\".\n"},
      {"#if 1\nx", "a.c:2: Unterminated \"#if\" conditional.\n"},
      {"#if 1\n#if 0\n\n\n", "a.c:5: Unterminated \"#if\" conditional.\n"},
      {"#if 1 +\n#endif\n", "a.c:1: Lexical element expected.\n"},
      {"#line 100 \"b.c\"\n#error x\n", "b.c:101: #error directive:  x.\n"},
      {"#line 100\n\n\n#error x\n", "a.c:103: #error directive:  x.\n"},
      {"/*\n\n*/ #error x\n", "a.c:3: #error directive:  x.\n"},
      {"#error a /*\n*/ b\n", "a.c:2: #error directive:  a   b.\n"},
      {"#error a \\\nb\n", "a.c:2: #error directive:  a b.\n"},
      {"#line 2147483647\n#error x\n", "a.c:-2147483648: #error directive:  x.\n"},
  };
  for (const MessageRow& row : rows) {
    const Preprocessed run = preprocess(row.source);
    EXPECT_EQ(run.messages, row.messages) << row.source;
    EXPECT_EQ(run.hasError, row.hasError) << row.source;
  }
}

TEST(DiagnosticsTest, AnErrorStopsNothing) {
  const Preprocessed run = preprocess("a\n#error 1\nb\n#error 2\nc\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "a\n#line 3 \"a.c\"\nb\n#line 5 \"a.c\"\nc\n");
  EXPECT_EQ(run.messages, "a.c:2: #error directive:  1.\na.c:4: #error directive:  2.\n");
}

TEST(DiagnosticsTest, ThereIsNoLimit) {
  constexpr int kCount = 10000;
  std::string expected;
  for (int line = 1; line <= kCount; ++line) {
    expected += "a.c:" + std::to_string(line) + ": " + kUnknown + ".\n";
  }
  EXPECT_TRUE(preprocess(repeat(kCount, "#foo\n")).messages == expected);
}

TEST(DiagnosticsTest, TheCurrentFileIsShown) {
  const TemporaryFolder folder;
  const std::string header = folder.write("h.h", "\n#foo\n#if 1\n");
  const Preprocessed run = preprocess("#foo\n#include <h.h>\n#foo\n", {.includeDirectories = {folder.path()}});
  EXPECT_EQ(run.messages, std::string("a.c:1: ") + kUnknown + ".\n" + header + ":2: " + kUnknown + ".\n" + header +
                              ":4: Unterminated \"#if\" conditional.\na.c:3: " + kUnknown + ".\n");
}

// The output is kept in blocks, messages are not.
TEST(DiagnosticsTest, MessagesDoNotWaitForTheOutput) {
  std::string events;
  Preprocessor preprocessor;
  preprocessor.setOutputSink([&events](std::string_view) { events += "output "; });
  preprocessor.setDiagnosticSink([&events](const Diagnostic& diagnostic) { events += diagnostic.text; });
  EXPECT_EQ(preprocessor.run(Source::borrowing("x\n#error 1\nx\n#error 2\n"), "a.c").status, Status::Errors);
  EXPECT_EQ(events, "a.c:2: #error directive:  1.\na.c:4: #error directive:  2.\noutput ");
}

}  // namespace
}  // namespace qnpp
