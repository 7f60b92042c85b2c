// Lists of stored tokens.
#include "lexer/TokenList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/unit/support/Memory.h"
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

// ---- Nested runs ----

struct NestedRunsTest : TokenListTest {
  // "a{A} b{B} c{C} ..." as many as told, settled.
  TokenList settledTokens(std::size_t count) {
    TokenList tokens;
    for (std::size_t index = 0; index < count; ++index) {
      const std::string_view text(&"abcdefgh"[index], 1);
      const std::string_view letter(&"ABCDEFGH"[index], 1);
      tokens.appendSettled(setting.listOf({text}, setting.hideSetOf(letter)).all(), 1, hideSets);
    }
    return tokens;
  }

  HideSetCache hideSets;
};

TEST_F(NestedRunsTest, ManySettledRunsBecomeOne) {
  const HideSet added = setting.hideSetOf("XY");
  const TokenList four = settledTokens(4);
  list.append(four.all(), added, hideSets);
  EXPECT_EQ(list.runs().size(), 4U);
  EXPECT_EQ(setting.dumpList(list), "a{AXY} b{BXY} c{CXY} d{DXY}");
  list.clear();
  const TokenList five = settledTokens(5);
  list.append(five.all(), added, hideSets);
  EXPECT_EQ(list.runs().size(), 1U);
  EXPECT_EQ(setting.dumpList(list), "a{AXY} b{BXY} c{CXY} d{DXY} e{EXY}");
}

TEST_F(NestedRunsTest, TokensThatAreNotSettledAreNotNested) {
  for (const char letter : std::string("ABCDEFGH")) {
    list.append(setting.spell("x"), setting.hideSetOf({&letter, 1}));
  }
  TokenList other;
  other.append(list.all(), setting.hideSetOf("X"), hideSets);
  EXPECT_EQ(other.runs().size(), 8U);
  other.clear();
  other.appendSettled(list.all(), 1, hideSets);  // They are from here on.
  EXPECT_EQ(other.runs().size(), 1U);
}

TEST_F(NestedRunsTest, ATokenInTheMiddleDividesThem) {
  TokenList tokens = settledTokens(5);
  tokens.append(setting.spell("x"), setting.hideSetOf("M"));
  tokens.appendSettled(settledTokens(6).all(), 1, hideSets);
  list.append(tokens.all(), setting.hideSetOf("X"), hideSets);
  EXPECT_EQ(list.runs().size(), 3U);
  EXPECT_EQ(setting.dumpList(list), "a{AX} b{BX} c{CX} d{DX} e{EX} x{MX} a{AX} b{BX} c{CX} d{DX} e{EX} f{FX}");
}

TEST_F(NestedRunsTest, SlicesAndCutsFindTheirTokens) {
  TokenList nested;
  nested.append(settledTokens(8).all(), setting.hideSetOf("X"), hideSets);
  TokenList twice;
  twice.append(setting.spell("-"), HideSet());
  twice.append(nested.all().part(1, 6), setting.hideSetOf("Y"), hideSets);
  EXPECT_EQ(setting.dumpList(twice), "- b{BXY} c{CXY} d{DXY} e{EXY} f{FXY} g{GXY}");
  list.append(twice.all().part(2, 3), setting.hideSetOf("Z"), hideSets);
  EXPECT_EQ(setting.dumpList(list), "c{CXYZ} d{DXYZ} e{EXYZ}");
  twice.cutTo(3);
  EXPECT_EQ(setting.dumpList(twice), "- b{BXY} c{CXY}");
  twice.append(setting.spell("new"), setting.hideSetOf("N"));
  EXPECT_EQ(setting.dumpList(twice), "- b{BXY} c{CXY} new{N}");
  nested.clear();
  twice.clear();
  EXPECT_EQ(setting.dumpList(list), "c{CXYZ} d{DXYZ} e{EXYZ}");  // It holds what it shares.
}

