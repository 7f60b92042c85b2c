// What the system says about memory, from files in a folder that stands for its own.
#include "driver/MemoryBudget.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>

#include "tests/unit/support/TemporaryFolder.h"

namespace qnpp {
namespace {

constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;

// A process that has 100 MiB of its own on a machine of 1 GiB, if nothing else is said.
class MemoryBudgetTest : public testing::Test {
 protected:
  MemoryBudgetTest() {
    const std::uint64_t page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    const auto pages = [page](std::uint64_t mebibytes) { return std::to_string(mebibytes * kMebibyte / page); };
    write("proc/self/statm", pages(900) + ' ' + pages(150) + ' ' + pages(50) + " 5 0 123 0\n");
    writeMachine(1024, 900);
  }

  void write(const std::string& name, const std::string& content) { folder_.write(name, content); }

  void writeMachine(std::uint64_t total, std::uint64_t available) {
    write("proc/meminfo", "MemTotal:       " + std::to_string(total * 1024) + " kB\nMemFree:          1024 kB\n" +
                              "MemAvailable:   " + std::to_string(available * 1024) + " kB\nBuffers:  77 kB\n" +
                              "SwapTotal:      9999999 kB\nSwapFree:       9999999 kB\n");
  }

  // A control group; `cache` is what of its use can be dropped.
  void writeGroup(const std::string& name, const std::string& limit, std::uint64_t use, std::uint64_t cache) {
    write("sys/fs/cgroup" + name + "/memory.max", limit + '\n');
    write("sys/fs/cgroup" + name + "/memory.current", std::to_string(use * kMebibyte) + '\n');
    write("sys/fs/cgroup" + name + "/memory.stat",
          "anon 4096\nactive_file 8888888\ninactive_file " + std::to_string(cache * kMebibyte) + "\nslab 1\n");
  }

  // The same of the older kind.
  void writeOldGroup(const std::string& name, const std::string& limit, std::uint64_t use, std::uint64_t cache) {
    const std::string folder = "sys/fs/cgroup/memory" + name;
    write(folder + "/memory.limit_in_bytes", limit + '\n');
    write(folder + "/memory.usage_in_bytes", std::to_string(use * kMebibyte) + '\n');
    write(folder + "/memory.stat", "inactive_file 7777777\nhierarchical_memory_limit 1\ntotal_inactive_file " +
                                       std::to_string(cache * kMebibyte) + "\n");
  }

  static std::string bytes(std::uint64_t mebibytes) { return std::to_string(mebibytes * kMebibyte); }

  // In mebibytes.
  std::optional<std::uint64_t> most() const {
    const std::string root = folder_.path();
    const auto bytes = MemoryBudget(root.c_str()).most();
    return bytes ? std::optional(*bytes / kMebibyte) : std::nullopt;
  }

  TemporaryFolder folder_;
};

TEST_F(MemoryBudgetTest, AReserveIsLeftToTheMachine) {
  EXPECT_EQ(most(), 100 + 900 - 64);  // 64 MiB at least,
  writeMachine(16384, 9000);
  EXPECT_EQ(most(), 100 + 9000 - 1024);  // and a sixteenth of all.
  writeMachine(512, 65);
  EXPECT_EQ(most(), 100 + 1);
  writeMachine(512, 30);
  EXPECT_EQ(most(), 100);
}

TEST_F(MemoryBudgetTest, TheSystemMayNotTell) {
  write("proc/meminfo", "MemTotal: 1048576 kB\nMemFree: 500000 kB\n");
  EXPECT_EQ(most(), std::nullopt);
  write("proc/meminfo", "");
  EXPECT_EQ(most(), std::nullopt);
  writeMachine(1024, 900);
  EXPECT_EQ(most(), 936);
  for (const char* const text : {"", "\n", "77", "77 ", "77 88", "77 x y", "77 88 99"}) {
    write("proc/self/statm", text);
    EXPECT_EQ(most(), std::nullopt) << text;
  }
  EXPECT_EQ(MemoryBudget("/nowhere").most(), std::nullopt);
}

TEST_F(MemoryBudgetTest, TheGroupOfTheProcessCounts) {
  write("proc/self/cgroup", "0::/user/build\n");
  writeGroup("/user/build", bytes(600), 400, 150);
  EXPECT_EQ(most(), 100 + (600 - 250) - 64);
  writeGroup("/user/build", bytes(600), 650, 0);  // More than it may have, for a moment.
  EXPECT_EQ(most(), 100);
  writeGroup("/user/build", bytes(600), 10, 20);
  EXPECT_EQ(most(), 100 + 600 - 64);
  writeGroup("/user/build", "max", 400, 150);
  EXPECT_EQ(most(), 936);
  writeGroup("/user/build", bytes(4096), 400, 0);  // More than the machine has.
  EXPECT_EQ(most(), 936);
}

TEST_F(MemoryBudgetTest, TheGroupsAroundItCount) {
  write("proc/self/cgroup", "0::/user/build/job\n");
  writeGroup("/user/build/job", "max", 10, 0);
  writeGroup("/user", bytes(500), 200, 0);
  EXPECT_EQ(most(), 100 + 300 - 64);
  writeGroup("/user/build", bytes(400), 200, 0);
  EXPECT_EQ(most(), 100 + 200 - 64);
}

TEST_F(MemoryBudgetTest, AContainersGroupIsTheRoot) {
  writeGroup("", bytes(500), 200, 0);
  for (const char* const name : {"/", "/../other", "/docker/named/from/outside"}) {
    write("proc/self/cgroup", std::string("0::") + name + '\n');
    EXPECT_EQ(most(), 100 + 300 - 64) << name;
  }
}

TEST_F(MemoryBudgetTest, GroupsOfTheOlderKindCount) {
  write("proc/self/cgroup", "9:name=systemd:/user\n4:memory:/docker/a1\n2:cpu,cpuacct:/other\n0::/user\n");
  writeOldGroup("/docker/a1", bytes(600), 400, 150);
  EXPECT_EQ(most(), 100 + (600 - 250) - 64);
  writeOldGroup("/docker/a1", "9223372036854771712", 400, 150);
  EXPECT_EQ(most(), 936);
  writeOldGroup("", bytes(500), 200, 0);
  EXPECT_EQ(most(), 100 + 300 - 64);
  write("proc/self/cgroup", "4:memory:/named/from/outside\n");
  EXPECT_EQ(most(), 100 + 300 - 64);
}

TEST_F(MemoryBudgetTest, OddNamesOfGroupsDoNoHarm) {
  for (const std::string& text :
       {std::string("\n\n"), std::string("0::"), std::string("memory"), "0::/" + std::string(9000, 'x'),
        "0::" + std::string(2000, '/'), std::string("4:memory:\n")}) {
    write("proc/self/cgroup", text);
    EXPECT_EQ(most(), 936) << text;
  }
}

}  // namespace
}  // namespace qnpp
