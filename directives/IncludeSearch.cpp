#include "directives/IncludeSearch.h"

#include "directives/FileNames.h"
#include "directives/Operand.h"
#include "lexer/ByteSet.h"

namespace qnpp {
namespace {

// Bytes in a string that are sure to be items of it, and of this line.
constexpr ByteSet kPlainInName = allBytesBut(std::string_view("\"\\\r\n\0", 5));

}  // namespace

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

std::optional<IncludeName> readQuotedName(TokenStream& stream) {
  IncludeName result{"", true};
  const bool isRead = stream.passAhead([&result](const BytesAhead& bytes) -> const char* {
    const char* const quote = passAll(kBlankBytes, bytes.begin());
    if (*quote != '"') {
      return nullptr;
    }
    const char* const end = passAll(kPlainInName, quote + 1);
    const char* const behind = passAll(kBlankBytes, end + 1);
    if (*end != '"' || end == quote + 1 || *behind != '\n') {
      return nullptr;
    }
    result.name.assign(quote + 1, end);
    return behind;
  });
  return isRead ? std::optional(std::move(result)) : std::nullopt;
}

std::optional<IncludeOrigin> IncludeSearch::find(const IncludeName& name, std::string_view includer) {
  if (isAbsoluteName(name.name)) {
    if (files_.open(name.name)) {
      return IncludeOrigin::Absolute;
    }
  } else if (name.isQuoted) {
    const std::string_view directory = directoryOf(includer);
    if (directory == "." ? files_.open(name.name) : openIn(directory, name.name)) {
      return IncludeOrigin::BesideIncluder;
    }
  }
  return findInDirectories(name.name) ? std::optional(IncludeOrigin::InIncludeDirectory) : std::nullopt;
}

bool IncludeSearch::openIn(std::string_view directory, const std::string& name) {
  path_.assign(directory).append("/").append(name);
  return files_.open(path_);
}

bool IncludeSearch::findInDirectories(const std::string& name) {
  const std::uint64_t moment = files_.moment();
  const auto known = absences_.find(name);
  const bool isKnown = known != absences_.end() && moment != 0 && known->second.moment == moment;
  const std::size_t first = isKnown ? known->second.directories : 0;
  for (std::size_t index = first; index < directories_.size(); ++index) {
    if (openIn(directories_[index], name)) {
      if (!isKnown && index > 0 && moment != 0) {
        absences_[name] = {moment, index};
      }
      return true;
    }
  }
  return false;
}

}  // namespace qnpp
