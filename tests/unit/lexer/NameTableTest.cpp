// The table of names.
#include "lexer/NameTable.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
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

// The filter never denies a name that it has been told, also after it has grown.
TEST(NameTableTest, EveryMacroIsKnownToTheFilter) {
  NameTable names;
  for (int index = 0; index < 5000; ++index) {
    names.noteMacro(*names.intern("m" + std::to_string(index)));
    names.intern("no_macro" + std::to_string(index));
  }
  EXPECT_TRUE(names.mayHoldMacro("_P"));
  EXPECT_TRUE(names.mayBeMacro("_Pragma"));
  for (int index = 0; index < 5000; ++index) {
    const std::string name = "m" + std::to_string(index) + "   ";  // Four bytes are read.
    ASSERT_TRUE(names.mayHoldMacro(name.data()));
    ASSERT_TRUE(names.mayBeMacro(std::string_view(name).substr(0, name.size() - 3)));
  }
  int denied = 0;
  for (int index = 0; index < 5000; ++index) {
    denied += names.mayBeMacro("no_macro" + std::to_string(index)) ? 0 : 1;
  }
  EXPECT_GT(denied, 4000);
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
    NameTable names;
    EXPECT_EQ(names.hashOf({exact.get(), size}), names.hashOf(inside));
    names.intern(inside);
    EXPECT_NE(names.find({exact.get(), size}), nullptr);
  }
}

TEST(NameTableTest, HashesSpread) {
  const NameTable names;
  std::set<std::uint32_t> lowBits;
  for (int index = 0; index < 4096; ++index) {
    lowBits.insert(names.hashOf("CONFIG_OPTION_" + std::to_string(index)) & 0xFFFU);
  }
  // Random values would hit about 63 in a hundred of as many places.
  EXPECT_GT(lowBits.size(), 4096U / 2);
}

// ---- Names that somebody chose in order to make the table slow ----

// A hash that depends on the text alone, one word of eight bytes at a time; what is true of it is true of its like.
std::uint64_t fixedHashStep(std::uint64_t hash, std::uint64_t word) {
  hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
  return hash ^ (hash >> 32);
}

std::uint64_t fixedHash(std::string_view text) {
  std::uint64_t hash = text.size() * 0x9E3779B97F4A7C15U;
  for (std::size_t at = 0; at < text.size(); at += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, 8);
    hash = fixedHashStep(hash, word);
  }
  return hash;
}

// A letter, digit or underscore that is one still when `bits` are turned over; a NUL if there is none.
char letterThatDiffersBy(unsigned char bits) {
  constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_0123456789";
  for (const char letter : kLetters) {
    if (kLetters.find(static_cast<char>(static_cast<unsigned char>(letter) ^ bits)) != std::string_view::npos) {
      return letter;
    }
  }
  return '\0';
}

// Eight of them, for the bits of a word; empty if there are none.
std::string lettersThatDifferBy(std::uint64_t bits) {
  std::array<unsigned char, 8> bytes{};
  std::memcpy(bytes.data(), &bits, bytes.size());
  std::string letters;
  for (const unsigned char byte : bytes) {
    letters += letterThatDiffersBy(byte);
  }
  return letters.find('\0') == std::string::npos ? letters : std::string();
}

struct Pair {
  std::string one;
  std::string other;
};

// Two texts of sixteen letters that take `hash` to the same value: the second halves make good for what the first ones
// differ in. That takes some ten thousand tries.
Pair pairThatMeets(std::uint64_t& hash, std::mt19937_64& random) {
  const auto wordOf = [](const std::string& text) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), 8);
    return word;
  };
  const std::string half = "FirstHal";
  const std::uint64_t after = fixedHashStep(hash, wordOf(half));
  for (;;) {
    std::string other(8, '\0');
    for (char& letter : other) {
      letter = static_cast<char>('a' + random() % 26);
    }
    const std::uint64_t difference = after ^ fixedHashStep(hash, wordOf(other));
    const std::string letters = difference == 0 ? std::string() : lettersThatDifferBy(difference);
    if (!letters.empty()) {
      const std::uint64_t turned = wordOf(letters) ^ difference;
      std::string otherLetters(8, '\0');
      std::memcpy(otherLetters.data(), &turned, 8);
      hash = fixedHashStep(after, wordOf(letters));
      return {half + letters, other + otherLetters};
    }
  }
}

// Two to the power of `pairs` names.
std::vector<std::string> namesOfOneFixedHash(std::size_t pairs) {
  std::mt19937_64 random(1);
  std::uint64_t hash = pairs * 16 * 0x9E3779B97F4A7C15U;
  std::vector<std::string> names{""};
  for (; pairs > 0; --pairs) {
    const Pair pair = pairThatMeets(hash, random);
    std::vector<std::string> longer;
    for (const std::string& name : names) {
      longer.push_back(name + pair.one);
      longer.push_back(name + pair.other);
    }
    names = std::move(longer);
  }
  return names;
}

TEST(NameTableTest, NobodyCanChooseNamesThatMeet) {
  const std::vector<std::string> chosen = namesOfOneFixedHash(15);
  ASSERT_EQ(std::set<std::string>(chosen.begin(), chosen.end()).size(), 32768U);
  for (const std::string& name : chosen) {
    ASSERT_EQ(fixedHash(name), fixedHash(chosen.front()));
  }
  NameTable names;
  for (const std::string& name : chosen) {
    names.intern(name);
  }
  // Random values in slots of which half are taken give rows of up to sixty or so.
  EXPECT_LT(names.longestRow(), 300U);
}

// Nor do the forms that names usually have meet.
TEST(NameTableTest, NamesThatDifferLittleSpread) {
  for (const char* const head : {"", "a", "name", "CONFIG_", "CONFIG_OPTION_", "A_RATHER_LONG_NAME_FOR_A_MACRO_"}) {
    NameTable names;
    for (int index = 0; index < 60000; ++index) {
      names.intern(head + std::to_string(index));
    }
    EXPECT_LT(names.longestRow(), 300U) << head;
  }
}

TEST(NameTableTest, HashesFollowFromTheSecret) {
  const NameTable::Secret secret{0x0123456789ABCDEFU, 0xFEDCBA9876543210U, 1};
  const NameTable names(secret);
  const NameTable likewise(secret);
  const NameTable drawn;
  const NameTable drawnToo;
  int same = 0;
  int sameAsDrawn = 0;
  for (std::size_t size = 0; size < 100; ++size) {
    const std::string text(size, 'n');
    same += names.hashOf(text) == likewise.hashOf(text) ? 1 : 0;
    sameAsDrawn += drawn.hashOf(text) == drawnToo.hashOf(text) ? 1 : 0;
  }
  EXPECT_EQ(same, 100);
  EXPECT_LT(sameAsDrawn, 3);
}

}  // namespace
}  // namespace qnpp
