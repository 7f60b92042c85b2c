// Arguments of a function-like invocation.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "lexer/HideSet.h"
#include "lexer/SpellingPool.h"
#include "macros/NormalizedTokens.h"

namespace qnpp {

/// The arguments of one invocation. Each is normalized text, lexed into tokens that all carry the hide set of the
/// source that was current at its end.
///
/// The text is only built where somebody needs it. Between tokens of one source, normalizing the text and lexing it
/// again gives the tokens back, so they are kept as they are; `finish` finds out where that is not so (tokens of
/// different origin that merge, or a lone quote that finds a partner once line ends have become blanks) and builds the
/// text and lexes it there.
class Arguments {
 public:
  std::size_t count() const { return count_; }
  const HideSet& hideSet(std::size_t index) const { return arguments_[index].hideSet; }

  /// Tokens of an argument: single tokens, one blank where white space stands between two.
  SpellingRange tokens(std::size_t index) const {
    const Argument& argument = arguments_[index];
    return argument.isInPlace ? argument.inPlace : SpellingRange(tokens_).subspan(argument.begin, argument.count);
  }

  /// The tokens that those of an argument are a part of. Valid until the arguments change.
  NormalizedTokens& surroundings(std::size_t index);

  /// Appends the normalized text of an argument to `text`.
  void appendText(std::size_t index, std::string& text) const;

  /// Adds a token to the argument being read, with a blank before it if it does not follow the last one directly.
  void add(const Spelling* token, bool afterBlank);
  /// Ends the argument being read. Lexes its text if need be.
  void finish(const HideSet& hideSet, SpellingPool& pool);
  /// Adds an argument whose tokens stand in a list that outlives this object, already normalized; they are a part of
  /// `surroundings`, or of nothing that is known to be normalized if that is null.
  void addInPlace(SpellingRange tokens, NormalizedTokens* surroundings, const HideSet& hideSet);

  void clear() {
    for (std::size_t index = 0; index < count_; ++index) {
      arguments_[index].clear();
    }
    count_ = 0;
    tokens_.clear();
    begin_ = 0;
    mustLex_ = false;
  }

 private:
  struct Argument {
    std::size_t begin = 0;  // Into the collected tokens, unless the argument is used in place.
    std::size_t count = 0;
    bool isInPlace = false;
    SpellingRange inPlace;
    std::string_view text;  // The normalized text, when it is more than the tokens' texts.
    HideSet hideSet;
    NormalizedTokens* surroundings = nullptr;  // Null: `own`, once it has been asked for.
    NormalizedTokens own;

    void clear();
  };

  Argument& addArgument(const HideSet& hideSet);

  std::vector<const Spelling*> tokens_;
  std::vector<Argument> arguments_;  // The first `count_` are in use; the others keep their memory for later ones.
  std::size_t count_ = 0;
  std::size_t begin_ = 0;  // Where the argument being read begins.
  bool mustLex_ = false;   // Its text may lex into other tokens.
};

/// Whether `token`, without white space before it, may become part of the token before it when both are lexed as one
/// text. May say yes too often.
bool mayMerge(const Spelling& before, const Spelling& token);

/// Whether a quote stands alone, so that it may open a literal in another place.
bool isLoneQuote(const Spelling& token);

}  // namespace qnpp
