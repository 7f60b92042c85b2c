// Skipping lines: CppLexer::skipWholeLines.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "lexer/Block.h"
#include "lexer/ByteSet.h"
#include "lexer/CppLexer.h"
#include "lexer/LexerBytes.h"
#include "lexer/PlainToken.h"

namespace qnpp {
namespace {

// The bits before that of `place`, which are all before 64.
constexpr std::uint64_t bitsBefore(std::size_t place) { return place == 64 ? ~std::uint64_t{0} : ~bitsFrom(place); }

// The lowest bit, or none; and all from such a bit on, where none stands for the one behind the last.
constexpr std::uint64_t lowest(std::uint64_t bits) { return bits & (~bits + 1); }
constexpr std::uint64_t upFrom(std::uint64_t bit) { return ~bit + 1; }

// The first quote from `from` on, or `to`.
char* findQuote(char* from, char* to) {
  for (; from < to; from += 64) {
    if (const std::uint64_t quotes = Block(from).find<'"', '\''>(); quotes != 0) {
      return std::min(from + std::countr_zero(quotes), to);
    }
  }
  return to;
}

}  // namespace

// One call of skipWholeLines: goes through the buffer from one byte that matters to the next, and counts the line ends
// between them. Most blocks hold nothing else. What depends on the line before it looks that up: whether a "#" is the
// first on its line, and whether a literal hides a comment or a CR. A literal hides nothing else: none holds a line
// end, so a backslash before one is in none either. A comment that lies in the block is nothing but bits to be set; one
// that does not, and all else that is rare, is left to the readers of the lexer.
class CppLexer::LineSkip {
 public:
  // Begins at `at`; if that is behind the word of a nested conditional, which has been carried out, that is `nested`.
  LineSkip(CppLexer& lexer, NestedConditionals& conditionals, char* at, CppTokenKind nested)
      : lexer_(lexer), conditionals_(conditionals), at_(at), end_(lexer.bufferEnd()), resumed_(at) {
    if (nested != TK_END) {
      resumeBehindNested(nested, at);
    }
  }

  [[gnu::noinline]] CppTokenKind run() {
    while (!isDone_) {
      findStops();
      passStops();
    }
    endLines();
    lexer_.yytext = at_;
    lexer_.endScan(at_);
    return kind_;
  }

 private:
  // Goes on to the first block in which something may matter.
  void findStops() {
    std::ptrdiff_t left = end_ - at_;
    for (;; left -= 64, at_ += 64) {
      const Block block(at_);
      const auto stops = block.match<'#', '/', '\\', '\r'>();
      const auto ends = block.match<'\n'>();
      if (stops.any() || left < 64) {
        stops_ = stops.bits();
        lineEnds_ = ends.bits();
        break;
      }
      lines_ += ends.count();  // Most blocks hold nothing else.
    }
    if (left < 64) {
      const std::uint64_t behind = bitsFrom(static_cast<std::size_t>(left));
      stops_ = (stops_ & ~behind) | (behind & ~(behind << 1U));
      lineEnds_ &= ~behind;
    }
    blanks_ = 0;
    block_ = at_;
    at_ += 64;
  }

  // Goes through the block, or up to one of its bytes with which another one begins.
  [[gnu::always_inline]] void passStops() {
    while (stops_ != 0) {
      const auto place = static_cast<std::size_t>(std::countr_zero(stops_));
      char* const at = block_ + place;
      if (*at == '/' && passCommentInBlock(place)) {
        continue;
      }
      char* const next = *at == '#' ? passHash(at) : passByte(at);
      if (next == nullptr) {
        return;
      }
      if (next >= block_ + 64) {
        at_ = next;
        break;
      }
      stops_ &= bitsFrom(static_cast<std::size_t>(next - block_));
    }
    if (blanks_ > (lineEnds_ & ~blanks_)) {  // There are some in the last line.
      rememberBlanks(64);
    }
    countLinesBefore(64);
  }

  // The functions that follow pass over what begins at a place of the block. They return where to go on in it, or null
  // for another block: then they have counted the line ends before the place.

