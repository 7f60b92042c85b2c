// Operands of #if, #elif, #include and #line.
#include "engine/Sources.h"

namespace qnpp {

// Reads the rest of the line with its white space into `operand_`, macros expanded. The line end has been looked at,
// but stays.
void CppPreprocessor::readOperand() {
  operand_.clear();
  for (CppTokenKind kind = peekToken(); kind != TK_NEWLINE && kind != TK_END; kind = peekToken()) {
    nextToken();
    operand_.append(currentSpelling(kind), current_->hideSet());
  }
  expandTokenList(operand_);
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
