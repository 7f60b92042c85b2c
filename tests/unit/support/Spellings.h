// Stored tokens, made from texts.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "lexer/HideSet.h"
#include "lexer/SpellingPool.h"
#include "lexer/StoredTextLexer.h"
#include "lexer/TokenList.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {

/// What stored tokens need around them.
struct SpellingSetting : LexerSetting {
  StoredTextLexer lexer{context};
  SpellingPool pool{names, lexer};

  const Spelling* spell(std::string_view text) { return pool.spell(text); }
  Name& name(std::string_view text) { return *names.intern(text); }

  /// The set of the names in `text`, which stand next to each other: "AB" is the set of A and B.
  HideSet hideSetOf(std::string_view text) {
    HideSet set;
    for (const char letter : text) {
      set = set.with(name({&letter, 1}));
    }
    return set;
  }

  /// The names of a set made by `hideSetOf`, in the order of the alphabet.
  std::string lettersOf(const HideSet& set) {
    std::string letters;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
      const Name* const known = names.find({&letter, 1});
      if (known != nullptr && set.contains(*known)) {
        letters += letter;
      }
    }
    return letters;
  }

  TokenList listOf(std::initializer_list<std::string_view> texts, const HideSet& hideSet = {}) {
    TokenList list;
    for (const std::string_view text : texts) {
      list.append(spell(text), hideSet);
    }
    return list;
  }

  /// Texts of tokens with their hide sets: "a{A} +b{AB}". An empty set is left out.
  std::string dumpRange(const TokenRange& range, std::string_view separator = " ") {
    std::string dumped;
    for (std::size_t index = 0; index < range.tokens.size(); ++index) {
      HideSet set = range.hideSet;
      if (range.list != nullptr) {
        const std::size_t position = range.position + index;
        set = set.joined(range.list->hideSetAt(position, range.list->runAt(position)));
      }
      dumped.append(index == 0 ? "" : separator).append(visible(range.tokens[index]->text()));
      dumped += set.empty() ? "" : "{" + lettersOf(set) + "}";
    }
    return dumped;
  }
  std::string dumpList(const TokenList& list) { return dumpRange(list.all()); }
};

}  // namespace qnpp