TEST_F(NestedRunsTest, ATokenBehindANestedRunDoesNotJoinIt) {
  list.append(settledTokens(5).all(), HideSet(), hideSets);
  list.append(setting.spell("x"), HideSet());
  list.append(setting.spell("y"), setting.hideSetOf("Y"));
  EXPECT_EQ(setting.dumpList(list), "a{A} b{B} c{C} d{D} e{E} x y{Y}");
}

// Neighbouring slices of one list are one run again.
TEST_F(NestedRunsTest, PartsThatMeetAgainAreOneRun) {
  TokenList nested;
  nested.append(settledTokens(8).all(), setting.hideSetOf("X"), hideSets);
  const HideSet added = setting.hideSetOf("Y");
  list.append(nested.all().part(0, 3), added, hideSets);
  list.append(nested.all().part(3, 5), added, hideSets);
  EXPECT_EQ(list.runs().size(), 1U);
  list.append(nested.all().part(3, 5), added, hideSets);
  EXPECT_EQ(list.runs().size(), 2U);
  EXPECT_EQ(setting.dumpRange(list.all().part(6, 4)), "g{GXY} h{HXY} d{DXY} e{EXY}");
}

TEST_F(NestedRunsTest, MarksHoldInTheirGenerationOnly) {
  EXPECT_FALSE(list.isSettledIn(1));
  list.append(setting.spell("a"), HideSet());
  EXPECT_FALSE(list.isSettledIn(1));
  const TokenList tokens = setting.listOf({"b"});
  list.appendSettled(tokens.all(), 2, hideSets);
  EXPECT_TRUE(list.isSettledIn(2));
  EXPECT_FALSE(list.isSettledIn(3));
  list.appendSettled(tokens.all(), 3, hideSets);
  EXPECT_TRUE(list.isSettledIn(2));  // The oldest counts.
  EXPECT_FALSE(list.isSettledIn(3));
  TokenList other;
  other.appendSettled(tokens.all(), 3, hideSets);
  EXPECT_TRUE(other.isSettledIn(3));
  other.append(list.all(), HideSet(), hideSets);
  EXPECT_FALSE(other.isSettledIn(3));
  other.clear();
  EXPECT_FALSE(other.isSettledIn(2));
}

// Runs nest as deep as invocations do, far deeper than functions of a program can call each other.
TEST_F(NestedRunsTest, DepthIsLimitedByMemoryAlone) {
  constexpr std::size_t kDepth = kCountsMemory ? 400'000 : 100'000;
  const TokenList before = settledTokens(4);
  TokenList innermost;
  innermost.appendSettled(setting.listOf({"x"}, setting.hideSetOf("I")).all(), 1, hideSets);
  const HideSet added = setting.hideSetOf("X");
  // A token, with four others before it and behind it in turn: five runs, which become one at the next level.
  list = innermost;
  TokenRange five = list.all();
  for (std::size_t level = 0; level < kDepth; ++level) {
    const bool standsBehind = level % 2 == 0;
    TokenList next;
    if (standsBehind) {
      next.append(before.all(), HideSet(), hideSets);
    }
    next.append(five, added, hideSets);
    if (!standsBehind) {
      next.append(before.all(), HideSet(), hideSets);
    }
    std::swap(list, next);
    five = list.all().part(standsBehind ? 0 : 4, 5);
  }
  const std::size_t position = list.all().part(4, 1).position;
  EXPECT_EQ(list.spellings()[position]->text(), "x");
  EXPECT_TRUE(list.isHiddenAt(position, list.runAt(position), setting.name("I")));
  EXPECT_EQ(setting.lettersOf(list.hideSetAt(position, list.runAt(position))), "IX");
  list.clear();
  EXPECT_TRUE(list.empty());
}

// ---- Against a plain list of tokens, each with a set of letters ----

struct ModelToken {
  const Spelling* spelling;
  std::optional<unsigned> letters;  // A bit for each; none where nobody asks.
};

struct ModelledList {
  TokenList list;
  std::vector<ModelToken> model;
};

