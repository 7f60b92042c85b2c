#include "lexer/CppLexer.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "lexer/Block.h"
#include "lexer/ByteSet.h"
#include "lexer/PlainToken.h"

namespace qnpp {
namespace {

// The first byte behind the blanks of a line that may be a directive line, or whose blanks are not over.
constexpr ByteSet kUnsureLineStart = bytesOf(std::string_view("#/\\\r\0", 5));

// Behind a function-like macro's name and white space: what may begin an invocation, or more white space.
constexpr ByteSet kUnsureBehindName = bytesOf(std::string_view("(/\\\r\0", 5));

constexpr ByteSet kOctalDigits = bytesOf("01234567");

// The bits from that of `place` on; and those before it, which are all before 64.
constexpr std::uint64_t bitsFrom(std::size_t place) { return ~std::uint64_t{0} << place; }
constexpr std::uint64_t bitsBefore(std::size_t place) { return place == 64 ? ~std::uint64_t{0} : ~bitsFrom(place); }

// The lowest bit, or none; and all from such a bit on, where none stands for the one behind the last.
constexpr std::uint64_t lowest(std::uint64_t bits) { return bits & (~bits + 1); }
constexpr std::uint64_t upFrom(std::uint64_t bit) { return ~bit + 1; }

bool isOneOf(char byte, char a, char b) { return byte == a || byte == b; }

// Behind the bytes at `at` that `find` finds in a block: for the few places where there may be very many.
template <typename Byte, typename Find>
Byte* passMany(Byte* at, Find find) {
  for (;; at += 64) {
    if (const std::uint64_t others = ~find(Block(at)); others != 0) {
      return at + std::countr_zero(others);
    }
  }
}

char* passManyBlanks(char* at) {
  return passMany(at, [](const Block& block) { return block.find<' ', '\t', '\v', '\f'>(); });
}

[[gnu::cold]] const char* passManyDigits(const char* at) {
  return passMany(at, [](const Block& block) { return block.digits(); });
}

// Behind the blanks at `at`, of which there are mostly none or a few.
inline char* passAllBlanks(char* at) {
  for (const char* const few = at + 16; has(kBlankBytes, *at); ++at) {
    if (at == few) {
      return passManyBlanks(at);
    }
  }
  return at;
}

// Behind the LF, CR LF or CR at `at`; null if there is none, or the buffer may end within it.
char* behindLineEnd(char* at) {
  if (*at == '\n') {
    return at + 1;
  }
  if (*at != '\r' || at[1] == '\0') {
    return nullptr;
  }
  return at[1] == '\n' ? at + 2 : at + 1;
}

// Whether this word, and nothing longer, is at `at`.
template <std::size_t Size>
bool isWordAt(const char* at, const char (&word)[Size]) {
  return std::memcmp(at, word, Size - 1) == 0 && !isWordByte(at[Size - 1]);
}

// Moves `at` behind the word of a directive and returns its kind; TK_END, with `at` left, where no other is there.
CppTokenKind passWordOfDirective(char*& at) {
  const auto pass = [&at](const auto& word, CppTokenKind kind) {
    if (!isWordAt(at, word)) {
      return CppTokenKind{TK_END};
    }
    at += sizeof word - 1;
    return kind;
  };
  switch (*at) {
    case 'd':
      return pass("define", TK_DEFINE);
    case 'e':
      switch (at[2]) {
        case 'd':
          return pass("endif", TK_ENDIF);
        case 's':
          return pass("else", TK_ELSE);
        case 'i':
          return pass("elif", TK_ELIF);
        default:
          return pass("error", TK_ERROR);
      }
    case 'i':
      switch (at[2]) {
        case 'd':
          return pass("ifdef", TK_IFDEF);
        case 'n':
          return pass("ifndef", TK_IFNDEF);
        case 'c':
          return pass("include", TK_INCLUDE);
        default:
          return pass("if", TK_IF);
      }
    case 'l':
      return pass("line", TK_LINE);
    case 'p':
      return pass("pragma", TK_PRAGMA);
    case 'u':
      return pass("undef", TK_UNDEF);
    default:
      return TK_END;
  }
}

}  // namespace

const char* passNumber(const char* at) {
  if (*at != '0') {
    at = passAll(kDigitBytes, at);
  } else if (isOneOf(at[1], 'x', 'X') && has(kHexDigits, at[2])) {
    at = passAll(kHexDigits, at + 2);
  } else {
    at = passAll(kOctalDigits, at);
  }
  if (isOneOf(*at, 'u', 'U')) {
    return isOneOf(at[1], 'l', 'L') ? at + 2 : at + 1;
  }
  if (isOneOf(*at, 'l', 'L')) {
    return isOneOf(at[1], 'u', 'U') ? at + 2 : at + 1;
  }
  return at;
}

Name* findMacroName(const NameTable& names, const char*& word, const char* end) {
  while (word != end && has(kDigitBytes, *word)) {
    const char* const rest = *word != '0' && end - word > 64 ? passManyDigits(word) : word;
    word = passNumber(rest);
  }
  const std::string_view text(word, static_cast<std::size_t>(end - word));
  Name* const name = text.empty() || !names.mayBeMacro(text) ? nullptr : names.find(text);
  return name == nullptr || (name->macro == nullptr && name->spelling.kind != TK_PRAGMA_OP) ? nullptr : name;
}

namespace {

// The first quote from `from` on, or `to`.
char* findQuote(char* from, char* to) {
  for (; from < to; from += 64) {
    if (const std::uint64_t quotes = Block(from).find<'"', '\''>(); quotes != 0) {
      return std::min(from + std::countr_zero(quotes), to);
    }
  }
  return to;
}

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

// What makes an escape with the backslash before it.
constexpr const ByteSet& escapesOf(char quote) { return quote == '"' ? kStringEscapes : kCharacterEscapes; }

// The first byte from `at` on that may be no item of a literal.
template <char Quote>
char* passItems(char* at) {
  for (;;) {
    std::uint64_t stops = Block(at).find<Quote, '\\', '\n', '\0'>();
    char* const begin = at;
    for (at += 64; stops != 0; stops &= bitsFrom(static_cast<std::size_t>(at - begin))) {
      at = begin + std::countr_zero(stops);
      if (*at != '\\' || !has(escapesOf(Quote), at[1])) {
        return at;
      }
      at += 2;
      if (at >= begin + 64) {
        break;
      }
    }
  }
}

}  // namespace

CppLexer::CppLexer(std::istream& input, const LexerContext& context)
    : yyCppFlexLexer(&input, nullptr), input_(&input), context_(context) {}

CppLexer::CppLexer(std::unique_ptr<std::istream> input, const LexerContext& context) : CppLexer(*input, context) {
  ownedInput_ = std::move(input);
}

CppLexer::~CppLexer() = default;

void CppLexer::restart(std::istream& input) {
  yyrestart(input);
  input_ = &input;
  ownedInput_.reset();
  line_ = 1;
  inputEnded_ = false;
  bytesRead_ = 0;
  stringUnclosedUntil_ = characterUnclosedUntil_ = 0;
}

void CppLexer::restart(std::unique_ptr<std::istream> input) {
  restart(*input);
  ownedInput_ = std::move(input);
}

int CppLexer::LexerInput(char* to, int size) {
  if (inputEnded_) {
    return 0;  // The end is final, even where the system would deliver more: a terminal, a growing file.
  }
  context_.budget.look();
  try {
    const std::streamsize count = input_->rdbuf()->sgetn(to, size);
    inputEnded_ = count == 0;
    bytesRead_ += static_cast<std::uint64_t>(count);
    return static_cast<int>(count);
  } catch (const std::ios_base::failure&) {
    return -1;  // The generated scanner calls LexerError.
  }
}

void CppLexer::LexerError(const char* message) { throw FatalLexerError(message); }

// Asks the rules for the token at `at`.
CppTokenKind CppLexer::scanAt(char* at) {
  yytext = at;
  endScan(at);
  return yylex();
}

void CppLexer::passBlanksInBuffer() {
  yytext = beginScan();
  endScan(passAllBlanks(yytext));
  static_cast<void>(token(TK_SPACE));
}

// ---- Directives ----

CppTokenKind CppLexer::passLineStart(std::string& leadingSpace) {
  beginReading();
  char* at = beginScan();
  CppTokenKind passed = TK_END;
  for (;;) {
    char* const first = passAllBlanks(at);
    const char next = first[1];
    if (char* const nextLine = behindLineEnd(first); nextLine != nullptr) {
      at = nextLine;
      leadingSpace.clear();
      countLine();
      context_.output.endLine();
      passed = TK_NEWLINE;
      continue;
    }
    if (first != at) {
      leadingSpace.append(at, first);
      at = first;
      passed = TK_SPACE;
    }
    yytext = at;
    if (isCommentAt(at)) {
      at = next == '*' ? passBlockComment(at + 2) : passLineComment(at + 2);
      leadingSpace += ' ';
      passed = TK_SPACE;
      continue;
    }
    if (*at == '#' && next != '#' && next != '\0') {
      char* word = passAllBlanks(at + 1);
      const bool isCommentNext = isCommentAt(word);
      while (isCommentAt(word)) {
        word = passAllBlanks(word[1] == '*' ? passBlockComment(word + 2) : passLineComment(word + 2));
      }
      if (*word == '\n') {
        at = word + 1;  // A directive that is none takes its line end and writes nothing.
        leadingSpace.clear();
        countLine();
        passed = TK_NEWLINE;
        continue;
      }
      if (isCommentNext) {
        at = yytext = word;  // What the comments took may be gone from the buffer.
        passed = '#';
      } else {
        passed = passDirectiveWord(at, word);
      }
    } else if (!has(kUnsureLineStart, *at)) {
      passed = TK_OTHER;
    }
    endScan(at);
    return token(passed);
  }
}

// Moves `at`, a "#", behind the word of the directive at `word`, or only behind the "#" where none is sure to follow.
CppTokenKind CppLexer::passDirectiveWord(char*& at, char* word) {
  char* end = word;
  const CppTokenKind kind = passWordOfDirective(end);
  const bool isSure = kind != TK_END && *end != '\0';
  yytext = isSure ? word : at;
  at = isSure ? end : at + 1;
  return isSure ? kind : '#';
}

bool CppLexer::isRestPlain() {
  char* const at = beginScan();
  const bool isPlain = isPlainUpToLineEnd(at);
  endScan(at);
  return isPlain;
}

bool CppLexer::isPlainUpToLineEnd(const char* at) const {
  std::uint64_t wordBefore = 0;  // 1 when the byte before `at` belongs to a word that has been looked at.
  for (;; at += 64) {
    const Block block(at);
    const std::uint64_t ends = block.find<'\n'>();
    const std::uint64_t beforeEnd = ends != 0 ? (ends & (~ends + 1)) - 1 : ~std::uint64_t{0};
    // A slash before the last byte opens a comment only if one of these is behind it.
    const std::uint64_t comments = block.find<'/'>() & (block.find<'*', '/'>() >> 1U | std::uint64_t{1} << 63U);
    if (((block.find<'\\', '\r', '\0'>() | comments) & beforeEnd) != 0) {
      return false;
    }
    const std::uint64_t words = block.words();
    std::uint64_t begins = words & ~(words << 1U | wordBefore) & beforeEnd;
    for (; begins != 0; begins &= begins - 1) {
      const char* word = at + std::countr_zero(begins);
      if (context_.names.mayHoldMacro(word) &&
          findMacroName(context_.names, word, passAll(kWordBytes, word)) != nullptr) {
        return false;
      }
    }
    if (ends != 0) {
      return true;
    }
    wordBefore = words >> 63U;
  }
}

const char* BytesAhead::getMore(const char* end) {
  if (lexer_ == nullptr || !lexer_->atBufferEnd(end)) {
    return nullptr;
  }
  const auto before = begin_ - lexer_->yytext;
  char* at = lexer_->yytext + (end - lexer_->yytext);
  const bool isMore = lexer_->refill(at);
  begin_ = lexer_->yytext + before;
  return isMore ? at : nullptr;
}

// ---- Text ----

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
    return behind != 0 ? block_ + std::countr_zero(behind) : passWord(block_ + 64);
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

