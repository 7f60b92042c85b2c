// Hide sets, against the sets of the standard library.
#include "lexer/HideSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "lexer/HideSetCache.h"
#include "lexer/NameTable.h"
#include "tests/unit/support/FallingSeries.h"
#include "tests/unit/support/Timing.h"

namespace qnpp {
namespace {

// `count` names; the words that the table knows from the start come before them in the order of ids.
struct Names {
  explicit Names(std::size_t count) {
    for (std::size_t index = 0; index < count; ++index) {
      all.push_back(table.intern("name" + std::to_string(index)));
    }
  }
  Name& operator[](std::size_t index) { return *all[index]; }

  NameTable table;
  std::vector<Name*> all;
};

TEST(HideSetTest, AnEmptySetContainsNothing) {
  Names names(1);
  const HideSet set;
  EXPECT_TRUE(set.empty());
  EXPECT_FALSE(set.contains(names[0]));
  EXPECT_TRUE(set.joined(set).empty());
}

TEST(HideSetTest, OperationsLeaveTheirOperandsAlone) {
  Names names(3);
  const HideSet a = HideSet().with(names[0]);
  const HideSet ab = a.with(names[1]);
  const HideSet c = HideSet().with(names[2]);
  const HideSet abc = ab.joined(c);
  EXPECT_FALSE(a.contains(names[1]));
  EXPECT_TRUE(ab.contains(names[0]) && ab.contains(names[1]) && !ab.contains(names[2]));
  EXPECT_FALSE(c.contains(names[0]));
  EXPECT_TRUE(abc.contains(names[0]) && abc.contains(names[1]) && abc.contains(names[2]));
}

TEST(HideSetTest, CopiesAndMovesAreValues) {
  Names names(2);
  HideSet first = HideSet().with(names[0]);
  HideSet second = first;
  EXPECT_TRUE(second.isSameObject(first));
  second = second.with(names[1]);
  EXPECT_FALSE(first.contains(names[1]));
  const HideSet moved = std::move(second);
  EXPECT_TRUE(moved.contains(names[0]) && moved.contains(names[1]));
  HideSet& alias = first;
  first = alias;
  EXPECT_TRUE(first.contains(names[0]));
  first = std::move(alias);
  EXPECT_TRUE(first.contains(names[0]));
  first = HideSet();
  EXPECT_TRUE(first.empty());
  EXPECT_TRUE(moved.contains(names[0]));
}

// A set that already has what is added stays the same object: lists tell equal sets by that.
TEST(HideSetTest, AddingNothingKeepsTheObject) {
  Names names(200);
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    HideSet large;
    HideSet small;
    for (std::size_t index = 0; index < names.all.size(); ++index) {
      if (random() % 2 == 0) {
        large = large.with(names[index]);
        if (random() % 3 == 0) {
          small = small.with(names[index]);
          EXPECT_TRUE(large.with(names[index]).isSameObject(large));
        }
      }
    }
    EXPECT_TRUE(large.joined(small).isSameObject(large));
    EXPECT_TRUE(large.joined(HideSet()).isSameObject(large));
    EXPECT_TRUE(HideSet().joined(large).isSameObject(large));
    EXPECT_TRUE(large.joined(large).isSameObject(large));
  }
}

// Sets of all sorts made of one another, beside the same sets of the standard library.
TEST(HideSetTest, AgreesWithAnOrdinarySet) {
  constexpr std::size_t kNames = 60;
  constexpr std::size_t kSets = 16;
  Names names(kNames);
  std::mt19937 random(1234);
  std::array<HideSet, kSets> sets;
  std::array<std::set<std::size_t>, kSets> models;
  for (int round = 0; round < 30000; ++round) {
    const std::size_t a = random() % kSets;
    const std::size_t b = random() % kSets;
    const std::size_t name = random() % kNames;
    switch (random() % 8) {
      case 0:
        sets[a] = HideSet();
        models[a].clear();
        break;
      case 1:
        sets[a] = sets[b];
        models[a] = models[b];
        break;
      case 2:
      case 3: {
        sets[a] = sets[a].joined(sets[b]);
        std::set<std::size_t> other = models[b];
        models[a].merge(other);
        break;
      }
      default:
        sets[a] = sets[b].with(names[name]);
        models[a] = models[b];
        models[a].insert(name);
    }
    ASSERT_EQ(sets[a].empty(), models[a].empty());
    for (std::size_t index = 0; index < kNames; ++index) {
      ASSERT_EQ(sets[a].contains(names[index]), models[a].count(index) == 1) << "round " << round;
    }
  }
}

// A chain of macros, each the replacement of the one before, asks for all of its sets, and keeps them.
TEST(HideSetTest, LongChainsShareTheirNames) {
  constexpr std::size_t kLength = 100000;
  Names names(kLength);
  std::vector<HideSet> chain(1);
  for (std::size_t index = 0; index < kLength; ++index) {
    chain.push_back(chain.back().with(names[index]));
  }
  for (std::size_t index = 1; index < kLength; index += 997) {
    EXPECT_TRUE(chain[index].contains(names[0]));
    EXPECT_TRUE(chain[index].contains(names[index - 1]));
    EXPECT_FALSE(chain[index].contains(names[index]));
  }
  // Joining two of them costs what they differ in, not what they hold.
  const double seconds = secondsOf([&chain] {
    for (std::size_t count = 0; count < 1000; ++count) {
      EXPECT_TRUE(chain[kLength].joined(chain[kLength - count]).isSameObject(chain[kLength]));
    }
  });
  EXPECT_LT(seconds, 5);
}

// Large sets that grow by a name at a time go on from any of them, and are joined with others. Many names are in
// several sets that have nothing to do with each other.
TEST(HideSetTest, SetsThatBranchAgreeWithOrdinarySets) {
  constexpr std::size_t kNames = 300;
  Names names(kNames);
  std::mt19937 random(99);
  struct Both {
    HideSet set;
    std::set<std::size_t> model;

    void add(Name& name, std::size_t index) {
      set = set.with(name);
      model.insert(index);
    }
  };
  std::vector<Both> path(1);
  std::array<Both, 8> aside;
  for (int round = 0; round < 6000; ++round) {
    const std::size_t index = random() % kNames;
    Both& other = aside[random() % aside.size()];
    switch (random() % 16) {
      case 0:  // Back to one of the sets before.
        path.resize(1 + random() % path.size());
        break;
      case 1:
        other = path[random() % path.size()];
        break;
      case 2:
        path.push_back({path.back().set.joined(other.set), path.back().model});
        path.back().model.insert(other.model.begin(), other.model.end());
        break;
      case 3:
      case 4:
        other.add(names[index], index);
        break;
      case 5:
        if (random() % 8 == 0) {
          path.assign(1, Both());
        }
        break;
      default:
        path.push_back(path.back());
        path.back().add(names[index], index);
    }
    for (const Both* const both : {&path.back(), &other, &path[random() % path.size()]}) {
      ASSERT_EQ(both->set.empty(), both->model.empty());
      for (std::size_t at = 0; at < kNames; ++at) {
        ASSERT_EQ(both->set.contains(names[at]), both->model.count(at) == 1) << "round " << round;
      }
    }
  }
}

// A chain that is expanded again while its sets are in use gets sets of its own.
TEST(HideSetTest, AChainMayBeGoneThroughTwice) {
  constexpr std::size_t kLength = 2000;
  Names names(kLength + 1);
  std::vector<HideSet> first(1);
  std::vector<HideSet> second = {HideSet().with(names[kLength])};
  for (std::size_t index = 0; index < kLength; ++index) {
    first.push_back(first.back().with(names[index]));
    second.push_back(second.back().with(names[index]));
  }
  for (std::size_t index = 0; index < kLength; index += 7) {
    for (const std::size_t length : {index, index + 1, kLength}) {
      EXPECT_EQ(first[length].contains(names[index]), length > index);
      EXPECT_EQ(second[length].contains(names[index]), length > index);
    }
    EXPECT_FALSE(first[index].contains(names[kLength]));
    EXPECT_TRUE(second[index].contains(names[kLength]));
    const HideSet both = first[index].joined(second[kLength - index]);
    EXPECT_TRUE(both.contains(names[kLength]));
    EXPECT_EQ(both.contains(names[kLength - 1]), index == 0);
  }
}

// Nodes lie at logarithmic depth in whatever order the names come, or a walk down would exhaust the stack.
TEST(HideSetTest, AnyOrderOfNamesWillDo) {
  constexpr std::size_t kLength = 100000;
  Names names(kLength);
  std::vector<Name*> order = names.all;
  std::reverse(order.begin(), order.end());
  HideSet downwards;
  for (const Name* const name : order) {
    downwards = downwards.with(*name);
  }
  std::shuffle(order.begin(), order.end(), std::mt19937(3));
  HideSet shuffled;
  for (const Name* const name : order) {
    shuffled = shuffled.with(*name);
  }
  const HideSet both = downwards.joined(shuffled);
  // The search tree of as many names in random order is 40 deep.
  EXPECT_LT(downwards.depth(), 150U);
  EXPECT_LT(shuffled.depth(), 150U);
  EXPECT_LT(both.depth(), 150U);
  for (std::size_t index = 0; index < kLength; index += 101) {
    EXPECT_TRUE(downwards.contains(names[index]));
    EXPECT_TRUE(shuffled.contains(names[index]));
    EXPECT_TRUE(both.contains(names[index]));
  }
}

TEST(HideSetTest, NobodyCanChooseNamesThatMakeADeepTree) {
  constexpr std::size_t kNames = 200000;
  Names names(kNames);
  ASSERT_EQ(names[0].id, kKeywords);
  const std::vector<std::size_t> series = fallingSeries(kNames, kKeywords);
  ASSERT_GT(series.size(), 800U);
  HideSet set;
  for (const std::size_t index : series) {
    set = set.with(names[index]);
  }
  // In random order about twice as many names as are chosen here come to a depth of 28; a depth of 100 has not a
  // chance.
  EXPECT_LT(set.depth(), 100U);
}

TEST(HideSetCacheTest, GivesTheResultsOfTheSets) {
  constexpr std::size_t kNames = 300;
  Names names(kNames);
  std::mt19937 random(77);
  HideSetCache cache;
  std::array<HideSet, 40> sets;
  // Many more results than the cache has room for.
  for (int round = 0; round < 20000; ++round) {
    const HideSet& a = sets[random() % sets.size()];
    const HideSet& b = sets[random() % sets.size()];
    Name& name = names[random() % kNames];
    const HideSet with = cache.with(a, name);
    const HideSet expectedWith = a.with(name);
    const HideSet joined = cache.joined(a, b);
    const HideSet expectedJoined = a.joined(b);
    for (std::size_t index = 0; index < kNames; index += 7) {
      ASSERT_EQ(with.contains(names[index]), expectedWith.contains(names[index]));
      ASSERT_EQ(joined.contains(names[index]), expectedJoined.contains(names[index]));
    }
    ASSERT_TRUE(with.contains(name));
    sets[random() % sets.size()] = random() % 8 == 0 ? HideSet() : random() % 4 == 0 ? joined : with;
  }
}

TEST(HideSetCacheTest, GivesTheSameObjectAgain) {
  Names names(3);
  HideSetCache cache;
  const HideSet a = cache.with(HideSet(), names[0]);
  EXPECT_TRUE(cache.with(HideSet(), names[0]).isSameObject(a));
  const HideSet ab = cache.with(a, names[1]);
  EXPECT_TRUE(cache.with(a, names[1]).isSameObject(ab));
  const HideSet c = cache.with(HideSet(), names[2]);
  const HideSet abc = cache.joined(ab, c);
  EXPECT_TRUE(cache.joined(ab, c).isSameObject(abc));
  EXPECT_TRUE(cache.joined(HideSet(), ab).isSameObject(ab));
  EXPECT_TRUE(cache.joined(ab, HideSet()).isSameObject(ab));
  EXPECT_TRUE(cache.joined(ab, ab).isSameObject(ab));
}

}  // namespace
}  // namespace qnpp
