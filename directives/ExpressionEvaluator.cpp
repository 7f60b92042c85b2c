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

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "directives/CharacterLiteral.h"
#include "directives/Operand.h"

namespace qnpp {
namespace {

// Binding strength of the binary operators; 0 for any other token.
constexpr auto kPrecedences = [] {
  std::array<std::uint8_t, TK_PRAGMA_OP + 1> precedences{};
  std::uint8_t precedence = 0;
  const auto addTighter = [&](std::initializer_list<CppTokenKind> operators) {
    ++precedence;
    for (const CppTokenKind op : operators) {
      precedences[static_cast<std::size_t>(op)] = precedence;
    }
  };
  addTighter({TK_OROR});
  addTighter({TK_ANDAND});
  addTighter({'|'});
  addTighter({'^'});
  addTighter({'&'});
  addTighter({TK_EQ, TK_NE});
  addTighter({'<', '>', TK_LE, TK_GE});
  addTighter({TK_SHL, TK_SHR});
  addTighter({'+', '-'});
  addTighter({'*', '/', '%'});
  return precedences;
}();

int precedenceOf(CppTokenKind kind) { return kPrecedences[static_cast<std::size_t>(kind)]; }

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

bool canDivide(CppExprValue a, CppExprValue b) {
  const bool isSigned = a.isSigned && b.isSigned;
  return b.value != 0 && !(isSigned && a.value == 0x80000000U && b.value == 0xFFFFFFFFU);
}

std::uint32_t divide(CppTokenKind op, CppExprValue a, CppExprValue b) {
  if (a.isSigned && b.isSigned) {
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
std::uint32_t parseInteger(std::string_view text, unsigned base) {
  constexpr std::uint32_t kLargest = 0xFFFFFFFFU;
  std::uint64_t number = 0;
  for (const char byte : base == 16 ? text.substr(2) : text) {  // Behind "0x".
    const bool isDigit = byte >= '0' && byte <= '9';
    const unsigned digit = static_cast<unsigned>(isDigit ? byte - '0' : (byte | 0x20) - 'a' + 10);
    if (digit >= base) {
      break;  // The suffix.
    }
    number = number * base + digit;
    if (number > kLargest) {
      return kLargest;
    }
  }
  return static_cast<std::uint32_t>(number);
}

// The tokens of an expression from the current source of the stream.
class StreamTokens {
 public:
  StreamTokens(TokenStream& stream, MessageSink& messages) : stream_(stream), messages_(messages) {}

  CppTokenKind look(bool /*isBehindDefined*/) { return peekOperandToken(stream_); }
  void take(CppTokenKind kind) {
    if (kind != TK_END) {
      stream_.get();
    }
  }
  std::string_view text() { return stream_.text(); }
  bool isMacro() {
    const Name* const name = stream_.name();
    const bool isMacro = name != nullptr && name->macro != nullptr;
    stream_.observe([&](Observer& observer) { observer.askedFor(stream_.text(), isMacro); });
    return isMacro;
  }
  void report(Message message) { messages_.report(message); }
  [[noreturn]] void refuseDivision() { throw DivisionByZero(); }

 private:
  TokenStream& stream_;
  MessageSink& messages_;
};

// Those of a plain line, which is given up where there would be something to report.
class LineTokens {
 public:
  explicit LineTokens(PlainLine& line) : line_(line) {}

  CppTokenKind look(bool isBehindDefined) { return line_.next(isBehindDefined); }
  void take(CppTokenKind /*kind*/) {}
  std::string_view text() { return line_.text(); }
  bool isMacro() { return line_.isMacro(); }
  void report(Message /*message*/) { line_.giveUp(); }
  void refuseDivision() { line_.giveUp(); }

 private:
  PlainLine& line_;
};

// One evaluation.
template <typename Tokens>
class Evaluation {
 public:
  Evaluation(Tokens tokens, Budget& budget, std::vector<WaitingOperator>& waiting)
      : tokens_(tokens), budget_(budget), waiting_(waiting) {
    waiting_.clear();
  }

  ExpressionEvaluator::Result run();
  // Kind of the token behind what has been read.
  CppTokenKind peek(bool isBehindDefined = false);

 private:
  CppTokenKind get(bool isBehindDefined = false);
  CppExprValue fail(Message message);
  CppExprValue readOperand();
  bool readOperator(CppExprValue& value);
  void applyOperators(CppExprValue& value, int precedence);
  CppExprValue applyBinary(const WaitingOperator& binary, CppExprValue right);
  CppExprValue closeParenthesis(CppExprValue value);
  void refuseCall();
  CppExprValue readPrimary(CppTokenKind kind);
  CppExprValue readDefined();
  CppExprValue readCharacter(std::string_view literal);

  Tokens tokens_;
  Budget& budget_;
  std::vector<WaitingOperator>& waiting_;
  CppTokenKind peekKind_ = TK_END;
  bool hasPeek_ = false;
  bool isOk_ = true;
};

template <typename Tokens>
ExpressionEvaluator::Result Evaluation<Tokens>::run() {
  for (;;) {
    CppExprValue value = readOperand();
    if (!readOperator(value)) {
      return {value, isOk_};
    }
  }
}

// No step is taken without a look at the next token, so this is where an expression without end is paid for.
template <typename Tokens>
CppTokenKind Evaluation<Tokens>::peek(bool isBehindDefined) {
  if (!hasPeek_) {
    budget_.spend();
    peekKind_ = tokens_.look(isBehindDefined);
    hasPeek_ = true;
  }
  return peekKind_;
}

// Takes what has been looked at.
template <typename Tokens>
CppTokenKind Evaluation<Tokens>::get(bool isBehindDefined) {
  const CppTokenKind kind = peek(isBehindDefined);
  tokens_.take(kind);
  hasPeek_ = false;
  return kind;
}

template <typename Tokens>
CppExprValue Evaluation<Tokens>::fail(Message message) {
  tokens_.report(message);
  isOk_ = false;
  return {};
}

// Reads unary operators and open parentheses, then a primary.
template <typename Tokens>
CppExprValue Evaluation<Tokens>::readOperand() {
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
template <typename Tokens>
bool Evaluation<Tokens>::readOperator(CppExprValue& value) {
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
template <typename Tokens>
void Evaluation<Tokens>::applyOperators(CppExprValue& value, int precedence) {
  for (; !waiting_.empty(); waiting_.pop_back()) {
    const WaitingOperator& innermost = waiting_.back();
    if (innermost.kind == WaitingOperator::Kind::Unary) {
      value = applyUnary(innermost.op, value);
    } else if (innermost.kind == WaitingOperator::Kind::Binary && precedenceOf(innermost.op) >= precedence) {
      value = applyBinary(innermost, value);
    } else {
      return;
    }
  }
}

template <typename Tokens>
CppExprValue Evaluation<Tokens>::applyBinary(const WaitingOperator& binary, CppExprValue right) {
  if ((binary.op == '/' || binary.op == '%') && !canDivide(binary.left, right)) {
    tokens_.refuseDivision();
    return {};
  }
  return qnpp::applyBinary(binary.op, binary.left, right);
}

template <typename Tokens>
CppExprValue Evaluation<Tokens>::closeParenthesis(CppExprValue value) {
  if (peek() != ')') {
    return fail(Message::ParenthesisExpected);
  }
  get();
  refuseCall();
  return value;
}

// A "(" behind an operand looks like a call of a function; it stays, and the operand keeps its value.
template <typename Tokens>
void Evaluation<Tokens>::refuseCall() {
  if (peek() == '(') {
    fail(Message::CallInExpression);
  }
}

template <typename Tokens>
CppExprValue Evaluation<Tokens>::readPrimary(CppTokenKind kind) {
  get();
  if (isName(kind)) {
    refuseCall();
    return {};  // What macro expansion has left of a name is 0.
  }
  const std::string_view text = tokens_.text();
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

template <typename Tokens>
CppExprValue Evaluation<Tokens>::readDefined() {
  const bool isParenthesized = peek(true) == '(';
  if (isParenthesized) {
    get();
  }
  CppExprValue value;
  // Only an identifier will do here, unlike behind #ifdef, where a directive word is a name too.
  if (get(true) == TK_IDENTIFIER) {
    value.value = tokens_.isMacro() ? 1U : 0U;
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

template <typename Tokens>
CppExprValue Evaluation<Tokens>::readCharacter(std::string_view literal) {
  const CharacterLiteral read = evaluateCharacterLiteral(literal);
  if (read.isTooLong) {
    tokens_.report(Message::TooManyCharacters);  // The value so far serves.
  }
  return read.value;
}

}  // namespace

ExpressionEvaluator::Result ExpressionEvaluator::evaluate() {
  return Evaluation(StreamTokens(stream_, messages_), budget_, waiting_).run();
}

std::optional<CppExprValue> ExpressionEvaluator::evaluateLine(PlainLine::Macros& macros) {
  CppExprValue value;
  const bool isRead = stream_.passAhead([&](const BytesAhead& bytes) -> const char* {
    PlainLine line(bytes.begin(), stream_.names(), macros);
    Evaluation evaluation(LineTokens(line), budget_, waiting_);
    value = evaluation.run().value;
    if (evaluation.peek() != TK_END || line.end() == nullptr) {
      return nullptr;
    }
    budget_.spendOnExpansion(line.expansionWork());
    return line.end();
  });
  if (!isRead) {
    return std::nullopt;
  }
  stream_.takeLineEnd();
  return value;
}

}  // namespace qnpp
