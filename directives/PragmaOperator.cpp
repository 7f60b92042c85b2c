#include "directives/PragmaOperator.h"

#include <utility>

namespace qnpp {

std::optional<std::string> readPragmaOperator(TokenStream& stream) {
  const auto take = [&stream](CppTokenKind wanted) {
    stream.skipWhiteSpace();
    return stream.get() == wanted;
  };
  if (!take('(') || !take(TK_STRING)) {
    return std::nullopt;
  }
  std::string text = destringize(stream.text());
  return take(')') ? std::optional(std::move(text)) : std::nullopt;
}

std::string destringize(std::string_view literal) {
  std::string text;
  bool isEscaped = false;
  for (const char character : literal.substr(1, literal.size() - 2)) {
    isEscaped = character == '\\' && !isEscaped;
    if (!isEscaped) {
      text.push_back(character);
    }
  }
  return text;
}

}  // namespace qnpp
