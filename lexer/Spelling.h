// Spellings: texts of tokens together with what each of them lexes into.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "lexer/CppTokenKind.h"

namespace qnpp {

struct Name;

/// Where a token comes from, as a number that an observer of the run gave it; 0 for a token that was read from the
/// source. Empty in a build that cannot be watched.
#if defined(QNPP_OBSERVED)
inline constexpr bool kObserved = true;
enum class Origin : std::uint32_t {};
#else
inline constexpr bool kObserved = false;
struct Origin {};
#endif

/// The text of a stored token. A stored token has no kind of its own: its kind is what its text lexes into when it is
/// read. That depends on the text alone, so the answer is found once and kept beside it.
///
/// A spelling is immutable (but for `name`, see there) and shared by every token list that holds it; it and its bytes
/// live in a NameTable, in a Replacement or in a SpellingPool, whose rules say how long.
struct Spelling {
  /// In place of a token kind: the text lexes into no token or several (the object is a CompoundSpelling).
  static constexpr std::int16_t kCompound = -1;
  /// In place of a token kind: a comment may be in the text. Lexing it may write to the output or report, so nothing
  /// is remembered: it is lexed at each reading.
  static constexpr std::int16_t kOpensComment = -2;

  const char* data = nullptr;
  std::uint32_t size = 0;
  std::int16_t kind = TK_END;
  /// The entry of the name table with this spelling; null when the text is no name, or none that any macro definition
  /// has mentioned so far.
  Name* name = nullptr;
  [[no_unique_address]] Origin origin = {};

  std::string_view text() const { return {data, size}; }
  bool isSingleToken() const { return kind >= 0; }
  /// True when the text is written as it stands in a text line: a single token, but no line end, no `_Pragma` and no
  /// name that has a macro definition.
  bool isWrittenAsIs() const;
};

/// A text that lexes into `pieces`, each a single token; possibly none.
struct CompoundSpelling : Spelling {
  std::span<const Spelling* const> pieces;
};

/// A run of spellings that somebody else owns.
using SpellingRange = std::span<const Spelling* const>;

/// By the code of the character; see `characterSpelling`.
extern const std::array<Spelling, 256> kCharacterSpellings;

/// The spelling of one character that is a token by itself: operators, the blank, "\n" and every TK_OTHER byte.
inline const Spelling* characterSpelling(char character) {
  return &kCharacterSpellings[static_cast<unsigned char>(character)];
}

/// Whether a token of `kind` and `text` is such a character.
inline bool isCharacterToken(CppTokenKind kind, std::string_view text) {
  return text.size() == 1 && !isName(kind) && kind < TK_DEC_INT;
}

/// The single blank that stands for white space in normalized text.
inline const Spelling* blankSpelling() { return characterSpelling(' '); }

}  // namespace qnpp
