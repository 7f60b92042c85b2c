// Operands of #if, #elif, #include and #line.
#include "engine/Sources.h"

namespace qnpp {

// The rest of the line with its white space, macros expanded. The line end has been looked at, but stays.
TokenList CppPreprocessor::readOperand() {
  TokenList tokens;
  for (CppTokenKind kind = peekToken(); kind != TK_NEWLINE && kind != TK_END; kind = peekToken()) {
    nextToken();
    tokens.append(currentSpelling(kind), current_->hideSet());
  }
  return expandTokenList(std::move(tokens));
}

// The next token of an operand; white space there means nothing.
CppTokenKind CppPreprocessor::peekOperandToken() {
  skipBlanks();
  return peekToken();
}

CppTokenKind CppPreprocessor::nextOperandToken() {
  skipBlanks();
  return nextToken();
}

void CppPreprocessor::checkEndOfOperand() {
  if (peekOperandToken() != TK_END) {
    reportError("Invalid characters appear before a new-line in the preprocessor directive");
  }
}

}  // namespace qnpp
