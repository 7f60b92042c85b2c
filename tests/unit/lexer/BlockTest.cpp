// Looking at 64 bytes at a time.
#include "lexer/Block.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

namespace qnpp {
namespace {

// A text in storage of just the size that the search may read.
struct ScannedText {
  explicit ScannedText(const std::string& text) : bytes(std::make_unique<char[]>(text.size() + 1 + kScanSlack)) {
    std::memcpy(bytes.get(), text.c_str(), text.size() + 1);
  }
  char* at(std::size_t place) const { return bytes.get() + place; }

  std::unique_ptr<char[]> bytes;
};

TEST(BlockTest, FindsTheFirstStopFromAnyPlace) {
  for (std::size_t start = 0; start < 20; ++start) {
    for (std::size_t stop = start; stop < 70; ++stop) {
      std::string text(80, 'x');
      text[stop] = '*';
      text[stop + 1] = '\n';
      if (start > 0) {
        text[start - 1] = '*';
      }
      const ScannedText scanned(text);
      EXPECT_EQ((findAny<'*', '\n', '\0'>(scanned.at(start))), scanned.at(stop));
    }
  }
}

TEST(BlockTest, StopsAtTheEnd) {
  for (std::size_t size = 0; size < 70; ++size) {
    const ScannedText scanned(std::string(size, 'x'));
    EXPECT_EQ((findAny<'*', '\0'>(scanned.at(0))), scanned.at(size));
  }
}

TEST(BlockTest, EveryStopCountsAndNothingElse) {
  for (int code = 1; code < 256; ++code) {
    const ScannedText scanned(std::string(5, static_cast<char>(code)));
    const bool isStop = code == '"' || code == '\\' || code == 0xFF;
    EXPECT_EQ((findAny<'"', '\\', '\xFF', '\0'>(scanned.at(0))), scanned.at(isStop ? 0 : 5)) << code;
  }
}

}  // namespace
}  // namespace qnpp
