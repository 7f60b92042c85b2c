// Sources that nest deeply or hold very much of one thing: neither the stack of the program nor a time that grows with
// the square of the source may limit them.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/unit/support/Memory.h"
#include "tests/unit/support/Preprocess.h"
#include "tests/unit/support/Timing.h"

namespace qnpp {
namespace {

// Far above what any of these takes, far below what a careless implementation would.
constexpr double kSeconds = 20;

// Runs `source` without an error, within the time and with at most `megabytes` more than before, and returns the last
// line of its output.
std::string lastLine(const std::string& source, double megabytes) {
  const double before = mostMemory();
  Preprocessed run;
  const double seconds = secondsOf([&] { run = preprocess(source); }, 1);
  EXPECT_LT(seconds, kSeconds);
  if (kCountsMemory) {
    EXPECT_LT(mostMemory() - before, megabytes);
  }
  EXPECT_EQ(run.messages.substr(0, 200), "");
  EXPECT_FALSE(run.hasError);
  run.output.pop_back();
  return run.output.substr(run.output.rfind('\n') + 1);
}

std::string numbered(const std::string& name, int number) { return name + std::to_string(number); }

TEST(NestingTest, AChainOfObjectLikeMacros) {
  constexpr int kLength = 100000;
  std::string source;
  for (int index = 0; index < kLength; ++index) {
    source += "#define " + numbered("M", index) + " " + numbered("M", index + 1) + "\n";
  }
  EXPECT_EQ(lastLine(source + "[M0] M0 M99999\n", 150), "[M100000] M100000 M100000");
}

TEST(NestingTest, AChainOfObjectLikeMacrosInAnOperand) {
  constexpr int kLength = 100000;
  std::string source;
  for (int index = 0; index < kLength; ++index) {
    source += "#define " + numbered("M", index) + " (" + numbered("M", index + 1) + ")\n";
  }
  source += "#define M100000 7\n#if M0 == 7\n#define RESULT taken\n#endif\nRESULT\n";
  EXPECT_EQ(lastLine(source, 400), "taken");
}

TEST(NestingTest, AChainOfFunctionLikeMacros) {
  constexpr int kLength = 20000;
  std::string source;
  for (int index = 0; index < kLength; ++index) {
    source += "#define " + numbered("F", index) + "(x) " + numbered("F", index + 1) + "(x)\n";
  }
  EXPECT_EQ(lastLine(source + "F0(a) F0(b)\n", 60), "F20000(a) F20000(b)");
}

TEST(NestingTest, NestedInvocations) {
  constexpr std::size_t kDepth = 50000;
  const std::string source = "#define F(x) x\n" + repeat(kDepth, "F(") + "a" + repeat(kDepth, ")") + "\n";
  EXPECT_EQ(lastLine(source, 150), "a");
}

TEST(NestingTest, NestedInvocationsInAnOperand) {
  constexpr std::size_t kDepth = 50000;
  const std::string source = "#define F(x) x\n#if " + repeat(kDepth, "F(") + "7" + repeat(kDepth, ")") +
                             " == 7\n#define RESULT taken\n#endif\nRESULT\n";
  EXPECT_EQ(lastLine(source, 150), "taken");
}

TEST(NestingTest, NestedInvocationsThatKeepTheirParentheses) {
  constexpr std::size_t kDepth = 10000;
  const std::string source = "#define F(x) (x)\n" + repeat(kDepth, "F(") + "a" + repeat(kDepth, ")") + "\n";
  EXPECT_EQ(lastLine(source, 60), repeat(kDepth, "(") + "a" + repeat(kDepth, ")"));
}

TEST(NestingTest, NestedInvocationsOfManyMacros) {
  constexpr int kDepth = 20000;
  std::string source;
  std::string open;
  for (int index = 0; index < kDepth; ++index) {
    source += "#define " + numbered("F", index) + "(x) x\n";
    open += numbered("F", index) + "(";
  }
  EXPECT_EQ(lastLine(source + open + "a" + repeat(kDepth, ")") + "\n", 100), "a");
}

TEST(NestingTest, ManyParameters) {
  constexpr int kCount = 20000;
  std::string parameters = "p0";
  std::string arguments = "0";
  std::string body;
  std::string expected;
  for (int index = 1; index < kCount; ++index) {
    parameters += numbered(",p", index);
    arguments += numbered(",", index);
  }
  for (int index = kCount - 1; index >= 0; --index) {  // The other way round, and as a literal too.
    body += numbered("p", index) + numbered(";#p", index) + ";";
    expected += std::to_string(index) + ";\"" + std::to_string(index) + "\";";
  }
  const std::string source = "#define F(" + parameters + ") " + body + "\nF(" + arguments + ")\n";
  EXPECT_TRUE(lastLine(source, 60) == expected);
}

TEST(NestingTest, ManyUsesOfOneParameter) {
  constexpr std::size_t kCount = 20000;
  EXPECT_TRUE(lastLine("#define A 1\n#define F(x) " + repeat(kCount, "x;") + "\nF(A)\n", 30) == repeat(kCount, "1;"));
}

TEST(NestingTest, AnArgumentOfManyParentheses) {
  constexpr std::size_t kDepth = 200000;
  const std::string argument = repeat(kDepth, "(") + "a" + repeat(kDepth, ")");
  EXPECT_TRUE(lastLine("#define F(x) x\nF(" + argument + ")\n", 60) == argument);
}

TEST(NestingTest, ALongJoinAndALongLiteral) {
  constexpr std::size_t kCount = 20000;
  EXPECT_TRUE(lastLine("#define F(x) x" + repeat(kCount, "##x") + "\nF(a)\n", 30) == repeat(kCount + 1, "a"));
  EXPECT_TRUE(lastLine("#define S(x) #x\nS(" + repeat(kCount, R"("\"")") + ")\n", 30) ==
              "\"" + repeat(kCount, R"(\"\\\"\")") + "\"");
}

TEST(NestingTest, AMacroThatDoublesItself) {
  std::string source = "#define D0 x\n";
  for (int index = 1; index <= 18; ++index) {
    source += "#define " + numbered("D", index) + " " + numbered("D", index - 1) + numbered(" D", index - 1) + "\n";
  }
  EXPECT_TRUE(lastLine(source + "D18\n", 30) == repeat((1 << 18) - 1, "x ") + "x");
}

TEST(NestingTest, ManyExpansionsOneAfterAnother) {
  // What one expansion needed is used again by the next.
  const std::string source = "#define F(x) x x\n#define G(x) F(x) #x\n" + repeat(100000, "G(a)\n") + "end\n";
  EXPECT_EQ(lastLine(source, 20), "end");
}

TEST(NestingTest, ALongLine) {
  constexpr std::size_t kCount = 1000000;
  EXPECT_TRUE(lastLine("#define A 1\n" + repeat(kCount, "A,") + "\n", 60) == repeat(kCount, "1,"));
}

}  // namespace
}  // namespace qnpp
