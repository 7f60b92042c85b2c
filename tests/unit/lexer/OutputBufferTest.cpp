// The output on its way to the sink.
#include "lexer/OutputBuffer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace qnpp {
namespace {

constexpr std::size_t kBlock = 64 * 1024;

// Bytes that tell their place, so that a shifted or doubled copy shows.
std::string numbered(std::size_t size) {
  std::string text;
  for (std::size_t at = 0; text.size() < size; ++at) {
    text += std::to_string(at) + ",";
  }
  text.resize(size);
  return text;
}

struct Sink final : TextSink {
  void write(std::string_view text) override {
    ++writes;
    bytes.append(text);
  }
  std::string bytes;
  int writes = 0;
};

struct Writing {
  Writing() { output.attach(sink); }
  Sink sink;
  OutputBuffer output;
};

TEST(OutputBufferTest, TextsOfEverySizeArriveWhole) {
  const std::string text = numbered(100);
  for (std::size_t size = 0; size <= text.size(); ++size) {
    // In memory of its own, so that a sanitizer sees it when bytes behind it are read.
    const std::vector<char> alone(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size));
    Writing writing;
    writing.output.write('<');
    writing.output.write(alone.data(), size);
    writing.output.write('>');
    writing.output.flush();
    EXPECT_EQ(writing.sink.bytes, "<" + text.substr(0, size) + ">");
  }
}

TEST(OutputBufferTest, KeepsWhatFitsIntoABlock) {
  Writing writing;
  writing.output.write("text");
  EXPECT_EQ(writing.sink.bytes, "");
  writing.output.flush();
  EXPECT_EQ(writing.sink.bytes, "text");
  writing.output.flush();
  EXPECT_EQ(writing.sink.bytes, "text");
  EXPECT_EQ(writing.sink.writes, 1);
}

// The block is full at every place of a text, a character or a number.
TEST(OutputBufferTest, BlocksJoinWithoutASeam) {
  const std::string text = numbered(2 * kBlock);
  for (std::size_t before = kBlock - 40; before <= kBlock + 2; ++before) {
    for (const std::size_t size : {1U, 3U, 4U, 8U, 16U, 17U, 33U}) {
      Writing writing;
      writing.output.write(text.data(), before);
      writing.output.write(text.data() + before, size);
      writing.output.flush();
      ASSERT_TRUE(writing.sink.bytes == text.substr(0, before + size)) << before << ", " << size;
    }
    Writing characters;
    characters.output.write(text.data(), before);
    for (int count = 0; count < 50; ++count) {
      characters.output.write('c');
    }
    characters.output.flush();
    ASSERT_TRUE(characters.sink.bytes == text.substr(0, before) + std::string(50, 'c')) << before;

    Writing numbers;
    numbers.output.write(text.data(), before);
    numbers.output.writeNumber(std::numeric_limits<std::int32_t>::min());
    numbers.output.write('.');
    numbers.output.flush();
    ASSERT_TRUE(numbers.sink.bytes == text.substr(0, before) + "-2147483648.") << before;
  }
}

TEST(OutputBufferTest, LargeTextsPassThrough) {
  for (const std::size_t size : {kBlock - 1, kBlock, kBlock + 1, 5 * kBlock}) {
    const std::string text = numbered(size);
    Writing writing;
    writing.output.write("before ");
    writing.output.write(text);
    writing.output.write(" behind");
    writing.output.flush();
    EXPECT_TRUE(writing.sink.bytes == "before " + text + " behind") << size;
  }
}

TEST(OutputBufferTest, WritesNumbersInDecimal) {
  const std::int32_t numbers[] = {0,
                                  1,
                                  -1,
                                  9,
                                  10,
                                  99,
                                  100,
                                  1000000000,
                                  std::numeric_limits<std::int32_t>::max(),
                                  std::numeric_limits<std::int32_t>::min()};
  Writing writing;
  for (const std::int32_t number : numbers) {
    writing.output.writeNumber(number);
    writing.output.write(' ');
  }
  writing.output.flush();
  EXPECT_EQ(writing.sink.bytes, "0 1 -1 9 10 99 100 1000000000 2147483647 -2147483648 ");
}

TEST(OutputBufferTest, AnyMixtureArrivesInOrder) {
  std::mt19937 random(99);
  const std::string text = numbered(3 * kBlock);
  Writing writing;
  std::string expected;
  for (int round = 0; round < 3000; ++round) {
    switch (random() % 5) {
      case 0:
        writing.output.write('c');
        expected += 'c';
        break;
      case 1: {
        const auto number = static_cast<std::int32_t>(random());
        writing.output.writeNumber(number);
        expected += std::to_string(number);
        break;
      }
      case 2:
        writing.output.endLine();
        expected += '\n';
        break;
      default: {
        const std::size_t size = round % 500 == 0 ? random() % text.size() : random() % 200;
        writing.output.write(std::string_view(text).substr(0, size));
        expected += text.substr(0, size);
      }
    }
  }
  writing.output.flush();
  EXPECT_TRUE(writing.sink.bytes == expected);
}

TEST(OutputBufferTest, CountsTheLinesThatStandForLines) {
  Writing writing;
  EXPECT_EQ(writing.output.line(), 1);
  writing.output.endLine();
  writing.output.write('\n');
  writing.output.write("\n\n");
  EXPECT_EQ(writing.output.line(), 2);
  writing.output.setLine(std::numeric_limits<std::int32_t>::max());
  writing.output.endLine();
  EXPECT_EQ(writing.output.line(), std::numeric_limits<std::int32_t>::min());
  writing.output.flush();
  EXPECT_EQ(writing.sink.bytes, "\n\n\n\n\n");
}

TEST(OutputBufferTest, WithoutASinkTheOutputIsDropped) {
  OutputBuffer output;
  output.write(numbered(kBlock - 1));
  output.write(numbered(2 * kBlock));
  output.writeNumber(1);
  output.flush();
  Sink sink;
  output.attach(sink);
  output.write("late");
  output.flush();
  EXPECT_EQ(sink.bytes, "late");
}

TEST(OutputBufferTest, ThePositionIsHowMuchHasBeenWritten) {
  Writing writing;
  EXPECT_EQ(writing.output.position(), 0U);
  writing.output.write("text");
  EXPECT_EQ(writing.output.position(), 4U);
  writing.output.write(numbered(2 * kBlock));
  writing.output.endLine();
  EXPECT_EQ(writing.output.position(), 4 + 2 * kBlock + 1);
  writing.output.flush();
  EXPECT_EQ(writing.output.position(), 4 + 2 * kBlock + 1);
}

// What the sink refuses is not handed to it again.
TEST(OutputBufferTest, ABlockIsHandedOnOnce) {
  struct Refusing final : TextSink {
    void write(std::string_view text) override {
      ++writes;
      if (text == "first") {
        throw writes;
      }
      bytes.append(text);
    }
    std::string bytes;
    int writes = 0;
  } sink;
  OutputBuffer output;
  output.attach(sink);
  output.write("first");
  EXPECT_THROW(output.flush(), int);
  output.write("second");
  output.flush();
  EXPECT_EQ(sink.bytes, "second");
}

}  // namespace
}  // namespace qnpp
