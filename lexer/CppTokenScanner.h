// The token source over a list of stored tokens.
#pragma once

#include <cstddef>
#include <memory>

#include "lexer/CppLexer.h"
#include "lexer/CppScanner.h"
#include "lexer/InputFile.h"
#include "lexer/NormalizedTokens.h"
#include "lexer/SpellingPool.h"
#include "lexer/TokenList.h"

namespace qnpp {

/// Reads stored tokens back. Each is lexed on its own: a text may give several tokens or none, and never merges with
/// its neighbour's. What it gives is remembered in its spelling; only a text that may hold a comment is lexed here.
///
/// A scanner can be used again for another list; the stack of sources keeps finished ones for that.
class CppTokenScanner final : public CppScanner {
 public:
  /// All are borrowed and outlive the object.
  CppTokenScanner(SpellingPool& pool, const LexerContext& context, HideSetCache& hideSets);
  ~CppTokenScanner() override;

  /// Reads the tokens of `list` from position `first` on. The scanner owns the list from now on; what storage it had is
  /// left in `list`, empty. The spellings are borrowed. The scanner must be new or have been reset, here and below.
  void read(TokenList& list, std::size_t first = 0);
  /// Reads `tokens`, which are borrowed: they must stay until the scanner is reset. They are a part of `surroundings`,
  /// or of nothing that is known to be normalized if that is null.
  void read(const TokenRange& tokens, NormalizedTokens* surroundings);
  NormalizedTokens* surroundings() const { return surroundings_; }
  /// Gives back what the scanner holds on to.
  void reset();

  CppTokenKind peek() override;
  CppTokenKind get() override;
  const HideSet& hideSet() override;
  /// Whether `name` is in the hide set; quicker than asking for the set. The second is quicker still, and says no where
  /// it would have to look into nested runs.
  bool isHidden(const Name& name);
  bool isSurelyHidden(const Name& name);

  /// Like `get`, but writes tokens that come out as they stand (see Spelling::isWrittenAsIs) instead of handing them
  /// out. May still hand one out.
  CppTokenKind copyText();

  /// Takes settled tokens (see TokenList::appendSettled) and appends them with their hide sets to `list`, up to the
  /// first token that may be another.
  void takeSettled(TokenList& list);
  /// Appends the current token with its hide set to `list`; `isSettled` if it is known to be so.
  void appendCurrent(TokenList& list, bool isSettled = false);

  /// `token`, the spelling of the current token, with its hide set. Valid as long as the list and `token`.
  TokenRange current(const Spelling* const& token) const {
    return {SpellingRange(&token, 1), range_.hideSet, range_.list, currentPosition()};
  }

  /// Spelling of the current token, always of a single token.
  const Spelling* spelling() const { return spelling_; }

  /// True when nothing is left to read, not even a token that has been looked at.
  bool isExhausted() const { return at_ == end_ && peek_ == nullptr && isBetweenElements(); }
  /// True while tokens come from a text that is lexed here, and so live in the pool: one may have been looked at.
  bool isLexing() const { return reader_ != nullptr; }

  /// The elements that have not been read; empty while the reading stands inside of one. A token that has been looked
  /// at is the first of them.
  SpellingRange rest() const;
  /// Takes the first `taken` elements of `rest()`, which are single tokens; the last of them becomes the current token.
  /// Returns those from `begin` to before `end`, with its hide set added to theirs.
  TokenRange take(std::size_t begin, std::size_t end, std::size_t taken);

 private:
  struct CommentReader;

  // Nothing is left of the element that was taken last.
  bool isBetweenElements() const { return pieces_.empty() && reader_ == nullptr; }
  const Spelling* next();
  CppTokenKind handOut(const Spelling* spelling);
  void start();
  std::size_t currentPosition() const;
  std::size_t findRun(std::size_t position);

  SpellingPool& pool_;
  LexerContext context_;
  HideSetCache& hideSets_;
  TokenList list_;                            // Storage of the tokens, when the scanner owns them.
  TokenRange range_;                          // What is read.
  NormalizedTokens* surroundings_ = nullptr;  // What the tokens are a part of, when they are an argument.
  const Spelling* const* begin_ = nullptr;
  const Spelling* const* at_ = nullptr;  // The next element.
  const Spelling* const* end_ = nullptr;
  std::size_t run_ = 0;                    // Run of the range's list that an element was last found in.
  HideSet hideSet_;                        // The answer of `hideSet` when it had to be put together.
  SpellingRange pieces_;                   // What is left of an element of several tokens.
  std::unique_ptr<CommentReader> reader_;  // Over an element that may hold a comment.
  const Spelling* peek_ = nullptr;
  const Spelling* spelling_ = nullptr;
};

/// Writes the tokens up to the first that is not written as it stands (see Spelling::isWrittenAsIs). Returns how many.
std::size_t writeLeadingText(SpellingRange tokens, OutputBuffer& output);

}  // namespace qnpp
