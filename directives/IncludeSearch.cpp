#include "directives/IncludeSearch.h"

#include "directives/FileNames.h"
#include "directives/Operand.h"

namespace qnpp {

std::optional<IncludeName> readIncludeName(TokenStream& operand, MessageSink& messages) {
  const auto fail = [&messages](Message message) {
    messages.report(message);
    return std::nullopt;
  };
  IncludeName result;
  const CppTokenKind form = nextOperandToken(operand);
  result.isQuoted = form == TK_STRING;
  if (result.isQuoted) {
    result.name = operand.text().substr(1, operand.text().size() - 2);
  } else if (form == '<') {
    // Blanks count here, and only a ">" that is a token of its own ends the name.
    CppTokenKind kind = operand.peek();
    for (; kind != '>' && kind != TK_NEWLINE && kind != TK_END; kind = operand.peek()) {
      operand.get();
      result.name.append(operand.text());
    }
    if (kind != '>') {
      return fail(Message::FileNameExpected);
    }
    operand.get();
  } else {
    return fail(Message::FileNameExpected);
  }
  if (result.name.empty()) {
    return fail(Message::EmptyFileName);
  }
  checkEndOfOperand(operand, messages);
  return result;
}

std::optional<IncludeOrigin> IncludeSearch::find(const IncludeName& name, std::string_view includer) {
  if (isAbsoluteName(name.name)) {
    if (files_.open(name.name)) {
      return IncludeOrigin::Absolute;
    }
  } else if (name.isQuoted) {
    const std::string directory = directoryOf(includer);
    if (files_.open(directory == "." ? name.name : directory + '/' + name.name)) {
      return IncludeOrigin::BesideIncluder;
    }
  }
  for (const std::string& directory : directories_) {
    if (files_.open(directory + '/' + name.name)) {
      return IncludeOrigin::InIncludeDirectory;
    }
  }
  return std::nullopt;
}

}  // namespace qnpp
