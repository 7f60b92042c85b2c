// Nesting is limited by memory alone, and what is deep or long stays linear.
#include <gtest/gtest.h>

#include <string>

#include "tests/unit/support/Preprocess.h"

namespace qnpp {
namespace {

constexpr std::size_t kDeep = 50'000;

TEST(NestingTest, InvocationsNestDeeply) {
  const Preprocessed run = preprocess("#define f(x) x\n" + repeat(kDeep, "f(") + "1" + repeat(kDeep, ")") + "\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 2 \"a.c\"\n1\n");
  EXPECT_EQ(run.messages, "");
}

TEST(NestingTest, ObjectLikeMacrosChain) {
  std::string source;
  for (int link = 0; link < 100'000; ++link) {
    source += "#define A" + std::to_string(link) + " A" + std::to_string(link + 1) + "\n";
  }
  const Preprocessed run = preprocess(source + "A0\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 100001 \"a.c\"\nA100000\n");
}

TEST(NestingTest, FunctionLikeMacrosChain) {
  std::string source;
  for (int link = 0; link < 20'000; ++link) {
    source += "#define A" + std::to_string(link) + "(x) A" + std::to_string(link + 1) + "(x)\n";
  }
  const Preprocessed run = preprocess(source + "A0(1)\n");
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 20001 \"a.c\"\nA20000(1)\n");
}

TEST(NestingTest, ConditionalsNestDeeply) {
  const Preprocessed run = preprocess(repeat(100'000, "#if 1\n") + "x\n" + repeat(100'000, "#endif\n"));
  EXPECT_EQ(run.output, std::string(kFirstLine) + "#line 100001 \"a.c\"\nx\n" + repeat(100'000, "\n"));
  EXPECT_EQ(run.messages, "");
}

TEST(NestingTest, ManyPreprocessorsLiveSideBySide) {
  for (int count = 0; count < 50; ++count) {
    const std::string value = std::to_string(count);
    EXPECT_EQ(preprocess("X\n", {.definitions = {{"X", value}}}).output, kFirstLine + value + "\n");
  }
}

}  // namespace
}  // namespace qnpp
