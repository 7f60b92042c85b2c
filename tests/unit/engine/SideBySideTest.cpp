// Many preprocessors in one process.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/Preprocess.h"

namespace qnpp {
namespace {

TEST(SideBySideTest, NothingIsShared) {
  constexpr int kCount = 50;
  std::vector<std::unique_ptr<EngineInMemory>> engines;
  for (int index = 0; index < kCount; ++index) {
    const std::string number = std::to_string(index);
    // Each has a definition of its own name, of a name that all share, and errors in some.
    std::string source = "#define ONLY" + number + " own\nONLY" + number + " ONLY" + std::to_string(index + 1) +
                         " ALL\n#if ALL % 2\n#error odd\n#endif\n__LINE__ __FILE__\n";
    engines.push_back(std::make_unique<EngineInMemory>(source));
    engines.back()->preprocessor.macroTable().defineFromCommandLine("ALL", number);
  }
  for (int index = kCount - 1; index >= 0; --index) {
    engines[static_cast<std::size_t>(index)]->preprocessor.openSource("", "file" + std::to_string(index));
  }
  for (int index = 0; index < kCount; ++index) {
    EngineInMemory& engine = *engines[static_cast<std::size_t>(index)];
    EXPECT_EQ(engine.preprocessor.run(), index % 2 == 1);
  }
  for (int index = 0; index < kCount; ++index) {
    const EngineInMemory& engine = *engines[static_cast<std::size_t>(index)];
    const std::string number = std::to_string(index);
    const std::string name = "file" + number;
    // A skipped line and the line end of #endif leave empty lines, an #error leaves none.
    const std::string group = index % 2 == 1 ? "\n" : "\n\n";
    EXPECT_EQ(engine.output.str(), "#line 1 \"" + name + "\"\n#line 2 \"" + name + "\"\nown ONLY" +
                                       std::to_string(index + 1) + " " + number + "\n" + group + "#line 6 \"" + name +
                                       "\"\n6 \"" + name + "\"\n");
    EXPECT_EQ(engine.messages.str(), index % 2 == 1 ? name + ":4: #error directive:  odd.\n" : "");
  }
}

TEST(SideBySideTest, OneMayRunInsideTheLifeOfAnother) {
  EngineInMemory outer("#define X outer\nX\n");
  outer.preprocessor.openSource("", "a.c");
  EXPECT_EQ(preprocess("X\n").output, std::string(kFirstLine) + "X\n");
  EXPECT_FALSE(outer.preprocessor.run());
  EXPECT_EQ(preprocess("X\n").output, std::string(kFirstLine) + "X\n");
  EXPECT_EQ(outer.output.str(), std::string(kFirstLine) + "#line 2 \"a.c\"\nouter\n");
}

TEST(SideBySideTest, OneThatNeverRunsLeavesNothingBehind) {
  EngineInMemory engine("#define X 1\nX\n");
  engine.preprocessor.openSource("", "a.c");
  EXPECT_EQ(engine.messages.str(), "");
}

}  // namespace
}  // namespace qnpp
