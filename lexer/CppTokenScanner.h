// The token source over a list of stored tokens.
#pragma once

#include <cstddef>
#include <memory>

#include "lexer/CppLexer.h"
#include "lexer/CppScanner.h"
#include "lexer/InputFile.h"
#include "lexer/SpellingPool.h"
#include "lexer/TokenList.h"

namespace qnpp {

class NormalizedTokens;

/// Reads stored tokens back. Each is lexed on its own: a text may give several tokens or none, and never merges with
/// its neighbour's. What it gives is remembered in its spelling; only a text that opens a comment is lexed here.
///
/// A scanner can be used again for another list; the engine keeps finished ones for that.
class CppTokenScanner final : public CppScanner {
 public:
  CppTokenScanner(SpellingPool& pool, const LexerContext& context);
  ~CppTokenScanner() override;

  /// Reads the tokens of `list`, which the scanner owns from now on; what storage it had is left in `list`, empty. The
  /// spellings are borrowed.
  void read(TokenList& list);
  /// Reads `tokens`, all of them with `hideSet`. The range is borrowed: it must stay until the scanner is reset.
  /// `surroundings` is kept for the reader of the tokens, see there.
  void read(SpellingRange tokens, HideSet hideSet, NormalizedTokens* surroundings);
  NormalizedTokens* surroundings() const { return surroundings_; }
  /// Gives back what the scanner holds on to.
  void reset();

  CppTokenKind peek() override;
  CppTokenKind get() override;
  const HideSet& hideSet() override;

  /// Like `get`, but writes plain tokens to the output instead of handing them out: all but line ends, `_Pragma` and
  /// names with a macro definition. A token that is handed out may still be a plain one.
  CppTokenKind copyText();

  /// Takes plain tokens, those that are neither names with a macro definition nor `defined`, and appends them with
  /// their hide sets to `list`, up to the first token that may be another.
  void takePlain(TokenList& list);

  /// Spelling of the current token, always of a single token.
  const Spelling* spelling() const { return spelling_; }

  /// True when nothing is left to read, not even a token that has been looked at.
  bool isExhausted() const { return at_ == end_ && peek_ == nullptr && pieces_.empty() && reader_ == nullptr; }

  /// The elements that have not been read; empty while the reading stands inside of one. A token that has been looked
  /// at is the first of them.
  SpellingRange rest() const;
  /// Takes the first `count` elements of `rest()`, which are single tokens; the last of them becomes the current token.
  void take(std::size_t count);

 private:
  struct CommentReader;

  const Spelling* next();
  CppTokenKind handOut(const Spelling* spelling);

  SpellingPool& pool_;
  LexerContext context_;
  TokenList list_;                            // Storage of the tokens, when the scanner owns them.
  HideSet commonHideSet_;                     // Of all tokens, when it does not.
  NormalizedTokens* surroundings_ = nullptr;  // What the tokens are a part of, when they are an argument.
  const Spelling* const* begin_ = nullptr;
  const Spelling* const* at_ = nullptr;  // The next element.
  const Spelling* const* end_ = nullptr;
  std::size_t run_ = 0;                    // Run of `list_` that the current element was last found in.
  SpellingRange pieces_;                   // What is left of an element of several tokens.
  std::unique_ptr<CommentReader> reader_;  // Over an element that opens a comment.
  const Spelling* peek_ = nullptr;
  const Spelling* spelling_ = nullptr;
};

}  // namespace qnpp
