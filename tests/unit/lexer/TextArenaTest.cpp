// Storage that is given back all at once.
#include "lexer/TextArena.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace qnpp {
namespace {

TEST(TextArenaTest, StorageIsAligned) {
  TextArena arena;
  arena.allocate(0);  // Of no use to anyone, but no harm.
  for (std::size_t size = 1; size < 100; ++size) {
    void* const made = arena.allocate(size);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(made) % alignof(void*), 0U) << size;
    std::memset(made, 0xAB, size);
  }
}

TEST(TextArenaTest, CopiesStayWhereTheyAre) {
  TextArena arena;
  std::vector<std::string_view> copies;
  for (int index = 0; index < 20000; ++index) {
    copies.push_back(arena.copy("text " + std::to_string(index)));
  }
  for (int index = 0; index < 20000; ++index) {
    ASSERT_EQ(copies[static_cast<std::size_t>(index)], "text " + std::to_string(index));
  }
}

TEST(TextArenaTest, ACopyMayBeEmptyOrLarge) {
  TextArena arena;
  EXPECT_TRUE(arena.copy("").empty());
  for (const std::size_t size : {1U, 16383U, 16384U, 16385U, 1000000U}) {
    const std::string text(size, 'x');
    EXPECT_TRUE(arena.copy(text) == text) << size;
  }
}

TEST(TextArenaTest, ReleasedStorageIsUsedAgain) {
  TextArena arena;
  const TextArena::Mark start = arena.mark();
  const void* const first = arena.allocate(100);
  const TextArena::Mark mark = arena.mark();
  const void* const second = arena.allocate(100);
  for (int count = 0; count < 1000; ++count) {
    arena.allocate(1000);
  }
  arena.release(mark);
  EXPECT_EQ(arena.mark(), mark);
  EXPECT_EQ(arena.allocate(100), second);
  arena.release(start);
  EXPECT_EQ(arena.allocate(100), first);
}

TEST(TextArenaTest, ReleasingNothingChangesNothing) {
  TextArena arena;
  arena.release(arena.mark());
  const std::string_view text = arena.copy("text");
  const TextArena::Mark mark = arena.mark();
  arena.release(mark);
  EXPECT_EQ(arena.mark(), mark);
  EXPECT_EQ(text, "text");
}

TEST(TextArenaTest, LaterMarksAreGreater) {
  TextArena arena;
  std::vector<TextArena::Mark> marks{arena.mark()};
  for (int count = 0; count < 100; ++count) {
    arena.allocate(1000);
    marks.push_back(arena.mark());
    EXPECT_LT(marks[marks.size() - 2], marks.back());
  }
}

// Allocations of every size, released in the order of a stack; what is not released keeps its bytes.
TEST(TextArenaTest, WhatIsOlderThanTheMarkStays) {
  struct Kept {
    std::string_view copy;
    std::string text;
  };
  std::mt19937 random(321);
  TextArena arena;
  std::vector<Kept> kept;
  std::vector<std::pair<TextArena::Mark, std::size_t>> marks;
  for (int round = 0; round < 20000; ++round) {
    switch (random() % 8) {
      case 0:
        marks.emplace_back(arena.mark(), kept.size());
        break;
      case 1:
        if (!marks.empty()) {
          const std::size_t depth = random() % marks.size();
          arena.release(marks[depth].first);
          kept.resize(marks[depth].second);
          marks.resize(depth);
        }
        break;
      default: {
        const std::size_t size = random() % 50 == 0 ? random() % 60000 : random() % 300;
        std::string text(size, static_cast<char>('a' + random() % 26));
        const std::string_view copy = arena.copy(text);
        kept.push_back({copy, std::move(text)});
      }
    }
    if (round % 100 == 0) {
      for (const Kept& entry : kept) {
        ASSERT_TRUE(entry.copy == entry.text) << "round " << round;
      }
    }
  }
}

#if defined(QNPP_ADDRESS_SANITIZER)
// With the address sanitizer, a use of what has been given back ends the process, and so does one behind the end.
TEST(TextArenaDeathTest, WhatHasBeenReleasedCannotBeRead) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  TextArena arena;
  const char* const older = arena.copy("older").data();
  const TextArena::Mark mark = arena.mark();
  const char* const newer = arena.copy("newer").data();
  const char* const large = arena.copy(std::string(50'000, 'x')).data();  // In a block of its own.
  EXPECT_EQ(*newer + *large, 'n' + 'x');
  EXPECT_DEATH(static_cast<void>(*static_cast<const volatile char*>(newer + 8)), "use-after-poison");
  arena.release(mark);
  EXPECT_EQ(*older, 'o');
  EXPECT_DEATH(static_cast<void>(*static_cast<const volatile char*>(newer)), "use-after-poison");
  EXPECT_DEATH(static_cast<void>(*static_cast<const volatile char*>(large + 40'000)), "use-after-free");
  arena.copy("again");
  EXPECT_EQ(*newer, 'a');
}
#endif

}  // namespace
}  // namespace qnpp
