// The operand of #line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "lexer/Messages.h"
#include "lexer/TokenStream.h"

namespace qnpp {

struct LineOperand {
  std::optional<std::int32_t> line;  ///< In force even if what follows is wrong; the low 32 bits of a larger number.
  std::optional<std::string> fileName;
  std::optional<Message> error;
};

/// Reads a decimal number and perhaps a name in quotes from the closed source `operand`. What is behind them is left.
LineOperand readLineOperand(TokenStream& operand);

}  // namespace qnpp
