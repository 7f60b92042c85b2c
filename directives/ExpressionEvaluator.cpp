// Constant expressions: the conditions of #if and #elif.
//
// The grammar, from the loosest to the tightest binding:
//
//   conditional:  a ? b : c      right to left, both branches are conditionals
//   binary:       || && | ^ & == != < > <= >= << >> + - * / %      left to right
//   unary:        ! ~ - +
//   primary:      number, character, name, defined, ( conditional )
//
// Every operand is evaluated: there is no short circuit, and an error in a branch that is not taken is an error. What
// waits for an operand (an operator with its left operand, an open parenthesis, a "?" or ":") waits on a stack of its
// own, so nesting is limited by memory alone.
#include "directives/ExpressionEvaluator.h"

#include <charconv>
#include <cstdint>
#include <system_error>

#include "directives/CharacterLiteral.h"
#include "directives/Operand.h"

namespace qnpp {
namespace {

// Binding strength of a binary operator; 0 for any other token.
int precedenceOf(CppTokenKind kind) {
  switch (kind) {
    case TK_OROR:
      return 1;
    case TK_ANDAND:
      return 2;
    case '|':
      return 3;
    case '^':
      return 4;
    case '&':
      return 5;
    case TK_EQ:
    case TK_NE:
      return 6;
    case '<':
    case '>':
    case TK_LE:
    case TK_GE:
      return 7;
    case TK_SHL:
    case TK_SHR:
      return 8;
    case '+':
    case '-':
      return 9;
    case '*':
    case '/':
    case '%':
      return 10;
    default:
      return 0;
  }
}

bool isUnaryOperator(CppTokenKind kind) { return kind == '!' || kind == '~' || kind == '-' || kind == '+'; }

CppExprValue applyUnary(CppTokenKind op, CppExprValue a) {
  switch (op) {
    case '!':
      return {a.value == 0 ? 1U : 0U, a.isSigned};
    case '~':
      return {~a.value, a.isSigned};
    case '-':
      return {0U - a.value, a.isSigned};
    default:
      return a;
  }
}

// -1, 0 or 1 as `a` is less than, equal to or greater than `b`; signed numbers when both are.
int compare(CppExprValue a, CppExprValue b) {
  if (a.isSigned && b.isSigned) {
    const auto left = static_cast<std::int32_t>(a.value);
    const auto right = static_cast<std::int32_t>(b.value);
    return (left > right) - (left < right);
  }
  return (a.value > b.value) - (a.value < b.value);
}

std::uint32_t divide(CppTokenKind op, CppExprValue a, CppExprValue b) {
  const bool isSigned = a.isSigned && b.isSigned;
  if (b.value == 0 || (isSigned && a.value == 0x80000000U && b.value == 0xFFFFFFFFU)) {
    throw DivisionByZero();
  }
  if (isSigned) {
    const auto left = static_cast<std::int32_t>(a.value);
    const auto right = static_cast<std::int32_t>(b.value);
    return static_cast<std::uint32_t>(op == '/' ? left / right : left % right);
  }
  return op == '/' ? a.value / b.value : a.value % b.value;
}

// Signed only if both operands are, comparisons and logical operators included.
CppExprValue applyBinary(CppTokenKind op, CppExprValue a, CppExprValue b) {
  const bool isSigned = a.isSigned && b.isSigned;
  const auto make = [isSigned](std::uint32_t bits) { return CppExprValue(bits, isSigned); };
  const auto truth = [isSigned](bool holds) { return CppExprValue(holds ? 1U : 0U, isSigned); };
  switch (op) {
    case TK_OROR:
      return truth(a.value != 0 || b.value != 0);
    case TK_ANDAND:
      return truth(a.value != 0 && b.value != 0);
    case '|':
      return make(a.value | b.value);
    case '^':
      return make(a.value ^ b.value);
    case '&':
      return make(a.value & b.value);
    case TK_EQ:
      return truth(a.value == b.value);
    case TK_NE:
      return truth(a.value != b.value);
    case '<':
      return truth(compare(a, b) < 0);
    case '>':
      return truth(compare(a, b) > 0);
    case TK_LE:
      return truth(compare(a, b) <= 0);
    case TK_GE:
      return truth(compare(a, b) >= 0);
    case TK_SHL:
      return make(a.value << (b.value % 32U));
    case TK_SHR:
      return make(a.value >> (b.value % 32U));  // Never copies the sign, not even of a signed value.
    case '+':
      return make(a.value + b.value);
    case '-':
      return make(a.value - b.value);
    case '*':
      return make(a.value * b.value);
    default:
      return make(divide(op, a, b));
  }
}

// The digits up to the suffix; the largest 32-bit number when they are too many.
std::uint32_t parseInteger(std::string_view text, int base) {
  if (base == 16) {
    text.remove_prefix(2);  // "0x"
  }
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc::result_out_of_range ? 0xFFFFFFFFU : number;
}

}  // namespace

ExpressionEvaluator::Result ExpressionEvaluator::evaluate(bool isInLine) {
  expandsNames_ = isInLine;
  isProtected_ = isBehindDefined_ = false;
  hasPeek_ = false;
  isOk_ = true;
  waiting_.clear();
  for (;;) {
    CppExprValue value = readOperand();
    if (!readOperator(value)) {
      return {value, isOk_};
    }
  }
}

// No step is taken without a look at the next token, so this is where an expression without end is paid for.
CppTokenKind ExpressionEvaluator::peek() {
  if (hasPeek_) {
    return peekKind_;
  }
  budget_.spend();
  do {
    peekKind_ = peekOperandToken(stream_);
  } while (expandsNames_ && !isProtected_ && isName(peekKind_) && names_->expandNext());
  hasPeek_ = true;
  return peekKind_;
}

// Takes what has been looked at. A name behind `defined`, or behind a parenthesis there, is not expanded: not even
// where that is no operand, as in `defined defined A`.
CppTokenKind ExpressionEvaluator::get() {
  const CppTokenKind kind = peek();
  if (kind != TK_END) {
    stream_.get();
  }
  hasPeek_ = false;
  isProtected_ = kind == TK_DEFINED || (kind == '(' && isBehindDefined_);
  isBehindDefined_ = kind == TK_DEFINED;
  return kind;
}

CppExprValue ExpressionEvaluator::fail(Message message) {
  messages_.report(message);
  isOk_ = false;
  return {};
}

// Reads unary operators and open parentheses, then a primary.
CppExprValue ExpressionEvaluator::readOperand() {
  for (;;) {
    const CppTokenKind kind = peek();
    if (isUnaryOperator(kind)) {
      waiting_.push_back({WaitingOperator::Kind::Unary, get()});
    } else if (kind == '(') {
      get();
      waiting_.push_back({WaitingOperator::Kind::Parenthesis});
    } else {
      return readPrimary(kind);
    }
  }
}

// Behind an operand: finishes what the next token does not bind into, and reads that token if it wants another
// operand. Returns false when the expression is complete; `value` is then its value.
bool ExpressionEvaluator::readOperator(CppExprValue& value) {
  for (;;) {
    const CppTokenKind kind = peek();
    const int precedence = precedenceOf(kind);
    applyOperators(value, precedence);
    if (precedence > 0) {
      waiting_.push_back({WaitingOperator::Kind::Binary, get(), value});
      return true;
    }
    if (kind == '?') {
      get();
      waiting_.push_back({WaitingOperator::Kind::Condition, kind, value});
      return true;
    }
    if (waiting_.empty()) {
      return false;
    }
    const WaitingOperator innermost = waiting_.back();
    waiting_.pop_back();
    if (innermost.kind == WaitingOperator::Kind::Parenthesis) {
      value = closeParenthesis(value);
    } else if (innermost.kind == WaitingOperator::Kind::Branch) {
      value = innermost.left.value != 0 ? innermost.middle : value;
    } else if (kind == ':') {
      get();
      waiting_.push_back({WaitingOperator::Kind::Branch, kind, innermost.left, value});
      return true;
    } else {
      value = fail(Message::ColonExpected);
    }
  }
}

// Applies the waiting operators that bind at least as tightly as one of `precedence`.
void ExpressionEvaluator::applyOperators(CppExprValue& value, int precedence) {
  for (; !waiting_.empty(); waiting_.pop_back()) {
    const WaitingOperator& innermost = waiting_.back();
    if (innermost.kind == WaitingOperator::Kind::Unary) {
      value = applyUnary(innermost.op, value);
    } else if (innermost.kind == WaitingOperator::Kind::Binary && precedenceOf(innermost.op) >= precedence) {
      value = applyBinary(innermost.op, innermost.left, value);
    } else {
      return;
    }
  }
}

CppExprValue ExpressionEvaluator::closeParenthesis(CppExprValue value) {
  if (peek() != ')') {
    return fail(Message::ParenthesisExpected);
  }
  get();
  refuseCall();
  return value;
}

// A "(" behind an operand looks like a call of a function; it stays, and the operand keeps its value.
void ExpressionEvaluator::refuseCall() {
  if (peek() == '(') {
    fail(Message::CallInExpression);
  }
}

CppExprValue ExpressionEvaluator::readPrimary(CppTokenKind kind) {
  get();
  if (isName(kind)) {
    refuseCall();
    return {};  // What macro expansion has left of a name is 0.
  }
  const std::string_view text = stream_.text();
  switch (kind) {
    case TK_DEFINED:
      return readDefined();
    case TK_CHAR:
      return readCharacter(text);
    case TK_DEC_INT:
      return CppExprValue(parseInteger(text, 10));
    case TK_OCT_INT:
      return CppExprValue(parseInteger(text, 8));
    case TK_HEX_INT:
      return CppExprValue(parseInteger(text, 16));
    case TK_DEC_UINT:
      return {parseInteger(text, 10), false};
    case TK_OCT_UINT:
      return {parseInteger(text, 8), false};
    case TK_HEX_UINT:
      return {parseInteger(text, 16), false};
    default:
      return fail(Message::OperandExpected);
  }
}

CppExprValue ExpressionEvaluator::readDefined() {
  const bool isParenthesized = peek() == '(';
  if (isParenthesized) {
    get();
  }
  CppExprValue value;
  // Only an identifier will do here, unlike behind #ifdef, where a directive word is a name too.
  if (get() == TK_IDENTIFIER) {
    const Name* const name = stream_.name();
    value.value = name != nullptr && name->macro != nullptr ? 1U : 0U;
    stream_.observe([&](Observer& observer) { observer.askedFor(stream_.text(), value.value != 0); });
  } else {
    fail(Message::NameExpectedAfterDefined);
  }
  if (isParenthesized) {
    if (peek() == ')') {
      get();
    } else {
      value = fail(Message::ParenthesisExpectedAfterDefined);
    }
  }
  return value;
}

CppExprValue ExpressionEvaluator::readCharacter(std::string_view literal) {
  const CharacterLiteral read = evaluateCharacterLiteral(literal);
  if (read.isTooLong) {
    messages_.report(Message::TooManyCharacters);  // The value so far serves.
  }
  return read.value;
}

}  // namespace qnpp
