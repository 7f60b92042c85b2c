#include "lexer/CppLexer.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "lexer/Block.h"
#include "lexer/ByteSet.h"

namespace qnpp {
namespace {

constexpr ByteSet kBlanks = bytesOf(" \t\v\f");
// The first byte behind the blanks of a line that may be a directive line, or whose blanks are not over.
constexpr ByteSet kUnsureLineStart = bytesOf(std::string_view("#/\\\r\0", 5));

constexpr ByteSet kCharacterEscapes = bytesOf("\"'?\\abfnrtv01234567");
constexpr ByteSet kOctalDigits = bytesOf("01234567");
constexpr ByteSet kHexDigits = bytesOf("0123456789ABCDEFabcdef");

template <typename Byte>
Byte* passAll(const ByteSet& set, Byte* at) {
  while (has(set, *at)) {
    ++at;
  }
  return at;
}

// The bits from that of `place` on.
constexpr std::uint64_t bitsFrom(std::size_t place) { return ~std::uint64_t{0} << place; }

bool isOneOf(char byte, char a, char b) { return byte == a || byte == b; }

char* passLongBlanks(char* at) {
  for (;; at += 64) {
    if (const std::uint64_t others = ~Block(at).find<' ', '\t', '\v', '\f'>(); others != 0) {
      return at + std::countr_zero(others);
    }
  }
}

// Behind the blanks at `at`, of which there are mostly none or a few.
inline char* passAllBlanks(char* at) {
  for (const char* const few = at + 16; has(kBlanks, *at); ++at) {
    if (at == few) {
      return passLongBlanks(at);
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

// A word as a number of its bytes, or of the last eight: no word of eight bytes or more has that of a shorter one.
constexpr std::uint64_t addToNumber(std::uint64_t number, char byte) {
  return number << 8U | static_cast<unsigned char>(byte);
}
constexpr std::uint64_t numberOf(std::string_view word) {
  std::uint64_t number = 0;
  for (const char byte : word) {
    number = addToNumber(number, byte);
  }
  return number;
}

// Moves `at` behind the word there. Returns its kind, if it is that of a directive; TK_END for any other.
CppTokenKind passWordOfDirective(char*& at) {
  std::uint64_t number = 0;
  for (; isWordByte(*at); ++at) {
    number = addToNumber(number, *at);
  }
  switch (number) {
    case numberOf("if"):
      return TK_IF;
    case numberOf("ifdef"):
      return TK_IFDEF;
    case numberOf("ifndef"):
      return TK_IFNDEF;
    case numberOf("else"):
      return TK_ELSE;
    case numberOf("elif"):
      return TK_ELIF;
    case numberOf("endif"):
      return TK_ENDIF;
    case numberOf("define"):
      return TK_DEFINE;
    case numberOf("undef"):
      return TK_UNDEF;
    case numberOf("include"):
      return TK_INCLUDE;
    case numberOf("pragma"):
      return TK_PRAGMA;
    case numberOf("line"):
      return TK_LINE;
    case numberOf("error"):
      return TK_ERROR;
    default:
      return TK_END;
  }
}

// Whether the word in the text that begins at `begin` stands behind `defined`, or behind a parenthesis there.
bool isBehindDefined(const char* begin, const char* word) {
  const auto passBlanksBack = [begin, &word] {
    while (word != begin && has(kBlanks, word[-1])) {
      --word;
    }
  };
  passBlanksBack();
  if (word != begin && word[-1] == '(') {
    --word;
    passBlanksBack();
  }
  constexpr std::string_view kDefined = "defined";
  const std::string_view before(begin, static_cast<std::size_t>(word - begin));
  return before.ends_with(kDefined) &&
         (before.size() == kDefined.size() || !isWordByte(before[before.size() - kDefined.size() - 1]));
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

// The name of a macro or `_Pragma` in the word from `word` to `end`, or null. Moves `word` to where the name begins.
Name* CppLexer::findMacroName(const char*& word, const char* end) const {
  while (word != end && has(kDigitBytes, *word)) {
    word = passNumber(word);  // Behind a number a name may follow directly.
  }
  const std::string_view text(word, static_cast<std::size_t>(end - word));
  const NameTable& names = context_.names;
  Name* const name = text.empty() || !names.mayBeMacro(text) ? nullptr : names.find(text);
  return name == nullptr || (name->macro == nullptr && name->spelling.kind != TK_PRAGMA_OP) ? nullptr : name;
}

// ---- Directives ----

// Passes over lines of nothing but blanks from `at` on, the start of a line, and writes an empty line for each. Returns
// the first byte behind the blanks of the next line.
inline char* CppLexer::passEmptyLines(char*& at) {
  for (;;) {
    char* const first = passAllBlanks(at);
    char* const next = behindLineEnd(first);
    if (next == nullptr) {
      return first;
    }
    countLine();
    context_.output.endLine();
    at = next;
  }
}

CppTokenKind CppLexer::passDirectiveWord() {
  if (!isReading()) {
    return TK_END;
  }
  char* const begin = beginScan();
  char* at = begin;
  char* hash = passEmptyLines(at);
  while (*hash == '#' && *passAllBlanks(hash + 1) == '\n') {
    countLine();  // A directive that is none takes its line end and writes nothing.
    at = passAllBlanks(hash + 1) + 1;
    hash = passEmptyLines(at);
  }
  CppTokenKind kind = at == begin ? TK_END : TK_NEWLINE;
  yytext = at;
  if (*hash == '#' && hash[1] != '#' && hash[1] != '\0') {
    char* const word = passAllBlanks(hash + 1);
    char* end = word;
    const CppTokenKind wordKind = passWordOfDirective(end);
    const bool isSure = wordKind != TK_END && *end != '\0';
    kind = isSure ? wordKind : '#';
    yytext = isSure ? word : hash;
    at = isSure ? end : hash + 1;
  }
  endScan(at);
  return token(kind);
}

bool CppLexer::isRestPlain(bool (*accepts)(Name& name, const NameTable& names)) {
  char* const at = beginScan();
  const bool isPlain = isPlainUpToLineEnd(at, accepts);
  endScan(at);
  return isPlain;
}

bool CppLexer::isPlainUpToLineEnd(const char* at, bool (*accepts)(Name& name, const NameTable& names)) const {
  const char* const begin = at;
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
      if (!context_.names.mayHoldMacro(word)) {
        continue;
      }
      Name* const name = findMacroName(word, passAll(kWordBytes, word));
      if (name != nullptr && !isBehindDefined(begin, word) && !accepts(*name, context_.names)) {
        return false;
      }
    }
    if (ends != 0) {
      return true;
    }
    wordBefore = words >> 63U;
  }
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
    const std::uint64_t names = findNames(begins);
    const std::uint64_t ends = block.find<'\n'>();
    std::uint64_t left = names | ends | block.find<'"', '\'', '/', '\\', '\r', '\0'>();
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
    return others != 0 ? passAll(kBlanks, block_ + std::countr_zero(others)) : passAllBlanks(at);
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
    Name* const name = lexer_.findMacroName(first, end);
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
    lexer_.name_ = name;
    lexer_.yytext = word;
    lexer_.endScan(end);
    handOut(lexer_.token(name->spelling.kind));
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

  // At the line end at `end`, with the next line at `next`: returns the first byte behind the blanks of that, or null
  // when the line end is handed out. It has to be when the next line may be a directive or needs a line directive.
  char* countLineEnd(char* end, char* next) {
    OutputBuffer& output = lexer_.context_.output;
    char* const first = behindBlanks(next);
    if (output.line() != lexer_.line_ || has(kUnsureLineStart, *first)) {
      handOutTokenAt(end);
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
    at = quote == '"' ? findAny<'"', '\\', '\n', '\0'>(at) : findAny<'\'', '\\', '\n', '\0'>(at);
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
  const bool isEscape = quote == '"' ? escape == '"' || escape == '\\'
                                     : has(kCharacterEscapes, escape) || (escape == 'x' && has(kHexDigits, byteAt(2)));
  if (isEscape) {
    at = yytext + start + 2;  // Further digits of an octal or hexadecimal escape are items like any other.
  }
  return isEscape;
}

// ---- Comments ----

// Passes over the rest of a comment up to behind its "*/". The line ends on the way are counted and go straight to the
// output.
char* CppLexer::passBlockComment(char* at) {
  std::uint64_t star = 0;  // 1 when the byte before `at` is a "*" of the comment's inside.
  for (;;) {
    const Block block(at);
    const std::uint64_t stars = block.find<'*'>();
    const std::uint64_t ends = block.find<'/'>() & (stars << 1U | star);
    const std::uint64_t stops = ends | block.find<'\r', '\0'>();
    // The line ends before the first stop need no look at each.
    const std::uint64_t passed = stops != 0 ? (stops & (~stops + 1)) - 1 : ~std::uint64_t{0};
    if (const std::uint64_t lines = block.find<'\n'>() & passed; lines != 0) {
      const auto count = static_cast<std::size_t>(std::popcount(lines));
      countLines(count);
      context_.effectCount += count;
      context_.output.writeLineEnds(count);
    }
    if (stops == 0) {
      at += 64;
      star = stars >> 63U;
      continue;
    }
    const int place = std::countr_zero(stops);
    const std::uint64_t starBefore = place > 0 ? stars >> (place - 1) & 1U : star;
    at += place;
    star = 0;
    if (*at == '/') {
      yytext = at + 1;
      return at + 1;
    }
    if (*at == '\r') {
      at = passLineEnd(at);
      ++context_.effectCount;
      context_.output.write('\n');
    } else if (!atBufferEnd(at)) {
      ++at;
    } else {
      star = starBefore;
      if (!refillFrom(at)) {
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

// Finds the bytes that matter in a skipped line, one after the other, looking at each block once.
class CppLexer::Stops {
 public:
  explicit Stops(const CppLexer& lexer) : lexer_(lexer) {}

  // The first one from `at` on.
  char* find(char* at) {
    if (at < block_ || at >= end_ || refillCount_ != lexer_.refillCount_) {
      look(at);
    }
    left_ &= bitsFrom(static_cast<std::size_t>(at - block_));
    while (left_ == 0) {
      look(end_);
    }
    return block_ + std::countr_zero(left_);
  }

 private:
  void look(char* at) {
    block_ = at;
    end_ = at + 64;
    refillCount_ = lexer_.refillCount_;
    left_ = Block(at).find<'"', '\'', '/', '\\', '\r', '\n', '\0'>();
  }

  const CppLexer& lexer_;
  char* block_ = nullptr;
  char* end_ = nullptr;
  std::uint64_t refillCount_ = 0;  // Of the lexer, when it was looked at.
  std::uint64_t left_ = 0;
};

bool CppLexer::skipLine() {
  Stops stops(*this);
  char* at = beginScan();
  yytext = at;
  const bool ended = passLine(at, stops);
  endScan(at);
  return ended;
}

CppTokenKind CppLexer::skipWholeLines(NestedConditionals& conditionals) {
  if (!isReading()) {
    return TK_END;
  }
  Stops stops(*this);
  CppTokenKind passed = TK_END;
  char* at = beginScan();
  for (;;) {
    const char* const begin = at;
    char* const first = passEmptyLines(at);
    passed = at == begin ? passed : TK_NEWLINE;
    yytext = first;
    if (has(kUnsureLineStart, *first)) {
      const char next = first[1];
      if ((*first == '/' && next == '*') || (*first == '\\' && isOneOf(next, '\n', '\r'))) {
        at = passBackslashOrComment(first);  // The line may still begin behind it.
        passed = TK_SPACE;
        continue;
      }
      if (*first == '#') {
        const CppTokenKind kind = skipDirective(at, first + 1, stops, conditionals);
        passed = kind == TK_END ? passed : kind;
        if (kind == TK_END || isConditional(kind)) {
          break;
        }
        continue;
      }
      if (*first == '\0' || next == '\0') {
        break;
      }
    }
    at = first;
    static_cast<void>(passLine(at, stops));  // If it has no line end, its reader would have been given one.
    context_.output.endLine();
    passed = TK_NEWLINE;
  }
  yytext = at;
  endScan(at);
  return passed;
}

// Passes over the line at `at` in a skipped group that begins with a "#", with `word` behind it; or only over the
// beginning of it, as `skipWholeLines` does. Returns what that does, TK_END when it is not sure what the line is.
CppTokenKind CppLexer::skipDirective(char*& at, char* word, Stops& stops, NestedConditionals& conditionals) {
  word = passAllBlanks(word);
  if (!isWordByte(*word)) {
    return TK_END;  // Perhaps a "#" that stands alone: then the next line goes with it.
  }
  CppTokenKind kind = TK_END;
  if (isOneOf(*word, 'e', 'i')) {  // As the words of conditionals begin.
    kind = passWordOfDirective(word);
    if (*word == '\0') {
      return TK_END;
    }
  }
  at = word;
  if (isConditional(kind)) {
    if (!conditionals.carryOutNested(kind)) {
      return kind;
    }
    if (kind == TK_ELSE || kind == TK_ENDIF) {
      return TK_SPACE;
    }
  }
  static_cast<void>(passLine(at, stops));
  if (!isConditional(kind)) {
    context_.output.endLine();  // The lines of conditionals leave none.
  }
  return TK_NEWLINE;
}

// Passes over a line of a skipped group, its line end included. Comments and literals are recognised, because a line
// end inside a comment does not end the line and a comment cannot begin inside a literal; all else is passed over.
// Returns false at the end of the input.
bool CppLexer::passLine(char*& at, Stops& stops) {
  for (;;) {
    at = stops.find(at);
    yytext = at;
    switch (*at) {
      case '\n':
        ++at;
        countLine();
        return true;
      case '\r':
        at = passLineEnd(at);
        return true;
      case '\0':
        if (!atBufferEnd(at)) {
          ++at;
          break;
        }
        if (!refill(at)) {
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
    std::size_t count = 0;
    char* const end = passParameters(at + 1, [&count](std::string_view) { ++count; });
    head.parameters.reserve(count);
    if (end != nullptr) {
      passParameters(at + 1, [&head](std::string_view name) { head.parameters.emplace_back(name); });
    }
    at = end;
  }
  endScan(at == nullptr ? begin : at);
  return at != nullptr;
}

void CppLexer::readReplacementText(std::string& text) {
  bool blankWaits = false;
  char* at = beginScan();
  yytext = at;
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
  for (;;) {
    at = passAll(kPlainInList, at);
    if (*at == ' ' && at != yytext && has(kPlainInList, at[1])) {
      at += 2;  // A blank alone between two tokens stands for itself.
      continue;
    }
    if (*at == '\0' && !atBufferEnd(at)) {
      ++at;
      continue;
    }
    append();
    switch (*at) {
      case '\n':
      case '\r':
        endScan(at);
        return;
      case '\0':
        if (!refill(at)) {
          endScan(at);
          return;
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