  char* passByte(char* at) {
    const char next = at[1];
    switch (*at) {
      case '/':
        return isOneOf(next, '*', '/') || next == '\0' ? passComment(at) : at + 1;
      case '\\':
        return isOneOf(next, '\n', '\r') || next == '\0' ? passBackslash(at) : at + 1;
      case '\r':
        if (next == '\n') {
          stops_ &= ~(Block(block_).find<'\r'>() & lineEnds_ >> 1U);  // The LF ends the line, here and behind.
          return at + 1;
        }
        return passSeparator(at);
      default:
        return refill(at);
    }
  }

  // If the slash at `place` begins a comment that ends in the block, and neither a CR nor a NUL is in it, passes over
  // it.
  bool passCommentInBlock(std::size_t place) {
    if (lookedAt_ != block_) {
      lookAtBlock();
    }
    const std::uint64_t opening = std::uint64_t{1} << place;
    if (!isCommentAt(block_ + place) || mayBeInLiteral(opening)) {
      return false;
    }
    const bool isBlock = block_[place + 1] == '*';
    const std::uint64_t closing = lowest(isBlock ? closings_ & upFrom(opening << 3U) : lineEnds_ & upFrom(opening));
    const std::uint64_t comment = (isBlock ? closing << 1U : closing) - opening;
    if (closing == 0 || (breaks_ & comment) != 0) {
      return false;
    }
    blanks_ |= comment;
    quotes_ &= ~comment;
    stops_ &= ~comment;
    return true;
  }

  // A comment that goes on behind the block may end in a block that begins with it, unless it is long.
  char* passComment(char* at) {
    const auto place = static_cast<std::size_t>(at - block_);
    if (place < 32 || mayBeInLiteral(std::uint64_t{1} << place)) {
      return passSeparator(at);
    }
    countLinesBefore(place);
    return resume(at, passedBefore(at));
  }

  char* passBackslash(char* at) {
    const auto place = static_cast<std::size_t>(at - block_);
    if (at[1] != '\n' || place == 63) {
      return passSeparator(at);
    }
    lineEnds_ &= ~(std::uint64_t{2} << place);
    blanks_ |= std::uint64_t{3} << place;
    lexer_.countLine();
    return at + 2;
  }

  // At what may be a comment, a continued line end or a CR.
  char* passSeparator(char* at) {
    const auto place = static_cast<std::size_t>(at - block_);
    rememberBlanks(place);
    const CppTokenKind passed = passedBefore(at);
    countLinesBefore(place);
    endLines();
    if ((at = passLiteralsBefore(at)) == nullptr) {
      return nullptr;
    }
    lexer_.yytext = at;
    if (*at == '\r') {
      ++unwritten_;
      return resume(lexer_.passLineEnd(at), TK_NEWLINE);
    }
    char* const next = lexer_.passBackslashOrComment(at);
    const bool isBlank = next == lexer_.yytext;  // Otherwise the byte stood for itself.
    return resume(next, !isBlank || passed == TK_OTHER ? TK_OTHER : TK_SPACE);
  }

  // Finds out what comments and literals take to know. Slashes that begin no comment matter no more.
  void lookAtBlock() {
    lookedAt_ = block_;
    const Block block(block_);
    const std::uint64_t slashes = block.find<'/'>();
    const std::uint64_t stars = block.find<'*'>();
    closings_ = slashes & stars << 1U;
    quotes_ = breaks_ = 0;
    if (block.match<'"', '\'', '\r', '\0'>().any()) {
      quotes_ = block.find<'"', '\''>();
      breaks_ = block.find<'\r', '\0'>();
    }
    stops_ &= ~slashes | (slashes | stars | breaks_) >> 1U | std::uint64_t{1} << 63U;
  }

  // Whether a quote stands before `place` on its line, so that a literal may.
  bool mayBeInLiteral(std::uint64_t place) const {
    const std::uint64_t ends = lineEnds_ & (place - 1);
    const std::uint64_t quotes = quotes_ & (place - 1);
    return quotes > ends || (ends == 0 && resumed_ < block_ && findQuote(lineBegin(block_), block_) != block_);
  }

