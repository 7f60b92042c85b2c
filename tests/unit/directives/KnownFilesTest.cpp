// Included files that are not opened again, and all that makes them be opened.
#include "directives/KnownFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "lexer/CppLexer.h"
#include "macros/CppMacro.h"
#include "tests/support/Files.h"

namespace qnpp {
namespace {

struct KnownFilesTest : testing::Test {
  KnownFilesTest() { guard.macro = &macro; }

  // The file is opened, and read if anybody wants its text. Returns whether that was so.
  bool open(std::uint64_t moment = 0) {
    const FileStamp stamp = stampOf(path).value();
    const std::shared_ptr<FileText> copy = files.opened(path, stamp, moment);
    if (copy != nullptr) {
      *copy = readFile(path);
    }
    return copy != nullptr;
  }
  void openGuarded() {
    open();
    files.setGuard(path, stampOf(path).value(), guard, 4);
  }
  bool isKnown(std::uint64_t moment = 0) { return files.find(path, moment) != nullptr; }

  TemporaryFolder folder;
  std::string path = folder.write("a.h", "12345");
  KnownFiles files;
  Name guard;
  CppMacro macro;
};

TEST_F(KnownFilesTest, AGuardedFileIsPassedByWhileItsGuardIsDefined) {
  EXPECT_FALSE(isKnown());
  openGuarded();
  ASSERT_TRUE(isKnown());
  EXPECT_TRUE(files.find(path, 0)->isPassedBy());
  EXPECT_EQ(files.find(path, 0)->lineEnds, 4U);
  guard.macro = nullptr;
  EXPECT_FALSE(isKnown());
  guard.macro = &macro;
  EXPECT_TRUE(isKnown());
}

TEST_F(KnownFilesTest, AnotherFileHasNoGuard) {
  open();
  FileStamp other = stampOf(path).value();
  other.number += 1;
  files.setGuard(path, other, guard, 4);
  EXPECT_FALSE(isKnown());
  files.setGuard(folder.path("b.h"), stampOf(path).value(), guard, 4);
  EXPECT_FALSE(isKnown());
}

TEST_F(KnownFilesTest, ATextIsKeptFromTheSecondReadingOn) {
  EXPECT_FALSE(open());
  EXPECT_FALSE(isKnown());
  EXPECT_TRUE(open());
  ASSERT_TRUE(isKnown());
  EXPECT_FALSE(files.find(path, 0)->isPassedBy());
  EXPECT_EQ(**files.find(path, 0)->text, "12345");
  EXPECT_FALSE(open());
  EXPECT_TRUE(isKnown());
}

TEST_F(KnownFilesTest, AnEmptyTextIsAText) {
  path = folder.write("empty.h", "");
  open();
  open();
  ASSERT_TRUE(isKnown());
  EXPECT_EQ(**files.find(path, 0)->text, "");
}

TEST_F(KnownFilesTest, AGuardedFileHasATextAsWell) {
  openGuarded();
  open();
  EXPECT_TRUE(files.find(path, 0)->isPassedBy());
  guard.macro = nullptr;
  ASSERT_TRUE(isKnown());
  EXPECT_FALSE(files.find(path, 0)->isPassedBy());
  EXPECT_EQ(**files.find(path, 0)->text, "12345");
}

TEST_F(KnownFilesTest, ATextThatWasNotReadAsAWholeIsNotKnown) {
  open();
  const std::shared_ptr<FileText> copy = files.opened(path, stampOf(path).value(), 0);
  ASSERT_NE(copy, nullptr);
  EXPECT_FALSE(isKnown());  // Nothing has been read, or not at once.
  *copy = "1234";
  EXPECT_FALSE(isKnown());  // Less than there was when it was opened.
  *copy = "12345";
  EXPECT_TRUE(isKnown());
}

TEST_F(KnownFilesTest, LargeTextsAreNotKept) {
  path = folder.write("most.h", std::string(kReadSize - 1, 'x'));
  open();
  EXPECT_TRUE(open());
  path = folder.write("more.h", std::string(kReadSize, 'x'));
  open();
  EXPECT_FALSE(open());
}

TEST_F(KnownFilesTest, TextsAreKeptUpToAMegabyte) {
  int kept = 0;
  for (int number = 0; number < 150; ++number) {
    path = folder.write(std::to_string(number) + ".h", std::string(10'000, 'x'));
    open();
    kept += open() ? 1 : 0;
  }
  EXPECT_EQ(kept, 104);  // Of 1,048,576 bytes.
  // The text of a file that has been changed counts no longer.
  folder.write("0.h", "12");
  path = folder.path("0.h");
  EXPECT_FALSE(open());
  path = folder.path("149.h");
  EXPECT_TRUE(open());
}

TEST_F(KnownFilesTest, ATextLivesAsLongAsItsReader) {
  open();
  open();
  const std::shared_ptr<const FileText> reader = files.find(path, 0)->text;
  folder.write("a.h", "123456");
  open();
  open();
  EXPECT_EQ(**reader, "12345");
  EXPECT_EQ(**files.find(path, 0)->text, "123456");
}

// ---- Changes ----

TEST_F(KnownFilesTest, AChangedFileIsNotKnown) {
  openGuarded();
  open();
  folder.write("a.h", "123456");
  EXPECT_FALSE(isKnown());
  open();
  EXPECT_FALSE(isKnown());  // Neither guard nor text are those of the file any more.
}

TEST_F(KnownFilesTest, AFileIsLookedAtOnceInAMoment) {
  openGuarded();
  EXPECT_TRUE(isKnown(1));
  folder.write("a.h", "123456");
  EXPECT_TRUE(isKnown(1));
  EXPECT_FALSE(isKnown(0));
  EXPECT_FALSE(isKnown(2));
  // What has been found to be changed is not taken for known later in that moment.
  EXPECT_FALSE(isKnown(2));
}

TEST_F(KnownFilesTest, ToBeOpenedCountsAsLookedAt) {
  openGuarded();
  open(3);
  folder.write("a.h", "123456");
  EXPECT_TRUE(isKnown(3));
  EXPECT_FALSE(isKnown(4));
}

TEST_F(KnownFilesTest, AnotherFileOfTheSameSizeIsNotKnown) {
  folder.write("b.h", "12345");
  openGuarded();
  std::filesystem::rename(folder.path("b.h"), path);
  EXPECT_FALSE(isKnown());
}

TEST_F(KnownFilesTest, AFileThatIsGoneIsNotKnown) {
  openGuarded();
  std::filesystem::remove(path);
  EXPECT_FALSE(isKnown());
  std::filesystem::create_directory(path);
  EXPECT_FALSE(isKnown());
}

TEST_F(KnownFilesTest, ALinkThatLeadsElsewhereIsNotKnown) {
  folder.write("b.h", "12345");
  const std::string target = path;
  path = folder.path("link.h");
  std::filesystem::create_symlink(target, path);
  openGuarded();
  EXPECT_TRUE(isKnown());
  std::filesystem::remove(path);
  std::filesystem::create_symlink(folder.path("b.h"), path);
  EXPECT_FALSE(isKnown());
}

}  // namespace
}  // namespace qnpp
