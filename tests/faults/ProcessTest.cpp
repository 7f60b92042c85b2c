// A program that is not killed in time, or whose end is told wrongly, would hide what these tests look for.

#include "Process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>

namespace qnpp::faults {
namespace {

ProcessResult runScript(const std::string& script, std::chrono::milliseconds timeLimit = std::chrono::seconds(20)) {
  return runProcess({{"/bin/sh", "-c", script}, "/", timeLimit});
}

TEST(ProcessTest, TellsStreamsAndStatus) {
  const ProcessResult result = runScript("printf out; printf err >&2; exit 3");
  EXPECT_EQ(result.standardOutput, "out");
  EXPECT_EQ(result.standardError, "err");
  EXPECT_EQ(result.status, "3");
  EXPECT_EQ(result.killedBy, "");
  EXPECT_EQ(runScript("kill -FPE $$").status, "SIGFPE");
}

TEST(ProcessTest, KillsWhatHangsAndItsChildren) {
  EXPECT_NE(runScript("sleep 60 & sleep 60", std::chrono::milliseconds(100)).killedBy, "");
}

TEST(ProcessTest, KillsWhatWritesWithoutEnd) { EXPECT_NE(runScript("exec cat /dev/zero").killedBy, ""); }

TEST(ProcessTest, AProgramThatIsNotThereIsAnError) {
  EXPECT_THROW(runProcess({{"/no/such/program"}, "/", std::chrono::seconds(20)}), std::runtime_error);
}

}  // namespace
}  // namespace qnpp::faults
