// The operand of _Pragma.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "lexer/TokenStream.h"

namespace qnpp {

/// Reads "(", a string literal and ")" behind the word `_Pragma` and returns the text of the literal; none when a token
/// does not fit. That token is taken and lost.
std::optional<std::string> readPragmaOperator(TokenStream& stream);

/// The text of a string literal without its quotes; a backslash stands for the character behind it, whichever that is.
std::string destringize(std::string_view literal);

}  // namespace qnpp
