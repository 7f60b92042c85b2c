#include "lexer/PlainToken.h"

#include "lexer/ByteSet.h"
#include "lexer/Spelling.h"

namespace qnpp {
namespace {

// Behind the literal at `at` if it is closed and holds no backslash; null otherwise.
const char* behindSimpleLiteral(const char* at) {
  const char* const end = findEndOfLiteral(*at, at + 1);
  const bool isEmptyCharacter = *at == '\'' && end == at + 1;
  return *end != *at || isEmptyCharacter ? nullptr : end + 1;
}

}  // namespace

const char* findEndOfComment(const char* at, bool isBlock) {
  while (!has(kLineEndsAndNul, *at) && !(isBlock && at[0] == '*' && at[1] == '/')) {
    ++at;
  }
  return at;
}

bool mayHoldComment(std::string_view text) {
  const std::size_t last = text.size() - 1;
  std::size_t at = text.find('/');
  while (at < last && !isCommentAt(text.data() + at)) {
    at = text.find('/', at + 1);
  }
  return at < last;
}

bool isStringLiteral(std::string_view text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
    return false;
  }
  const std::string_view inside = text.substr(1, text.size() - 2);
  for (std::size_t at = 0; at < inside.size(); ++at) {
    if (inside[at] == '\\') {
      ++at;
      if (at == inside.size() || !has(kStringEscapes, inside[at])) {
        return false;
      }
    } else if (inside[at] == '"' || inside[at] == '\n') {
      return false;
    }
  }
  return true;
}

const char* passPlainToken(const char* at, CppTokenKind& kind) {
  switch (*at) {
    case '\0':
    case '\n':
    case '\r':
    case '\\':
      return nullptr;
    case ' ':
    case '\t':
    case '\v':
    case '\f':
      kind = TK_SPACE;
      return at + 1;
    case '"':
    case '\'':
      kind = *at == '"' ? TK_STRING : TK_CHAR;
      return behindSimpleLiteral(at);
    case '/':
      kind = '/';
      return isCommentAt(at) ? nullptr : at + 1;
    case '|':
    case '&':
    case '=':
    case '!':
    case '<':
    case '>':
    case '#':
      kind = *at == '#' ? (at[1] == '#' ? TK_PASTE : TK_END) : operatorOfTwo(at[0], at[1]);
      if (kind != TK_END) {
        return at + 2;
      }
      break;
    default:
      break;
  }
  if (has(kDigitBytes, *at)) {
    const char* const end = passNumber(at);
    kind = kindOfNumber({at, static_cast<std::size_t>(end - at)});
    return end;
  }
  if (isWordByte(*at)) {
    kind = TK_IDENTIFIER;
    return passAll(kWordBytes, at);
  }
  kind = characterSpelling(*at)->kind;
  return at + 1;
}

}  // namespace qnpp
