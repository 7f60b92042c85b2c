// What a group of a conditional leaves when it is skipped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "lexer/CppLexer.h"
#include "lexer/InputFile.h"

namespace qnpp {

/// Skips groups of which nobody is to see that they are skipped: their text is in memory, and what would be written is
/// only counted.
class GroupSkipper {
 public:
  /// Both are borrowed and outlive the object.
  GroupSkipper(const NameTable& names, Budget& budget)
      : context_{output_, messages_, names, effectCount_, budget}, lexer_(input_, context_) {}

  /// How many line ends come out for a group. `text` holds the line end before it, the group, the `#endif` and one byte
  /// more; `conditionals` stands in the group. None where anything else comes out, the `#endif` is not the one that
  /// ends the group, or it takes more to know.
  std::optional<std::uint64_t> countLineEnds(std::string_view text, NestedConditionals& conditionals) {
    input_.reset(text);
    lexer_.restart(input_);
    if (lexer_.next() != TK_NEWLINE) {
      return std::nullopt;
    }
    const std::uint64_t begin = output_.position();
    const std::uint64_t messages = messages_.count();
    const bool isEnd = lexer_.skipWholeLines(conditionals) == TK_ENDIF && lexer_.endOffset() + 1 == text.size() &&
                       messages_.count() == messages;
    const std::uint64_t count = output_.position() - begin;
    output_.flush();
    return isEnd ? std::optional(count) : std::nullopt;
  }

 private:
  class Unheard final : public MessageSink {
    void deliver(Message /*message*/, std::string_view /*detail*/) override {}
  };

  InputText input_;
  OutputBuffer output_;  // Without a sink.
  Unheard messages_;
  std::uint64_t effectCount_ = 0;
  LexerContext context_;
  CppLexer lexer_;
};

}  // namespace qnpp
