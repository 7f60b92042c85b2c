#include "directives/LineOperand.h"

#include <string_view>

#include "directives/Operand.h"

namespace qnpp {
namespace {

std::int32_t parseLineNumber(std::string_view digits) {
  std::uint32_t number = 0;
  for (const char digit : digits) {
    number = number * 10U + static_cast<std::uint32_t>(digit - '0');
  }
  return static_cast<std::int32_t>(number);
}

}  // namespace

LineOperand readLineOperand(TokenStream& operand) {
  LineOperand result;
  const CppTokenKind first = nextOperandToken(operand);
  const std::string_view number = operand.text();
  if (first != TK_DEC_INT || number.back() < '0' || number.back() > '9') {
    const bool isZero = first == TK_OCT_INT && number == "0";
    result.error = isZero ? Message::InvalidLineNumber : Message::InvalidLineFormat;
    return result;
  }
  result.line = parseLineNumber(number);
  const CppTokenKind second = nextOperandToken(operand);
  if (second == TK_STRING) {
    result.fileName = operand.text().substr(1, operand.text().size() - 2);
  } else if (second != TK_END) {
    result.error = Message::InvalidLineFormat;
  }
  return result;
}

}  // namespace qnpp
