// Stored tokens and lists of them.
#pragma once

#include <cstddef>
#include <vector>

#include "lexer/HideSet.h"
#include "lexer/HideSetCache.h"
#include "lexer/Spelling.h"

namespace qnpp {

/// A stored token: its text, and the macro names that must not be expanded at it. It has no kind; that is found by
/// lexing the text when the token is read.
struct CppToken {
  const Spelling* text = nullptr;
  HideSet hideSet;
};

/// A list of stored tokens, a value that owns its contents but borrows the spellings. Neighbours mostly carry the same
/// hide set, so the sets are kept once per run of tokens: a token costs one pointer.
class TokenList {
 public:
  /// Tokens up to, not including, position `end` that begin where the run before ends.
  struct Run {
    std::size_t end = 0;
    HideSet hideSet;
    bool isPlain = false;  // None of the tokens has to be looked at when the list is expanded further.
  };

  bool empty() const { return spellings_.empty(); }
  std::size_t size() const { return spellings_.size(); }
  SpellingRange spellings() const { return spellings_; }
  const std::vector<Run>& runs() const { return runs_; }

  void append(const Spelling* spelling, const HideSet& hideSet) {
    spellings_.push_back(spelling);
    coverNewTokens(hideSet);
  }
  /// `isPlain`: the tokens are single ones and none is a name with a macro definition or `defined`.
  void append(SpellingRange spellings, const HideSet& hideSet, bool isPlain = false) {
    if (!spellings.empty()) {
      spellings_.insert(spellings_.end(), spellings.begin(), spellings.end());
      coverNewTokens(hideSet, isPlain);
    }
  }
  /// Appends the tokens of `tokens`, each with its own hide set and `hideSet` in addition.
  void append(const TokenList& tokens, const HideSet& hideSet, HideSetCache& hideSets);

  void clear() {
    spellings_.clear();
    runs_.clear();
  }

 private:
  void coverNewTokens(const HideSet& hideSet, bool isPlain = false) {
    if (!runs_.empty() && runs_.back().hideSet.isSameObject(hideSet) && runs_.back().isPlain == isPlain) {
      runs_.back().end = spellings_.size();
    } else {
      runs_.push_back({spellings_.size(), hideSet, isPlain});
    }
  }

  std::vector<const Spelling*> spellings_;
  std::vector<Run> runs_;
};

}  // namespace qnpp
