// The run loop: text lines, directive lines, and the line directives that keep the output in step.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/Files.h"
#include "tests/support/Preprocess.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

struct LoopRow {
  std::string_view source;
  std::string_view output;  // Behind the first line directive.
};

template <std::size_t Count>
void expectOutputs(const LoopRow (&rows)[Count]) {
  for (const LoopRow& row : rows) {
    const Preprocessed run = preprocess(std::string(row.source));
    EXPECT_EQ(run.output, kFirstLine + std::string(row.output)) << visible(row.source);
    EXPECT_EQ(run.messages, "") << visible(row.source);
    EXPECT_FALSE(run.hasError) << visible(row.source);
  }
}

TEST(RunLoopTest, TextIsWrittenAsItStands) {
  expectOutputs({
      {"", ""},
      {"\n", "\n"},
      {"x\n", "x\n"},
      {"x", "x\n"},
      {" x  y\t;\n", " x  y\t;\n"},
      {"a = b[1] + \"s\" 'c' 1.5e+3;\n", "a = b[1] + \"s\" 'c' 1.5e+3;\n"},
      {"a\r\nb\rc\n", "a\nb\nc\n"},
      {"a /* c */ b // d\n", "a   b  \n"},
      {"a \\\nb\n#define X\nc\n", "a \\\nb\n#line 4 \"a.c\"\nc\n"},
      {"\xC3\xA9\0\x01\n"sv, "\xC3\xA9\0\x01\n"sv},
      {"\"a\0b\"\n"sv, "\"a\0b\"\n"sv},
      {"x # y ## z\n", "x # y ## z\n"},
      {"##\n## define X\n", "##\n## define X\n"},
      {"if else line include\n", "if else line include\n"},
      {"\"open\n'open\n", "\"open\n'open\n"},
  });
}

// A line with nothing but blanks and comments is an empty line.
TEST(RunLoopTest, BlanksAloneAreDropped) {
  expectOutputs({
      {"  \t\n", "\n"},
      {"/* c */ // d\n", "\n"},
      {"a\n  \nb\n", "a\n\nb\n"},
      {"a\n\\\n\nb\n", "a\n\n#line 4 \"a.c\"\nb\n"},
      {"  ", "\n"},
      {"a\n  ", "a\n\n"},
  });
}

TEST(RunLoopTest, LineEndsInCommentsAreWrittenAtOnce) {
  expectOutputs({
      {"/* a\n*/ x\ny\n", "\n#line 2 \"a.c\"\n  x\ny\n"},
      {"x /* a\n\n*/ y\nz\n", "x \n\n  y\n#line 4 \"a.c\"\nz\n"},
      {"x /* a\r\n*/\n\nz\n", "x \n \n\n#line 4 \"a.c\"\nz\n"},
      {"/* a\n*/\nx\n", "\n\n#line 3 \"a.c\"\nx\n"},
      {"#define X /* a\n*/ 1\nX\n", "\n#line 3 \"a.c\"\n1\n"},
  });
}

TEST(RunLoopTest, ADirectiveLineWritesNothing) {
  expectOutputs({
      {"#define X\nx\n", "#line 2 \"a.c\"\nx\n"},
      {"#\nx\n", "#line 2 \"a.c\"\nx\n"},
      {"  #  \t\nx\n", "#line 2 \"a.c\"\nx\n"},
      {"#define X\n#undef X\n\nx\n", "\n#line 4 \"a.c\"\nx\n"},
      {" # define X y\nX\n", "#line 2 \"a.c\"\ny\n"},
      {"/**/#/**/define X y\nX\n", "#line 2 \"a.c\"\ny\n"},
      {"\\\n#define X y\nX\n", "#line 3 \"a.c\"\ny\n"},
      {"#\\\ndefine X y\nX\n", "#line 3 \"a.c\"\ny\n"},
      {"x\n#define X", "x\n"},
      {"x #define X y\nX\n", "x #define X y\nX\n"},
  });
}

