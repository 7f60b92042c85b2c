// Values of character literals.
#pragma once

#include <string_view>

#include "directives/CppExprValue.h"

namespace qnpp {

struct CharacterLiteral {
  CppExprValue value;
  bool isTooLong = false;  ///< It has more than four characters; `value` is that of the first four.
};

/// The value of a character literal, whose text includes both quotes. Each character shifts what is there by eight bits
/// and adds its code, sign-extended from 8 bits to 32.
CharacterLiteral evaluateCharacterLiteral(std::string_view literal);

}  // namespace qnpp
