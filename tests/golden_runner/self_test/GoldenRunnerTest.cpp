// The runner's own tests: a comparison that never fails, or a word that reaches the program changed, would make every
// golden case worthless without anyone noticing.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "CaseRun.h"
#include "GoldenCase.h"
#include "Process.h"
#include "TextDifference.h"

namespace qnpp::golden {
namespace {

namespace fs = std::filesystem;

using Words = std::vector<std::string>;

// A golden case in a temporary folder.
class GoldenCaseFolder : public testing::Test {
 protected:
  void SetUp() override {
    // A folder of its own for each process: CTest runs the tests side by side.
    std::string pattern = testing::TempDir() + "golden-runner-test-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    root_ = pattern;
    location_ = {root_ / "area" / "case", "area", "case"};
    fs::create_directories(location_.folder);
  }
  void TearDown() override { fs::remove_all(root_); }

  void write(const std::string& name, const std::string& bytes) const {
    fs::create_directories((location_.folder / name).parent_path());
    std::ofstream(location_.folder / name, std::ios::binary) << bytes;
  }

  // Runs the case with `sh -c SCRIPT` in the place of the program under test.
  CaseOutcome run(const std::string& script, std::chrono::milliseconds timeLimit = std::chrono::seconds(20)) const {
    RunSettings settings;
    settings.wrapper = {"/bin/sh", "-c", script};
    settings.program = "program";
    settings.timeLimit = timeLimit;
    return runCase(location_, readCase(location_), settings);
  }

  std::string check(const std::string& script) const { return compare(readCase(location_), run(script)); }

  CaseLocation location_;

 private:
  fs::path root_;
};

TEST(ParseWords, AWordIsALine) {
  EXPECT_EQ(parseWords(""), Words{});
  EXPECT_EQ(parseWords("\n"), Words{""});
  EXPECT_EQ(parseWords("-o\nout file\n"), (Words{"-o", "out file"}));
  EXPECT_EQ(parseWords("-o\n\ninput.c"), (Words{"-o", "", "input.c"}));
}

TEST(ParseWords, EscapesStandForTheirBytes) { EXPECT_EQ(parseWords(R"(a\n\t\r\\\x41\xe9)"), Words{"a\n\t\r\\A\xE9"}); }

TEST(ParseWords, RefusesAnyOtherEscape) {
  for (const char* text : {R"(\)", R"(\q)", R"(\x)", R"(\x4)", R"(\xg0)", R"(\x00)"}) {
    EXPECT_THROW(parseWords(text), std::runtime_error) << text;
  }
}

TEST(TestNameOf, JoinsTheWordsWithoutHyphens) {
  EXPECT_EQ(testNameOf("command-line"), "CommandLine");
  EXPECT_EQ(testNameOf("a-2-b"), "A2B");
}

TEST(DescribeDifference, ShowsTheFirstDifferenceEscaped) {
  const std::string text = describeDifference("same\na\tb\n", "same\na b\n");
  EXPECT_NE(text.find("line 2, column 2"), std::string::npos) << text;
  EXPECT_NE(text.find("expected \"a\\tb\\n\""), std::string::npos) << text;
  EXPECT_NE(text.find("actual   \"a b\\n\""), std::string::npos) << text;
}

TEST(DescribeDifference, MarksAMissingLineEnd) {
  const std::string text = describeDifference("x\n", "x");
  EXPECT_NE(text.find("    - x\n    + x   (no line end)\n"), std::string::npos) << text;
}

TEST(DescribeDifference, ShowsChangedLinesWithTheirNeighboursOnly) {
  const std::string text = describeDifference("1\n2\n3\n4\n5\n6\nold\n8\n", "1\n2\n3\n4\n5\n6\nnew\nextra\n8\n");
  EXPECT_NE(text.find("    ...\n      4\n      5\n      6\n    - old\n    + new\n    + extra\n      8\n"),
            std::string::npos)
      << text;
}

TEST_F(GoldenCaseFolder, ACaseWithoutItsReasonIsMalformed) {
  EXPECT_THROW(readCase(location_), std::runtime_error);
  write("why", " \n");
  EXPECT_THROW(readCase(location_), std::runtime_error);
}

TEST_F(GoldenCaseFolder, TheSourceAloneIsTheCommandLineByDefault) {
  write("why", "because");
  EXPECT_EQ(readCase(location_).words, Words{});
  write("input.c", "x\n");
  EXPECT_EQ(readCase(location_).words, Words{"input.c"});
  write("args", "");
  EXPECT_EQ(readCase(location_).words, Words{});
}

TEST_F(GoldenCaseFolder, TheProgramSeesTheInputsAndNothingReserved) {
  write("why", "because");
  write("sub/a.h", "h");
  write("stdin", "bytes");
  write("stdout", "./sub\n./sub/a.h\nbytes");
  EXPECT_EQ(check("find . -mindepth 1 | sort; cat"), "");
}

TEST_F(GoldenCaseFolder, EachKindOfDifferenceIsReported) {
  write("why", "because");
  write("stdout", "out");
  write("stderr", "err");
  write("status", "3\n");
  write("expect/made", "text");
  EXPECT_EQ(check("printf out; printf err >&2; printf text > made; exit 3"), "");
  EXPECT_NE(check("printf Out; printf err >&2; printf text > made; exit 3"), "");
  EXPECT_NE(check("printf out; printf Err >&2; printf text > made; exit 3"), "");
  EXPECT_NE(check("printf out; printf err >&2; printf Text > made; exit 3"), "");
  EXPECT_NE(check("printf out; printf err >&2; exit 3"), "");
  EXPECT_NE(check("printf out; printf err >&2; printf text > made"), "");
}

TEST_F(GoldenCaseFolder, ASignalIsAStatus) {
  write("why", "because");
  write("status", "SIGFPE");
  EXPECT_EQ(check("kill -FPE $$"), "");
  EXPECT_NE(check("exit 136"), "");
}

TEST_F(GoldenCaseFolder, AProgramThatHangsIsKilledWithItsChildren) {
  write("why", "because");
  const CaseOutcome outcome = run("sleep 60 & sleep 60", std::chrono::milliseconds(100));
  EXPECT_NE(outcome.killedBy, "");
  EXPECT_NE(compare(readCase(location_), outcome), "");
}

TEST_F(GoldenCaseFolder, AProgramThatWritesWithoutEndIsKilled) {
  write("why", "because");
  EXPECT_NE(run("exec cat /dev/zero").killedBy, "");
}

TEST_F(GoldenCaseFolder, AProgramThatIsNotThereIsAnError) {
  write("why", "because");
  RunSettings settings;
  settings.program = "/no/such/program";
  EXPECT_THROW(runCase(location_, readCase(location_), settings), std::runtime_error);
}

TEST_F(GoldenCaseFolder, AnUpdateMakesTheCaseHold) {
  write("why", "because");
  write("stderr", "old");
  write("input.c", "source");
  const std::string script = "printf new; printf text > made; exit 2";
  rewriteExpectations(location_, run(script));
  EXPECT_EQ(check(script), "");
  EXPECT_EQ(readFile(location_.folder / "expect" / "made"), "text");
  EXPECT_FALSE(fs::exists(location_.folder / "stderr"));
  EXPECT_FALSE(fs::exists(location_.folder / "expect" / "input.c"));
}

}  // namespace
}  // namespace qnpp::golden
