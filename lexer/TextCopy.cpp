// Copying text: CppLexer::copyText.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "lexer/Block.h"
#include "lexer/ByteSet.h"
#include "lexer/CppLexer.h"
#include "lexer/LexerBytes.h"

namespace qnpp {
namespace {

// Behind a function-like macro's name and white space: what may begin an invocation, or more white space.
constexpr ByteSet kUnsureBehindName = bytesOf(std::string_view("(/\\\r\0", 5));

// Behind the literal whose quote is at `place` of the 64 bytes at `block`, or behind that quote if it opens none; 0
// where that takes a closer look. `stops` are the quotes, backslashes and line ends of the block, and perhaps others.
std::size_t behindLiteral(const char* block, std::size_t place, std::uint64_t stops) {
  const std::uint64_t behind = stops & (bitsFrom(place) << 1U);
  if (behind == 0) {
    return 0;
  }
  const auto next = static_cast<std::size_t>(std::countr_zero(behind));
  if (block[next] == '\n') {
    return place + 1;
  }
  const bool isEmptyCharacter = block[place] == '\'' && next == place + 1;
  return block[next] == block[place] && !isEmptyCharacter ? next + 1 : 0;
}

[[gnu::noinline]] char* passLongWord(char* at) {
  return passMany(at, [](const Block& block) { return block.words(); });
}

}  // namespace

// One call of copyText: goes through the buffer from one byte that matters to the next, and writes what is between them
// in one piece. All that is rare is left to the rules.
class CppLexer::TextCopy {
 public:
  explicit TextCopy(CppLexer& lexer) : lexer_(lexer), from_(lexer.beginScan()), at_(from_) {}

  CppTokenKind run() {
    while (!isDone_) {
      copyBlock();
    }
    return kind_;
  }

 private:
  // Goes through the 64 bytes at `at_`, or up to one at which the buffer changes.
  void copyBlock() {
    const Block block(at_);
    block_ = at_;
    words_ = block.words();
    spaces_ = block.find<' '>();
    const std::uint64_t begins = words_ & ~(words_ << 1U | (wordBegin_ != nullptr ? 1U : 0U));
    const std::uint64_t ends = block.find<'\n'>();
    // Mostly a directive comes next where one has been before: what is behind a "#" will not be copied.
    const bool isDirectiveNext = ends != 0 && block_[std::countr_zero(ends) + 1] == '#';
    const std::uint64_t names = findNames(isDirectiveNext ? begins & (ends ^ (ends - 1)) : begins);
    stops_ = ends | block.find<'"', '\'', '/', '\\', '\r', '\0'>();
    std::uint64_t left = names | stops_;
    at_ += 64;
    while (left != 0) {
      const auto place = static_cast<std::size_t>(std::countr_zero(left));
      // Where to go on; null where the block is no longer what the buffer holds.
      char* next = nullptr;
      if ((ends >> place & 1U) != 0) {
        next = copyLineEnd(block_ + place);
      } else if ((names >> place & 1U) != 0) {
        next = copyWord(block_ + place, behindWord(place));
      } else {
        next = copyByte(block_ + place);
      }
      if (next == nullptr || next >= block_ + 64) {
        at_ = next == nullptr ? at_ : next;
        wordBegin_ = nullptr;
        return;
      }
      left &= bitsFrom(static_cast<std::size_t>(next - block_));
    }
    if (words_ >> 63U == 0) {
      wordBegin_ = nullptr;
    } else if (begins != 0) {
      wordBegin_ = block_ + (63 - std::countl_zero(begins));
    }
  }

  // Of the words that begin in the block, those in which the name of a macro may be.
  std::uint64_t findNames(std::uint64_t begins) const {
    const NameTable& names = lexer_.context_.names;
    std::uint64_t found = 0;
    for (; begins != 0; begins &= begins - 1) {
      const int place = std::countr_zero(begins);
      found |= std::uint64_t{names.mayHoldMacro(block_ + place)} << place;
    }
    return found;
  }

  char* behindWord(std::size_t place) const {
    const std::uint64_t behind = ~words_ & bitsFrom(place);
    return behind != 0 ? block_ + std::countr_zero(behind) : passLongWord(block_ + 64);
  }
  // Behind the blanks at `at`, which is in the block or the byte behind it.
  char* behindBlanks(char* at) const {
    const auto place = static_cast<std::size_t>(at - block_);
    const std::uint64_t others = place < 64 ? ~spaces_ & bitsFrom(place) : 0;
    return others != 0 ? passAll(kBlankBytes, block_ + std::countr_zero(others)) : passAllBlanks(at);
  }

  void writeUpTo(const char* to) { lexer_.context_.output.write(from_, static_cast<std::size_t>(to - from_)); }

