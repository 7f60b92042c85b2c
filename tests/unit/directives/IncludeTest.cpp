// #include: which file is read.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/Preprocess.h"

namespace qnpp {
namespace {

struct IncludeTest : testing::Test {
  // The output of a file in the folder, named as told, with include directories in the folder; both relative to it.
  Preprocessed run(const std::string& source, const std::vector<std::string>& directories = {},
                   const std::string& sourceName = "") {
    const WorkingDirectory here(folder);
    return preprocess("", {.fileName = source, .sourceName = sourceName, .includeDirectories = directories});
  }

  // The name of the file that `#include operand` in main.c finds; none if there is no such file.
  std::string found(const std::string& operand, const std::vector<std::string>& directories = {},
                    const std::string& main = "main.c") {
    folder.write(main, "#include " + operand + "\n");
    const Preprocessed result = run(main, directories);
    const std::string first = "#line 1 \"" + main + "\"\n#line 1 \"";
    if (result.output.compare(0, first.size(), first) != 0) {
      return "none: " + result.messages;
    }
    EXPECT_EQ(result.messages, "") << operand;
    return result.output.substr(first.size(), result.output.find('"', first.size()) - first.size());
  }

  TemporaryFolder folder;
};

TEST_F(IncludeTest, TheQuotedFormLooksNextToTheIncluderFirst) {
  folder.write("h.h", "");
  folder.write("sub/h.h", "");
  folder.write("dir/h.h", "");
  folder.write("dir/only.h", "");
  EXPECT_EQ(found("\"h.h\""), "h.h");
  EXPECT_EQ(found("\"h.h\"", {"dir"}), "h.h");
  EXPECT_EQ(found("\"h.h\"", {"dir"}, "sub/main.c"), "sub/h.h");
  EXPECT_EQ(found("\"only.h\"", {"dir"}, "sub/main.c"), "dir/only.h");
  EXPECT_EQ(found("\"sub/h.h\""), "sub/h.h");
  EXPECT_EQ(found("\"../h.h\"", {}, "sub/main.c"), "sub/../h.h");
  EXPECT_EQ(found("\"only.h\""), "none: main.c:1: Cannot open file: only.h.\n");
}

// The working directory is searched only when the includer has no directory of its own.
TEST_F(IncludeTest, TheWorkingDirectoryIsNoPlaceOfItsOwn) {
  folder.write("h.h", "");
  EXPECT_EQ(found("\"h.h\"", {}, "sub/main.c"), "none: sub/main.c:1: Cannot open file: h.h.\n");
}

TEST_F(IncludeTest, TheAngleFormLooksInTheDirectoriesOnly) {
  folder.write("h.h", "");
  folder.write("one/h.h", "");
  folder.write("two/h.h", "");
  folder.write("two/ spaced name.h ", "");
  EXPECT_EQ(found("<h.h>"), "none: main.c:1: Cannot open file: h.h.\n");
  EXPECT_EQ(found("<h.h>", {"one", "two"}), "one/h.h");
  EXPECT_EQ(found("<h.h>", {"two", "one"}), "two/h.h");
  EXPECT_EQ(found("<h.h>", {"none", "two/", "one"}), "two//h.h");
  EXPECT_EQ(found("< spaced name.h >", {"two"}), "two/ spaced name.h ");
  EXPECT_EQ(found("<h.h>", {"."}), "./h.h");
}

TEST_F(IncludeTest, AnAbsoluteNameIsTriedAsItStands) {
  const std::string name = folder.write("sub/h.h", "");
  EXPECT_EQ(found("\"" + name + "\""), name);
  EXPECT_EQ(found("<" + name + ">"), name);
  EXPECT_EQ(found("<" + name + ">", {"one"}), name);
  // Even one that is not there is looked for in the directories, but not next to the includer.
  folder.write("dir/C:x.h", "");
  folder.write("C:y.h", "");
  EXPECT_EQ(found("\"C:x.h\"", {"dir"}), "dir/C:x.h");
  EXPECT_EQ(found("\"C:y.h\"", {"dir"}), "C:y.h");
  EXPECT_EQ(found("\"C:y.h\"", {}, "sub/main.c"), "C:y.h");
}

TEST_F(IncludeTest, ADirectoryIsNoFile) {
  folder.write("name/x", "");
  folder.write("dir/name", "");
  EXPECT_EQ(found("\"name\"", {"dir"}), "dir/name");
  EXPECT_EQ(found("\"name\""), "none: main.c:1: Cannot open file: name.\n");
}

TEST_F(IncludeTest, BackslashesSeparateTheDirectoryOfTheIncluder) {
  folder.write("sub\\main.c", "#include \"h.h\"\n");
  folder.write("sub/h.h", "x\n");
  const Preprocessed result = run("sub\\main.c");
  EXPECT_EQ(result.output, "#line 1 \"sub\\\\main.c\"\n#line 1 \"sub/h.h\"\nx\n#line 2 \"sub\\\\main.c\"\n");
}

// The directory is that of the name in force, which -s and #line give too.
TEST_F(IncludeTest, TheNameInForceCounts) {
  folder.write("main.c", "#include \"h.h\"\n#line 1 \"b/x.c\"\n#include \"h.h\"\n");
  folder.write("a/h.h", "in a\n");
  folder.write("b/h.h", "in b\n");
  const Preprocessed result = run("main.c", {}, "a/main.c");
  EXPECT_EQ(result.messages, "");
  EXPECT_EQ(result.output,
            "#line 1 \"a/main.c\"\n#line 1 \"a/h.h\"\nin a\n#line 2 \"a/main.c\"\n#line 1 \"b/x.c\"\n"
            "#line 1 \"b/h.h\"\nin b\n#line 3 \"b/x.c\"\n");
}

TEST_F(IncludeTest, TheOperandIsExpanded) {
  folder.write("h.h", "");
  folder.write("dir/h.h", "");
  const auto included = [this](const std::string& definitions) {
    folder.write("main.c", definitions + "#include HEADER\n");
    const Preprocessed result = run("main.c", {"dir"});
    EXPECT_EQ(result.messages, "") << definitions;
    return result.output;
  };
  const std::string quoted = "#line 1 \"main.c\"\n#line 1 \"h.h\"\n#line 3 \"main.c\"\n";
  EXPECT_EQ(included("#define HEADER \"h.h\"\n"), quoted);
  EXPECT_EQ(included("#define HEADER <h.h>\n"), "#line 1 \"main.c\"\n#line 1 \"dir/h.h\"\n#line 3 \"main.c\"\n");
}

struct IncludeErrorRow {
  const char* operand;
  const char* message;
};

TEST_F(IncludeTest, TheOperandHasToBeAName) {
  constexpr const char* kNoName = "Filename expected after #include directive";
  const IncludeErrorRow rows[] = {
      {"", kNoName},
      {"h.h", kNoName},
      {"1", kNoName},
      {"<h.h", kNoName},
      {"<", kNoName},
      {"<h.h>>", kNoName},
      {"<h.h>=", kNoName},
      {"\"h.h", kNoName},
      {"'h.h'", kNoName},
      {"\"\"", "An expected file name is missing"},
      {"<>", "An expected file name is missing"},
      {"\"\" x", "An expected file name is missing"},
      {"\"none.h\"", "Cannot open file: none.h"},
      {"<none.h>", "Cannot open file: none.h"},
      {"<a b  c.h>", "Cannot open file: a b  c.h"},
      {"<a/**/b>", "Cannot open file: a b"},
      {"\"a\\\\b\"", "Cannot open file: a\\\\b"},
  };
  for (const IncludeErrorRow& row : rows) {
    folder.write("main.c", std::string("x\n#include ") + row.operand + "\ny\n");
    const Preprocessed result = run("main.c", {"dir"});
    EXPECT_EQ(result.messages, std::string("main.c:2: ") + row.message + ".\n") << row.operand;
    EXPECT_EQ(result.output, "#line 1 \"main.c\"\nx\n#line 3 \"main.c\"\ny\n") << row.operand;
    EXPECT_TRUE(result.hasError) << row.operand;
  }
}

TEST_F(IncludeTest, LeftOverTokensAreReportedAndTheFileIsRead) {
  folder.write("h.h", "in h\n");
  folder.write("main.c", "#include \"h.h\" extra\n#include \"none.h\" extra\n");
  const Preprocessed result = run("main.c");
  EXPECT_EQ(result.output, "#line 1 \"main.c\"\n#line 1 \"h.h\"\nin h\n#line 2 \"main.c\"\n");
  const std::string message = "Invalid characters appear before a new-line in the preprocessor directive.\n";
  EXPECT_EQ(result.messages, "main.c:1: " + message + "main.c:2: " + message + "main.c:2: Cannot open file: none.h.\n");
}

TEST_F(IncludeTest, AFileEndsInALineEnd) {
  folder.write("main.c", "#include \"a\"\n#include \"b\"\n#include \"c\"");
  folder.write("a", "one");
  folder.write("b", "");
  folder.write("c", "#define X");
  EXPECT_EQ(run("main.c").output,
            "#line 1 \"main.c\"\n#line 1 \"a\"\none\n#line 2 \"main.c\"\n#line 1 \"b\"\n#line 3 \"main.c\"\n"
            "#line 1 \"c\"\n#line 3 \"main.c\"\n");
}

TEST_F(IncludeTest, AnInvocationMayEndInTheIncluder) {
  folder.write("main.c", "#define F(x) <x>\n#include \"h.h\"\n(1) z\n");
  folder.write("h.h", "F");
  const Preprocessed result = run("main.c");
  EXPECT_EQ(result.output, "#line 1 \"main.c\"\n#line 1 \"h.h\"\n#line 3 \"main.c\"\n<1> z\n");
  EXPECT_EQ(result.messages, "");
}

TEST_F(IncludeTest, FilesMayNestDeeply) {
  constexpr int kDepth = 200;
  for (int level = 0; level < kDepth; ++level) {
    folder.write("h" + std::to_string(level),
                 "#include \"h" + std::to_string(level + 1) + "\"\n" + std::to_string(level) + "\n");
  }
  folder.write("h" + std::to_string(kDepth), "deepest\n");
  std::string expected;
  for (int level = 0; level <= kDepth; ++level) {
    expected += "#line 1 \"h" + std::to_string(level) + "\"\n";
  }
  expected += "deepest\n";
  for (int level = kDepth - 1; level >= 0; --level) {
    expected += "#line 2 \"h" + std::to_string(level) + "\"\n" + std::to_string(level) + "\n";
  }
  const Preprocessed result = run("h0");
  EXPECT_EQ(result.output, expected);
  EXPECT_EQ(result.messages, "");
}

}  // namespace
}  // namespace qnpp