// The test for a line directive is made before text lines only.
TEST(RunLoopTest, EmptyLinesNeedNoLineDirective) {
  expectOutputs({
      {"#define X\n\n\nx\n", "\n\n#line 4 \"a.c\"\nx\n"},
      {"#define X\n\n\n", "\n\n"},
      {"#if 1\n#endif\nx\n", "\n#line 3 \"a.c\"\nx\n"},
      {"#if 0\nx\n#else\ny\n#endif\nz\n", "\n\n#line 4 \"a.c\"\ny\n\nz\n"},
      {"#if 0\nx\n#endif\ny\n", "\n\n#line 4 \"a.c\"\ny\n"},
  });
}

TEST(RunLoopTest, AHashFromAMacroIsText) {
  const Preprocessed run = preprocess("#define H #\nH define X\nH\nX\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 2 \"a.c\"\n# define X\n#\nX\n");
  EXPECT_EQ(run.messages, "");
}

TEST(RunLoopTest, UnknownDirectivesAreReportedWhereTheyCount) {
  const std::string what = "the indicated directive is not a recognized preprocessing directive.\n";
  for (const char* const directive : {"#foo bar", "#ident \"x\"", "#warning x", "#1", "#\"s\"", "# #", "#Define X"}) {
    const Preprocessed run = preprocess(std::string("x\n") + directive + "\ny\n");
    EXPECT_EQ(run.output, std::string(kFirstLine) + "x\n#line 3 \"a.c\"\ny\n") << directive;
    EXPECT_EQ(run.messages, "a.c:2: " + what) << directive;
    EXPECT_TRUE(run.hasError) << directive;
    const Preprocessed skipped = preprocess(std::string("#if 0\n") + directive + "\n#endif\n");
    EXPECT_EQ(skipped.output, std::string(kFirstLine) + "\n\n") << directive;
    EXPECT_EQ(skipped.messages, "") << directive;
  }
}

TEST(RunLoopTest, LineDirectivesDoubleTheBackslashesOfTheName) {
  EXPECT_EQ(preprocess("x\n", {.sourceName = "C:\\src\\\\a.h"}).output, "#line 1 \"C:\\\\src\\\\\\\\a.h\"\nx\n");
  EXPECT_EQ(preprocess("x\n", {.sourceName = "\\"}).output, "#line 1 \"\\\\\"\nx\n");
  EXPECT_EQ(preprocess("x\n", {.sourceName = "a\"b"}).output, "#line 1 \"a\"b\"\nx\n");
}

TEST(RunLoopTest, ATextWithoutANameIsCalledSource) {
  EXPECT_EQ(preprocess("x\n#foo\n", {.sourceName = ""}).output, "#line 1 \"source\"\nx\n");
  EXPECT_EQ(preprocess("#foo\n", {.sourceName = ""}).messages,
            "source:1: the indicated directive is not a recognized preprocessing directive.\n");
}

TEST(RunLoopTest, OpensFilesByName) {
  const TemporaryFolder folder;
  const std::string name = folder.write("a.c", "x\n#foo\n");
  for (const bool named : {false, true}) {
    const Preprocessed run = preprocess("never read", {.fileName = name, .sourceName = named ? "name" : ""});
    EXPECT_TRUE(run.hasError);
    const std::string shown = named ? "name" : name;
    EXPECT_EQ(run.output, "#line 1 \"" + shown + "\"\nx\n");
    EXPECT_EQ(run.messages, shown + ":2: the indicated directive is not a recognized preprocessing directive.\n");
  }
}

TEST(RunLoopTest, ASourceThatCannotBeOpenedIsFatal) {
  const Preprocessed run = preprocess("", {.fileName = "no/such/file.c", .sourceName = "name"});
  EXPECT_TRUE(run.hasError);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.messages, "FATAL ERROR: cannot open no/such/file.c.\n");
}

TEST(RunLoopTest, CallersMayAskForDefinitionsBeforehand) {
  EXPECT_EQ(preprocess("A B\n", {.definitions = {{"A", "1"}, {"A", "2"}, {"B", ""}}}).output,
            std::string(kFirstLine) + "1 \n");
}

}  // namespace
}  // namespace qnpp
