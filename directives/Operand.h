// Operands of #if, #elif, #include and #line. They are read from a closed source over the expanded tokens of the line;
// or from the line itself, where its line end, which stays, is the end of the operand.
#pragma once

#include "lexer/Messages.h"
#include "lexer/TokenStream.h"

namespace qnpp {

/// The next token of an operand: white space there means nothing. TK_END at the end of the operand.
inline CppTokenKind peekOperandToken(TokenStream& operand) {
  const CppTokenKind kind = operand.skipBlanks();
  return kind == TK_NEWLINE && operand.isInFile() ? TK_END : kind;
}

inline CppTokenKind nextOperandToken(TokenStream& operand) {
  const CppTokenKind kind = peekOperandToken(operand);
  return kind == TK_END ? TK_END : operand.get();
}

/// Reports tokens that are left.
inline void checkEndOfOperand(TokenStream& operand, MessageSink& messages) {
  if (peekOperandToken(operand) != TK_END) {
    messages.report(Message::LeftOverTokens);
  }
}

}  // namespace qnpp
