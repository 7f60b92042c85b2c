#include "lexer/PlainToken.h"

#include "lexer/ByteSet.h"
#include "lexer/CppLexer.h"

namespace qnpp {

const char* passSimpleLiteral(const char* at) {
  const char quote = *at;
  const char* const inside = ++at;
  while (*at != quote && *at != '\\' && *at != '\n' && *at != '\0') {
    ++at;
  }
  return *at != quote || (quote == '\'' && at == inside) ? nullptr : at + 1;
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
      return passSimpleLiteral(at);
    case '/':
      kind = '/';
      return at[1] == '/' || at[1] == '*' ? nullptr : at + 1;
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
