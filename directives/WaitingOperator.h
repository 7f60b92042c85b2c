// What waits for an operand while an expression is read.
#pragma once

#include <cstdint>

#include "directives/CppExprValue.h"
#include "lexer/CppTokenKind.h"

namespace qnpp {

/// A part of a constant expression whose last operand is still being read.
struct WaitingOperator {
  enum class Kind : std::uint8_t {
    Unary,        ///< `op`
    Binary,       ///< `left` `op`
    Parenthesis,  ///< (
    Condition,    ///< `left` ?
    Branch,       ///< `left` ? `middle` :
  };
  Kind kind;
  CppTokenKind op = TK_END;
  CppExprValue left{};
  CppExprValue middle{};
};

}  // namespace qnpp
