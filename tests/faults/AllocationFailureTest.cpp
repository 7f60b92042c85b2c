// Memory runs out: at each allocation of a small run that uses a bit of everything, the program says so in one line,
// hands on what it has written, and ends with status 1.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Program.h"

namespace qnpp::faults {
namespace {

constexpr const char* kSource =
    "#define OBJECT first second\n"
    "#define CALL(x, y) x [ y ] #x x##y OBJECT\n"
    "#define NEST(x) CALL(x, (x))\n"
    "#undef NOTHING\n"
    "#if defined(OBJECT) && CALL2 + (1 ? 2 : 3) << 'a'\n"
    "OBJECT CALL(a b, NEST(c)) OUTSIDE\n"
    "#else\n"
    "skipped /* comment\n"
    "over lines */ text\n"
    "#endif\n"
    "#include \"header.h\"\n"
    "#include <nowhere.h>\n"
    "#line 100 \"renamed.c\"\n"
    "__FILE__ __LINE__ _Pragma(\"once \\\"more\\\"\") \"a\nb\"\n"
    "CALL(1)\n"
    "#error a message\n"
    "#define OBJECT again\n"
    "#unknown\n"
    "CALL((1, 2), NEST(NEST(NEST(d))))\n";
constexpr const char* kHeader =
    "#define INSIDE(a, b) b a\n"
    "INSIDE(INSIDE(x, y), 'z')\n";

class AllocationFailureTest : public testing::Test {
 protected:
  void SetUp() override {
    if (isSanitized()) {
      GTEST_SKIP() << "the allocation functions of a sanitizer cannot be replaced";
    }
    folder_.write("input.c", kSource);
    folder_.write("header.h", kHeader);
    complete_ = runFailing("", {"input.c"});
    ASSERT_EQ(complete_.status, "1");
    ASSERT_NE(complete_.messages.find("#error directive:  a message."), std::string::npos);
  }

  Outcome runFailing(const std::string& variables, std::vector<std::string> words) const {
    Invocation invocation;
    words.insert(words.begin(), {"-DOUTSIDE=far", "-Inone", "-I."});
    invocation.words = std::move(words);
    invocation.preparation = variables;
    return run(folder_, invocation);
  }

  // Lets the allocations fail one by one until the run needs no more of them.
  void failEach(const std::string& alsoThoseBehind, const std::vector<std::string>& words, bool toFile) {
    constexpr int kMostAllocations = 20'000;
    constexpr int kMostShown = 10;
    const std::string mark = (folder_.path() / "mark").string();
    int number = 0;
    int wrong = 0;
    bool happened = true;
    while (happened && number < kMostAllocations) {
      ++number;
      std::filesystem::remove(mark);
      const Outcome outcome = runFailing(
          // With a limit of the user's nobody looks for more memory, so a failure is final.
          "ulimit -d 1000000; export LD_PRELOAD=" QNPP_FAILING_ALLOCATION " QNPP_FAIL_MARK=mark QNPP_FAIL_ALSO=" +
              alsoThoseBehind + " QNPP_FAIL_AT=" + std::to_string(number),
          words);
      happened = std::filesystem::exists(mark);
      const std::string output = toFile ? folder_.read("result") : outcome.output;
      std::filesystem::remove(folder_.path() / "result");
      const std::string fault = happened ? faultOf(outcome, output) : faultOfComplete(outcome, output);
      if (!fault.empty() && wrong++ < kMostShown) {
        ADD_FAILURE() << "allocation " << number << " fails: " << fault << "\nstatus " << outcome.status
                      << ", messages:\n"
                      << shortened(outcome.messages);
      }
    }
    EXPECT_EQ(wrong, 0) << "of " << number << " failures";
    EXPECT_FALSE(happened);
    EXPECT_GT(number, 20) << "hardly any allocation failed";
  }

  std::string faultOfComplete(const Outcome& outcome, const std::string& output) const {
    if (outcome.status != "1" || outcome.messages != complete_.messages || output != complete_.output) {
      return "the run is not what it is without the hook";
    }
    return {};
  }

  // A few allocations can be done without: the C++ library has a reserve for exceptions, and writes unbuffered if need
  // be. The run is then complete.
  std::string faultOf(const Outcome& outcome, const std::string& output) const {
    if (outcome.status != "1" || !outcome.killedBy.empty()) {
      return "the program does not end orderly";
    }
    if (!complete_.output.starts_with(output)) {
      return "the output is wrong: " + shortened(output);
    }
    if (outcome.messages == complete_.messages) {
      return output == complete_.output ? "" : "output is missing without a word";
    }
    if (outcome.messages == "qnpp: cannot open output file 'result'\n" && output.empty()) {
      return {};  // The C library needs memory to open a file, and says no more than that it could not be opened.
    }
    const std::string line = "FATAL ERROR: out of memory.\n";
    if (!outcome.messages.ends_with(line)) {
      return "the line about memory is missing";
    }
    // Before that line stand a location, or none, and the messages so far, each in full.
    std::string before = outcome.messages.substr(0, outcome.messages.size() - line.size());
    const std::size_t lineStart = before.rfind('\n') + 1;
    if (lineStart < before.size() && !before.ends_with(": ")) {
      return "the location is wrong";
    }
    before.resize(lineStart);
    return complete_.messages.starts_with(before) ? "" : "the messages before are wrong";
  }

  ScratchFolder folder_;
  Outcome complete_;
};

TEST_F(AllocationFailureTest, oneFails) { failEach("0", {"input.c"}, false); }
TEST_F(AllocationFailureTest, allFailFromOneOn) { failEach("1", {"input.c"}, false); }
TEST_F(AllocationFailureTest, oneFailsWithAnOutputFile) { failEach("0", {"-o", "result", "input.c"}, true); }

}  // namespace
}  // namespace qnpp::faults
