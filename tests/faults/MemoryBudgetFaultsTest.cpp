// A run that outgrows what the system has left, without any limit of the user's.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "Program.h"
#include "driver/MemoryBudget.h"
#include "tests/support/Text.h"

namespace qnpp::faults {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

class MemoryBudgetFaultsTest : public testing::Test {
 protected:
  void SetUp() override {
    if (isSanitized()) {
      GTEST_SKIP() << "sanitizers take more than any budget";
    }
  }

  TemporaryFolder folder_;
};

// ---- Within a process that is told what there is ----

// The folder that stands for the system's, since a new-handler has no arguments.
std::string systemFolder;  // NOLINT(cert-err58-cpp)

void growToldBySystemFolder() { MemoryBudget(systemFolder.c_str()).grow(); }

// Takes memory until there is no more, and tells how many mebibytes that were. The limit begins with 40 of them.
std::size_t takeAll() {
  rlimit data{};
  ::getrlimit(RLIMIT_DATA, &data);
  data.rlim_cur = 40 * kMebibyte;
  ::setrlimit(RLIMIT_DATA, &data);
  std::set_new_handler(growToldBySystemFolder);
  std::vector<char*> blocks;
  blocks.reserve(10'000);
  try {
    while (blocks.size() < blocks.capacity()) {
      blocks.push_back(new char[kMebibyte]);  // NOLINT(cppcoreguidelines-owning-memory)
    }
  } catch (const std::bad_alloc&) {
    return blocks.size();
  }
  return blocks.size();
}

TEST_F(MemoryBudgetFaultsTest, theLimitRisesToWhatIsLeft) {
  std::filesystem::create_directories(folder_.path() + "/proc/self");
  folder_.write("proc/meminfo", "MemTotal: 1048576 kB\nMemAvailable: " + std::to_string(164 * 1024) + " kB\n");
  folder_.write("proc/self/statm", std::to_string(10 * kMebibyte / static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))) +
                                       " 2560 0 0 0 0 0\n");
  systemFolder = folder_.path();
  // 10 MiB are there, 100 more may be taken. The test itself, the library's reserves and the last step take some.
  EXPECT_EXIT(
      {
        const std::size_t taken = takeAll();
        std::_Exit(taken > 80 && taken < 110 ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
  // An array that nothing could hold does not take the handler long.
  EXPECT_EXIT(
      {
        static_cast<void>(takeAll());
        try {
          static_cast<void>(std::vector<char>(std::size_t{1} << 50U).size());
        } catch (const std::bad_alloc&) {
          std::_Exit(0);
        }
        std::_Exit(1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(MemoryBudgetFaultsTest, withoutAWordFromTheSystemThereIsNoEnd) {
  systemFolder = folder_.path();
  EXPECT_EXIT(std::_Exit(takeAll() == 10'000 ? 0 : 1), testing::ExitedWithCode(0), "");
}

// ---- The program ----

// A source whose argument is a list that takes some 60 MB, twice what the program may have at first: a list of tokens,
// since the invocation goes over two lines; and a system that has less left than it reserves for others.
class ProgramsBudgetTest : public MemoryBudgetFaultsTest {
 protected:
  void SetUp() override {
    MemoryBudgetFaultsTest::SetUp();
    std::string source = "first\n#define A0 x x x x\n";
    for (int index = 1; index <= 18; ++index) {
      const std::string before = " A" + std::to_string(index - 1);
      source += "#define A" + std::to_string(index) + before + before + '\n';
    }
    folder_.write("input.c", source + "#define f(x) x\nf(A18\n)\n");
    folder_.write("meminfo", "MemTotal: 1048576 kB\nMemAvailable: 50000 kB\n");
  }

  Outcome runWith(const std::string& preparation) const {
    Invocation invocation;
    invocation.preparation = preparation;
    return run(folder_, invocation);
  }

  // The process and those it starts see the file above in the place of the system's.
  Outcome runWithLittleLeft(const std::string& preparation) const {
    return runWith(preparation + "\nexec unshare --user --map-root-user --mount sh -c '" + kShowsLittle +
                   " && exec \"$@\"' sh \"$@\"");
  }

  bool canShowLittle() const {
    return runWith(std::string("unshare --user --map-root-user --mount sh -c '") + kShowsLittle +
                   "'; exec test $? -eq 0")
               .status == "0";
  }

  static constexpr const char* kShowsLittle = "mount --bind meminfo /proc/meminfo";
};

TEST_F(ProgramsBudgetTest, endsInOneLineBeforeTheMachineDoes) {
  if (!canShowLittle()) {
    GTEST_SKIP() << "the program cannot be shown another /proc/meminfo here";
  }
  const Outcome outcome = runWithLittleLeft("");
  EXPECT_EQ(outcome.killedBy, "");
  EXPECT_EQ(outcome.status, "1");
  EXPECT_EQ(outcome.messages, "input.c:23: FATAL ERROR: out of memory.\n");
  EXPECT_TRUE(outcome.output.starts_with("#line 1 \"input.c\"\nfirst\n")) << shortened(outcome.output);
  EXPECT_LT(outcome.output.size(), 1'000U);
}

TEST_F(ProgramsBudgetTest, takesWhatIsThere) {
  const Outcome outcome = runWith("");
  EXPECT_EQ(outcome.status, "0");
  EXPECT_EQ(outcome.messages, "");
  EXPECT_GT(outcome.output.size(), 2'000'000U);
}

TEST_F(ProgramsBudgetTest, aLimitOfTheUsersStandsInItsPlace) {
  if (!canShowLittle()) {
    GTEST_SKIP() << "the program cannot be shown another /proc/meminfo here";
  }
  for (const std::string limit : {"ulimit -S -d 1000000", "ulimit -v 1000000"}) {
    SCOPED_TRACE(limit);
    const Outcome outcome = runWithLittleLeft(limit);
    EXPECT_EQ(outcome.status, "0");
    EXPECT_EQ(outcome.messages, "");
  }
  const Outcome outcome = runWith("ulimit -d 20000");
  EXPECT_EQ(outcome.status, "1");
  EXPECT_EQ(outcome.messages, "input.c:23: FATAL ERROR: out of memory.\n");
}

}  // namespace
}  // namespace qnpp::faults
