#include "lexer/Spelling.h"

#include <array>
#include <cstddef>

namespace qnpp {
namespace {

constexpr std::string_view kOperatorCharacters = "!#%&()*+,-/:<>?^|~";

consteval std::int16_t kindOfCharacter(char character) {
  if (character == '\n') {
    return TK_NEWLINE;
  }
  if (character == ' ' || character == '\t' || character == '\v' || character == '\f') {
    return TK_SPACE;
  }
  return kOperatorCharacters.find(character) != std::string_view::npos ? static_cast<std::int16_t>(character)
                                                                       : static_cast<std::int16_t>(TK_OTHER);
}

constexpr std::array<char, 256> kBytes = [] {
  std::array<char, 256> bytes{};
  for (std::size_t code = 0; code < bytes.size(); ++code) {
    bytes[code] = static_cast<char>(code);
  }
  return bytes;
}();

consteval std::array<Spelling, 256> makeSpellings() {
  std::array<Spelling, 256> spellings{};
  for (std::size_t code = 0; code < spellings.size(); ++code) {
    spellings[code] = Spelling{&kBytes[code], 1, kindOfCharacter(kBytes[code]), nullptr};
  }
  return spellings;
}

}  // namespace

constinit const std::array<Spelling, 256> kCharacterSpellings = makeSpellings();

}  // namespace qnpp
