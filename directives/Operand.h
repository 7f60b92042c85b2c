// Operands of #if, #elif, #include and #line, which are read from a closed source over the expanded tokens of the line.
#pragma once

#include "lexer/Messages.h"
#include "lexer/TokenStream.h"

namespace qnpp {

/// The next token of an operand: white space there means nothing. TK_END at the end of the operand.
inline CppTokenKind peekOperandToken(TokenStream& operand) {
  operand.skipBlanks();
  return operand.peek();
}

inline CppTokenKind nextOperandToken(TokenStream& operand) {
  operand.skipBlanks();
  return operand.get();
}

/// Reports tokens that are left.
inline void checkEndOfOperand(TokenStream& operand, MessageSink& messages) {
  if (peekOperandToken(operand) != TK_END) {
    messages.report(Message::LeftOverTokens);
  }
}

}  // namespace qnpp
