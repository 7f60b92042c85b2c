#include "macros/Define.h"

#include <optional>
#include <string>
#include <string_view>

namespace qnpp {
namespace {

// The functions that follow go from token to token; carryOutDefine asks them where the stream cannot read on in one go.

// Reads the name behind #define or #undef, which a continuation may split. Empty, with nothing but blanks taken, when
// there is none; that is reported.
std::string collectMacroName(TokenStream& stream, MessageSink& messages) {
  stream.skipBlanks();
  std::string name;
  while (isName(stream.peek())) {
    stream.get();
    name.append(stream.text());
    while (stream.peek() == TK_CONTINUATION) {
      stream.get();
    }
  }
  if (name.empty()) {
    messages.report(Message::InvalidMacroName);
  }
  return name;
}

// Reads "(", the names and ")"; the list may run over line ends. Reports, drops the line and returns false when it is
// no such list.
bool collectParameters(TokenStream& stream, MessageSink& messages, MacroHead& head) {
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
    head.parameterList.append(stream.text()).push_back(',');
    ++head.parameterCount;
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
std::string collectReplacementText(TokenStream& stream) {
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
  MacroHead head;
  Name* entry = nullptr;
  if (stream.readMacroHead(head)) {
    entry = macros.intern(head.name);
  } else {
    const std::string name = collectMacroName(stream, messages);
    if (name.empty()) {
      return;
    }
    head = {};
    head.functionLike = stream.peek() == '(';
    if (head.functionLike && !collectParameters(stream, messages, head)) {
      return;
    }
    entry = macros.intern(name);
  }
  std::string scratch;
  std::optional<std::string_view> text = stream.readReplacementText(scratch);
  if (!text) {
    scratch = collectReplacementText(stream);
    text = scratch;
  }
  const CppMacro* const present = entry->macro;
  // Only the texts are compared. A definition with the same text changes nothing, not even the kind of macro.
  if (present == nullptr || present->text != *text) {
    if (present != nullptr) {
      messages.report(Message::IncompatibleRedefinition, entry->text());
    }
    macros.define(*entry, {*text, {head.parameterList, head.parameterCount}, head.functionLike});
  }
  stream.takeLineEnd();
}

void carryOutUndef(TokenStream& stream, CppMacroTable& macros, MessageSink& messages) {
  std::string_view known;
  if (stream.readMacroName(known)) {
    macros.undefine(known);
  } else {
    const std::string name = collectMacroName(stream, messages);
    if (name.empty()) {
      return;
    }
    macros.undefine(name);
  }
  stream.takeLineEnd();  // Whatever else stands here is lost, and the rest is a line of its own.
}

}  // namespace qnpp
