// Guarded headers that are not read again, and all that makes them be read.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "directives/GuardedFiles.h"
#include "macros/CppMacro.h"
#include "tests/support/Files.h"

namespace qnpp {
namespace {

constexpr std::size_t kOpenFiles = 2;

struct Step {
  CppTokenKind kind;  // Of a directive; TK_END for a line of text.
  bool isSkipped;
  std::size_t conditionals;
};

const std::vector<Step> kGuarded = {{TK_IFNDEF, false, 0}, {TK_ENDIF, true, 1}};

struct GuardedFilesTest : testing::Test {
  GuardedFilesTest() { guard.macro = &macro; }

  // A file is read with these steps; between entering and leaving it `written` comes on top.
  void read(const std::vector<Step>& steps, GuardedFiles::Traces written = {4, 0, 0}) {
    files.enter({100, 10, 1});
    for (const Step& step : steps) {
      if (step.kind == TK_END) {
        files.seeText();
      } else {
        files.seeDirective(step.kind, step.isSkipped, step.conditionals, 1);
      }
      if (step.kind == TK_IFNDEF && !step.isSkipped) {
        files.seeGuard(guard);
      }
    }
    files.leave(path, stampOf(path), kOpenFiles,
                {100 + written.outputSize, 10 + written.messages, 1 + written.effects});
  }
  bool isKnown() const { return files.find(path, kOpenFiles).has_value(); }

  TemporaryFolder folder;
  std::string path = folder.write("a.h", "12345");
  GuardedFiles files;
  Name guard;
  CppMacro macro;
};

TEST_F(GuardedFilesTest, AGuardedFileStandsForTheLineEndsSeen) {
  EXPECT_FALSE(isKnown());
  read(kGuarded);
  EXPECT_EQ(files.find(path, kOpenFiles), 4U);
  EXPECT_EQ(files.find(path, 1), 4U);
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

TEST_F(GuardedFilesTest, AMessageOrACommentBehindTheGroupIsADoubt) {
  read(kGuarded, {4, 1, 0});
  EXPECT_FALSE(isKnown());
  read(kGuarded, {4, 0, 1});
  EXPECT_FALSE(isKnown());
}

TEST_F(GuardedFilesTest, AFileWithinTheGuardedOneIsADoubtForIt) {
  files.enter({});
  files.seeDirective(TK_IFNDEF, false, 0, 0);
  files.enter({});  // The other file, which ends at once.
  files.leave("other.h", stampOf(path), kOpenFiles + 1, {});
  files.seeDirective(TK_ENDIF, true, 1, 0);
  files.leave(path, stampOf(path), kOpenFiles, {});
  EXPECT_FALSE(isKnown());
}

TEST_F(GuardedFilesTest, TheGuardHasToBeDefined) {
  read(kGuarded);
  guard.macro = nullptr;
  EXPECT_FALSE(isKnown());
  guard.macro = &macro;
  EXPECT_TRUE(isKnown());
}

TEST_F(GuardedFilesTest, MoreOpenFilesThanEverAreADoubt) {
  read(kGuarded);
  EXPECT_FALSE(files.find(path, kOpenFiles + 1).has_value());
}

TEST_F(GuardedFilesTest, AChangedFileIsNotKnown) {
  read(kGuarded);
  folder.write("a.h", "123456");
  EXPECT_FALSE(isKnown());
}

TEST_F(GuardedFilesTest, AnotherFileOfTheSameSizeIsNotKnown) {
  folder.write("b.h", "12345");
  read(kGuarded);
  std::filesystem::rename(folder.path("b.h"), path);
  EXPECT_FALSE(isKnown());
}

TEST_F(GuardedFilesTest, AFileThatIsGoneIsNotKnown) {
  read(kGuarded);
  std::filesystem::remove(path);
  EXPECT_FALSE(isKnown());
  std::filesystem::create_directory(path);
  EXPECT_FALSE(isKnown());
}

TEST_F(GuardedFilesTest, ALinkThatLeadsElsewhereIsNotKnown) {
  folder.write("b.h", "12345");
  const std::string target = path;
  path = folder.path("link.h");
  std::filesystem::create_symlink(target, path);
  read(kGuarded);
  EXPECT_TRUE(isKnown());
  std::filesystem::remove(path);
  std::filesystem::create_symlink(folder.path("b.h"), path);
  EXPECT_FALSE(isKnown());
}

TEST_F(GuardedFilesTest, WithoutAStampNothingIsRemembered) {
  files.enter({});
  files.seeDirective(TK_IFNDEF, false, 0, 0);
  files.seeGuard(guard);
  files.seeDirective(TK_ENDIF, true, 1, 0);
  files.leave(path, std::nullopt, kOpenFiles, {});
  EXPECT_FALSE(isKnown());
}

}  // namespace
}  // namespace qnpp
