// Every hostile input gives what it means, within 20 seconds, 4 GB of address space and a stack of 256 KB. Where the
// memory is too little for it, one line says so and the output so far arrives.

#include <gtest/gtest.h>

#include <string>

#include "HostileInputs.h"
#include "Program.h"
#include "tests/support/Text.h"

namespace qnpp::faults {
namespace {

constexpr const char* kOpening = "#line 1 \"input.c\"\n";

class HostileInputTest : public testing::TestWithParam<NamedInput> {
 protected:
  void SetUp() override {
    input_ = GetParam().make();
    folder_.write("input.c", input_.source);
  }

  Outcome runWith(const std::string& preparation) const {
    Invocation invocation;
    invocation.preparation = preparation;
    return run(folder_, invocation);
  }

  void expectMeaning(const Outcome& outcome) const {
    EXPECT_EQ(outcome.killedBy, "");
    EXPECT_EQ(outcome.status, input_.status);
    // Not EXPECT_EQ: the texts are too long to be shown.
    EXPECT_TRUE(outcome.messages == input_.messages)
        << "expected " << shortened(input_.messages) << "\nbut got " << shortened(outcome.messages);
    EXPECT_TRUE(outcome.output == kOpening + input_.output)
        << "expected " << shortened(kOpening + input_.output) << "\nbut got " << shortened(outcome.output);
  }

  HostileInput input_;
  TemporaryFolder folder_;
};

// Sanitizers need an address space of their own, and make stack frames larger.
TEST_P(HostileInputTest, meansWhatItSays) {
  expectMeaning(runWith(isSanitized() ? "" : "ulimit -v 4194304; ulimit -s 256"));
}

bool endsInOneLineAboutMemory(const std::string& messages) {
  const std::string line = "FATAL ERROR: out of memory.\n";
  if (!messages.ends_with(line)) {
    return false;
  }
  const std::size_t begin = messages.rfind('\n', messages.size() - 2) + 1;  // 0 when there is no line before.
  const std::string location = messages.substr(begin, messages.size() - line.size() - begin);
  return location.empty() || (location.starts_with("input.c:") && location.ends_with(": "));
}

// Either the memory is enough, or one line says that it is not; whatever was written by then is right.
TEST_P(HostileInputTest, endsOrderlyWithoutMemory) {
  if (isSanitized()) {
    GTEST_SKIP() << "sanitizers need an address space of their own";
  }
  for (const int kilobytes : {16'000, 64'000}) {
    const Outcome outcome = runWith("ulimit -v " + std::to_string(kilobytes));
    if (outcome.messages == input_.messages && outcome.status == input_.status) {
      expectMeaning(outcome);
      continue;
    }
    EXPECT_EQ(outcome.killedBy, "");
    EXPECT_EQ(outcome.status, "1");
    EXPECT_TRUE(endsInOneLineAboutMemory(outcome.messages)) << shortened(outcome.messages);
    EXPECT_TRUE((kOpening + input_.output).starts_with(outcome.output)) << shortened(outcome.output);
  }
}

INSTANTIATE_TEST_SUITE_P(all, HostileInputTest, testing::ValuesIn(hostileInputs()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace qnpp::faults
