// #define and #undef.
#include "engine/CppPreprocessor.h"

namespace qnpp {

// Reads the name behind #define or #undef, which a continuation may split. Empty, with nothing taken, when there is
// none.
std::string CppPreprocessor::readMacroName() {
  std::string name;
  while (isName(peekToken())) {
    nextToken();
    name.append(currentText());
    while (peekToken() == TK_CONTINUATION) {
      nextToken();
    }
  }
  return name;
}

void CppPreprocessor::handleDefine() {
  skipBlanks();
  const std::string name = readMacroName();
  if (name.empty()) {
    reportError("Invalid macro name");
    return;
  }
  CppMacro macro;
  macro.functionLike = peekToken() == '(';
  if (macro.functionLike && !readParameters(macro.parameters)) {
    return;
  }
  macro.text = readReplacementText();
  const CppMacro* const present = macroTable_.lookup(name);
  // Only the texts are compared. A definition with the same text changes nothing, not even the kind of macro.
  if (present == nullptr || present->text != macro.text) {
    if (present != nullptr) {
      reportWarning("Macro \"" + name + "\" has an incompatible redefinition");
    }
    macroTable_.define(name, std::move(macro));
    dropRetiredMacros();
  }
  skipBlanks();
  nextToken();
}

// Reads "(", the names and ")"; the list may run over line ends. Reports, drops the line and returns false when it is
// no such list.
bool CppPreprocessor::readParameters(std::vector<std::string>& parameters) {
  nextToken();
  skipWhiteSpace();
  CppTokenKind kind = nextToken();
  if (kind == ')') {
    return true;
  }
  for (;;) {
    if (!isName(kind)) {
      reportError("An identifier is expected");
      break;
    }
    parameters.emplace_back(currentText());
    skipWhiteSpace();
    kind = nextToken();
    if (kind == ')') {
      return true;
    }
    if (kind != ',') {
      reportError("An ')' or ',' was expected");
      break;
    }
    skipWhiteSpace();
    kind = nextToken();
  }
  if (kind != TK_END) {
    discardLine();
  }
  return false;
}

// Reads up to the line end, which stays. White space becomes one blank between two tokens and nothing at either end; a
// continued line end is no white space, so it joins what stands before and behind it.
std::string CppPreprocessor::readReplacementText() {
  std::string text;
  bool blankWaits = false;
  skipBlanks();
  for (CppTokenKind kind = peekToken(); kind != TK_NEWLINE && kind != TK_END; kind = peekToken()) {
    nextToken();
    if (kind == TK_SPACE) {
      blankWaits = true;
    } else if (kind != TK_CONTINUATION) {
      if (blankWaits) {
        text.push_back(' ');
        blankWaits = false;
      }
      text.append(currentText());
    }
  }
  return text;
}

void CppPreprocessor::handleUndef() {
  skipBlanks();
  const std::string name = readMacroName();
  if (name.empty()) {
    reportError("Invalid macro name");
    return;
  }
  macroTable_.undefine(name);
  dropRetiredMacros();
  skipBlanks();
  nextToken();  // Normally the line end; whatever else stands here is lost, and the rest is a line of its own.
}

}  // namespace qnpp
