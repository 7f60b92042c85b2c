// Tokens of an argument, for the reading of arguments inside of it.
#pragma once

#include <cstdint>
#include <vector>

#include "lexer/Spelling.h"

namespace qnpp {

/// A run of tokens that is normalized text lexed into just these tokens, so that each part of it between two tokens is
/// that too: an argument inside of it can be used where it stands. The tokens are borrowed.
///
/// In f(f(f(...))) each level's argument holds those of all levels within. So that not each of them is walked through
/// to find its ")", the parentheses are matched once for all.
class NormalizedTokens {
 public:
  void reset(SpellingRange tokens) {
    tokens_ = tokens;
    closing_.clear();
  }

  /// The ")" that closes the "(" at `open`, which stands among these tokens; null when there is none.
  const Spelling* const* closing(const Spelling* const* open);

 private:
  void matchParentheses();

  SpellingRange tokens_;
  std::vector<std::uint32_t> closing_;  // By position of the "(": the distance of its ")", 0 for none.
};

}  // namespace qnpp
