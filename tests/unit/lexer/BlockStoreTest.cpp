// Storage for definitions.
#include "lexer/BlockStore.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace qnpp {
namespace {

struct Piece {
  unsigned char* bytes = nullptr;
  std::size_t size = 0;
  unsigned char filling = 0;
};

Piece takeFilled(BlockStore& store, std::size_t size, unsigned char filling) {
  const Piece piece{static_cast<unsigned char*>(store.take(size)), size, filling};
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece.bytes) % alignof(void*), 0U) << size;
  std::memset(piece.bytes, filling, size);
  return piece;
}

bool isWhole(const Piece& piece) {
  for (std::size_t at = 0; at < piece.size; ++at) {
    if (piece.bytes[at] != piece.filling) {
      return false;
    }
  }
  return true;
}

// Sizes around each power of two and the places between, where a block could be taken for a larger one.
TEST(BlockStoreTest, ABlockHasTheBytesThatWereAskedFor) {
  BlockStore store;
  std::vector<Piece> pieces;
  for (std::size_t quarter = 1; quarter <= 40000; quarter = quarter * 5 / 4 + 1) {
    for (std::size_t size = quarter * 4 - 2; size <= quarter * 4 + 2; ++size) {
      pieces.push_back(takeFilled(store, size, static_cast<unsigned char>(size)));
    }
  }
  for (const Piece& piece : pieces) {
    EXPECT_TRUE(isWhole(piece)) << piece.size;
  }
}

TEST(BlockStoreTest, TakesAndGivesBackInAnyOrder) {
  std::mt19937 random(5);
  BlockStore store;
  std::vector<Piece> pieces;
  for (int round = 0; round < 50000; ++round) {
    if (pieces.size() > 200 || (!pieces.empty() && random() % 2 == 0)) {
      std::swap(pieces[random() % pieces.size()], pieces.back());
      ASSERT_TRUE(isWhole(pieces.back())) << pieces.back().size;
      store.giveBack(pieces.back().bytes, pieces.back().size);
      pieces.pop_back();
    } else {
      const std::size_t size = random() % 20 == 0 ? random() % 20000 : random() % 300;
      pieces.push_back(takeFilled(store, size, static_cast<unsigned char>(round)));
    }
  }
  for (const Piece& piece : pieces) {
    EXPECT_TRUE(isWhole(piece)) << piece.size;
  }
}

TEST(BlockStoreTest, WhatIsGivenBackServesAgain) {
  if (!kKeepsSpares) {
    GTEST_SKIP() << "under the address sanitizer nothing serves again";
  }
  BlockStore store;
  for (const std::size_t size : {1U, 8U, 100U, 256U, 257U, 1000U, 100000U}) {
    void* const block = store.take(size);
    void* const other = store.take(size);
    EXPECT_NE(block, other);
    store.giveBack(block, size);
    EXPECT_EQ(store.take(size), block) << size;
  }
}

}  // namespace
}  // namespace qnpp
