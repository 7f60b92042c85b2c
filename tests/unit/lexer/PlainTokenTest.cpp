// Tokens found without the scanner.
#include "lexer/PlainToken.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

#include "lexer/StoredTextLexer.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

std::string append(std::string tokens, CppTokenKind kind, std::string_view text) {
  return std::move(tokens) + (tokens.empty() ? "" : " ") + dumpToken(isWord(kind) ? TK_IDENTIFIER : kind, text);
}

// The tokens of a text; "?" where it takes the scanner.
std::string plainTokens(const std::string& text) {
  std::string tokens;
  const char* at = text.c_str();
  while (at != text.c_str() + text.size()) {
    CppTokenKind kind = TK_END;
    const char* const end = passPlainToken(at, kind);
    if (end == nullptr) {
      return append(std::move(tokens), TK_OTHER, "?");
    }
    tokens = append(std::move(tokens), kind, {at, static_cast<std::size_t>(end - at)});
    at = end;
  }
  return tokens;
}

TEST(PlainTokenTest, KnowsWhatMostTextsConsistOf) {
  struct Row {
    const char* text;
    const char* tokens;
  };
  constexpr Row kRows[] = {
      {"", ""},
      {"x + 1", "IDENTIFIER:x SPACE + SPACE DEC_INT:1"},
      {"a##b #c", "IDENTIFIER:a PASTE IDENTIFIER:b SPACE # IDENTIFIER:c"},
      {"###", "PASTE #"},
      {"\"s\"'c'", "STRING:\"s\" CHAR:'c'"},
      {"<<=>===", "SHL OTHER:= GE EQ"},
      {"0x1fUL 07lu 08 9u 0x",
       "HEX_UINT:0x1fUL SPACE OCT_UINT:07lu SPACE OCT_INT:0 DEC_INT:8 SPACE DEC_UINT:9u "
       "SPACE OCT_INT:0 IDENTIFIER:x"},
      {"a/b", "IDENTIFIER:a / IDENTIFIER:b"},
      {"a//", "IDENTIFIER:a OTHER:?"},
      {"/*", "OTHER:?"},
      {"''", "OTHER:?"},
      {"\"x", "OTHER:?"},
      {"\"\\\"\"", "OTHER:?"},
      {"a\\", "IDENTIFIER:a OTHER:?"},
      {"a\n", "IDENTIFIER:a OTHER:?"},
      {"a\r", "IDENTIFIER:a OTHER:?"},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(plainTokens(row.text), row.tokens) << row.text;
  }
}

// Wherever it gives an answer, that is the scanner's.
TEST(PlainTokenTest, SaysTheSameAsTheScanner) {
  constexpr std::string_view kBytes = "aeLuUxX_0189 \t.\"'#<>=&|!/*\\()%;\x80";
  std::mt19937 random(11);
  LexerSetting setting;
  StoredTextLexer lexer(setting.context);
  int answered = 0;
  for (int round = 0; round < 50000; ++round) {
    std::string text(1 + random() % 8, ' ');
    for (char& byte : text) {
      byte = kBytes[random() % kBytes.size()];
    }
    const std::string tokens = plainTokens(text);
    if (tokens.find('?') != std::string::npos) {
      continue;
    }
    ++answered;
    std::string expected;
    lexer.lex(text, [&expected](CppTokenKind kind, std::string_view token) {
      expected = append(std::move(expected), kind, token);
    });
    ASSERT_EQ(tokens, expected) << text;
  }
  EXPECT_GT(answered, 10000);
}

}  // namespace
}  // namespace qnpp
