// Which headers count as guarded, and for how many line ends they stand.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "directives/GuardedFiles.h"
#include "macros/CppMacro.h"
#include "tests/support/Files.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

struct Step {
  CppTokenKind kind;  // Of a directive; TK_END for a line of text.
  bool isSkipped;
  std::size_t conditionals;
};

const std::vector<Step> kGuarded = {{TK_IFNDEF, false, 0}, {TK_ENDIF, true, 1}};

struct GuardedFilesTest : testing::Test {
  GuardedFilesTest() {
    guard.macro = &macro;
    file.get();
  }

  // The file is opened, and a reading begins.
  void enter(GuardedFiles::Traces traces = {}) {
    known.opened(path, *stampOf(path), 0);
    files.enter(traces);
  }
  // It is read with these steps; between entering and leaving it `written` comes on top.
  void read(const std::vector<Step>& steps, GuardedFiles::Traces written = {4, 0}) {
    enter({100, 10});
    for (const Step& step : steps) {
      if (step.kind == TK_END) {
        files.seeText();
      } else {
        files.seeDirective(step.kind, step.isSkipped, step.conditionals, {100, 10}, &file);
      }
      if (files.isAtGuard()) {
        files.seeGuard(guard, true, {100, 10}, &file);
      }
    }
    files.leave(path, stampOf(path), {100 + written.outputSize, 10 + written.messages});
  }
  // It is read, and consists of a group whose guard is not defined yet: how many line ends the group is known to
  // stand for then. The last "#endif" is that of the guard; what is before it is not followed.
  std::optional<std::uint64_t> lineEndsOfTaken(const std::string& group) {
    const std::string text = "#ifndef G\n" + group + "#endif\n";
    auto input = std::make_unique<InputText>();
    input->reset(text);
    CppFileScanner scanner("a.h", std::move(input), setting.context);
    scanner.setStamp(stampOf(path));
    enter({100, 10});
    while (scanner.get() != TK_IFNDEF) {
    }
    files.seeDirective(TK_IFNDEF, false, 0, {100, 10}, &scanner);
    while (scanner.get() != TK_NEWLINE) {
    }
    files.seeGuard(guard, false, {100, 10}, &scanner);
    while (scanner.offset() + 1 != text.size()) {
      scanner.get();
    }
    files.seeDirective(TK_ENDIF, false, 1, {500, 10}, &scanner);
    files.leave(path, stampOf(path), {500, 10});
    const std::optional<std::uint64_t> lineEnds = this->lineEnds();
    path = folder.write(std::to_string(++readCount) + ".h", "12345");  // The next one is another file.
    return lineEnds;
  }
  // That it is known to stand for.
  std::optional<std::uint64_t> lineEnds() {
    const KnownFiles::File* const found = known.find(path, 0);
    return found != nullptr ? std::optional(found->lineEnds) : std::nullopt;
  }
  bool isKnown() { return lineEnds().has_value(); }

  TemporaryFolder folder;
  int readCount = 0;
  std::string path = folder.write("a.h", "12345");
  LexerSetting setting;
  CppFileScanner file{"a.h", std::make_unique<std::istringstream>("x\n"), setting.context};
  KnownFiles known;
  GuardedFiles files{known, setting.names, setting.budget};
  Name guard;
  CppMacro macro;
};

TEST_F(GuardedFilesTest, AGuardedFileStandsForTheLineEndsSeen) {
  EXPECT_FALSE(isKnown());
  read(kGuarded);
  EXPECT_EQ(lineEnds(), 4U);
}

TEST_F(GuardedFilesTest, ConditionalsWithinTheGroupDoNotMatter) {
  read({{TK_IFNDEF, false, 0},
        {TK_IF, true, 1},
        {TK_IFNDEF, true, 2},
        {TK_ENDIF, true, 3},
        {TK_ELIF, true, 2},
        {TK_ELSE, true, 2},
        {TK_ENDIF, true, 2},
        {TK_DEFINE, true, 1},
        {TK_ENDIF, true, 1}});
  EXPECT_TRUE(isKnown());
}

TEST_F(GuardedFilesTest, AnythingBesideTheGroupIsADoubt) {
  const Step open = kGuarded[0];
  const Step close = kGuarded[1];
  const Step text = {TK_END, false, 0};
  const Step define = {TK_DEFINE, false, 0};
  const std::vector<Step> doubts[] = {
      {},
      {open},
      {text, open, close},
      {open, close, text},
      {define, open, close},
      {open, close, define},
      {open, close, open, close},
      {open, close, {TK_ENDIF, false, 0}},
      {open, {TK_ELSE, true, 1}, {TK_ENDIF, false, 1}},
      {open, {TK_ELSE, true, 1}, close},
      {open, {TK_ELIF, true, 1}, close},
      {open, {TK_ENDIF, false, 1}},
      {{TK_IFDEF, false, 0}, close},
      {{TK_IF, false, 0}, close},
      {{TK_NEWLINE, false, 0}, open, close},
  };
  for (const std::vector<Step>& steps : doubts) {
    read(steps);
    EXPECT_FALSE(isKnown()) << "row " << &steps - doubts;
  }
}

