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

IncludedFile IncludeSearch::find(const IncludeName& name, std::string_view includer) {
  IncludedFile found;
  if (isAbsoluteName(name.name)) {
    found = {files_.open(name.name), IncludeOrigin::Absolute};
  } else if (name.isQuoted) {
    const std::string directory = directoryOf(includer);
    found = {files_.open(directory == "." ? name.name : directory + '/' + name.name), IncludeOrigin::BesideIncluder};
  }
  for (auto directory = directories_.begin(); found.file == nullptr && directory != directories_.end(); ++directory) {
    found = {files_.open(*directory + '/' + name.name), IncludeOrigin::InIncludeDirectory};
  }
  return found;
}

}  // namespace qnpp