  // At the end of the buffer: gets more input, keeping a word that may go on in it.
  void refillAtWord(char* end) {
    char* word = end;
    while (word > from_ && isWordByte(word[-1])) {
      word = word == block_ && wordBegin_ != nullptr ? wordBegin_ : word - 1;
    }
    const auto size = end - word;
    if (!refill(word, end)) {
      handOutTokenAt(from_ + size);
    }
  }

  // The functions that follow return where to go on, or null.

  char* copyWord(char* word, char* end) {
    if (*end == '\0' && lexer_.atBufferEnd(end)) {
      const auto size = end - word;
      if (!refill(word, end)) {
        char* const next = replaceName(from_, from_ + size);  // The input ends behind the word.
        at_ = next == nullptr ? at_ : next;
      }
      return nullptr;
    }
    return replaceName(word, end);
  }

  // If there is the name of a macro in the word, or `_Pragma`, its final text is written or it is handed out.
  char* replaceName(char* word, char* end) {
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
  char* countLineEnd(char* end, char* next) {
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

// ---- Literals ----

// Behind the quote that the rules have matched.
bool CppLexer::readLiteral() {
  char* at = beginScan();
  const bool isClosed = passLiteral(at);
  endScan(at);
  return isClosed;
}

// Passes over what is behind the quote at `yytext`: a string ("any item but quote, backslash and LF; only \" and \\ as
// escapes") or a character literal (at least one item; the escapes of C). When none closes, the token is the quote
// alone, and it is remembered how far the search went: every quote before that place was passed as part of an escape,
// so a search from it would meet the same items and end at the same place.
bool CppLexer::passLiteral(char*& at) {
  const char quote = *yytext;
  std::uint64_t& unclosedUntil = quote == '"' ? stringUnclosedUntil_ : characterUnclosedUntil_;
  if (unclosedUntil > 0 && offsetOf(yytext) < unclosedUntil) {
    return false;
  }
  for (;;) {
    at = quote == '"' ? passItems<'"'>(at) : passItems<'\''>(at);
    if (*at == '\0' && !atBufferEnd(at)) {
      ++at;
    } else if (*at == '\0' ? refill(at) : *at == '\\' && passEscape(at, quote)) {
      // More of the literal is in the buffer, or an escape was passed.
    } else {
      break;
    }
  }
  const bool isEmptyCharacter = quote == '\'' && at == yytext + 1;
  if (*at == quote && !isEmptyCharacter) {
    ++at;
    return true;
  }
  unclosedUntil = offsetOf(at);
  at = yytext + 1;
  return false;
}

// Moves `at` behind the escape that starts there, or leaves it when the backslash starts none.
bool CppLexer::passEscape(char*& at, char quote) {
  const auto start = at - yytext;
  const auto byteAt = [this, &at, start](std::ptrdiff_t index) {
    char* place = yytext + start + index;
    if (*place == '\0' && atBufferEnd(place)) {
      refill(place);
      at = yytext + start;
    }
    return *place;
  };
  const char escape = byteAt(1);
  const bool isHexadecimal = quote == '\'' && escape == 'x' && has(kHexDigits, byteAt(2));
  const bool isEscape = isHexadecimal || has(escapesOf(quote), escape);
  if (isEscape) {
    at = yytext + start + 2;  // Further digits of an octal or hexadecimal escape are items like any other.
  }
  return isEscape;
}

// ---- Comments ----

// Passes over the rest of a comment up to behind its "*/". The line ends on the way are counted and go straight to the
// output.
char* CppLexer::passBlockComment(char* at) {
  const char* inside = at;  // From here on a "*" before "at" is one of the comment's inside.
  std::size_t lines = 0;
  const auto endLines = [this, &lines] {
    countLines(lines);
    context_.effectCount += lines;
    context_.output.writeLineEnds(lines);
    lines = 0;
  };
  for (;;) {
    const Block block(at);
    const Block::Matches lineEnds = block.match<'\n'>();
    std::uint64_t stops = 0;
    if (block.match<'/', '\r', '\0'>().any()) {
      const bool isBehindStar = at != inside && at[-1] == '*';
      stops = block.find<'/'>() & (block.find<'*'>() << 1U | (isBehindStar ? 1U : 0U));
      if (block.match<'\r', '\0'>().any()) {
        stops |= block.find<'\0'>() | (block.find<'\r'>() & ~(lineEnds.bits() >> 1U));  // A CR LF is counted by its LF.
      }
    }
    if (stops == 0) {
      lines += lineEnds.count();
      at += 64;
      continue;
    }
    const auto place = static_cast<std::size_t>(std::countr_zero(stops));
    lines += static_cast<std::size_t>(std::popcount(lineEnds.bits() & ~bitsFrom(place)));
    at += place;
    if (*at == '/') {
      endLines();
      yytext = at + 1;
      return at + 1;
    }
    if (*at == '\r') {
      inside = at = passLineEnd(at);
      ++context_.effectCount;
      context_.output.write('\n');
    } else if (!atBufferEnd(at)) {
      ++at;
    } else {
      endLines();
      yytext = at != inside && at[-1] == '*' ? at - 1 : at;
      const bool isMore = refill(at);
      inside = yytext;
      if (!isMore) {
        yytext = at;
        ++context_.effectCount;
        context_.messages.report(Message::UnterminatedComment, std::to_string(line_));
        return at;
      }
    }
  }
}

// Moves behind the LF, CR LF or CR at `at` and counts it. Forgets everything before it.
char* CppLexer::passLineEnd(char* at) {
  const bool isCarriageReturn = *at == '\r';
  ++at;
  yytext = at;
  if (isCarriageReturn && *at == '\0' && atBufferEnd(at)) {
    refill(at);
  }
  if (isCarriageReturn && *at == '\n') {
    ++at;
    yytext = at;
  }
  countLine();
  return at;
}

// Passes over the rest of the comment up to the line end, which stays for the next token. A NUL byte ends the comment
// too and is a line end from then on.
char* CppLexer::passLineComment(char* at) {
  for (;;) {
    at = findAny<'\r', '\n', '\0'>(at);
    if (*at != '\0') {
      break;
    }
    if (!atBufferEnd(at)) {
      *at = '\n';
      break;
    }
    if (!refillFrom(at)) {
      break;
    }
  }
  yytext = at;
  return at;
}

// ---- Skipped lines ----

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

// The rest of one line. Comments and literals are recognised, because a line end inside a comment does not end the line
// and a comment cannot begin inside a literal.
bool CppLexer::skipLine() {
  char* at = beginScan();
  yytext = at;
  const bool ended = passLine(at);
  endScan(at);
  return ended;
}

bool CppLexer::passLine(char*& at) {
  for (;;) {
    at = findAny<'"', '\'', '/', '\\', '\r', '\n', '\0'>(at);
    yytext = at;
    switch (*at) {
      case '\n':
      case '\r':
        at = passLineEnd(at);
        return true;
      case '\0':
        if (!atBufferEnd(at)) {
          ++at;
        } else if (!refill(at)) {
          return false;
        }
        break;
      case '\\':
      case '/':
        at = passBackslashOrComment(at);
        break;
      default:
        ++at;
        static_cast<void>(passLiteral(at));
        break;
    }
  }
}

// Passes over the "\" or "/" at `at`, which is `yytext`, and the line end or comment that follows, if one does.
char* CppLexer::passBackslashOrComment(char* at) {
  if (at[1] == '\0' && atBufferEnd(at + 1)) {
    char* next = at + 1;
    refill(next);
    at = yytext;
  }
  const bool isBackslash = *at == '\\';
  const char next = at[1];
  if (isBackslash ? !isOneOf(next, '\n', '\r') : !isOneOf(next, '*', '/')) {
    return at + 1;
  }
  if (isBackslash) {
    return passLineEnd(at + 1);
  }
  return next == '*' ? passBlockComment(at + 2) : passLineComment(at + 2);
}

// ---- Definitions ----

namespace {

// Bytes of a replacement list that stand for themselves and separate nothing.
constexpr ByteSet kPlainInList = allBytesBut(std::string_view(" \t\v\f\"'/\\\r\n\0", 11));

// Behind what at `at` stands for itself, blanks alone between two tokens included.
inline char* passPlainList(char* const begin) {
  char* at = begin;
  for (;;) {
    at = passAll(kPlainInList, at);
    if (*at != ' ' || at == begin || !has(kPlainInList, at[1])) {
      return at;
    }
    at += 2;
  }
}

// Behind the name at `at`; null when there is none, or it takes more to know where it ends: a continuation, say.
char* passMacroName(char* at) {
  if (!isWordByte(*at) || has(kDigitBytes, *at)) {
    return nullptr;
  }
  char* const end = passAll(kWordBytes, at);
  const std::string_view name(at, static_cast<std::size_t>(end - at));
  return *end == '\\' || *end == '\0' || name == "defined" || name == "_Pragma" ? nullptr : end;
}

// Behind the parameters and the ")" at `at`, or null in the same cases. Calls `take` with each name.
template <typename Take>
char* passParameters(char* at, Take take) {
  at = passAllBlanks(at);
  if (*at == ')') {
    return at + 1;
  }
  for (;;) {
    char* const end = passMacroName(at);
    if (end == nullptr) {
      return nullptr;
    }
    take(std::string_view(at, static_cast<std::size_t>(end - at)));
    at = passAllBlanks(end);
    if (*at == ')') {
      return at + 1;
    }
    if (*at != ',') {
      return nullptr;
    }
    at = passAllBlanks(at + 1);
  }
}

}  // namespace

bool CppLexer::readMacroName(std::string_view& name) {
  char* const begin = beginScan();
  char* const first = passAllBlanks(begin);
  char* const end = passMacroName(first);
  endScan(end == nullptr ? begin : end);
  if (end == nullptr) {
    return false;
  }
  name = {first, static_cast<std::size_t>(end - first)};
  return true;
}

bool CppLexer::readMacroHead(MacroHead& head) {
  char* const begin = yy_c_buf_p;
  if (!readMacroName(head.name)) {
    return false;
  }
  char* at = beginScan();
  head.functionLike = *at == '(';
  if (head.functionLike) {
    at = passParameters(at + 1, [&head](std::string_view name) {
      head.parameterList.append(name).push_back(',');
      ++head.parameterCount;
    });
  }
  endScan(at == nullptr ? begin : at);
  return at != nullptr;
}

std::string_view CppLexer::readReplacementText(std::string& text) {
  yytext = passAllBlanks(beginScan());
  char* at = passPlainList(yytext);
  if (*at == '\n') {
    endScan(at);
    return {yytext, static_cast<std::size_t>(yyleng)};
  }
  bool blankWaits = false;
  // Appends what lies between `yytext` and `at`. A blank waits for what follows it.
  const auto append = [this, &at, &text, &blankWaits] {
    if (at != yytext) {
      if (blankWaits && !text.empty()) {
        text.push_back(' ');
      }
      blankWaits = false;
      text.append(yytext, at);
      yytext = at;
    }
  };
  for (;; at = passPlainList(at)) {
    if (*at == '\0' && !atBufferEnd(at)) {
      ++at;
      continue;
    }
    append();
    switch (*at) {
      case '\n':
      case '\r':
        endScan(at);
        return text;
      case '\0':
        if (!refill(at)) {
          endScan(at);
          return text;
        }
        break;
      case '\\':
      case '/': {
        const bool isSlash = *at == '/';
        at = passBackslashOrComment(at);
        blankWaits = blankWaits || (isSlash && at == yytext);  // Nothing is left of a comment.
        break;
      }
      case '"':
      case '\'':
        ++at;
        static_cast<void>(passLiteral(at));
        append();
        break;
      default:
        at = yytext = passAllBlanks(at);
        blankWaits = true;
        break;
    }
  }
}

}  // namespace qnpp
