// A file as the lexer sees it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "lexer/CppTokenKind.h"

namespace qnpp {

/// A token with its place; the text is that of the file, so that of a comment is the comment.
struct SourceToken {
  CppTokenKind kind = TK_END;
  std::string_view text;
  std::int32_t line = 0;  ///< Where it begins.

  bool isComment() const { return kind == TK_SPACE && text.size() > 1 && text[0] == '/'; }
  bool isLoneQuote() const { return kind == TK_OTHER && text == "\""; }
};

/// The tokens of each line of a text, without the line ends; a comment over several lines belongs to its first. The
/// text is borrowed.
std::vector<std::vector<SourceToken>> tokensOf(std::string_view text);

}  // namespace qnpp