  void handOut(CppTokenKind kind) {
    kind_ = kind;
    isDone_ = true;
  }

  // Leaves the token at `at` to the rules, and hands it out.
  void handOutTokenAt(char* at) {
    writeUpTo(at);
    handOut(lexer_.scanAt(at));
  }

  // Gets more input behind `end`, where the buffer ends, and goes on at `at`, before it. False if there is none.
  bool refill(char* at, char* end) {
    writeUpTo(at);
    lexer_.yytext = at;
    const bool isMore = lexer_.refill(end);
    from_ = at_ = lexer_.yytext;
    return isMore;
  }

  // Where to cut the word from `word` to `end`, the end of the buffer: what is before the cut can be written, and what
  // is behind it holds the same names of macros as the whole word would, however it goes on. A name longer than those
  // of all macros is none, so one byte more than the longest will do, the first of them no digit. Digits may be cut
  // before any but 0, which may begin a number of another kind. Short words are kept whole, as tokens are: if reading
  // fails, no part of them has been written.
  char* restToKeep(char* word, char* end) const {
    constexpr std::ptrdiff_t kLong = kReadSize / 2;
    const auto longest = static_cast<std::ptrdiff_t>(lexer_.context_.names.longestMacroName());
    if (end - word < std::max(kLong, longest + 1)) {
      return word;
    }
    char* rest = end - 1;
    if (!has(kDigitBytes, *word)) {
      rest -= longest;
      while (has(kDigitBytes, *rest)) {  // Ends at `word` at the latest.
        --rest;
      }
    } else if (passMany(word, [](const Block& block) { return block.digits(); }) != end) {
      return word;
    } else {
      while (rest > word && *rest == '0') {
        --rest;
      }
    }
    // If more than half gets free: else each refill might bring little, and a buffer that is full doubles.
    return end - rest < rest - word ? rest : word;
  }

  // At the end of the buffer: gets more input, keeping a word that may go on in it.
  void refillAtWord(char* end) {
    char* word = end;
    while (word > from_ && isWordByte(word[-1])) {
      word = word == block_ && wordBegin_ != nullptr ? wordBegin_ : word - 1;
    }
    word = restToKeep(word, end);
    const auto size = end - word;
    if (!refill(word, end)) {
      handOutTokenAt(from_ + size);
    }
  }

  // The functions that follow return where to go on, or null.

  [[gnu::always_inline]] char* copyWord(char* word, char* end) {
    if (*end == '\0' && lexer_.atBufferEnd(end)) {
      word = restToKeep(word, end);
      const auto size = end - word;
      if (!refill(word, end)) {
        char* const next = replaceName(from_, from_ + size);  // The input ends behind the word.
        at_ = next == nullptr ? at_ : next;
      }
      return nullptr;
    }
    return replaceName(word, end);
  }

  // If there is the name of a macro in the word, or `_Pragma`, its final text is written or it is handed out. Asked for
  // each word that passes the filter: a call would cost as much.
  [[gnu::always_inline]] char* replaceName(char* word, char* end) {
    const char* first = word;
    Name* const name = findMacroName(lexer_.context_.names, first, end);
    if (name == nullptr) {
      return end;
    }
    word += first - word;
    writeUpTo(word);
    if (name->finalText.holdsIn(lexer_.context_.names.generation())) {
      lexer_.context_.output.write(name->finalText.text());
      from_ = end;
      return end;
    }
    const bool mayStandAlone = name->wantsParenthesis && *end != '(';
    return mayStandAlone ? copyNameAlone(*name, word, end) : handOutName(*name, word, end);
  }

  // Without a "(" behind it the name stays, and the white space behind it comes out before it, line ends included: what
  // follows them goes on in the line of the name, even a "#". Rare, so its size is kept out of the callers.
  [[gnu::noinline]] char* copyNameAlone(Name& name, char* word, char* end) {
    std::size_t lines = 0;
    char* behind = passAllBlanks(end);
    for (; *behind == '\n'; behind = passAllBlanks(behind + 1)) {
      ++lines;
    }
    if (has(kUnsureBehindName, *behind)) {
      return handOutName(name, word, end);
    }
    lexer_.context_.output.write(end, static_cast<std::size_t>(behind - end));
    lexer_.context_.output.write(word, static_cast<std::size_t>(end - word));
    lexer_.countLines(lines);
    from_ = behind;
    if (lines == 0) {
      return behind;
    }
    at_ = behind;  // In another block: names behind a line end need not have been found in this one.
    return nullptr;
  }

