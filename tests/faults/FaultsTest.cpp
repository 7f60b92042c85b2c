// Faults of the system: files that cannot be read to their end, and outputs that cannot be written.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Program.h"
#include "driver/MemoryBudget.h"
#include "tests/support/Text.h"
#include "tests/unit/support/FallingSeries.h"

namespace qnpp::faults {
namespace {

constexpr const char* kReadFailed = "input in flex scanner failed\n";

class FaultsTest : public testing::Test {
 protected:
  Outcome runWith(const std::string& preparation, std::vector<std::string> words = {"input.c"}) const {
    Invocation invocation;
    invocation.preparation = preparation;
    invocation.words = std::move(words);
    return run(folder_, invocation);
  }

  static std::string withReadFault(const std::string& fault) {
    return "export LD_PRELOAD=" QNPP_FAULTY_READ " QNPP_READ_FAULT=" + fault;
  }

  TemporaryFolder folder_;
};

// For texts that are too long to be shown.
void expectSame(const std::string& text, const std::string& expected) {
  EXPECT_TRUE(text == expected) << "expected " << shortened(expected) << "\nbut got " << shortened(text);
}

std::size_t countOf(const std::string& text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
    ++count;
  }
  return count;
}

// ---- Memory ----

TEST_F(FaultsTest, aTinyStackIsEnough) {
  if (isSanitized()) {
    GTEST_SKIP() << "sanitizers make stack frames larger";
  }
  folder_.write("input.c", "#define f(x) x #x x##x\n#if f(1) == 1\n#endif\nf(f(f(a)))\n");
  const Outcome outcome = runWith("ulimit -s 32");
  EXPECT_EQ(outcome.status, "1");
  EXPECT_EQ(outcome.messages,
            "input.c:2: Invalid characters appear before a new-line in the preprocessor directive.\n");
}

TEST_F(FaultsTest, noChainOfMacrosMakesADeepTree) {
  if (isSanitized()) {
    GTEST_SKIP() << "sanitizers make stack frames larger";
  }
  // All names are defined in the order of their numbers first. Then the chosen ones lead to one another.
  constexpr std::size_t kNames = 400'000;
  const std::vector<std::size_t> series = fallingSeries(kNames, kKeywords + kPredefinedMacros);
  ASSERT_GT(series.size(), 1'200U);
  const auto nameOf = [](std::size_t index) { return 'n' + std::to_string(index); };
  std::string source;
  for (std::size_t index = 0; index < kNames; ++index) {
    source += "#define " + nameOf(index) + '\n';
  }
  for (std::size_t at = 0; at + 1 < series.size(); ++at) {
    source += "#undef " + nameOf(series[at]) + "\n#define " + nameOf(series[at]) + ' ' + nameOf(series[at + 1]) + '\n';
  }
  source += "#undef " + nameOf(series.back()) + '\n';
  folder_.write("input.c", source + nameOf(series.front()) + '\n');
  const Outcome outcome = runWith("ulimit -s 160");
  EXPECT_EQ(outcome.status, "0");
  EXPECT_EQ(outcome.messages, "");
  EXPECT_TRUE(outcome.output.ends_with('\n' + nameOf(series.back()) + '\n')) << shortened(outcome.output);
}

TEST_F(FaultsTest, whereMemoryEndsThereIsOneLine) {
  if (isSanitized()) {
    GTEST_SKIP() << "sanitizers need an address space of their own";
  }
  folder_.write("input.c", "#define f(x) x x\n" + repeat(15, "f(") + "word" + repeat(15, ")") + '\n');
  const Outcome complete = runWith("");
  ASSERT_EQ(complete.status, "0");
  bool hasEnough = false;
  bool hasTooLittle = false;
  for (int kilobytes = 4'000; kilobytes < 12'000; kilobytes += 100) {
    SCOPED_TRACE(kilobytes);
    const Outcome outcome = runWith("ulimit -v " + std::to_string(kilobytes));
    if (outcome.status == "127") {
      continue;  // Not even the system's loader could get the program into memory.
    }
    EXPECT_TRUE(complete.output.starts_with(outcome.output)) << shortened(outcome.output);
    if (outcome.status == "0") {
      hasEnough = true;
      EXPECT_EQ(outcome.messages, "");
      expectSame(outcome.output, complete.output);
      continue;
    }
    hasTooLittle = true;
    EXPECT_EQ(outcome.status, "1");
    EXPECT_TRUE(outcome.messages.ends_with("FATAL ERROR: out of memory.\n")) << outcome.messages;
    EXPECT_EQ(countOf(outcome.messages, "\n"), 1U) << outcome.messages;
  }
  EXPECT_TRUE(hasEnough);
  EXPECT_TRUE(hasTooLittle);
}

TEST_F(FaultsTest, aTokenOfMoreThanAGibibyteIsAToken) {
  if (isSanitized()) {
    GTEST_SKIP() << "sanitizers take several times the memory";
  }
  if (MemoryBudget().most().value_or(0) < std::uint64_t{2} << 30) {
    GTEST_SKIP() << "there are no 2 GiB of memory";
  }
  Invocation invocation;
  invocation.preparation =
      "{ printf '\"'; head -c 1200000000 /dev/zero | tr '\\0' x; printf '\"\\n'; } | \"$@\" 2>messages | wc -c; exec "
      "true";
  invocation.words = {};
  invocation.timeLimit = std::chrono::seconds(120);
  const Outcome outcome = run(folder_, invocation);
  // The directive, the string with its quotes, and the line end.
  EXPECT_EQ(outcome.output, std::to_string(std::string("#line 1 \"stdin\"\n").size() + 1'200'000'000 + 2 + 1) + '\n');
  EXPECT_EQ(folder_.read("messages"), "");
}

TEST_F(FaultsTest, aCommandLineOfQuestionsIsNotKeptForEachOfThem) {
  if (isSanitized()) {
    GTEST_SKIP() << "sanitizers need an address space of their own";
  }
  // Each of the words leaves all others unread, and says so: 48 MB of messages.
  constexpr std::size_t kWords = 4'000;
  const Outcome outcome = runWith("ulimit -v 32768; exec 2>messages", std::vector<std::string>(kWords, "-h"));
  EXPECT_EQ(outcome.status, "1");
  EXPECT_TRUE(outcome.output.starts_with("Usage: ")) << shortened(outcome.output);
  const std::string others = repeat(kWords - 2, "-h ");
  const std::string middle = "qnpp: argument(s) '" + others + "-h' is(are) ignored\n";
  // The last one keeps the blank behind the word before it.
  expectSame(folder_.read("messages"),
             repeat(kWords - 1, middle) + "qnpp: argument(s) '" + others + "-h ' is(are) ignored\n");
}

// ---- Descriptors ----

// What the includer says when the last file could not be opened, and the lines of all the files that could be.
void expectIncludesUntilDescriptorsRunOut(const Outcome& outcome, const std::string& message) {
  EXPECT_EQ(outcome.status, "1");
  EXPECT_EQ(outcome.killedBy, "");
  EXPECT_EQ(outcome.messages, message);
  EXPECT_GT(countOf(outcome.output, "#line 1 "), 1U);
  EXPECT_EQ(countOf(outcome.output, "\nx\n"), countOf(outcome.output, "#line 1 "));
}

TEST_F(FaultsTest, aFileIncludesItselfUntilDescriptorsRunOut) {
  if (isSanitized()) {
    GTEST_SKIP() << "a sanitizer looks at objects through a pipe, for which no descriptor is left";
  }
  folder_.write("input.c", "#include \"input.c\"\nx\n");
  for (const std::string limit : {"ulimit -n 8", "ulimit -n 256", "ulimit -S -n $(ulimit -H -n)"}) {
    SCOPED_TRACE(limit);
    expectIncludesUntilDescriptorsRunOut(runWith(limit), "input.c:1: Cannot open file: input.c.\n");
  }
}

TEST_F(FaultsTest, filesIncludeEachOtherUntilDescriptorsRunOut) {
  if (isSanitized()) {
    GTEST_SKIP() << "a sanitizer looks at objects through a pipe, for which no descriptor is left";
  }
  folder_.write("input.c", "#include \"b.h\"\nx\n");
  folder_.write("b.h", "#include \"c.h\"\nx\n");
  folder_.write("c.h", "#include \"input.c\"\nx\n");
  const Outcome outcome = runWith("ulimit -n 256");
  const std::string missing = outcome.messages.substr(0, outcome.messages.find(':'));
  const std::string next = missing == "input.c" ? "b.h" : missing == "b.h" ? "c.h" : "input.c";
  expectIncludesUntilDescriptorsRunOut(outcome, missing + ":1: Cannot open file: " + next + ".\n");
}

// What has been included before is read without opening it, and takes its descriptors all the same.
TEST_F(FaultsTest, descriptorsRunOutForFilesThatAreKnownAsWell) {
  if (isSanitized()) {
    GTEST_SKIP() << "a sanitizer looks at objects through a pipe, for which no descriptor is left";
  }
  constexpr int kFiles = 8;
  for (int number = 1; number < kFiles; ++number) {
    folder_.write(std::to_string(number) + ".h",
                  "#ifdef ALL\n#include \"" + std::to_string(number + 1) + ".h\"\n#endif\n");
  }
  folder_.write(std::to_string(kFiles) + ".h", "last\n");
  // Three are open anyway, so there is room for the source and six files.
  for (const std::string first : {"4", "5", "6", "7"}) {
    const std::string known = "#include \"" + first + ".h\"\n";
    folder_.write("input.c", "#define ALL\n" + known + known + known + "#include \"1.h\"\nend\n");
    const Outcome outcome = runWith("ulimit -n 10");
    EXPECT_EQ(outcome.messages, "6.h:2: Cannot open file: 7.h.\n") << first;
    EXPECT_EQ(countOf(outcome.output, "last"), 3U);
  }
}

TEST_F(FaultsTest, noDescriptorIsLeftForTheSource) {
  if (isSanitized()) {
    GTEST_SKIP() << "a sanitizer looks at objects through a pipe, for which no descriptor is left";
  }
  folder_.write("input.c", "x\n");
  const Outcome outcome = runWith("ulimit -n 4", {"-o", "result", "input.c"});
  EXPECT_EQ(outcome.status, "1");
  EXPECT_EQ(outcome.messages, "FATAL ERROR: cannot open input.c.\n");
  EXPECT_EQ(outcome.output, "");
}

// ---- Reading ----

TEST_F(FaultsTest, aReadErrorEndsTheRun) {
  if (isSanitized()) {
    GTEST_SKIP() << "a sanitizer wants to be loaded first";
  }
  const std::string text = repeat(10'000, "0123456\n");
  folder_.write("input.c", text);
  // How much is read, and how much of that is written: all but the last token, which might have gone on.
  struct Row {
    std::size_t read;
    std::size_t written;
  };
  for (const auto [read, written] :
       {Row{0, 0}, Row{4, 0}, Row{8, 7}, Row{12, 8}, Row{16'384, 16'383}, Row{79'996, 79'992}}) {
    SCOPED_TRACE(read);
    const Outcome outcome = runWith(withReadFault("error:" + std::to_string(read)));
    EXPECT_EQ(outcome.status, "2");
    EXPECT_EQ(outcome.messages, kReadFailed);
    expectSame(outcome.output, "#line 1 \"input.c\"\n" + text.substr(0, written));
  }
}

TEST_F(FaultsTest, aReadErrorOfAnIncludedFileEndsTheRun) {
  if (isSanitized()) {
    GTEST_SKIP() << "a sanitizer wants to be loaded first";
  }
  folder_.write("input.c", "a\n#include \"b.h\"\nc\n");
  folder_.write("b.h", repeat(100, "b\n"));
  const Outcome outcome = runWith(withReadFault("error:100"));
  EXPECT_EQ(outcome.status, "2");
  EXPECT_EQ(outcome.messages, kReadFailed);
  EXPECT_TRUE(outcome.output.starts_with("#line 1 \"input.c\"\na\n#line 1 \"b.h\"\n")) << outcome.output;
}

TEST_F(FaultsTest, aFileThatShrinksEndsWhereItEnds) {
  if (isSanitized()) {
    GTEST_SKIP() << "a sanitizer wants to be loaded first";
  }
  folder_.write("input.c", repeat(10'000, "0123456\n"));
  for (const std::size_t delivered : {0U, 8U, 16'384U, 79'992U}) {
    SCOPED_TRACE(delivered);
    const Outcome outcome = runWith(withReadFault("end:" + std::to_string(delivered)));
    EXPECT_EQ(outcome.status, "0");
    EXPECT_EQ(outcome.messages, "");
    expectSame(outcome.output, "#line 1 \"input.c\"\n" + repeat(delivered / 8, "0123456\n"));
  }
}

TEST_F(FaultsTest, interruptedAndShortReadsAreGoneOnWith) {
  if (isSanitized()) {
    GTEST_SKIP() << "a sanitizer wants to be loaded first";
  }
  const std::string text = repeat(5'000, "0123456\n");
  folder_.write("input.c", text);
  const Outcome outcome = runWith(withReadFault("slow:7"));
  EXPECT_EQ(outcome.status, "0");
  EXPECT_EQ(outcome.messages, "");
  expectSame(outcome.output, "#line 1 \"input.c\"\n" + text);
}

TEST_F(FaultsTest, aFileThatGrowsIsReadToItsEnd) {
  // The writer is still at it while the program reads.
  const Outcome outcome =
      runWith("mkfifo pipe; (for word in a b c; do echo $word; sleep 0.1; done >pipe) & exec <pipe", {});
  EXPECT_EQ(outcome.status, "0");
  EXPECT_EQ(outcome.messages, "");
  EXPECT_EQ(outcome.output, "#line 1 \"stdin\"\na\nb\nc\n");
}

TEST_F(FaultsTest, aFolderAsStandardInputCannotBeRead) {
  const Outcome outcome = runWith("exec <.", {});
  EXPECT_EQ(outcome.status, "2");
  EXPECT_EQ(outcome.messages, kReadFailed);
  EXPECT_EQ(outcome.output, "#line 1 \"stdin\"\n");
}

TEST_F(FaultsTest, aClosedStandardInputCannotBeRead) {
  const Outcome outcome = runWith("exec <&-", {});
  EXPECT_EQ(outcome.status, "2");
  EXPECT_EQ(outcome.messages, kReadFailed);
  EXPECT_EQ(outcome.output, "#line 1 \"stdin\"\n");
}

TEST_F(FaultsTest, aSourceIsReadWhateverIsClosed) {
  folder_.write("input.c", "a\n#error e\n");
  for (const std::string closed : {"exec <&-", "exec <&- 2>&-", "exec 2>&-"}) {
    SCOPED_TRACE(closed);
    const Outcome outcome = runWith(closed);
    EXPECT_EQ(outcome.status, "1");
    EXPECT_EQ(outcome.output, "#line 1 \"input.c\"\na\n");
  }
}

// ---- Writing: failures are not reported, the status tells about the source alone ----

TEST_F(FaultsTest, aFullDeviceChangesNothingElse) {
  folder_.write("input.c", repeat(100'000, "0123456\n"));
  folder_.write("wrong.c", "#error e\n" + repeat(100'000, "0123456\n"));
  for (const std::string way : {"exec >/dev/full", "exec >&-"}) {
    SCOPED_TRACE(way);
    EXPECT_EQ(runWith(way).status, "0");
    EXPECT_EQ(runWith(way).messages, "");
    const Outcome outcome = runWith(way, {"wrong.c"});
    EXPECT_EQ(outcome.status, "1");
    EXPECT_EQ(outcome.messages, "wrong.c:1: #error directive:  e.\n");
  }
  EXPECT_EQ(runWith("", {"-o", "/dev/full", "input.c"}).status, "0");
  EXPECT_EQ(runWith("", {"-o", "/dev/full", "input.c"}).messages, "");
}

TEST_F(FaultsTest, aFullDeviceForTheMessagesChangesNothingElse) {
  folder_.write("input.c", "#error e\nx\n");
  const Outcome outcome = runWith("exec 2>/dev/full");
  EXPECT_EQ(outcome.status, "1");
  EXPECT_EQ(outcome.output, "#line 1 \"input.c\"\n#line 2 \"input.c\"\nx\n");
}

TEST_F(FaultsTest, anOutputFileIsTheOutputsAlone) {
  // With standard error closed the output file may be given its number; messages must not get into it all the same.
  folder_.write("input.c", "#error e\nx\n");
  for (const std::string closed : {"exec 2>&-", "exec >&- 2>&-", "exec <&- >&- 2>&-"}) {
    SCOPED_TRACE(closed);
    const Outcome outcome = runWith(closed, {"-o", "result", "input.c"});
    EXPECT_EQ(outcome.status, "1");
    EXPECT_EQ(folder_.read("result"), "#line 1 \"input.c\"\n#line 2 \"input.c\"\nx\n");
  }
}

TEST_F(FaultsTest, aReaderThatClosesThePipeChangesNothingElse) {
  folder_.write("input.c", repeat(100'000, "0123456\n") + "#error e\n");
  // "head" is gone after the first line; what the program says and how it ended is kept in files.
  const Outcome outcome = runWith("(\"$@\" 2>messages; echo $? >status) | head -n 1; exec true");
  EXPECT_EQ(outcome.output, "#line 1 \"input.c\"\n");
  EXPECT_EQ(folder_.read("status"), "1\n");
  EXPECT_EQ(folder_.read("messages"), "input.c:100001: #error directive:  e.\n");
}

TEST_F(FaultsTest, aFileSizeLimitChangesNothingElse) {
  folder_.write("input.c", repeat(100'000, "0123456\n"));
  const Outcome outcome = runWith("ulimit -f 100");
  EXPECT_EQ(outcome.status, "0");
  EXPECT_EQ(outcome.messages, "");
  EXPECT_LT(outcome.output.size(), 800'000U);
}

// ---- The output file ----

TEST_F(FaultsTest, anOutputFileThatCannotBeMadeEndsTheRun) {
  folder_.write("input.c", "x\n");
  std::filesystem::create_directory(folder_.path("folder"));
  for (const std::string name : {"folder", "nowhere/result", "input.c/result"}) {
    SCOPED_TRACE(name);
    const Outcome outcome = runWith("", {"-o", name, "input.c"});
    EXPECT_EQ(outcome.status, "1");
    EXPECT_EQ(outcome.messages, "qnpp: cannot open output file '" + name + "'\n");
    EXPECT_EQ(outcome.output, "");
  }
}

TEST_F(FaultsTest, aFolderWithoutPermissionTakesNoOutputFile) {
  folder_.write("input.c", "x\n");
  const std::filesystem::path closed = folder_.path("closed");
  std::filesystem::create_directory(closed);
  std::filesystem::permissions(closed, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  std::string preparation;
  if (::geteuid() == 0) {
    // Root may write anywhere: somebody else has to try. They must be able to reach the program and the folder.
    std::filesystem::permissions(folder_.path(),
                                 std::filesystem::perms::others_all | std::filesystem::perms::owner_all);
    std::filesystem::permissions(closed, std::filesystem::perms::others_read | std::filesystem::perms::others_exec,
                                 std::filesystem::perm_options::add);
    const std::string other = "setpriv --reuid=65534 --regid=65534 --clear-groups ";
    if (run(folder_, {{"--help"}, other + "\"$@\" && true; exec test $? -eq 1"}).output.empty()) {
      GTEST_SKIP() << "there is nobody else who can start the program";
    }
    preparation = "exec " + other + "\"$@\"";
  }
  const Outcome outcome = runWith(preparation, {"-o", "closed/result", "input.c"});
  EXPECT_EQ(outcome.status, "1");
  EXPECT_EQ(outcome.messages, "qnpp: cannot open output file 'closed/result'\n");
  EXPECT_EQ(outcome.output, "");
}

TEST_F(FaultsTest, anOutputFileThatIsTheSourceIsEmptiedFirst) {
  // The output file is made before the source is read, which is then empty.
  folder_.write("input.c", "x\n");
  const Outcome outcome = runWith("", {"-o", "input.c", "input.c"});
  EXPECT_EQ(outcome.status, "0");
  EXPECT_EQ(outcome.messages, "");
  EXPECT_EQ(folder_.read("input.c"), "#line 1 \"input.c\"\n");
}

TEST_F(FaultsTest, anOutputFileThatIsIncludedIsReadAsFarAsItIsWritten) {
  folder_.write("input.c", "x\n#include \"result\"\ny\n");
  const Outcome outcome = runWith("", {"-o", "result", "input.c"});
  EXPECT_EQ(outcome.status, "0");
  EXPECT_EQ(folder_.read("result"), "#line 1 \"input.c\"\nx\n#line 1 \"result\"\n#line 3 \"input.c\"\ny\n");
}

}  // namespace
}  // namespace qnpp::faults
