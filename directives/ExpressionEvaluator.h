// Constant expressions: the conditions of #if and #elif.
#pragma once

#include <exception>
#include <optional>
#include <vector>

#include "directives/CppExprValue.h"
#include "directives/WaitingOperator.h"
#include "lexer/Budget.h"
#include "lexer/Messages.h"
#include "lexer/PlainLine.h"
#include "lexer/TokenStream.h"

namespace qnpp {

/// Thrown when the divisor of "/" or "%" is zero, or the lowest number is divided by -1. There is no message for it:
/// the program ends by the processor's arithmetic fault. What was written and reported before stays.
class DivisionByZero : public std::exception {
 public:
  const char* what() const noexcept override { return "division by zero in a constant expression"; }
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
  ExpressionEvaluator(TokenStream& stream, MessageSink& messages, Budget& budget)
      : stream_(stream), messages_(messages), budget_(budget) {}

  /// Reads one expression, whose macros have been expanded, from the current source and evaluates it. What is behind it
  /// is left. Evaluation goes on behind errors. Throws DivisionByZero.
  Result evaluate();

  /// Takes the rest of the line of a file, with its line end, if that is an expression without fault and can be read
  /// as a PlainLine. Otherwise there is no value, and nothing has been taken.
  std::optional<CppExprValue> evaluateLine(PlainLine::Macros& macros);

 private:
  TokenStream& stream_;
  MessageSink& messages_;
  Budget& budget_;
  std::vector<WaitingOperator> waiting_;  // What waits for an operand, innermost last; empty between evaluations.
};

}  // namespace qnpp