class RandomLists {
 public:
  void step() {
    ModelledList& to = pick();
    const ModelledList& from = pick();
    switch (random_() % 10) {
      case 0:
        to.list.clear();
        to.model.clear();
        break;
      case 1: {
        const std::size_t count = random_() % (to.model.size() + 1);
        to.list.cutTo(count);
        to.model.resize(count);
        break;
      }
      case 2:
      case 3:
        appendSingle(to);
        break;
      default:
        if (&to != &from && to.model.size() + from.model.size() < kMostTokens) {
          appendPart(to, from);
        }
    }
    check(to);
  }

 private:
  static constexpr unsigned kLetters = 8;
  static constexpr std::size_t kMostTokens = 80;

  ModelledList& pick() { return lists_[random_() % lists_.size()]; }

  unsigned pickLetters() {
    return random_() % 3 == 0 ? 0 : (1U << random_() % kLetters) | (1U << random_() % kLetters);
  }

  HideSet setOf(unsigned letters) {
    HideSet set;
    for (unsigned index = 0; index < kLetters; ++index) {
      if ((letters >> index & 1U) != 0) {
        set = hideSets_.with(set, letter(index));
      }
    }
    return set;
  }
  Name& letter(unsigned index) { return setting_.name(std::string_view(&"ABCDEFGH"[index], 1)); }

  void appendSingle(ModelledList& to) {
    const Spelling* const spelling = characterSpelling("+-*/%;"[random_() % 6]);
    const unsigned letters = pickLetters();
    if (random_() % 2 == 0) {
      to.list.append(spelling, setOf(letters));
    } else {
      TokenList one;
      one.append(spelling, setOf(letters));
      to.list.appendSettled(one.all(), 1, hideSets_);
    }
    to.model.push_back({spelling, letters});
  }

  void appendPart(ModelledList& to, const ModelledList& from) {
    const std::size_t begin = random_() % (from.model.size() + 1);
    const std::size_t count = random_() % (from.model.size() - begin + 1);
    const unsigned inRange = pickLetters();
    const unsigned added = pickLetters();
    TokenRange part = from.list.all().part(begin, count);
    part.hideSet = setOf(inRange);
    const bool areSettled = random_() % 2 == 0;
    if (areSettled) {
      to.list.appendSettled(part, 1, hideSets_);
    } else {
      to.list.append(part, setOf(added), hideSets_);
    }
    for (std::size_t index = begin; index < begin + count; ++index) {
      ModelToken token = from.model[index];
      if (token.letters) {
        token.letters = *token.letters | inRange | (areSettled ? 0 : added);
      }
      to.model.push_back(token);
    }
  }

  void check(const ModelledList& checked) {
    const TokenList& list = checked.list;
    ASSERT_EQ(list.size(), checked.model.size());
    for (std::size_t position = 0; position < list.size(); ++position) {
      ASSERT_EQ(list.spellings()[position], checked.model[position].spelling);
      const std::size_t run = list.runAt(position);
      ASSERT_LT(position, list.runs()[run].end);
      if (!checked.model[position].letters) {
        continue;
      }
      const HideSet set = list.hideSetAt(position, run);
      for (unsigned index = 0; index < kLetters; ++index) {
        const bool isIn = (*checked.model[position].letters >> index & 1U) != 0;
        ASSERT_EQ(set.contains(letter(index)), isIn) << position;
        ASSERT_EQ(list.isHiddenAt(position, run, letter(index)), isIn) << position;
      }
      hasNested_ = hasNested_ || list.runs()[run].nested;
    }
  }

 public:
  bool hasNested() const { return hasNested_; }

 private:
  SpellingSetting setting_;
  HideSetCache hideSets_;
  std::mt19937 random_{2911};
  std::array<ModelledList, 6> lists_;
  bool hasNested_ = false;
};

TEST(RandomTokenListsTest, SetsAreThoseOfAPlainList) {
  RandomLists lists;
  for (int round = 0; round < 20'000 && !testing::Test::HasFatalFailure(); ++round) {
    lists.step();
  }
  EXPECT_TRUE(lists.hasNested());
}

}  // namespace
}  // namespace qnpp
