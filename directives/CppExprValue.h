// Values of constant expressions.
#pragma once

#include <cstdint>

namespace qnpp {

/// A value of a conditional expression: 32 bits, and whether they are read as a signed number.
struct CppExprValue {
  std::uint32_t value = 0;
  bool isSigned = true;

  CppExprValue() = default;
  /// A bare number: signed when it is below 2^31.
  explicit CppExprValue(std::uint32_t number) : value(number), isSigned(number < 0x80000000U) {}
  CppExprValue(std::uint32_t number, bool withSign) : value(number), isSigned(withSign) {}
};

}  // namespace qnpp
