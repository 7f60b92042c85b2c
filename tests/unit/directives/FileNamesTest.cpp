// Names of files.
#include "directives/FileNames.h"

#include <gtest/gtest.h>

namespace qnpp {
namespace {

struct DirectoryRow {
  const char* path;
  const char* directory;
};

TEST(FileNamesTest, TheDirectoryStandsBeforeTheLastSeparator) {
  const DirectoryRow rows[] = {
      {"a.c", "."},
      {"", "."},
      {".", "."},
      {"..", "."},
      {"sub/a.c", "sub"},
      {"sub\\a.c", "sub"},
      {"a/b/c", "a/b"},
      {"a\\b/c", "a\\b"},
      {"a/b\\c", "a/b"},
      {"/a", "/"},
      {"\\a", "\\"},
      {"/a/b", "/a"},
      {"//a", "/"},
      {"///a", "//"},
      {"./a", "."},
      {"../a", ".."},
      {"C:a", "."},
      {"C:\\a", "C:"},
      {"C:/a/b", "C:/a"},
      // One separator at the end is dropped first.
      {"a/", "."},
      {"a\\", "."},
      {"a/b/", "a"},
      {"a/b\\", "a"},
      {"a//", "a"},
      {"a/b//", "a/b"},
      {"/", "/"},
      {"\\", "\\"},
      {"//", "/"},
      {"/a/", "/"},
      {"\\/", "\\"},
  };
  for (const DirectoryRow& row : rows) {
    EXPECT_EQ(directoryOf(row.path), row.directory) << row.path;
  }
}

struct AbsoluteRow {
  const char* name;
  bool isAbsolute;
};

TEST(FileNamesTest, AbsoluteNamesBeginWithASlashOrADrive) {
  const AbsoluteRow rows[] = {
      {"/a", true},    {"//", true},     {"/.", true},   {"C:", true},    {"c:a", true},  {"z:/a", true},
      {"Z:\\a", true}, {"", false},      {"/", false},   {"a", false},    {"a/b", false}, {"./a", false},
      {"\\a", false},  {"\\\\a", false}, {"1:a", false}, {"_:a", false},  {":a", false},  {"@:", false},
      {"[:", false},   {"`:", false},    {"{:", false},  {"ab:c", false}, {"A:", true},   {"a:", true},
  };
  for (const AbsoluteRow& row : rows) {
    EXPECT_EQ(isAbsoluteName(row.name), row.isAbsolute) << row.name;
  }
}

}  // namespace
}  // namespace qnpp
