// Spellings made while macros are expanded.
#pragma once

#include <compare>
#include <cstddef>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "lexer/NameTable.h"
#include "lexer/Spelling.h"
#include "lexer/StoredTextLexer.h"
#include "lexer/TextArena.h"

namespace qnpp {

/// Makes the spellings that macro expansion needs beside those of the definitions: tokens of arguments, string
/// literals, joined texts. They live until `release`, in the order of a stack; spellings of names and of single
/// characters are shared and live on.
class SpellingPool {
 public:
  /// A moment in the life of the pool; what was made later is given back by `release`.
  struct Mark {
    TextArena::Mark arena;
    std::size_t unknownNames = 0;
    auto operator<=>(const Mark&) const = default;
  };

  SpellingPool(NameTable& names, StoredTextLexer& lexer) : names_(names), lexer_(lexer) {}
  SpellingPool(const SpellingPool&) = delete;
  SpellingPool& operator=(const SpellingPool&) = delete;

  /// The spelling of a token that the lexer has handed out with `kind` and `text`; the text is copied.
  const Spelling* spell(CppTokenKind kind, std::string_view text);

  /// The spelling of a text that may be any number of tokens, such as a joined text; the text is copied.
  const Spelling* spell(std::string_view text);

  /// A copy of `token`, or of the pieces it lexes into, that comes from `origin`. Only for a run that is observed.
  const Spelling* copy(const Spelling& token, Origin origin);
  /// Storage for so many pointers to spellings, that lives as long as a spelling made now.
  std::span<const Spelling*> makeList(std::size_t size);

  /// Lexes `text` and appends a spelling for each token; comments write and report as they do anywhere.
  void lex(std::string_view text, std::vector<const Spelling*>& tokens);

  /// A copy of `text` that lives as long as a spelling made now.
  std::string_view store(std::string_view text) { return arena_.copy(text); }

  Mark mark() const { return {arena_.mark(), unknownNames_.size()}; }
  void release(const Mark& mark);

  /// A macro of this name is being defined: words of the pool that were no known name so far may be it. Only a
  /// definition that is carried out in the middle of an expansion meets any.
  void nameBecameKnown(Name& name) {
    if (!unknownNames_.empty()) {
      makeKnown(name);
    }
  }

 private:
  void makeKnown(Name& name);
  Spelling* make(CppTokenKind kind, std::string_view text);

  NameTable& names_;
  StoredTextLexer& lexer_;
  TextArena arena_;
  // Names with a null `name`, in the order of their making. The first `indexedNames_` of them can be found by their
  // text.
  std::vector<Spelling*> unknownNames_;
  std::unordered_map<std::string_view, std::vector<Spelling*>> namesByText_;
  std::size_t indexedNames_ = 0;
  std::vector<const Spelling*> pieces_;
};

}  // namespace qnpp
