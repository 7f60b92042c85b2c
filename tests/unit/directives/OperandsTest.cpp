// Operands of #include, #line and _Pragma, read from closed sources without a preprocessor around them.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "directives/IncludeSearch.h"
#include "directives/LineOperand.h"
#include "directives/PragmaOperator.h"
#include "tests/unit/support/Streams.h"

namespace qnpp {
namespace {

// An operand as it comes out of the expansion: `text`, lexed.
class Operand {
 public:
  explicit Operand(std::string_view text) {
    TokenList list;
    setting_.stream.storedTextLexer().lex(text, [this, &list](CppTokenKind kind, std::string_view token) {
      list.append(setting_.stream.spell(kind, token), HideSet());
    });
    closed_.emplace(setting_.stream, list);
  }

  TokenStream& stream() { return setting_.stream; }
  std::string rest() { return setting_.takeAll(); }

 private:
  StreamSetting setting_{"behind the operand\n"};
  TokenStream::Hold hold_{setting_.stream};
  std::optional<TokenStream::Closed> closed_;
};

// ---- #include ----

struct IncludeNameRow {
  std::string_view operand;
  const char* name;
  const char* messages = "";
};

TEST(IncludeNameTest, ANameStandsInQuotesOrAngles) {
  const IncludeNameRow rows[] = {
      {"\"a.h\"", "\"a.h\""},
      {"<a.h>", "<a.h>"},
      {"  \\\n \"a.h\" /**/ ", "\"a.h\""},
      {" < a  b.h > ", "< a  b.h >"},
      {"<a/**/b>", "<a b>"},
      {"<\"a\">", "<\"a\">"},
      {"<a<b>", "<a<b>"},
      {R"("a\\b")", R"("a\\b")"},
      {"\"a.h\" b c", "\"a.h\"", "left-over-tokens"},
      {"<a.h>>", "none", "file-name"},  // One token, which is no ">".
      {"<a.h>=", "none", "file-name"},
      {"<a.h> >", "<a.h>", "left-over-tokens"},
      {"<a.h", "none", "file-name"},
      {"<", "none", "file-name"},
      {"", "none", "file-name"},
      {"a.h", "none", "file-name"},
      {"'a.h'", "none", "file-name"},
      {"<<a.h>", "none", "file-name"},
      {"\"\"", "none", "empty-file-name"},
      {"<>", "none", "empty-file-name"},
      {"<> x", "none", "empty-file-name"},
  };
  for (const IncludeNameRow& row : rows) {
    Operand operand(row.operand);
    MessageList messages;
    const std::optional<IncludeName> read = readIncludeName(operand.stream(), messages);
    const std::string name = !read ? "none" : read->isQuoted ? '"' + read->name + '"' : '<' + read->name + '>';
    EXPECT_EQ(name, row.name) << row.operand;
    EXPECT_EQ(messages.identifiers, row.messages) << row.operand;
  }
}

// Empty files in memory, by path.
class MemoryFiles final : public FileOpener {
 public:
  explicit MemoryFiles(const std::vector<std::string>& paths) : paths_(paths.begin(), paths.end()) {}

  bool open(const std::string& path) override {
    tried += (tried.empty() ? "" : " ") + path;
    return paths_.contains(path);
  }
  std::uint64_t moment() const override { return now; }

  std::string tried;
  std::uint64_t now = 0;

