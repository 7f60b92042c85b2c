// Byte streams for the lexer.
#include "lexer/InputFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "tests/support/Files.h"

namespace qnpp {
namespace {

std::string readInPieces(std::streambuf& buffer, std::size_t size) {
  std::string bytes;
  std::string piece(size, '\0');
  for (;;) {
    const auto count = buffer.sgetn(piece.data(), static_cast<std::streamsize>(size));
    if (count == 0) {
      return bytes;
    }
    bytes.append(piece, 0, static_cast<std::size_t>(count));
  }
}

std::string readInPieces(const std::istream& stream, std::size_t size) { return readInPieces(*stream.rdbuf(), size); }

TEST(InputFileTest, DeliversTheBytesAsTheyAre) {
  const TemporaryFolder folder;
  const std::string content("a\r\nb\0c\x1A\xFF\n", 9);
  const std::string name = folder.write("file", content);
  for (const std::size_t size : {1U, 4U, 9U, 100U}) {
    InputFile file(name);
    EXPECT_TRUE(file.good());
    EXPECT_EQ(readInPieces(file, size), content);
  }
}

TEST(InputFileTest, DeliversLargeFiles) {
  const TemporaryFolder folder;
  std::string content;
  for (int line = 0; line < 20000; ++line) {
    content += std::to_string(line) + "\n";
  }
  InputFile file(folder.write("file", content));
  EXPECT_TRUE(readInPieces(file, 16384) == content);
}

TEST(InputFileTest, AnEmptyFileIsGood) {
  const TemporaryFolder folder;
  InputFile file(folder.write("file", ""));
  EXPECT_TRUE(file.good());
  EXPECT_EQ(readInPieces(file, 10), "");
}

TEST(InputFileTest, WhatIsNoReadableFileFails) {
  const TemporaryFolder folder;
  const std::string name = folder.write("file", "x");
  EXPECT_FALSE(InputFile(folder.path("none")).good());
  EXPECT_FALSE(InputFile(folder.path()).good());
  EXPECT_FALSE(InputFile("").good());
  EXPECT_FALSE(InputFile(name + std::string("\0", 1)).good());
  EXPECT_TRUE(InputFile(name).good());
}

TEST(FileBufferTest, CopiesWhatOneReadGetsAsAWhole) {
  const TemporaryFolder folder;
  for (const std::string& content : {std::string("a\0b\n", 4), std::string()}) {
    const std::string name = folder.write("file", content);
    for (const std::size_t size : {1U, 4U, 5U, 100U}) {
      FileBuffer file(name);
      const auto copy = std::make_shared<FileText>();
      file.copyTo(copy);
      EXPECT_FALSE(copy->has_value());
      EXPECT_EQ(readInPieces(file, size), content);
      // With four bytes out of four it is not known yet whether there are more.
      EXPECT_EQ(*copy, size > content.size() ? FileText(content) : FileText());
    }
  }
}

TEST(FileBufferTest, KnowsHowManyMoreCouldBeOpen) {
  const TemporaryFolder folder;
  const FileBuffer file(folder.write("file", ""));
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit fewer = {100, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &fewer), 0);
  EXPECT_EQ(file.descriptorsLeft(0), 0U);
  EXPECT_EQ(file.descriptorsLeft(3), 3U);
  const std::size_t left = file.descriptorsLeft(100);
  EXPECT_GT(left, 3U);
  EXPECT_LT(left, 100U);
  EXPECT_EQ(file.descriptorsLeft(100), left);  // All of them have been closed again.
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

// ---- Stamps ----

TEST(FileStampTest, ADateMayBeThatOfAnotherChangeWhileItsClockStandsStill) {
  struct Row {
    FileTime changedAt;
    FileTime now;
    bool mayBe;
  };
  for (const auto& [changedAt, now, mayBe] : {
           Row{{100, 123'456'789}, {100, 123'456'789}, true},
           Row{{100, 123'456'789}, {100, 123'456'788}, true},  // The clock has been set back.
           Row{{100, 123'456'700}, {100, 123'456'789}, true},  // Cut down.
           Row{{100, 123'456'700}, {100, 133'456'701}, false},
           Row{{100, 999'999'999}, {101, 9'999'999}, true},
           Row{{100, 999'999'999}, {101, 10'000'000}, false},
           Row{{100, 0}, {100, 999'999'999}, true},
           Row{{100, 0}, {102, 999'999'999}, true},  // In steps of two seconds, with a clock that is rounded up.
           Row{{100, 0}, {103, 0}, false},
           Row{{100, 230'000'000}, {100, 239'999'999}, true},
           Row{{100, 230'000'000}, {103, 0}, false},
       }) {
    EXPECT_EQ(mayBeDatedTheSame(changedAt, now), mayBe) << changedAt.nanoseconds << " " << now.seconds;
  }
}

// They change without another size or date.
TEST(FileStampTest, FilesOfTheSystemsOwnHaveNone) {
  if (!std::filesystem::exists("/proc/locks")) {
    GTEST_SKIP() << "there is no /proc here";
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // It may have been made by being looked for.
  const FileBuffer file("/proc/locks");
  ASSERT_TRUE(file.isOpen());
  EXPECT_EQ(file.stamp(), std::nullopt);
}

TEST(InputFileTest, ATextCanBeReplacedByAnother) {
  InputText input;
  EXPECT_EQ(readInPieces(input, 3), "");
  input.reset("first text");
  EXPECT_EQ(readInPieces(input, 3), "first text");
  EXPECT_EQ(readInPieces(input, 3), "");
  input.reset("second");
  EXPECT_EQ(readInPieces(input, 100), "second");
  input.reset(std::string_view());
  EXPECT_EQ(readInPieces(input, 100), "");
}

}  // namespace
}  // namespace qnpp
