// Lists of stored tokens.
#include "lexer/TokenList.h"

#include <gtest/gtest.h>

#include "tests/unit/support/Spellings.h"

namespace qnpp {
namespace {

struct TokenListTest : testing::Test {
  SpellingSetting setting;
  TokenList list;
};

TEST_F(TokenListTest, KeepsTheOrderAndTheHideSets) {
  list.append(setting.spell("a"), setting.hideSetOf("A"));
  list.append(setting.spell("b"), HideSet());
  list.append(setting.spell(""), setting.hideSetOf("BC"));
  list.append(setting.spell("a"), setting.hideSetOf("A"));
  EXPECT_EQ(list.size(), 4U);
  EXPECT_EQ(setting.dumpList(list), "a{A} b {BC} a{A}");
}

TEST_F(TokenListTest, IsEmptyAtFirstAndAfterClear) {
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.size(), 0U);
  list.append(setting.spell("a"), HideSet());
  EXPECT_FALSE(list.empty());
  list.clear();
  EXPECT_TRUE(list.empty());
  EXPECT_TRUE(list.runs().empty());
  list.append(setting.spell("b"), setting.hideSetOf("B"));
  EXPECT_EQ(setting.dumpList(list), "b{B}");
}

TEST_F(TokenListTest, NeighboursWithOneSetAreOneRun) {
  const HideSet set = setting.hideSetOf("AB");
  for (int count = 0; count < 100; ++count) {
    list.append(setting.spell("x"), set);
  }
  EXPECT_EQ(list.size(), 100U);
  ASSERT_EQ(list.runs().size(), 1U);
  EXPECT_EQ(list.runs()[0].end, 100U);
  list.append(setting.spell("y"), HideSet());
  list.append(setting.spell("z"), set);
  EXPECT_EQ(list.runs().size(), 3U);
}

TEST_F(TokenListTest, AppendsRanges) {
  const TokenList other = setting.listOf({"x", "y"});
  list.append(other.spellings(), setting.hideSetOf("A"));
  list.append(other.spellings().first(0), setting.hideSetOf("B"));
  list.append(other.spellings().last(1), setting.hideSetOf("C"));
  EXPECT_EQ(setting.dumpList(list), "x{A} y{A} y{C}");
  EXPECT_EQ(list.runs().size(), 2U);
}

TEST_F(TokenListTest, AppendsListsWithAnAdditionalSet) {
  HideSetCache hideSets;
  TokenList other;
  other.append(setting.spell("a"), setting.hideSetOf("A"));
  other.append(setting.spell("b"), HideSet());
  other.append(setting.spell("c"), setting.hideSetOf("XB"));
  list.append(setting.spell("z"), setting.hideSetOf("Z"));
  list.append(other.all(), setting.hideSetOf("XY"), hideSets);
  EXPECT_EQ(setting.dumpList(list), "z{Z} a{AXY} b{XY} c{BXY}");
  EXPECT_EQ(setting.dumpList(other), "a{A} b c{BX}");
  list.append(TokenList().all(), setting.hideSetOf("Q"), hideSets);
  EXPECT_EQ(list.size(), 4U);
}

TEST_F(TokenListTest, AppendsWithoutAnAdditionalSet) {
  HideSetCache hideSets;
  TokenList other;
  other.append(setting.spell("a"), setting.hideSetOf("A"));
  other.append(setting.spell("b"), HideSet());
  list.append(other.all(), HideSet(), hideSets);
  EXPECT_EQ(setting.dumpList(list), "a{A} b");
}

TEST_F(TokenListTest, IsAValue) {
  list.append(setting.spell("a"), setting.hideSetOf("A"));
  TokenList copy = list;
  copy.append(setting.spell("b"), setting.hideSetOf("B"));
  EXPECT_EQ(setting.dumpList(list), "a{A}");
  EXPECT_EQ(setting.dumpList(copy), "a{A} b{B}");
}

}  // namespace
}  // namespace qnpp
