// The macro table.
#include "macros/CppMacroTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/support/Streams.h"

namespace qnpp {
namespace {

struct CppMacroTableTest : testing::Test {
  static CppMacro objectLike(const std::string& text) { return {text}; }

  std::string textOf(std::string_view name) {
    const CppMacro* const macro = table.lookup(name);
    return std::string(macro == nullptr ? "(none)" : macro->text);
  }

  StreamSetting setting;
  CppMacroTable table{setting.names, setting.stream};
};

TEST_F(CppMacroTableTest, IsEmptyAtFirst) {
  EXPECT_EQ(table.lookup("A"), nullptr);
  EXPECT_EQ(table.lookup("if"), nullptr);
  EXPECT_EQ(table.lookup(""), nullptr);
}

TEST_F(CppMacroTableTest, DefinitionsOfTheCommandLineAreObjectLikeAndVerbatim) {
  table.defineFromCommandLine("A", "  x   y ");
  const CppMacro* const macro = table.lookup("A");
  ASSERT_NE(macro, nullptr);
  EXPECT_EQ(macro->text, "  x   y ");
  EXPECT_FALSE(macro->functionLike);
  EXPECT_TRUE(macro->parameters.empty());
}

TEST_F(CppMacroTableTest, TheFirstDefinitionOfTheCommandLineWins) {
  table.defineFromCommandLine("A", "1");
  table.defineFromCommandLine("A", "2");
  EXPECT_EQ(textOf("A"), "1");
  table.define("B", objectLike("1"));
  table.defineFromCommandLine("B", "2");
  EXPECT_EQ(textOf("B"), "1");
  table.undefine("A");
  table.defineFromCommandLine("A", "3");
  EXPECT_EQ(textOf("A"), "3");
}

TEST_F(CppMacroTableTest, NamesAreComparedByteByByte) {
  table.defineFromCommandLine("name", "lower");
  table.defineFromCommandLine("NAME", "upper");
  table.defineFromCommandLine("nam", "short");
  table.defineFromCommandLine("", "empty");
  table.defineFromCommandLine("F(x)", "no name");
  EXPECT_EQ(textOf("name"), "lower");
  EXPECT_EQ(textOf("NAME"), "upper");
  EXPECT_EQ(textOf("nam"), "short");
  EXPECT_EQ(textOf(""), "empty");
  EXPECT_EQ(textOf("F(x)"), "no name");
  EXPECT_EQ(textOf("names"), "(none)");
}

TEST_F(CppMacroTableTest, DefineReplacesEverything) {
  table.define("A", objectLike("1"));
  table.define("A", CppMacro{"x", {"x,y,", 2}, true});
  const CppMacro* const macro = table.lookup("A");
  ASSERT_NE(macro, nullptr);
  EXPECT_EQ(macro->text, "x");
  EXPECT_EQ(macro->parameters.list(), "x,y,");
  EXPECT_EQ(macro->parameters.size(), 2U);
  EXPECT_TRUE(macro->functionLike);
}

TEST_F(CppMacroTableTest, UndefineRemovesAndMayFindNothing) {
  table.define("A", objectLike("1"));
  table.undefine("A");
  EXPECT_EQ(table.lookup("A"), nullptr);
  table.undefine("A");
  table.undefine("never");
  table.define("A", objectLike("2"));
  EXPECT_EQ(textOf("A"), "2");
}

TEST_F(CppMacroTableTest, NamesPointAtTheirDefinitions) {
  Name& name = setting.name("A");
  EXPECT_EQ(name.macro, nullptr);
  table.define("A", objectLike("1"));
  EXPECT_EQ(name.macro, table.lookup("A"));
  table.define("A", objectLike("2"));
  EXPECT_EQ(name.macro, table.lookup("A"));
  table.undefine("A");
  EXPECT_EQ(name.macro, nullptr);
}

// An expansion may still be reading the tokens of a definition that is replaced or removed: they are left to the
// stream.
TEST_F(CppMacroTableTest, ReplacedTokensStayWhileTheyMayBeInUse) {
  const auto defineAndLex = [this](const std::string& text) {
    table.define("A", objectLike(text));
    const TokenStream::Hold hold(setting.stream);
    return table.replacementOf(setting.name("A")).tokens();
  };
  const SpellingRange first = defineAndLex("12345678901234567890");
  {
    const TokenStream::Hold hold(setting.stream);
    const SpellingRange second = defineAndLex("\"second\"");
    table.undefine("A");
    EXPECT_EQ(first[0]->text(), "12345678901234567890");
    EXPECT_EQ(second[0]->text(), "\"second\"");
  }
  EXPECT_EQ(table.lookup("A"), nullptr);
}

TEST_F(CppMacroTableTest, WhatIsDefinedStaysWhenTheReplacedIsFreed) {
  table.define("B", objectLike("1"));
  for (const char* const text : {"1", "2", "3"}) {
    const TokenStream::Hold hold(setting.stream);
    table.define("A", objectLike(text));
  }
  table.define("A", objectLike("4"));
  EXPECT_EQ(textOf("A"), "4");
  EXPECT_EQ(textOf("B"), "1");
}

// A word that a running expansion has made before its macro is defined is that macro from then on.
TEST_F(CppMacroTableTest, WordsThatExistBeforeTheirDefinitionAreFound) {
  const Spelling& word = *setting.stream.spell("LATER");
  EXPECT_EQ(word.name, nullptr);
  table.define("LATER", objectLike("1"));
  ASSERT_NE(word.name, nullptr);
  EXPECT_EQ(word.name->macro, table.lookup("LATER"));
}

TEST_F(CppMacroTableTest, HoldsManyDefinitions) {
  constexpr int kCount = 50000;
  for (int index = 0; index < kCount; ++index) {
    table.define("M" + std::to_string(index), objectLike(std::to_string(index)));
  }
  for (int index = 0; index < kCount; index += 2) {
    table.undefine("M" + std::to_string(index));
  }
  for (int index = 0; index < kCount; ++index) {
    ASSERT_EQ(textOf("M" + std::to_string(index)), index % 2 == 0 ? "(none)" : std::to_string(index));
  }
}

}  // namespace
}  // namespace qnpp
