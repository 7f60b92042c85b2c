#include "tools/check/SourceTokens.h"

#include <memory>

#include "lexer/Budget.h"
#include "lexer/CppLexer.h"
#include "lexer/InputFile.h"

namespace qnpp {
namespace {

// What is wrong with a text is told by its run.
class IgnoredMessages final : public MessageSink {
  void deliver(Message /*message*/, std::string_view /*detail*/) override {}
};

}  // namespace

std::vector<std::vector<SourceToken>> tokensOf(std::string_view text) {
  const auto output = std::make_unique<OutputBuffer>();
  IgnoredMessages messages;
  const NameTable names;
  std::uint64_t effectCount = 0;
  InputText input;
  input.reset(text);
  Budget budget;
  CppLexer lexer(input, {*output, messages, names, effectCount, budget});
  std::vector<std::vector<SourceToken>> lines(1);
  std::size_t begin = 0;
  std::int32_t line = 1;
  for (CppTokenKind kind = lexer.next(); kind != TK_END; kind = lexer.next()) {
    const std::size_t end = lexer.endOffset();
    if (kind == TK_NEWLINE) {
      lines.emplace_back();
    } else {
      lines.back().push_back({kind, text.substr(begin, end - begin), line});
    }
    begin = end;
    line = lexer.line();
  }
  return lines;
}

}  // namespace qnpp
