#include "directives/CharacterLiteral.h"

#include <cstdint>

namespace qnpp {
namespace {

bool isOctalDigit(char digit) { return digit >= '0' && digit <= '7'; }

int hexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  if (digit >= 'a' && digit <= 'f') {
    return digit - 'a' + 10;
  }
  return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

// The code of a simple escape; 0 for any other character, which thus counts as a zero byte.
std::uint8_t simpleEscape(char escape) {
  switch (escape) {
    case '"':
    case '\'':
    case '?':
    case '\\':
      return static_cast<std::uint8_t>(escape);
    case 'a':
      return 7;
    case 'b':
      return 8;
    case 'f':
      return 12;
    case 'n':
      return 10;
    case 'r':
      return 13;
    case 't':
      return 9;
    case 'v':
      return 11;
    default:
      return 0;
  }
}

// Takes one character or escape from the front of `rest`. The digits of an octal or hexadecimal escape go on as long as
// there are any, and their value keeps its low 8 bits.
std::uint8_t takeCharacter(std::string_view& rest) {
  const auto take = [&rest] {
    const char front = rest.front();
    rest.remove_prefix(1);
    return front;
  };
  const char first = take();
  if (first != '\\' || rest.empty()) {
    return static_cast<std::uint8_t>(first);
  }
  unsigned code = 0;
  if (isOctalDigit(rest.front())) {
    while (!rest.empty() && isOctalDigit(rest.front())) {
      code = code * 8U + static_cast<unsigned>(take() - '0');
    }
    return static_cast<std::uint8_t>(code);
  }
  const char escape = take();
  if (escape == 'x') {
    while (!rest.empty() && hexDigitValue(rest.front()) >= 0) {
      code = code * 16U + static_cast<unsigned>(hexDigitValue(take()));
    }
    return static_cast<std::uint8_t>(code);
  }
  return simpleEscape(escape);
}

}  // namespace

CharacterLiteral evaluateCharacterLiteral(std::string_view literal) {
  constexpr int kMostCharacters = 4;
  CharacterLiteral result;
  std::string_view rest = literal.substr(1, literal.size() - 2);
  for (int count = 0; !rest.empty(); ++count) {
    if (count == kMostCharacters) {
      result.isTooLong = true;
      break;
    }
    const auto code = static_cast<std::int8_t>(takeCharacter(rest));
    const CppExprValue character(static_cast<std::uint32_t>(std::int32_t{code}));
    result.value =
        CppExprValue((result.value.value << 8U) + character.value, result.value.isSigned && character.isSigned);
  }
  return result;
}

}  // namespace qnpp
