#include "lexer/CppLexer.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "lexer/Block.h"
#include "lexer/ByteSet.h"
#include "lexer/LexerBytes.h"
#include "lexer/PlainToken.h"

namespace qnpp {
namespace {

[[gnu::cold]] const char* passManyDigits(const char* at) {
  return passMany(at, [](const Block& block) { return block.digits(); });
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

}  // namespace

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
