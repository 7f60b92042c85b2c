// Conditional groups: which are taken, and how far they may nest.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/support/Files.h"
#include "tests/support/Preprocess.h"
#include "tests/support/Text.h"
#include "tests/unit/support/Timing.h"

namespace qnpp {
namespace {

// The lines that are written, without empty ones and line directives.
std::string textOf(const std::string& output) {
  std::string text;
  for (std::size_t at = 0; at < output.size();) {
    const std::size_t end = output.find('\n', at);
    const std::string line = output.substr(at, end - at);
    if (!line.empty() && line.compare(0, 6, "#line ") != 0) {
      text += (text.empty() ? "" : " ") + line;
    }
    at = end + 1;
  }
  return text;
}

struct ConditionalRow {
  const char* source;  // Lines end at "/".
  const char* text;
  const char* messages = "";
};

template <std::size_t Count>
void expectGroups(const ConditionalRow (&rows)[Count]) {
  for (const ConditionalRow& row : rows) {
    std::string source = std::string(row.source) + "/";
    for (char& character : source) {
      character = character == '/' ? '\n' : character;
    }
    const Preprocessed run = preprocess(source);
    EXPECT_EQ(textOf(run.output), row.text) << row.source;
    EXPECT_EQ(run.messages, row.messages) << row.source;
  }
}

TEST(ConditionalsTest, TheFirstTrueGroupIsTaken) {
  expectGroups({
      {"#if 1/a/#endif/z", "a z"},
      {"#if 0/a/#endif/z", "z"},
      {"#if 1/a/#else/b/#endif/z", "a z"},
      {"#if 0/a/#else/b/#endif/z", "b z"},
      {"#if 1/a/#elif 1/b/#else/c/#endif/z", "a z"},
      {"#if 0/a/#elif 1/b/#else/c/#endif/z", "b z"},
      {"#if 0/a/#elif 0/b/#else/c/#endif/z", "c z"},
      {"#if 0/a/#elif 0/b/#elif 1/c/#elif 1/d/#else/e/#endif/z", "c z"},
      {"#if 1/a/#elif garbage(/b/#endif/z", "a z"},
      {"#ifdef X/a/#else/b/#endif", "b"},
      {"#ifndef X/a/#else/b/#endif", "a"},
      {"#define X/#ifdef X/a/#else/b/#endif", "a"},
      {"#define X/#ifndef X/a/#else/b/#endif", "b"},
      {"#define include/#ifdef include/a/#endif", "a"},
      {"#ifdef __FILE__/a/#endif", "a"},
  });
}

TEST(ConditionalsTest, NothingInASkippedGroupIsTaken) {
  expectGroups({
      {"#if 0/#if 1/a/#else/b/#endif/c/#endif/z", "z"},
      {"#if 0/#if 0/a/#elif 1/b/#else/c/#endif/#else/d/#endif/z", "d z"},
      {"#if 0/#ifdef X/#else/a/#endif/#ifndef X/b/#endif/#endif/z", "z"},
      {"#if 0/#define X/#endif/#ifdef X/a/#endif/z", "z"},
      {"#if 0/#error x/#foo/#include <none>/#if garbage(/#endif/#endif/z", "z"},
      {"#if 1/#if 0/a/#endif/b/#endif/z", "b z"},
      {"#if 1/#else/#if 1/a/#endif/b/#endif/z", "z"},
      {"#if 0/a #endif/#endif/z", "z"},
      {"#if 0/#ifdef/#ifndef 1/#endif/#endif/#endif/z", "z"},
  });
}

// A "#" alone in a skipped group takes the next line with it, whatever that is.
TEST(ConditionalsTest, ANullDirectiveInASkippedGroupTakesTheNextLine) {
  expectGroups({
      {"#if 0/#/#endif/a/#endif/z", "z"},
      {"#if 0/ # /#else/a/#endif/z", "z"},
      {"#if 0/#/x/#endif/z", "z"},
      {"#if 0/#/#if 1/#endif/z", "z"},
      {"#if 1/#/#endif/z", "z"},
  });
}

// What stands behind #else and #endif is a line of its own, of the group that has then begun.
TEST(ConditionalsTest, WordsBehindElseAndEndifAreText) {
  expectGroups({
      {"#if 0/#else a/b/#endif c/z", " a b  c z"},
      {"#if 1/a/#else b/c/#endif d/z", "a  d z"},
      {"#if 0/#endif #if 0/a/#endif/z", "z"},
      {"#if 0/#if 1/#endif a/#endif b/z", " b z"},
      {"#define X x/#if 0/#endif X/z", " x z"},
  });
}

TEST(ConditionalsTest, UnmatchedDirectivesChangeNothing) {
  expectGroups({
      {"#endif/z", "z", "a.c:1: No \"#if\" directive associated to \"#endif\".\n"},
      {"#else/z", "z", "a.c:1: No \"#if\" directive associated to \"#else\".\n"},
      {"#elif 1/z", "z", "a.c:1: No \"#if\" directive associated to \"elif\".\n"},
      {"#if 1/#else/#else/a/#endif/z", "z", "a.c:3: Cannot use another \"#else\" directive after an \"#else\".\n"},
      {"#if 0/#else/#else/a/#endif/z", "a z", "a.c:3: Cannot use another \"#else\" directive after an \"#else\".\n"},
      {"#if 0/#else/#elif 0/a/#endif/z", "a z", "a.c:3: Cannot use an \"#elif\" directive after an \"#else\".\n"},
      {"#if 0/#if 1/#else/#else/#endif/#endif/z", "z",
       "a.c:4: Cannot use another \"#else\" directive after an \"#else\".\n"},
      {"#if 1/a", "a", "a.c:3: Unterminated \"#if\" conditional.\n"},
      {"#if 0/#if 1/#if 1/a", "", "a.c:5: Unterminated \"#if\" conditional.\n"},
  });
}

TEST(ConditionalsTest, IfdefWantsOneName) {
  constexpr const char* kLeftOver =
      "a.c:2: Invalid characters appear before a new-line in the preprocessor directive.\n";
  expectGroups({
      {"#define X/#ifdef X b/a/#endif/z", "b a z", kLeftOver},
      {"#define X/#ifndef X b/a/#endif/z", "z", kLeftOver},
      {"#define X/#ifdef X #else/a/#endif/z", "z", kLeftOver},
      {"#ifdef/a/#else/b/#endif/z", "b z", "a.c:1: An identifier is expected after \"#ifdef\".\n"},
      {"#ifndef 1/a/#else/b/#endif/z", "b z", "a.c:1: An identifier is expected after \"#ifndef\".\n"},
      {"#ifdef defined/a/#endif/z", "z", "a.c:1: An identifier is expected after \"#ifdef\".\n"},
  });
}

// Conditionals belong to the file that opened them.
TEST(ConditionalsTest, AFileClosesItsOwnConditionalsOnly) {
  const TemporaryFolder folder;
  const std::string opens = folder.write("opens.h", "#if 0\nskipped\n#if 1\n");
  const std::string closes = folder.write("closes.h", "#endif\n#else\n#elif 1\ntext\n");
  const PreprocessOptions options{.includeDirectories = {folder.path()}};

  const Preprocessed opened = preprocess("#if 1\n#include <opens.h>\na\n#else\nb\n#endif\nc\n", options);
  EXPECT_EQ(textOf(opened.output), "a c");
  EXPECT_EQ(opened.messages, opens + ":4: Unterminated \"#if\" conditional.\n");

  const Preprocessed closed = preprocess("#if 1\n#include <closes.h>\na\n#else\nb\n#endif\nc\n", options);
  EXPECT_EQ(textOf(closed.output), "text a c");
  EXPECT_EQ(closed.messages, closes + ":1: No \"#if\" directive associated to \"#endif\".\n" + closes +
                                 ":2: No \"#if\" directive associated to \"#else\".\n" + closes +
                                 ":3: No \"#if\" directive associated to \"elif\".\n");
}

TEST(ConditionalsTest, NestingIsLimitedByMemoryAlone) {
  constexpr std::size_t kDepth = 100000;
  const std::string ends = repeat(kDepth, "#endif\n");
  struct DeepRow {
    std::string source;
    const char* text;
    const char* messages = "";
  };
  const DeepRow rows[] = {
      {repeat(kDepth, "#if 1\n") + "a\n" + ends + "z\n", "a z"},
      {repeat(kDepth, "#if 0\n") + "a\n" + ends + "z\n", "z"},
      {repeat(kDepth, "#ifdef X\n#else\n") + "a\n" + ends + "z\n", "a z"},
      {repeat(kDepth, "#ifndef X\n") + "a\n", "a", "a.c:100002: Unterminated \"#if\" conditional.\n"},
      {"#if 0\n" + repeat(kDepth, "#elif 0\n") + "#else\na\n#endif\nz\n", "a z"},
      {repeat(kDepth, "#if 1\n#endif\n") + "z\n", "z"},
  };
  for (const DeepRow& row : rows) {
    Preprocessed run;
    const double seconds = secondsOf([&] { run = preprocess(row.source); }, 1);
    EXPECT_EQ(textOf(run.output), row.text) << row.source.substr(0, 20);
    EXPECT_EQ(run.messages, row.messages) << row.source.substr(0, 20);
    EXPECT_LT(seconds, 10) << row.source.substr(0, 20);
  }
}

}  // namespace
}  // namespace qnpp