  char* handOutName(Name& name, char* word, char* end) {
    lexer_.name_ = &name;
    lexer_.yytext = word;
    lexer_.endScan(end);
    handOut(lexer_.token(name.spelling.kind));
    return nullptr;
  }

  char* copyLineEnd(char* end) {
    char* const next = end + 1;
    char* const first = countLineEnd(end, next);
    if (first != nullptr && *first == '\n' && first != next) {
      writeUpTo(next);
      from_ = first;  // The blanks of a line with nothing else on it are not written.
    }
    return first;
  }

  // A line end that comes out as "\n".
  char* copyCarriageReturn(char* at) {
    char* const next = at[1] == '\n' ? at + 2 : at + 1;
    if (*next == '\0') {
      handOutTokenAt(at);  // Perhaps the buffer ends here, and there is a "\n" behind it.
      return nullptr;
    }
    char* const first = countLineEnd(at, next);
    if (first != nullptr) {
      writeUpTo(at);
      lexer_.context_.output.write('\n');
      from_ = *first == '\n' ? first : next;
    }
    return first;
  }

  // The line end at `end` is the next token.
  void handOutLineEnd(char* end) {
    if (*end != '\n' || end[1] == '\0') {  // Perhaps the buffer ends here, and the rules get more input first.
      handOutTokenAt(end);
      return;
    }
    writeUpTo(end);
    lexer_.countLine();
    lexer_.yytext = end;
    lexer_.endScan(end + 1);
    handOut(lexer_.token(TK_NEWLINE));
  }

  // At the line end at `end`, with the next line at `next`: returns the first byte behind the blanks of that, or null
  // when the line end is handed out. It has to be when the next line may be a directive or needs a line directive.
  [[gnu::always_inline]] char* countLineEnd(char* end, char* next) {
    OutputBuffer& output = lexer_.context_.output;
    char* const first = behindBlanks(next);
    if (output.line() != lexer_.line_ || has(kUnsureLineStart, *first)) {
      handOutLineEnd(end);
      return nullptr;
    }
    lexer_.countLine();
    output.setLine(lexer_.line_);
    return first;
  }

  // A byte that is more than itself, perhaps.
  char* copyByte(char* at) {
    const char next = at[1];
    if (next == '\0' && isOneOf(*at, '/', '\\') && lexer_.atBufferEnd(at + 1)) {
      if (!refill(at, at + 1)) {
        at_ = from_ + 1;  // The input ends behind it.
      }
      return nullptr;
    }
    switch (*at) {
      case '/':
        return isOneOf(next, '*', '/') ? copyComment(at) : at + 1;
      case '\\':
        return isOneOf(next, '\n', '\r') ? copyContinuation(at) : at + 1;
      case '\r':
        return copyCarriageReturn(at);
      case '\0':
        if (!lexer_.atBufferEnd(at)) {
          return at + 1;
        }
        refillAtWord(at);
        return nullptr;
      default:
        return copyLiteral(at);
    }
  }

  char* copyComment(char* at) {
    writeUpTo(at);
    at = at[1] == '*' ? lexer_.passBlockComment(at + 2) : lexer_.passLineComment(at + 2);
    lexer_.context_.output.write(' ');
    from_ = at_ = at;
    return nullptr;
  }

  char* copyContinuation(char* at) {
    writeUpTo(at);
    static_cast<void>(lexer_.scanAt(at));
    lexer_.context_.output.write(lexer_.text_);
    from_ = at_ = lexer_.beginScan();
    return nullptr;
  }

  char* copyLiteral(char* at) {
    if (const std::size_t behind = behindLiteral(block_, static_cast<std::size_t>(at - block_), stops_); behind != 0) {
      return block_ + behind;
    }
    const std::uint64_t refills = lexer_.refillCount_;
    writeUpTo(at);
    lexer_.yytext = at++;
    static_cast<void>(lexer_.passLiteral(at));
    from_ = lexer_.yytext;
    at_ = refills == lexer_.refillCount_ ? at_ : at;
    return refills == lexer_.refillCount_ ? at : nullptr;
  }

  CppLexer& lexer_;
  char* from_;             // The first byte that has not been written.
  char* at_;               // The first byte that has not been looked at.
  char* block_ = nullptr;  // The block that is looked at, and its masks.
  std::uint64_t words_ = 0;
  std::uint64_t spaces_ = 0;
  std::uint64_t stops_ = 0;    // Line ends and the bytes that are more than themselves, perhaps.
  char* wordBegin_ = nullptr;  // Of the word that goes on there, if one does.
  bool isDone_ = false;
  CppTokenKind kind_ = TK_END;
};

CppTokenKind CppLexer::copyText() {
  name_ = nullptr;
  return TextCopy(*this).run();
}

}  // namespace qnpp