TEST_F(GuardedFilesTest, AMessageIsADoubt) {
  read(kGuarded, {4, 1});
  EXPECT_FALSE(isKnown());
}

TEST_F(GuardedFilesTest, EachFileIsFollowedByItself) {
  const std::string other = folder.write("other.h", "123");
  enter();
  files.seeDirective(TK_IFNDEF, false, 0, {}, &file);
  files.seeGuard(guard, true, {}, &file);
  known.opened(other, *stampOf(other), 0);
  files.enter({});  // Another file, which is no guarded one and ends at once.
  files.seeText();
  files.leave(other, stampOf(other), {});
  files.seeDirective(TK_ENDIF, true, 1, {}, &file);
  files.leave(path, stampOf(path), {});
  EXPECT_TRUE(isKnown());
  EXPECT_EQ(known.find(other, 0), nullptr);
}

// ---- Groups that were not skipped ----

struct TakenGroup {
  std::string group;
  std::optional<std::uint64_t> lineEnds;
};

TEST_F(GuardedFilesTest, AGroupThatWasTakenIsSkippedAsTheNextReadingWould) {
  const TakenGroup rows[] = {
      {"", 0},
      {"#define G\nint x;\n\n", 3},
      {"x \\\n y\n", 1},
      {"/* a\n b */ x\n// it's\n", 3},
      {"\"/*\"\n'\"'\n'\n", 3},
      {"a\rb\r\nc\n", 3},
      // The line of a conditional leaves none, but what is behind #else and #endif is a line.
      {"#if A\nx\n#elif B\ny\n#else\nz\n#endif\n", 5},
      {"# ifdef A // why\n  #  endif\n", 1},
      {"#include \"other.h\"\n#error no\n#line 7\n", 3},
      {"/* c */ ", 0},
      {std::string(kReadSize / 2, 'x') + "\n", 1},
      // What takes the next line with it, what may be no directive, and what is no longer in the buffer.
      {"#\n", std::nullopt},
      {"# /* c */\n", std::nullopt},
      {"#/**/if A\n", std::nullopt},
      {std::string(kReadSize + 1, 'x') + "\n", std::nullopt},
  };
  for (const TakenGroup& row : rows) {
    EXPECT_EQ(lineEndsOfTaken(row.group), row.lineEnds) << visible(row.group).substr(0, 80);
  }
}

TEST_F(GuardedFilesTest, AGroupThatEndsElsewhereForTheNextReadingIsADoubt) {
  // Where the tokens were arguments, the next reading sees directives.
  EXPECT_EQ(lineEndsOfTaken("M(\n#endif\n)\n"), std::nullopt);
  EXPECT_EQ(lineEndsOfTaken("M(\n#if A\n)\n"), std::nullopt);
  EXPECT_EQ(lineEndsOfTaken("M(\n#else\n)\n"), std::nullopt);
  EXPECT_EQ(lineEndsOfTaken("M(\n#if A\n#endif\n)\n"), 3U);
}

TEST_F(GuardedFilesTest, AnElseBesideATakenGroupIsADoubt) {
  for (const CppTokenKind kind : {TK_ELSE, TK_ELIF}) {
    enter();
    files.seeDirective(TK_IFNDEF, false, 0, {}, &file);
    files.seeGuard(guard, false, {}, &file);
    files.seeDirective(kind, false, 1, {}, &file);
    EXPECT_FALSE(files.isFollowing());
    files.leave(path, stampOf(path), {});
  }
  EXPECT_FALSE(isKnown());
}

TEST_F(GuardedFilesTest, ADirectiveFromAMacroIsADoubt) {
  enter();
  files.seeDirective(TK_IFNDEF, false, 0, {}, &file);
  files.seeGuard(guard, false, {}, nullptr);
  EXPECT_FALSE(files.isFollowing());
  files.leave(path, stampOf(path), {});
  EXPECT_FALSE(isKnown());
}

TEST_F(GuardedFilesTest, WithoutAStampNothingIsRemembered) {
  enter();
  files.seeDirective(TK_IFNDEF, false, 0, {}, &file);
  files.seeGuard(guard, true, {}, &file);
  files.seeDirective(TK_ENDIF, true, 1, {}, &file);
  files.leave(path, std::nullopt, {});
  EXPECT_FALSE(isKnown());
}

}  // namespace
}  // namespace qnpp