  // The block is left at `place`: keeps what `blanks_` says of the line there.
  void rememberBlanks(std::size_t place) {
    const std::uint64_t blanks = blanks_ & bitsBefore(place);
    char* const behind = block_ + (64 - std::countl_zero(blanks));
    if (blanks != 0 && behind > resumed_) {
      passed_ = passedBefore(behind) == TK_OTHER ? TK_OTHER : TK_SPACE;
      resumed_ = behind;
    }
  }

  // Where the line of `at` begins, or `resumed_` in it.
  char* lineBegin(char* at) const {
    while (at != resumed_ && at[-1] != '\n') {
      --at;
    }
    return at;
  }

  // Passes over the literals before `at` on its line. Where the last of them goes on behind `at`, the answer is null;
  // otherwise it is where `at` is now.
  char* passLiteralsBefore(char* at) {
    for (char* quote = findQuote(lineBegin(at), at); quote != at; quote = findQuote(quote, at)) {
      const auto left = at - quote;
      lexer_.yytext = quote++;
      static_cast<void>(lexer_.passLiteral(quote));
      static_cast<void>(resume(quote, TK_OTHER));
      at = lexer_.yytext + left;
      if (quote > at) {
        return nullptr;
      }
    }
    return at;
  }

  [[gnu::always_inline]] char* passHash(char* hash) {
    const CppTokenKind passed = passedBefore(hash);
    if (passed == TK_OTHER) {
      return hash + 1;
    }
    char* const word = passAllBlanks(hash + 1);
    char* end = word;
    CppTokenKind kind = TK_END;
    if (isOneOf(*word, 'e', 'i')) {
      kind = passWordOfDirective(end);
      end = passAll(kWordBytes, end);
    }
    if (!isWordByte(*word) || *end == '\0') {
      // Perhaps a "#" that stands alone: then the next line goes with it.
      countLinesBefore(static_cast<std::size_t>(hash - block_));
      return stop(hash, passed);
    }
    if (!isConditional(kind)) {
      return word;
    }
    if (!conditionals_.carryOutNested(kind)) {
      countLinesBefore(static_cast<std::size_t>(hash - block_));
      return stop(end, kind);
    }
    resumeBehindNested(kind, end);
    return end;
  }

  // Behind the word of a conditional that has been carried out.
  void resumeBehindNested(CppTokenKind kind, char* end) {
    // What is behind these two is a line of its own; the line of another conditional leaves nothing.
    const bool isLineBehind = kind == TK_ELSE || kind == TK_ENDIF;
    unwritten_ -= isLineBehind ? 0 : 1;
    passed_ = isLineBehind ? TK_SPACE : TK_OTHER;
    resumed_ = end;
  }

  // At the end of the buffer.
  char* refill(char* at) {
    const auto place = static_cast<std::size_t>(at - block_);
    rememberBlanks(place);
    countLinesBefore(place);
    endLines();
    const CppTokenKind passed = passedBefore(at);
    if ((at = passLiteralsBefore(at)) == nullptr) {
      return nullptr;
    }
    if (!lexer_.atBufferEnd(at) || lexer_.refillFrom(at)) {
      return resume(at, passed);
    }
    if (passed != TK_OTHER) {
      return stop(at, passed);
    }
    ++unwritten_;  // The reader of the line would have been given a line end.
    return stop(at, TK_NEWLINE);
  }

  // What has been passed before `at`: TK_OTHER in the middle of a line; TK_SPACE where blanks and comments are all
  // that is before it on its line; TK_NEWLINE at the start of a line; TK_END where nothing has been passed at all.
  CppTokenKind passedBefore(const char* at) const {
    const bool isLineStart = at != resumed_ && at[-1] == '\n' && (blanks_ == 0 || blanksBefore(at) == 0);
    return isLineStart ? CppTokenKind{TK_NEWLINE} : passedOnLine(at);
  }

