// Parts of file names.
#include "directives/FileNames.h"

#include <gtest/gtest.h>

namespace qnpp {
namespace {

TEST(FileNamesTest, TheDirectoryIsWhatStandsBeforeTheLastSeparator) {
  EXPECT_EQ(directoryOf("a.h"), ".");
  EXPECT_EQ(directoryOf(""), ".");
  EXPECT_EQ(directoryOf("sub/a.h"), "sub");
  EXPECT_EQ(directoryOf("sub\\a.h"), "sub");
  EXPECT_EQ(directoryOf("x/sub\\a.h"), "x/sub");
  EXPECT_EQ(directoryOf("x\\sub/a.h"), "x\\sub");
  EXPECT_EQ(directoryOf("/a"), "/");
  EXPECT_EQ(directoryOf("\\a"), "\\");
  EXPECT_EQ(directoryOf("/"), "/");
  EXPECT_EQ(directoryOf("a/"), ".");
  EXPECT_EQ(directoryOf("a/b/"), "a");
  EXPECT_EQ(directoryOf("a//"), "a");
}

TEST(FileNamesTest, AnAbsoluteNameBeginsWithASlashOrADrive) {
  EXPECT_TRUE(isAbsoluteName("/a"));
  EXPECT_TRUE(isAbsoluteName("c:a"));
  EXPECT_TRUE(isAbsoluteName("Z:"));
  EXPECT_FALSE(isAbsoluteName("/"));
  EXPECT_FALSE(isAbsoluteName(""));
  EXPECT_FALSE(isAbsoluteName("\\a"));
  EXPECT_FALSE(isAbsoluteName("1:a"));
  EXPECT_FALSE(isAbsoluteName("a/b"));
}

}  // namespace
}  // namespace qnpp
