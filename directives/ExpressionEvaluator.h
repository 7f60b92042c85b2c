// Constant expressions: the conditions of #if and #elif.
#pragma once

#include <exception>
#include <string_view>
#include <vector>

#include "directives/CppExprValue.h"
#include "directives/WaitingOperator.h"
#include "lexer/Budget.h"
#include "lexer/Messages.h"
#include "lexer/TokenStream.h"

namespace qnpp {

/// Thrown when the divisor of "/" or "%" is zero, or the lowest number is divided by -1. There is no message for it:
/// the program ends by the processor's arithmetic fault. What was written and reported before stays.
class DivisionByZero : public std::exception {
 public:
  const char* what() const noexcept override { return "division by zero in a constant expression"; }
};

/// Expands names in an expression that is read from the line itself.
class NameExpander {
 public:
  /// The next token of the stream is a name. If it is a macro that is to be expanded, takes it, makes its expansion the
  /// current source and returns true.
  virtual bool expandNext() = 0;

 protected:
  ~NameExpander() = default;
};

/// Evaluates constant expressions. Values have 32 bits and a sign or none; every operand is evaluated, there is no
/// short circuit.
class ExpressionEvaluator {
 public:
  struct Result {
    CppExprValue value;
    bool isOk = true;  ///< False when something in the expression was wrong; that has been reported.
  };

  /// All are borrowed and outlive the object.
  ExpressionEvaluator(TokenStream& stream, MessageSink& messages, Budget& budget, NameExpander* names = nullptr)
      : stream_(stream), messages_(messages), budget_(budget), names_(names) {}

  /// Reads one expression from the current source and evaluates it. What is behind it is left. Evaluation goes on
  /// behind errors. Throws DivisionByZero. Its macros have been expanded already, unless `isInLine`: then names are
  /// expanded as they are met.
  Result evaluate(bool isInLine = false);

 private:
  CppTokenKind peek();
  CppTokenKind get();
  CppExprValue fail(Message message);
  CppExprValue readOperand();
  bool readOperator(CppExprValue& value);
  void applyOperators(CppExprValue& value, int precedence);
  CppExprValue closeParenthesis(CppExprValue value);
  void refuseCall();
  CppExprValue readPrimary(CppTokenKind kind);
  CppExprValue readDefined();
  CppExprValue readCharacter(std::string_view literal);

  TokenStream& stream_;
  MessageSink& messages_;
  Budget& budget_;
  NameExpander* const names_;
  bool expandsNames_ = false;
  bool isProtected_ = false;      // The next token, if it is a name.
  bool isBehindDefined_ = false;  // That was the last token taken.
  CppTokenKind peekKind_ = TK_END;
  bool hasPeek_ = false;
  bool isOk_ = true;
  std::vector<WaitingOperator> waiting_;  // What waits for an operand, innermost last.
};

}  // namespace qnpp