  CppTokenKind passedOnLine(const char* at) const {
    const char* first = at;
    while (first != resumed_) {
      const std::size_t count = has(kBlankBytes, first[-1]) ? 1 : blanksBefore(first);
      if (count == 0) {
        break;
      }
      first -= count;
    }
    const CppTokenKind kind = first == resumed_ ? passed_ : first[-1] == '\n' ? TK_NEWLINE : TK_OTHER;
    return first == at || kind == TK_OTHER ? kind : TK_SPACE;
  }

  // How many bytes directly before `at` are in `blanks_`.
  std::size_t blanksBefore(const char* at) const {
    if (blanks_ == 0 || at <= block_) {
      return 0;
    }
    const auto place = static_cast<std::size_t>(at - block_);
    const auto count = static_cast<std::size_t>(std::countl_zero(~blanks_ << (64 - place)));
    return std::min(place, count);
  }

  char* resume(char* at, CppTokenKind passed) {
    at_ = at;
    end_ = lexer_.bufferEnd();
    lookedAt_ = nullptr;
    resumed_ = at;
    passed_ = passed;
    return nullptr;
  }

  char* stop(char* at, CppTokenKind kind) {
    at_ = at;
    kind_ = kind;
    isDone_ = true;
    return nullptr;
  }

  void countLinesBefore(std::size_t place) {
    const std::uint64_t ends = lineEnds_ & bitsBefore(place);
    lines_ += static_cast<std::size_t>(std::popcount(ends & ~blanks_));
    if ((ends & blanks_) != 0) {
      linesInComments_ += static_cast<std::size_t>(std::popcount(ends & blanks_));
    }
  }
  // Ends the lines whose ends have been counted.
  void endLines() {
    lexer_.countLines(lines_ + linesInComments_);
    unwritten_ += static_cast<std::ptrdiff_t>(lines_);
    lines_ = 0;
    if (linesInComments_ > 0) {
      lexer_.context_.effectCount += linesInComments_;
      lexer_.context_.output.writeLineEnds(linesInComments_);
      linesInComments_ = 0;
    }
    if (unwritten_ > 0) {
      lexer_.context_.output.endLines(static_cast<std::size_t>(unwritten_));
      unwritten_ = 0;
    }
  }

  CppLexer& lexer_;
  NestedConditionals& conditionals_;
  char* at_;                        // The first byte that has not been looked at.
  const char* end_;                 // Of the buffer.
  char* block_ = nullptr;           // The block that is looked at;
  std::uint64_t stops_ = 0;         // the bytes left that may matter.
  std::uint64_t lineEnds_ = 0;      // Its line ends, but for those behind a backslash;
  std::uint64_t blanks_ = 0;        // and of what has been passed, the comments and continued line ends.
  const char* lookedAt_ = nullptr;  // The block of which these are known:
  std::uint64_t quotes_ = 0;        // outside of comments,
  std::uint64_t closings_ = 0;      // where "*/" ends,
  std::uint64_t breaks_ = 0;        // and the bytes that comments stumble over.
  char* resumed_;  // What is before it need not be looked at any more: this is what has been passed there.
  CppTokenKind passed_ = TK_END;
  std::size_t lines_ = 0;            // Line ends counted here, and not by the lexer yet;
  std::size_t linesInComments_ = 0;  // and those inside comments.
  std::ptrdiff_t unwritten_ = 0;     // Empty lines that are due; -1 in a line that leaves none.
  bool isDone_ = false;
  CppTokenKind kind_ = TK_END;
};

CppTokenKind CppLexer::skipWholeLines(NestedConditionals& conditionals) {
  beginReading();
  char* const at = beginScan();
  // A group often is empty, or begins with one that is skipped within it: for these no block is looked at.
  char* const hash = passAllBlanks(at);
  char* end = *hash == '#' ? passAllBlanks(hash + 1) : hash;
  const CppTokenKind kind = *hash == '#' ? passWordOfDirective(end) : CppTokenKind{TK_END};
  if (!isConditional(kind) || *end == '\0') {
    return LineSkip(*this, conditionals, at, TK_END).run();
  }
  if (conditionals.carryOutNested(kind)) {
    return LineSkip(*this, conditionals, end, kind).run();
  }
  yytext = end;
  endScan(end);
  return kind;
}

}  // namespace qnpp
