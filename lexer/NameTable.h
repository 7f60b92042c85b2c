// The names that macro definitions mention.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "lexer/HideSet.h"
#include "lexer/LargeBytes.h"
#include "lexer/NameFilter.h"
#include "lexer/Spelling.h"
#include "lexer/TextArena.h"

namespace qnpp {

struct CppMacro;

/// What an object-like macro comes to in a text line of a file after all rescanning, as far as that is known: the lexer
/// writes it in the place of the name. The bytes are the macro's. Whether it is known is found out in
/// macros/FinalText.h.
struct FinalText {
  const char* data = nullptr;
  std::size_t size = 0;
  std::uint64_t generation = 0;  ///< The one in which the text holds, see NameTable; 0 for none.

  /// In place of a generation: the text holds as long as the definition.
  static constexpr std::uint64_t kAnyGeneration = std::numeric_limits<std::uint64_t>::max();
  bool isLasting() const { return generation == kAnyGeneration; }
  bool holdsIn(std::uint64_t now) const { return generation >= now; }
  std::string_view text() const { return {data, size}; }
};

/// A name that a macro definition has mentioned, as a macro's name or in a replacement list but for its parameters, or
/// one of the words with a token kind of their own. Entries are never removed, so a pointer to one stays valid.
struct Name {
  Spelling spelling;          ///< Its text; `spelling.name` points back here.
  CppMacro* macro = nullptr;  ///< The current definition, owned by the CppMacroTable; null while there is none.
  mutable HideSet::Link* link = nullptr;  ///< What it has come with into a set that is kept as a line, see HideSet.cpp.
  std::uint32_t id = 0;                   ///< Position in the order of appearance, from 0.
  std::uint32_t priority = 0;     ///< A random number: the shape of hide sets follows from it (see HideSet.cpp).
  FinalText finalText;            ///< Of the macro.
  bool wantsParenthesis = false;  ///< The macro is function-like: text copied as it stands may hold the name alone.
  bool isInFilter = false;        ///< There is a definition, or has been.
  bool isRefreshed = false;       ///< The text of the macro changes at each use, see PredefinedMacros.
  bool isBeingReplaced = false;   ///< By a DirectExpansion, which is at its list: the name is hidden there.

  std::string_view text() const { return spelling.text(); }
};

/// Finds names by their text. A word of the input that is no macro is by far the commonest question, so `find` costs
/// one hash of a view and, for most words, one look at an empty slot; it allocates nothing. Words that only the input
/// mentions are not entered: the table grows with the macro definitions, not with the text.
///
/// Whoever writes the source chooses the names, so the hash depends on a secret that is drawn for each table: names
/// that fall into one slot, of which a fixed function would have any number, cannot be found beforehand. Nothing that a
/// run writes depends on it.
class NameTable {
 public:
  /// Words of random bits.
  struct Secret {
    std::uint64_t first;
    std::uint64_t second;
    std::uint64_t ofPriorities;
  };
  static Secret drawSecret();

  explicit NameTable(const Secret& secret = drawSecret());
  NameTable(const NameTable&) = delete;
  NameTable& operator=(const NameTable&) = delete;

  /// The entry for `text`, or null.
  Name* find(std::string_view text) const {
    const Slot& slot = slotOf(text, hashOf(text));
    return slot.number == 0 ? nullptr : &nameOf(slot.number - 1);
  }

  /// The entry for `text`, made if there is none; the bytes are copied.
  Name* intern(std::string_view text) { return intern(text, hashOf(text)); }
  Name* intern(std::string_view text, std::uint32_t hash);

  std::size_t size() const { return size_; }

  /// To be called when `name` gets a definition.
  void noteMacro(Name& name);
  /// Where these are false, the word holds no name with a macro definition and not `_Pragma`; they are so for most
  /// words without one. The first looks at the first two bytes and says yes for numbers: a name may follow one
  /// directly. The second is for names; the three bytes behind `word` may be read.
  bool mayHoldMacro(const char* word) const { return macroNames_.mayBegin(word); }
  bool mayBeMacro(std::string_view word) const { return macroNames_.mayHold(word); }
  /// No name of more bytes is that of a macro, or `_Pragma`.
  std::size_t longestMacroName() const { return longestMacroName_; }

  /// Counts the changes of macro definitions, from 1. Whatever has been found out about expansions holds in one
  /// generation: any definition may change what any macro comes to.
  std::uint64_t generation() const { return generation_; }
  void beginGeneration() { ++generation_; }

  /// Hash of a text; reads it in words of four or eight bytes and never outside of it.
  std::uint32_t hashOf(std::string_view text) const;

  /// The most slots that finding a word may have to look at: the length of the longest row of occupied ones.
  std::size_t longestRow() const;

 private:
  // Like ==, without a call: names are short.
  static bool isEqual(std::string_view a, std::string_view b);

  struct Slot {
    std::uint32_t hash;
    std::uint32_t number;  // The id of the name and 1; 0 for none.
  };

  Name& nameOf(std::size_t id) const { return names_[id / kNamesInRow][id % kNamesInRow]; }

  // The slot of the text, or the empty one where it would have to be.
  Slot& slotOf(std::string_view text, std::uint32_t hash) const {
    for (std::size_t at = hash & mask_;; at = (at + 1) & mask_) {
      Slot& slot = slots_[at];
      if (slot.number == 0 || (slot.hash == hash && isEqual(nameOf(slot.number - 1).text(), text))) {
        return slot;
      }
    }
  }

  Name& addName(std::string_view text);
  std::uint32_t drawPriority();
  LargeBytes makeSlots(std::size_t count);
  void grow();

  static constexpr std::size_t kNamesInRow = 64;

  Secret secret_;
  LargeBytes slotBytes_;
  Slot* slots_ = nullptr;
  std::size_t mask_ = 0;
  std::vector<Name*> names_;  // In rows.
  std::size_t size_ = 0;
  TextArena arena_;  // Of names and their texts.
  NameFilter macroNames_;
  std::size_t longestMacroName_ = 0;
  std::uint64_t generation_ = 1;
};

}  // namespace qnpp

#include "lexer/NameTable.inl"
