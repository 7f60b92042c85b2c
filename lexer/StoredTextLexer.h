// Lexing of texts in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lexer/CppLexer.h"
#include "lexer/InputFile.h"

namespace qnpp {

/// Lexes texts one after the other with one scanner: replacement lists, arguments, joined texts. A scanner of its own
/// for each would cost a buffer of 32 KB and thirty times the time.
class StoredTextLexer {
 public:
  explicit StoredTextLexer(const LexerContext& context) : lexer_(input_, context), effectCount_(context.effectCount) {}

  /// Calls `take(kind, text)` for each token of `text`; the text of a token is valid during the call only.
  template <typename Take>
  void lex(std::string_view text, Take take) {
    input_.reset(text);
    lexer_.restart(input_);
    for (CppTokenKind kind = lexer_.next(); kind != TK_END; kind = lexer_.next()) {
      take(kind, lexer_.text());
    }
  }

  /// Where in the text the token ends; for use in such a call. It begins where the one before it ends.
  std::size_t endOffset() const { return static_cast<std::size_t>(lexer_.endOffset()); }

  /// See LexerContext; what any lexer of the same context did.
  std::uint64_t effectCount() const { return effectCount_; }

 private:
  InputText input_;
  CppLexer lexer_;
  const std::uint64_t& effectCount_;
};

}  // namespace qnpp
