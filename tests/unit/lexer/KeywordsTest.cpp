// The words with a kind of their own, which two places have to know: the rules of the scanner and the table of names.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include "lexer/NameTable.h"
#include "tests/support/Files.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

// The words that stand as they are at the beginning of a rule.
std::vector<std::string> wordsOfRules() {
  const std::string rules = readFile(QNPP_SOURCE_DIR "/lexer/CppLexer.l");
  const std::regex rule("(^|\n)\"([A-Za-z_]\\w*)\"[ \t]");
  std::vector<std::string> words;
  for (std::sregex_iterator found(rules.begin(), rules.end(), rule), end; found != end; ++found) {
    words.push_back(found->str(2));
  }
  return words;
}

TEST(KeywordsTest, TheTableOfNamesKnowsTheWordsOfTheRules) {
  const NameTable names;
  const std::vector<std::string> words = wordsOfRules();
  EXPECT_EQ(words.size(), names.size());  // And no others.
  for (const std::string& word : words) {
    const Name* const name = names.find(word);
    ASSERT_NE(name, nullptr) << word;
    EXPECT_NE(name->spelling.kind, TK_IDENTIFIER) << word;
    EXPECT_EQ(dumpToken(name->spelling.kind, word), lexAll(word));
  }
}

TEST(KeywordsTest, EveryKindOfAWordHasOne) {
  std::vector<CppTokenKind> expected = {TK_DEFINED, TK_PRAGMA_OP};
  for (CppTokenKind kind = TK_IF; kind < TK_IDENTIFIER; ++kind) {
    expected.push_back(kind);
  }
  const NameTable names;
  std::vector<CppTokenKind> kinds;
  for (const std::string& word : wordsOfRules()) {
    const Name* const name = names.find(word);
    kinds.push_back(name == nullptr ? TK_END : CppTokenKind{name->spelling.kind});
  }
  std::sort(kinds.begin(), kinds.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(kinds, expected);
}

}  // namespace
}  // namespace qnpp
