#include "lexer/CppLexer.h"

#include <utility>

#include "lexer/ByteScan.h"
#include "lexer/ByteSet.h"

namespace qnpp {
namespace {

// In text every operator and blank is written as it stands, whichever token it belongs to; only words, numbers (a word
// may follow one directly), literals, comments and line ends have to be found by the scanner.
constexpr ByteSet kPlainInText = [] {
  ByteSet set = allBytesBut(std::string_view("\"'/\\\r\n\0", 7));
  for (std::size_t byte = 0; byte < set.size(); ++byte) {
    set[byte] = set[byte] && !kWordBytes[byte];
  }
  return set;
}();

constexpr ByteSet kBlanks = bytesOf(" \t\v\f");
// The first byte behind the blanks of a line that may be a directive line, or whose blanks are not over.
constexpr ByteSet kUnsureLineStart = bytesOf(std::string_view("#/\\\r\0", 5));

constexpr ByteSet kCharacterEscapes = bytesOf("\"'?\\abfnrtv01234567");
constexpr ByteSet kHexDigits = bytesOf("0123456789ABCDEFabcdef");

char* passPlain(const ByteSet& plain, char* at) {
  while (has(plain, *at)) {
    ++at;
  }
  return at;
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
  copying_ = false;
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
  try {
    const std::streamsize count = input_->rdbuf()->sgetn(to, size);
    inputEnded_ = count == 0;
    bytesRead_ += static_cast<std::uint64_t>(count);
    return static_cast<int>(count);
  } catch (const std::ios_base::failure&) {
    return -1;  // The generated scanner calls LexerError.
  }
}

void CppLexer::LexerError(const char* message) {
  context_.output.flush();
  context_.diagnostics << message << '\n' << std::flush;
  throw FatalLexerError(message);
}

CppTokenKind CppLexer::copyText() {
  copying_ = true;
  const CppTokenKind kind = yylex();
  copying_ = false;
  return kind;
}

void CppLexer::passBlanksInBuffer() { endScan(passPlain(kBlanks, beginScan())); }

void CppLexer::copyToken() {
  char* const end = passPlain(kPlainInText, beginScan());
  context_.output.write(yytext, static_cast<std::size_t>(end - yytext));
  endScan(end);
}

bool CppLexer::copyName() {
  const NameTable& names = context_.names;
  name_ = names.find({yytext, static_cast<std::size_t>(yyleng)});
  if (name_ != nullptr && name_->macro != nullptr) {
    if (name_->settled.generation != names.generation()) {
      return false;
    }
    context_.output.write(name_->settled.text());
    yytext += yyleng;
  }
  copyToken();
  return true;
}

bool CppLexer::copyLineEnd() {
  OutputBuffer& output = context_.output;
  const std::int32_t lineEnded = subtractLines(line_, 1);
  if (output.line() != lineEnded) {
    return false;  // The next text line needs a line directive.
  }
  char* const start = beginScan();
  char* const first = passPlain(kBlanks, start);
  if (has(kUnsureLineStart, *first)) {
    endScan(start);
    return false;
  }
  output.endLine();
  if (*first != '\n') {  // The blanks of a line with nothing else on it are not written.
    output.write(start, static_cast<std::size_t>(first - start));
  }
  endScan(first);
  return true;
}

// Behind the opening quote of a string ("any item but quote, backslash and LF; only \" and \\ as escapes") or of a
// character literal (at least one item; the escapes of C). When none closes, the token is the quote alone, and
// `unclosedUntil` tells how far the search went: every quote before that place was passed as part of an escape, so a
// search from it would meet the same items and end at the same place.
bool CppLexer::readLiteral(char quote, std::uint64_t& unclosedUntil) {
  if (unclosedUntil > 0 && offsetOf(yytext) < unclosedUntil) {
    return false;
  }
  char* at = beginScan();
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
    endScan(at + 1);
    return true;
  }
  unclosedUntil = offsetOf(at);
  endScan(yytext + 1);
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

void CppLexer::readBlockComment() { endScan(passBlockComment(beginScan())); }

void CppLexer::readLineComment() { endScan(passLineComment(beginScan())); }

// Reads to behind the closing "*/". The line ends on the way are counted and go straight to the output. Nothing of the
// comment is kept in the buffer.
char* CppLexer::passBlockComment(char* at) {
  bool afterStar = false;
  for (;;) {
    if (char* const end = findAny<'*', '\r', '\n', '\0'>(at); end != at) {
      if (afterStar && *at == '/') {
        yytext = at + 1;
        return at + 1;
      }
      at = end;
      afterStar = false;
    }
    switch (*at) {
      case '*':
        ++at;
        afterStar = true;
        break;
      case '\0':
        if (!atBufferEnd(at)) {
          ++at;
          afterStar = false;
        } else if (!refillFrom(at)) {
          ++context_.effectCount;
          context_.diagnostics << line_ << ": unterminated comment.\n" << std::flush;
          return at;
        }
        break;
      default:
        at = passLineEnd(at);
        countLine();
        ++context_.effectCount;
        context_.output.write('\n');
        afterStar = false;
        break;
    }
  }
}

// Moves behind the LF, CR LF or CR at `at`. Forgets everything before it.
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
  return at;
}

// Reads to the line end, which stays for the next token. A NUL byte ends the comment too and is a line end from then
// on.
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

bool CppLexer::skipLine() {
  char* at = beginScan();
  yytext = at;
  const bool ended = passLine(at);
  endScan(at);
  return ended;
}

bool CppLexer::skipPlainLines() {
  if (!isReading()) {
    return false;
  }
  bool passed = false;
  char* at = beginScan();
  for (;;) {
    yytext = at;
    if (has(kUnsureLineStart, *passPlain(kBlanks, at))) {
      break;
    }
    // There is a line, since an end of the input would have been an unsure beginning. If it is the last one and has no
    // line end, its reader would have been given one.
    static_cast<void>(passLine(at));
    context_.output.endLine();
    passed = true;
  }
  endScan(at);
  return passed;
}

// Passes over a line of a skipped group, its line end included. Comments and literals are recognised, because a line
// end inside a comment does not end the line and a comment cannot begin inside a literal; all else is passed over.
// Returns false at the end of the input.
bool CppLexer::passLine(char*& at) {
  for (;;) {
    at = findAny<'"', '\'', '/', '\\', '\r', '\n', '\0'>(at);
    switch (*at) {
      case '\n':
      case '\r':
        at = passLineEnd(at);
        countLine();
        return true;
      case '\0':
        if (!atBufferEnd(at)) {
          ++at;
        } else if (!refillFrom(at)) {
          return false;
        }
        break;
      case '\\':
        yytext = at;
        if (*++at == '\0' && atBufferEnd(at)) {
          refill(at);
        }
        if (*at == '\n' || *at == '\r') {
          at = passLineEnd(at);
          countLine();
        }
        break;
      case '/':
        yytext = at;
        if (*++at == '\0' && atBufferEnd(at)) {
          refill(at);
        }
        if (*at == '*' || *at == '/') {
          at = *at == '*' ? passBlockComment(at + 1) : passLineComment(at + 1);
        }
        break;
      default:
        yytext = at;
        endScan(at + 1);
        static_cast<void>(*at == '"' ? readLiteral('"', stringUnclosedUntil_)
                                     : readLiteral('\'', characterUnclosedUntil_));
        at = beginScan();
        break;
    }
  }
}

}  // namespace qnpp
