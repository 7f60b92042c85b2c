// The evaluator of conditional expressions: any bytes as an expression, macros already expanded. It is read from a list
// of tokens, as the operand of a directive is; in such a list a line end, which a macro of the command line may bring,
// is a token like any other.
//
// What must hold, besides no fault: value, success and messages are those of a reader written straight from the
// grammar, one function for each of its rules; and a division by zero ends the evaluation where that reader meets one.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "FuzzSupport.h"
#include "directives/ExpressionEvaluator.h"
#include "lexer/CppLexer.h"
#include "lexer/TokenList.h"
#include "lexer/TokenStream.h"
#include "macros/CppMacroTable.h"
#include "tests/support/PiecewiseInput.h"
#include "tests/support/Sinks.h"

namespace {

using qnpp::CppTokenKind;

constexpr std::array<std::string_view, 2> kDefinedNames = {"D", "__FILE__"};

// What a lexer works with.
struct LexerSurroundings {
  LexerSurroundings() { output.attach(sink); }

  qnpp::KeptText sink;
  qnpp::KeptMessages messages;
  qnpp::OutputBuffer output;
  qnpp::NameTable names;
  std::uint64_t effectCount = 0;
  qnpp::Budget budget;
  qnpp::LexerContext context{output, messages, names, effectCount, budget};
};

struct Token {
  CppTokenKind kind;
  std::string text;
};

// The tokens between which no white space is left; a last line end is supplied, as it is for every file.
std::vector<Token> tokensOf(std::string_view text) {
  qnpp::PiecewiseInput input(text, qnpp::fuzz::kWhole);
  LexerSurroundings surroundings;
  qnpp::CppLexer lexer(input, surroundings.context);
  std::vector<Token> tokens;
  CppTokenKind last = qnpp::TK_NEWLINE;
  for (CppTokenKind kind = lexer.next(); kind != qnpp::TK_END; kind = lexer.next()) {
    if (!qnpp::isBlank(kind)) {
      tokens.push_back({kind, std::string(lexer.text())});
    }
    last = kind;
  }
  if (last != qnpp::TK_NEWLINE) {
    tokens.push_back({qnpp::TK_NEWLINE, "\n"});
  }
  return tokens;
}

struct Value {
  std::uint32_t bits = 0;
  bool isSigned = true;

