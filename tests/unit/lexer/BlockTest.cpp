// Looking at 64 bytes at a time.
#include "lexer/Block.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <tuple>

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

// A text in storage of just the size that the search may read.
struct ScannedText {
  explicit ScannedText(const std::string& text) : bytes(std::make_unique<char[]>(text.size() + 1 + kScanSlack)) {
    std::memcpy(bytes.get(), text.c_str(), text.size() + 1);
  }
  char* at(std::size_t place) const { return bytes.get() + place; }

  std::unique_ptr<char[]> bytes;
};

// All masks that the lexer asks for, and some with bytes of both signs.
template <typename AnyBlock>
auto masksAt(const char* at) {
  const AnyBlock block(at);
  return std::tuple(block.words(), block.digits(), block.template find<'\n'>(), block.template find<'*'>(),
                    block.template find<'/'>(), block.template find<'\r', '\0'>(),
                    block.template find<'"', '\'', '/', '\\', '\r', '\0'>(),
                    block.template find<'"', '\'', '/', '\\', '\r', '\n', '\0'>(),
                    block.template find<'\x80', '\xFF', '\x7F'>());
}

// Whether there are bytes of a kind, and how many, without their mask.
template <typename AnyBlock>
auto sumsAt(const char* at) {
  const AnyBlock block(at);
  const auto lineEnds = block.template match<'\n'>();
  const auto stops = block.template match<'#', '/', '\\', '\r'>();
  return std::tuple(lineEnds.any(), lineEnds.count(), stops.any(), stops.count());
}

// The first mask, byte by byte, by what the C library calls a letter or a digit in the locale "C".
std::uint64_t wordsAt(const char* at) {
  std::uint64_t bits = 0;
  for (std::size_t place = 0; place < 64; ++place) {
    const auto byte = static_cast<unsigned char>(at[place]);
    bits |= std::uint64_t{std::isalnum(byte) != 0 || byte == '_'} << place;
  }
  return bits;
}

TEST(BlockTest, EachByteHasTheSameBitsInBothFormsAtEachPlace) {
  for (int code = 0; code < 256; ++code) {
    for (const char other : {'x', ' ', '\n', '\xFF'}) {
      for (std::size_t place = 0; place < 64; ++place) {
        std::string text(64, other);
        text[place] = static_cast<char>(code);
        ASSERT_EQ(masksAt<Block>(text.data()), masksAt<ScalarBlock>(text.data())) << code << " at " << place;
        ASSERT_EQ(sumsAt<Block>(text.data()), sumsAt<ScalarBlock>(text.data())) << code << " at " << place;
        ASSERT_EQ(ScalarBlock(text.data()).words(), wordsAt(text.data())) << code << " at " << place;
        const std::uint64_t found = Block(text.data()).find<'/'>();
        ASSERT_EQ(found, code == '/' ? std::uint64_t{1} << place : 0) << code << " at " << place;
      }
    }
  }
}

// Storage of just 64 bytes behind each place, so that a sanitizer sees a look behind them.
TEST(BlockTest, BothFormsAgreeOnAnyTextFromAnyPlace) {
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    std::string text(128, '\0');
    for (char& byte : text) {
      // Half of the bytes are of those that the lexer looks for.
      constexpr std::string_view kWanted("\"'/*\\\r\n\0_az09AZ@[`{/:"sv);
      const auto number = static_cast<std::uint32_t>(random());
      byte = (number & 1U) != 0 ? static_cast<char>(number >> 8U) : kWanted[(number >> 8U) % kWanted.size()];
    }
    for (std::size_t place = 0; place <= 64; ++place) {
      const auto bytes = std::make_unique<char[]>(place + 64);
      std::memcpy(bytes.get(), text.data(), place + 64);
      const char* const at = bytes.get() + place;
      ASSERT_EQ(masksAt<Block>(at), masksAt<ScalarBlock>(at)) << round << " at " << place;
      ASSERT_EQ(sumsAt<Block>(at), sumsAt<ScalarBlock>(at)) << round << " at " << place;
    }
  }
}

TEST(BlockTest, AWordOfAnyLengthIsPassedFromAnyPlace) {
  for (std::size_t place = 0; place < 64; ++place) {
    for (std::size_t size = 0; size <= 200; ++size) {
      const ScannedText scanned(std::string(place, ' ') + std::string(size, '_') + (size % 2 == 0 ? " a" : "\x80z"));
      ASSERT_EQ(passMany(scanned.at(place), [](const Block& block) { return block.words(); }), scanned.at(place + size))
          << size << " at " << place;
    }
  }
}

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
