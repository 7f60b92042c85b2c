// The engine in this very process, with an allocator that fails: every error path gives back what it holds. A build
// with the address sanitizer looks for leaks at the end of the process; any build sees a path that does not end
// orderly.

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "qnpp/preprocessor.h"
#include "tests/support/Files.h"
#include "tests/support/LimitedAllocation.h"

// The scanner's buffers come from realloc; the linker sends its calls here.
extern "C" {
void* __real_realloc(void* old, std::size_t size);
void* __wrap_realloc(void* old, std::size_t size) {
  return qnpp::LimitedAllocation::allows(size) ? __real_realloc(old, size) : nullptr;
}
}

// The generated scanner loses the 80 bytes that describe a buffer when there is no memory for the buffer itself.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() {
  return "leak:yyCppFlexLexer::yy_create_buffer\n";
}

namespace qnpp {
namespace {

constexpr const char* kSource =
    "#define OBJECT first second\n"
    "#define CALL(x, y) x [ y ] #x x##y OBJECT\n"
    "#define NEST(x) CALL(x, (x))\n"
    "#if defined(OBJECT) && CALL2 + (1 ? 2 : 3) << 'a'\n"
    "OBJECT CALL(a b, NEST(c)) (\n"
    "#else\n"
    "skipped /* comment\n"
    "over lines */ text\n"
    "#endif\n"
    "#include <nowhere.h>\n"
    "#line 100 \"renamed.c\"\n"
    "__FILE__ __LINE__ _Pragma(\"once \\\"more\\\"\") \"a\nb\"\n"
    "CALL(1) CALL(\" x\n\", \"y\n)\n"
    "#error a message\n"
    "#define OBJECT again\n"
    "CALL((1, 2), NEST(NEST(NEST(d))))\n"
    "#if CALL(NEST(1\n"
    "NEST(";

struct Outcome {
  Status status = Status::Clean;
  std::string output;
  std::string messages;
};

Outcome runWith(std::size_t allocations, std::string_view source) {
  Outcome outcome;
  // The strings grow with what is written; that is none of the engine's business.
  outcome.output.reserve(1 << 16);
  outcome.messages.reserve(1 << 16);
  const LimitedAllocation limited({.count = allocations});
  Preprocessor preprocessor;
  preprocessor.define("OUTSIDE=far");
  preprocessor.addIncludeDirectory("/nowhere");
  preprocessor.setOutputSink([&outcome](std::string_view block) { outcome.output.append(block); });
  preprocessor.setDiagnosticSink(
      [&outcome](const Diagnostic& diagnostic) { outcome.messages.append(diagnostic.text); });
  outcome.status = preprocessor.run(Source::borrowing(source), "a.c").status;
  return outcome;
}

void expectOrderlyEnds(std::string_view source) {
  const Outcome complete = runWith(SIZE_MAX, source);
  ASSERT_EQ(complete.status, Status::Errors);
  constexpr std::size_t kMostAllocations = 100'000;
  std::size_t allocations = 0;
  for (Outcome outcome{Status::OutOfMemory, "", ""}; outcome.status == Status::OutOfMemory; ++allocations) {
    ASSERT_LT(allocations, kMostAllocations);
    outcome = runWith(allocations, source);
    SCOPED_TRACE("after " + std::to_string(allocations) + " allocations");
    EXPECT_TRUE(complete.output.starts_with(outcome.output)) << outcome.output;
    if (outcome.status == Status::OutOfMemory) {
      // Not even an object could be made at first.
      EXPECT_TRUE(outcome.messages.ends_with("FATAL ERROR: out of memory.\n") || allocations == 0) << outcome.messages;
    } else {
      EXPECT_EQ(outcome.status, complete.status);
      EXPECT_EQ(outcome.output, complete.output);
      EXPECT_EQ(outcome.messages, complete.messages);
    }
  }
  EXPECT_GT(allocations, 20U) << "hardly any allocation failed";
}

TEST(ErrorPathTest, givesBackWhatItHoldsWhereverMemoryRunsOut) { expectOrderlyEnds(kSource); }

// The second inclusion has the text of the header kept, and the others read that.
TEST(ErrorPathTest, givesBackWhatItHoldsWhereMemoryRunsOutForAText) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a.h", "int of_a_header_that_is_longer_than_a_short_string;\n#error here\n");
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // Then the file is old enough to be remembered.
  const std::string line = "#include \"" + path + "\"\n";
  expectOrderlyEnds(line + line + line + line);
}

// More files are open than the message has room for, and it says all the same where that was.
TEST(ErrorPathTest, anEndlessIncludeSaysWhereMemoryRanOut) {
  Preprocessor preprocessor;
  preprocessor.setResolver([](const IncludeRequest& request) {
    return Include{std::string(request.name), Source::borrowing("#include \"b.h\"\n")};
  });
  preprocessor.setOutputSink([](std::string_view) {});
  std::string text;
  text.reserve(100);
  preprocessor.setDiagnosticSink([&text](const Diagnostic& diagnostic) {
    text.append(diagnostic.text);
    EXPECT_EQ(diagnostic.place.file, "b.h");
    EXPECT_EQ(diagnostic.place.line, 1);
    ASSERT_GT(diagnostic.includeChainSize, 1U);
    EXPECT_EQ(diagnostic.includeChain[0].file, "b.h");
    EXPECT_EQ(diagnostic.includeChain[0].line, 1);
  });
  std::optional<Result> result;
  {
    const LimitedAllocation limited({.bytes = 5'000'000});
    result = preprocessor.run(Source::borrowing("#include \"b.h\"\n"), "a.c");
  }
  EXPECT_EQ(result->status, Status::OutOfMemory);
  EXPECT_EQ(text, "b.h:1: FATAL ERROR: out of memory.\n");
  EXPECT_EQ(result->endFile, "b.h");
  EXPECT_EQ(result->endLine, 1);
}

TEST(ErrorPathTest, aSettingWithoutMemoryEndsAllLaterRuns) {
  const std::string longText(100, 'x');
  Preprocessor preprocessor;
  std::string messages;
  preprocessor.setDiagnosticSink([&messages](const Diagnostic& diagnostic) { messages += diagnostic.text; });
  {
    const LimitedAllocation limited({.count = 0});
    preprocessor.define(longText);
  }
  for (int run = 0; run < 2; ++run) {
    messages.clear();
    const Result result = preprocessor.run(Source::ofText("x\n"));
    EXPECT_EQ(result.status, Status::OutOfMemory);
    EXPECT_TRUE(result.hasErrors);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(messages, "FATAL ERROR: out of memory.\n");
  }
}

}  // namespace
}  // namespace qnpp
