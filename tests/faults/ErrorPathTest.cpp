// The engine in this very process, with an allocator that fails: every error path gives back what it holds. A build
// with the address sanitizer looks for leaks at the end of the process; any build sees a path that does not end
// orderly.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <sstream>
#include <string>

#include "tests/support/LimitedAllocation.h"
#include "tests/support/Preprocess.h"

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

struct Result {
  bool isComplete = false;
  std::string output;
  std::string messages;
};

Result runWith(std::size_t allocations) {
  std::istringstream input(kSource);
  std::ostringstream output;
  std::ostringstream messages;
  // The strings of the streams grow with what is written; that is none of the engine's business.
  output.str(std::string(1 << 16, ' '));
  messages.str(std::string(1 << 16, ' '));
  const PreprocessOptions options{.definitions = {{"OUTSIDE", "far"}}, .includeDirectories = {"/nowhere"}};
  Result result;
  try {
    const LimitedAllocation limited({.count = allocations});
    CppPreprocessor preprocessor(messages, input);
    try {
      preprocess(preprocessor, output, options);
      result.isComplete = true;
    } catch (const std::bad_alloc&) {
      preprocessor.reportOutOfMemory();
    }
  } catch (const std::bad_alloc&) {
    messages << "FATAL ERROR: out of memory.\n";  // In the constructor.
  }
  result.output = output.str().substr(0, static_cast<std::size_t>(output.tellp()));
  result.messages = messages.str().substr(0, static_cast<std::size_t>(messages.tellp()));
  return result;
}

TEST(ErrorPathTest, givesBackWhatItHoldsWhereverMemoryRunsOut) {
  const Result complete = runWith(SIZE_MAX);
  ASSERT_TRUE(complete.isComplete);
  constexpr std::size_t kMostAllocations = 100'000;
  std::size_t allocations = 0;
  for (Result result; !result.isComplete; ++allocations) {
    ASSERT_LT(allocations, kMostAllocations);
    result = runWith(allocations);
    SCOPED_TRACE("after " + std::to_string(allocations) + " allocations");
    EXPECT_TRUE(complete.output.starts_with(result.output)) << result.output;
    if (!result.isComplete) {
      EXPECT_TRUE(result.messages.ends_with("FATAL ERROR: out of memory.\n")) << result.messages;
    }
  }
  EXPECT_GT(allocations, 20U) << "hardly any allocation failed";
}

}  // namespace
}  // namespace qnpp
