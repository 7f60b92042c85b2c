// Tables of texts and their tokens.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string_view>

#include "tests/unit/support/TokenDump.h"

namespace qnpp {

/// A text, and its tokens in the form of `lexAll`.
struct TokenRow {
  std::string_view text;
  const char* tokens;
};

template <std::size_t Count>
void expectTokens(const TokenRow (&rows)[Count]) {
  for (const TokenRow& row : rows) {
    EXPECT_EQ(lexAll(row.text), row.tokens) << "in: " << visible(row.text);
  }
}

}  // namespace qnpp
