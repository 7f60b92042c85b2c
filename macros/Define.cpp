#include "macros/Define.h"

#include <string>
#include <utility>
#include <vector>

namespace qnpp {
namespace {

// Reads the name behind #define or #undef, which a continuation may split. Empty, with nothing taken, when there is
// none.
std::string readMacroName(TokenStream& stream) {
  std::string name;
  while (isName(stream.peek())) {
    stream.get();
    name.append(stream.text());
    while (stream.peek() == TK_CONTINUATION) {
      stream.get();
    }
  }
  return name;
}

// Reads "(", the names and ")"; the list may run over line ends. Reports, drops the line and returns false when it is
// no such list.
bool readParameters(TokenStream& stream, MessageSink& messages, std::vector<std::string>& parameters) {
  stream.get();
  stream.skipWhiteSpace();
  CppTokenKind kind = stream.get();
  if (kind == ')') {
    return true;
  }
  for (;;) {
    if (!isName(kind)) {
      messages.report(Message::ParameterNameExpected);
      break;
    }
    parameters.emplace_back(stream.text());
    stream.skipWhiteSpace();
    kind = stream.get();
    if (kind == ')') {
      return true;
    }
    if (kind != ',') {
      messages.report(Message::ParenthesisOrCommaExpected);
      break;
    }
    stream.skipWhiteSpace();
    kind = stream.get();
  }
  if (kind != TK_END) {
    stream.discardLine();
  }
  return false;
}

// Reads up to the line end, which stays. White space becomes one blank between two tokens and nothing at either end; a
// continued line end is no white space, so it joins what stands before and behind it.
std::string readReplacementText(TokenStream& stream) {
  std::string text;
  bool blankWaits = false;
  stream.skipBlanks();
  for (CppTokenKind kind = stream.peek(); kind != TK_NEWLINE && kind != TK_END; kind = stream.peek()) {
    stream.get();
    if (kind == TK_SPACE) {
      blankWaits = true;
    } else if (kind != TK_CONTINUATION) {
      if (blankWaits) {
        text.push_back(' ');
        blankWaits = false;
      }
      text.append(stream.text());
    }
  }
  return text;
}

}  // namespace

void carryOutDefine(TokenStream& stream, CppMacroTable& macros, MessageSink& messages) {
  stream.skipBlanks();
  const std::string name = readMacroName(stream);
  if (name.empty()) {
    messages.report(Message::InvalidMacroName);
    return;
  }
  CppMacro macro;
  macro.functionLike = stream.peek() == '(';
  if (macro.functionLike && !readParameters(stream, messages, macro.parameters)) {
    return;
  }
  macro.text = readReplacementText(stream);
  const CppMacro* const present = macros.lookup(name);
  // Only the texts are compared. A definition with the same text changes nothing, not even the kind of macro.
  if (present == nullptr || present->text != macro.text) {
    if (present != nullptr) {
      messages.report(Message::IncompatibleRedefinition, name);
    }
    macros.define(name, std::move(macro));
  }
  stream.skipBlanks();
  stream.get();
}

void carryOutUndef(TokenStream& stream, CppMacroTable& macros, MessageSink& messages) {
  stream.skipBlanks();
  const std::string name = readMacroName(stream);
  if (name.empty()) {
    messages.report(Message::InvalidMacroName);
    return;
  }
  macros.undefine(name);
  stream.skipBlanks();
  stream.get();  // Normally the line end; whatever else stands here is lost, and the rest is a line of its own.
}

}  // namespace qnpp
