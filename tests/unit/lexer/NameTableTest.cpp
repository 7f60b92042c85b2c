// The table of names.
#include "lexer/NameTable.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

TEST(NameTableTest, FindsOnlyWhatHasBeenEntered) {
  NameTable names;
  EXPECT_EQ(names.find("a"), nullptr);
  Name* const entry = names.intern("a");
  EXPECT_EQ(names.find("a"), entry);
  EXPECT_EQ(names.find("A"), nullptr);
  EXPECT_EQ(names.find("aa"), nullptr);
  EXPECT_EQ(names.find(""), nullptr);
  EXPECT_EQ(names.find("a\0"sv), nullptr);
}

TEST(NameTableTest, EntersANameOnce) {
  NameTable names;
  const std::size_t before = names.size();
  Name* const entry = names.intern("name");
  EXPECT_EQ(names.intern("name"), entry);
  EXPECT_EQ(names.size(), before + 1);
}

TEST(NameTableTest, NewEntriesHaveNoMacro) {
  NameTable names;
  const Name& entry = *names.intern("name");
  EXPECT_EQ(entry.macro, nullptr);
  EXPECT_EQ(entry.text(), "name");
  EXPECT_EQ(entry.spelling.kind, TK_IDENTIFIER);
  EXPECT_EQ(entry.spelling.name, &entry);
  EXPECT_TRUE(entry.alone.empty());
}

struct Keyword {
  const char* text;
  CppTokenKind kind;
};

TEST(NameTableTest, WordsWithAKindOfTheirOwnAreThereFromTheStart) {
  const Keyword keywords[] = {
      {"if", TK_IF},       {"ifdef", TK_IFDEF},     {"ifndef", TK_IFNDEF},     {"else", TK_ELSE},
      {"elif", TK_ELIF},   {"endif", TK_ENDIF},     {"include", TK_INCLUDE},   {"define", TK_DEFINE},
      {"undef", TK_UNDEF}, {"line", TK_LINE},       {"error", TK_ERROR},       {"pragma", TK_PRAGMA},
      {"ident", TK_IDENT}, {"defined", TK_DEFINED}, {"_Pragma", TK_PRAGMA_OP},
  };
  NameTable names;
  EXPECT_EQ(names.size(), std::size(keywords));
  for (const Keyword& keyword : keywords) {
    const Name* const entry = names.find(keyword.text);
    ASSERT_NE(entry, nullptr) << keyword.text;
    EXPECT_EQ(entry->spelling.kind, keyword.kind) << keyword.text;
    EXPECT_EQ(entry->spelling.name, entry) << keyword.text;
  }
}

TEST(NameTableTest, CopiesTheBytes) {
  NameTable names;
  std::string text = "changing";
  const Name& entry = *names.intern(text);
  text.assign(text.size(), '-');
  EXPECT_EQ(entry.text(), "changing");
  EXPECT_EQ(names.find("changing"), &entry);
}

TEST(NameTableTest, AnyBytesAreAName) {
  NameTable names;
  const std::string_view texts[] = {"", "\0"sv, "\0\0"sv, "a b", "a=b", "\xFF\xFE", "\n"};
  std::set<const Name*> entries;
  for (const std::string_view text : texts) {
    entries.insert(names.intern(text));
  }
  EXPECT_EQ(entries.size(), std::size(texts));
  for (const std::string_view text : texts) {
    ASSERT_NE(names.find(text), nullptr);
    EXPECT_EQ(names.find(text)->text(), text);
  }
}

TEST(NameTableTest, EntriesStayWhereTheyAreWhenTheTableGrows) {
  constexpr std::size_t kCount = 100000;
  NameTable names;
  std::vector<Name*> entries;
  for (std::size_t index = 0; index < kCount; ++index) {
    entries.push_back(names.intern("name" + std::to_string(index)));
    EXPECT_EQ(entries.back()->id, names.size() - 1);
  }
  for (std::size_t index = 0; index < kCount; ++index) {
    const std::string text = "name" + std::to_string(index);
    ASSERT_EQ(names.find(text), entries[index]);
    ASSERT_EQ(entries[index]->text(), text);
    ASSERT_EQ(names.find(text + "x"), nullptr);
  }
}

// Names that differ in one byte, at every place and for every length: hash and comparison read them in overlapping
// words.
TEST(NameTableTest, EveryByteOfANameCounts) {
  for (std::size_t size = 1; size <= 40; ++size) {
    NameTable names;
    const std::string base(size, 'n');
    Name* const entry = names.intern(base);
    std::set<const Name*> entries{entry};
    for (std::size_t at = 0; at < size; ++at) {
      std::string other = base;
      other[at] = 'm';
      EXPECT_EQ(names.find(other), nullptr) << size << ", " << at;
      entries.insert(names.intern(other));
    }
    EXPECT_EQ(entries.size(), size + 1);
    EXPECT_EQ(names.find(base), entry);
  }
}

// Nothing outside of the text is looked at: the text fills its storage, which a sanitizer watches, and what stands
// around the same text elsewhere makes no difference.
TEST(NameTableTest, HashAndComparisonStayInsideTheText) {
  for (std::size_t size = 0; size <= 40; ++size) {
    const auto exact = std::make_unique<char[]>(size);
    std::memset(exact.get(), 'q', size);
    const std::string surrounded = "XYZ" + std::string(size, 'q') + "UVW";
    const std::string_view inside = std::string_view(surrounded).substr(3, size);
    EXPECT_EQ(NameTable::hashOf({exact.get(), size}), NameTable::hashOf(inside));
    NameTable names;
    names.intern(inside);
    EXPECT_NE(names.find({exact.get(), size}), nullptr);
  }
}

TEST(NameTableTest, HashesSpread) {
  std::set<std::uint32_t> lowBits;
  for (int index = 0; index < 4096; ++index) {
    lowBits.insert(NameTable::hashOf("CONFIG_OPTION_" + std::to_string(index)) & 0xFFFU);
  }
  // Random values would hit about 63 in a hundred of as many places.
  EXPECT_GT(lowBits.size(), 4096U / 2);
}

}  // namespace
}  // namespace qnpp