  std::int32_t number() const { return static_cast<std::int32_t>(bits); }
};

class Reader {
 public:
  explicit Reader(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

  Value readConditional() {
    const Value condition = readBinary(1);
    if (peek() != '?') {
      return condition;
    }
    get();
    const Value first = readConditional();
    if (peek() != ':') {
      return fail("\":\" expected in constant expression");
    }
    get();
    const Value second = readConditional();
    return condition.bits != 0 ? first : second;
  }

  bool ok() const { return ok_; }
  bool dividesByZero() const { return dividesByZero_; }
  const std::vector<std::string>& messages() const { return messages_; }
  std::size_t tokensLeft() const { return tokens_.size() - at_; }

 private:
  CppTokenKind peek() const { return at_ < tokens_.size() ? tokens_[at_].kind : qnpp::TK_END; }
  Token get() { return at_ < tokens_.size() ? tokens_[at_++] : Token{qnpp::TK_END, ""}; }

  void report(const std::string& message) { messages_.push_back(message); }
  Value fail(const std::string& message) {
    report(message);
    ok_ = false;
    return {};
  }

  static int levelOf(CppTokenKind kind) {
    switch (kind) {
      case qnpp::TK_OROR:
        return 1;
      case qnpp::TK_ANDAND:
        return 2;
      case '|':
        return 3;
      case '^':
        return 4;
      case '&':
        return 5;
      case qnpp::TK_EQ:
      case qnpp::TK_NE:
        return 6;
      case '<':
      case '>':
      case qnpp::TK_LE:
      case qnpp::TK_GE:
        return 7;
      case qnpp::TK_SHL:
      case qnpp::TK_SHR:
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

  // Operators of `level` and above, each level a loop over operands of the next.
  Value readBinary(int level) {
    Value left = readUnary();
    for (int found = levelOf(peek()); found >= level; found = levelOf(peek())) {
      const CppTokenKind op = get().kind;
      const Value right = readBinary(found + 1);
      left = apply(op, left, right);
    }
    return left;
  }

  Value apply(CppTokenKind op, Value a, Value b) {
    const bool isSigned = a.isSigned && b.isSigned;
    const std::uint32_t count = b.bits & 31U;
    switch (op) {
      case qnpp::TK_OROR:
        return {a.bits != 0 || b.bits != 0, isSigned};
      case qnpp::TK_ANDAND:
        return {a.bits != 0 && b.bits != 0, isSigned};
      case '|':
        return {a.bits | b.bits, isSigned};
      case '^':
        return {a.bits ^ b.bits, isSigned};
      case '&':
        return {a.bits & b.bits, isSigned};
      case qnpp::TK_EQ:
        return {a.bits == b.bits, isSigned};
      case qnpp::TK_NE:
        return {a.bits != b.bits, isSigned};
      case '<':
        return {isSigned ? a.number() < b.number() : a.bits < b.bits, isSigned};
      case '>':
        return {isSigned ? a.number() > b.number() : a.bits > b.bits, isSigned};
      case qnpp::TK_LE:
        return {isSigned ? a.number() <= b.number() : a.bits <= b.bits, isSigned};
      case qnpp::TK_GE:
        return {isSigned ? a.number() >= b.number() : a.bits >= b.bits, isSigned};
      case qnpp::TK_SHL:
        return {a.bits << count, isSigned};
      case qnpp::TK_SHR:
        return {a.bits >> count, isSigned};
      case '+':
        return {a.bits + b.bits, isSigned};
      case '-':
        return {a.bits - b.bits, isSigned};
      case '*':
        return {a.bits * b.bits, isSigned};
      default:
        return divide(op == '%', a, b, isSigned);
    }
  }

  Value divide(bool wantsRemainder, Value a, Value b, bool isSigned) {
    const bool overflows = isSigned && a.bits == 0x80000000U && b.number() == -1;
    if (b.bits == 0 || overflows) {
      dividesByZero_ = true;
      return {};
    }
    if (!isSigned) {
      return {wantsRemainder ? a.bits % b.bits : a.bits / b.bits, false};
    }
    const std::int32_t result = wantsRemainder ? a.number() % b.number() : a.number() / b.number();
    return {static_cast<std::uint32_t>(result), true};
  }

  Value readUnary() {
    Value value;
    switch (peek()) {
      case '!':
        get();
        value = readUnary();
        return {value.bits == 0, value.isSigned};
      case '~':
        get();
        value = readUnary();
        return {~value.bits, value.isSigned};
      case '-':
        get();
        value = readUnary();
        return {0U - value.bits, value.isSigned};
      case '+':
        get();
        return readUnary();
      default:
        return readPrimary();
    }
  }

  Value readPrimary() {
    const Token token = get();
    if (qnpp::isName(token.kind)) {
      refuseCall();
      return {};
    }
    switch (token.kind) {
      case '(':
        return readParenthesized();
      case qnpp::TK_DEFINED:
        return readDefined();
      case qnpp::TK_CHAR:
        return readCharacter(token.text);
      case qnpp::TK_DEC_INT:
      case qnpp::TK_OCT_INT:
      case qnpp::TK_HEX_INT: {
        const std::uint32_t bits = readNumber(token);
        return {bits, bits < 0x80000000U};
      }
      case qnpp::TK_DEC_UINT:
      case qnpp::TK_OCT_UINT:
      case qnpp::TK_HEX_UINT:
        return {readNumber(token), false};
      default:
        return fail("Lexical element expected");
    }
  }

  Value readParenthesized() {
    const Value value = readConditional();
    if (peek() != ')') {
      return fail("\")\" expected");
    }
    get();
    refuseCall();
    return value;
  }

  void refuseCall() {
    if (peek() == '(') {
      fail("A function call is not allowed in a constant expression");
    }
  }

  Value readDefined() {
    const bool hasParenthesis = peek() == '(';
    if (hasParenthesis) {
      get();
    }
    const Token name = get();
    Value value{std::count(kDefinedNames.begin(), kDefinedNames.end(), name.text) > 0, true};
    if (name.kind != qnpp::TK_IDENTIFIER) {
      value = fail("Identifier expected for 'defined' operator");
    }
    if (hasParenthesis && peek() != ')') {
      return fail("\")\" expected for \"defined\" operator");
    }
    if (hasParenthesis) {
      get();
    }
    return value;
  }

  static int digitOf(char character) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const char lower = character >= 'A' && character <= 'F' ? static_cast<char>(character - 'A' + 'a') : character;
    return static_cast<int>(kDigits.find(lower) == std::string_view::npos ? 99 : kDigits.find(lower));
  }

  static std::uint32_t readNumber(const Token& token) {
    const bool isDecimal = token.kind == qnpp::TK_DEC_INT || token.kind == qnpp::TK_DEC_UINT;
    const bool isHexadecimal = token.kind == qnpp::TK_HEX_INT || token.kind == qnpp::TK_HEX_UINT;
    const int base = isDecimal ? 10 : isHexadecimal ? 16 : 8;
    std::uint64_t number = 0;
    for (std::size_t at = isHexadecimal ? 2 : 0; at < token.text.size() && digitOf(token.text[at]) < base; ++at) {
      number = number * static_cast<std::uint64_t>(base) + static_cast<std::uint64_t>(digitOf(token.text[at]));
      number = number > 0xFFFFFFFFU ? 0xFFFFFFFFU : number;
    }
    return static_cast<std::uint32_t>(number);
  }

  Value readCharacter(const std::string& literal) {
    Value value;
    std::size_t at = 1;
    const std::size_t end = literal.size() - 1;
    for (int count = 1; at < end; ++count) {
      if (count == 5) {
        report("Too many characters in character literal");
        break;
      }
      const std::int32_t code = static_cast<std::int8_t>(readCode(literal, at, end));
      value.bits = value.bits * 256U + static_cast<std::uint32_t>(code);
      value.isSigned = value.isSigned && code >= 0;
    }
    return value;
  }

  // The low 8 bits of the character or escape at `at`, which moves behind it.
  static std::uint8_t readCode(const std::string& literal, std::size_t& at, std::size_t end) {
    if (literal[at] != '\\') {
      return static_cast<std::uint8_t>(literal[at++]);
    }
    const char escape = literal[++at];
    const bool isHexadecimal = escape == 'x';
    if (isHexadecimal || digitOf(escape) < 8) {
      const int base = isHexadecimal ? 16 : 8;
      std::uint8_t code = 0;
      for (at += isHexadecimal ? 1U : 0U; at < end && digitOf(literal[at]) < base; ++at) {
        code = static_cast<std::uint8_t>(code * base + digitOf(literal[at]));
      }
      return code;
    }
    ++at;
    constexpr std::string_view kNames = "abfnrtv";
    constexpr std::string_view kCodes = "\a\b\f\n\r\t\v";
    const std::size_t index = kNames.find(escape);
    return static_cast<std::uint8_t>(index == std::string_view::npos ? escape : kCodes[index]);
  }

  std::vector<Token> tokens_;
  std::size_t at_ = 0;
  bool ok_ = true;
  bool dividesByZero_ = false;
  std::vector<std::string> messages_;
};

// Keeps the messages, and lets files end silently.
struct Watcher final : qnpp::MessageSink, qnpp::TokenStream::Listener {
  void deliver(qnpp::Message message, std::string_view detail) override {
    messages.push_back(qnpp::textOf(message, detail));
  }
  void fileEnded() override {}
  void fileResumed() override {}

  std::vector<std::string> messages;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using qnpp::fuzz::require;
  const std::string_view text = qnpp::fuzz::textOf(data, size);
  Reader reader(tokensOf(text));
  const Value expected = reader.readConditional();

  LexerSurroundings surroundings;
  Watcher watcher;
  qnpp::TokenStream stream(surroundings.names, surroundings.context, watcher);
  qnpp::CppMacroTable macros(surroundings.names, stream);
  for (const std::string_view name : kDefinedNames) {
    macros.defineFromCommandLine(name, "1");
  }
  auto input = std::make_unique<qnpp::PiecewiseInput>(text, qnpp::fuzz::kWhole);
  stream.pushFile(std::make_unique<qnpp::CppFileScanner>("a.c", std::move(input), surroundings.context));
  const qnpp::TokenStream::Hold hold(stream);
  qnpp::TokenList operand;
  for (CppTokenKind kind = stream.get(); kind != qnpp::TK_END; kind = stream.get()) {
    stream.appendCurrent(kind, operand);
  }
  const qnpp::TokenStream::Closed source(stream, operand);
  qnpp::ExpressionEvaluator::Result result;
  bool dividesByZero = false;
  try {
    result = qnpp::ExpressionEvaluator(stream, watcher, surroundings.budget).evaluate();
  } catch (const qnpp::DivisionByZero&) {
    dividesByZero = true;
  }

  require(dividesByZero == reader.dividesByZero(), "an expression divides by zero when the grammar says so");
  if (dividesByZero) {
    // The reader goes on behind it.
    require(watcher.messages.size() <= reader.messages().size() &&
                std::equal(watcher.messages.begin(), watcher.messages.end(), reader.messages().begin()),
            "the messages before a division by zero are those of the grammar");
    return 0;
  }
  require(watcher.messages == reader.messages(), "the messages are those of the grammar");
  require(result.isOk == reader.ok(), "an expression fails when the grammar says so");
  require(result.value.value == expected.bits && result.value.isSigned == expected.isSigned,
          "the value is that of the grammar");
  return 0;
}