 private:
  std::set<std::string> paths_;
};

struct IncludeSearchRow {
  IncludeName name;
  const char* includer;
  std::vector<std::string> directories;
  std::vector<std::string> files;
  const char* tried;
  bool isFound;
};

constexpr bool kQuoted = true;
constexpr bool kAngles = false;

TEST(IncludeSearchTest, TheFirstFileThatOpensIsTaken) {
  const IncludeSearchRow rows[] = {
      {{"h", kQuoted}, "main.c", {}, {"h"}, "h", true},
      {{"h", kQuoted}, "main.c", {"one", "two"}, {}, "h one/h two/h", false},
      {{"h", kQuoted}, "main.c", {"one", "two"}, {"one/h", "two/h"}, "h one/h", true},
      {{"h", kQuoted}, "main.c", {"two", "one"}, {"one/h"}, "h two/h one/h", true},
      {{"h", kQuoted}, "sub/main.c", {"one"}, {"h"}, "sub/h one/h", false},
      {{"h", kQuoted}, "a\\b\\main.c", {}, {"a\\b/h"}, "a\\b/h", true},
      {{"h", kQuoted}, "/main.c", {}, {}, "//h", false},
      {{"h", kQuoted}, "stdin", {}, {"h"}, "h", true},
      {{"h", kQuoted}, "", {}, {"h"}, "h", true},
      {{"../h", kQuoted}, "sub/main.c", {}, {}, "sub/../h", false},
      {{"h", kAngles}, "main.c", {}, {"h"}, "", false},
      {{"h", kAngles}, "sub/main.c", {"one"}, {"sub/h"}, "one/h", false},
      {{"h", kAngles}, "main.c", {"one/", "."}, {"./h"}, "one//h ./h", true},
      {{"/h", kQuoted}, "sub/main.c", {"one"}, {"/h"}, "/h", true},
      {{"/h", kAngles}, "sub/main.c", {"one"}, {}, "/h one//h", false},
      {{"C:h", kQuoted}, "sub/main.c", {"one"}, {"one/C:h"}, "C:h one/C:h", true},
      {{"/", kQuoted}, "sub/main.c", {}, {}, "sub//", false},
  };
  for (const IncludeSearchRow& row : rows) {
    MemoryFiles files(row.files);
    IncludeSearch search(files);
    search.setDirectories(row.directories);
    const bool isFound = search.find(row.name, row.includer).has_value();
    EXPECT_EQ(files.tried, row.tried) << row.name.name << " from " << row.includer;
    EXPECT_EQ(isFound, row.isFound) << row.name.name << " from " << row.includer;
  }
}

TEST(IncludeSearchTest, AnAbsenceIsRememberedInItsMoment) {
  MemoryFiles files({"three/h", "two/other", "four/h"});
  IncludeSearch search(files);
  const std::vector<std::string> directories{"one", "two", "three", "four"};
  search.setDirectories(directories);
  const auto triedFor = [&](const IncludeName& name, std::uint64_t moment) {
    files.tried.clear();
    files.now = moment;
    search.find(name, "main.c");
    return files.tried;
  };
  EXPECT_EQ(triedFor({"h", kAngles}, 1), "one/h two/h three/h");
  EXPECT_EQ(triedFor({"h", kAngles}, 1), "three/h");
  EXPECT_EQ(triedFor({"h", kQuoted}, 1), "h three/h");
  EXPECT_EQ(triedFor({"other", kAngles}, 1), "one/other two/other");
  EXPECT_EQ(triedFor({"missing", kAngles}, 1), "one/missing two/missing three/missing four/missing");
  EXPECT_EQ(triedFor({"missing", kAngles}, 1), "one/missing two/missing three/missing four/missing");
  EXPECT_EQ(triedFor({"h", kAngles}, 2), "one/h two/h three/h");
  EXPECT_EQ(triedFor({"h", kAngles}, 2), "three/h");
  // No moment is known: then none is the same.
  EXPECT_EQ(triedFor({"h", kAngles}, 0), "one/h two/h three/h");
  EXPECT_EQ(triedFor({"h", kAngles}, 0), "one/h two/h three/h");
}

// ---- #line ----

struct LineRow {
  std::string_view operand;
  const char* read;
  const char* rest = "";
};

TEST(LineOperandTest, ANumberAndPerhapsAName) {
  const LineRow rows[] = {
      {"10", "10"},
      {" /**/ 10 \\\n ", "10"},
      {"10 \"a b.c\"", "10 \"a b.c\""},
      {"10\"\"", "10 \"\""},
      {R"(10 "a\\b\"c")", R"(10 "a\\b\"c")"},
      {"10 \"a\" b", "10 \"a\"", " |b"},
      {"2147483647", "2147483647"},
      {"2147483648", "-2147483648"},
      {"4294967295", "-1"},
      {"4294967301", "5"},
      {"99999999999999999999", "1661992959"},  // Of 0x56BC75E2D630FFFFF.
      {"0", "error line-number"},
      {"", "error line-format"},
      {"00", "error line-format"},
      {"0L", "error line-format"},
      {"012", "error line-format"},
      {"10L", "error line-format"},
      {"10u", "error line-format"},
      {"0x1", "error line-format"},
      {"a", "error line-format"},
      {"-1", "error line-format", "1"},
      {"\"a\" 10", "error line-format", " |10"},
      {"'a'", "error line-format"},
      // The number is in force even so.
      {"10 a", "10 error line-format"},
      {"10 20 \"a\"", "10 error line-format", " |\"a\""},
      {"10.5", "10 error line-format", "5"},
  };
  for (const LineRow& row : rows) {
    Operand operand(row.operand);
    const LineOperand read = readLineOperand(operand.stream());
    std::string shown = read.line ? std::to_string(*read.line) : "";
    shown += read.fileName ? " \"" + *read.fileName + '"' : "";
    shown += read.error ? (shown.empty() ? "error " : " error ") + std::string(entryOf(*read.error).identifier) : "";
    EXPECT_EQ(shown, row.read) << row.operand;
    EXPECT_EQ(operand.rest(), row.rest) << row.operand;
  }
}

// ---- _Pragma ----

TEST(PragmaOperatorTest, AStringInParentheses) {
  const LineRow rows[] = {
      {"(\"once\")", "once"},
      {" \n( /**/ \"once\" \n ) x", "once", " |x"},
      {"(\"\")", ""},
      {R"(("a \"b\\\" c"))", R"(a "b\" c)"},
      // What does not fit is taken and lost.
      {"x (\"a\")", "none", " |(|\"a\"|)"},
      {"(x \"a\")", "none", " |\"a\"|)"},
      {"(\"a\" \"b\")", "none", ")"},
      {"(", "none"},
      {"(\"a\"", "none"},
      {"", "none"},
  };
  for (const LineRow& row : rows) {
    Operand operand(row.operand);
    EXPECT_EQ(readPragmaOperator(operand.stream()).value_or("none"), row.read) << row.operand;
    EXPECT_EQ(operand.rest(), row.rest) << row.operand;
  }
}

struct LiteralRow {
  const char* literal;
  const char* text;
};

TEST(PragmaOperatorTest, ABackslashStandsForTheCharacterBehindIt) {
  const LiteralRow rows[] = {
      {R"("")", ""},           {R"("a")", "a"},       {R"("\"")", "\""},   {R"("\\")", "\\"},
      {R"("\\\"")", "\\\""},   {R"("\\\\")", "\\\\"}, {R"("\\n")", "\\n"}, {R"("a\"b\"c")", "a\"b\"c"},
      {R"("\\a\"")", "\\a\""}, {R"("'x'")", "'x'"},   {R"(" a ")", " a "},
  };
  for (const LiteralRow& row : rows) {
    EXPECT_EQ(destringize(row.literal), row.text) << row.literal;
  }
}

}  // namespace
}  // namespace qnpp
