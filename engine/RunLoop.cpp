// The run loop: line by line through the input.
#include "engine/CppPreprocessor.h"

namespace qnpp {
namespace {

constexpr bool isConditional(CppTokenKind kind) { return kind >= TK_IF && kind <= TK_ENDIF; }
static_assert(isConditional(TK_IFDEF) && isConditional(TK_IFNDEF) && isConditional(TK_ELSE) && isConditional(TK_ELIF));

}  // namespace

bool CppPreprocessor::run() {
  for (;;) {
    if (skipping_ && isCurrentFile()) {
      fileSource().skipPlainLines();
    }
    if (peekToken() == TK_END) {
      break;
    }
    processLine();
  }
  checkEndOfFile();
  output_.flush();
  return hasError_;
}

void CppPreprocessor::processLine() {
  collectLeadingSpace(leadingSpace_);
  const CppTokenKind kind = nextToken();
  if (kind == '#') {
    processDirective();
  } else if (skipping_) {
    if (kind != TK_NEWLINE) {
      discardLine();
    }
    output_.endLine();  // Each line of a skipped group leaves an empty one.
  } else if (kind == TK_NEWLINE) {
    output_.endLine();  // Without the leading space: a line of blanks becomes an empty one.
  } else {
    writeTextLine(kind);
  }
}

void CppPreprocessor::collectLeadingSpace(std::string& text) {
  text.clear();
  while (isBlank(peekToken())) {
    nextToken();
    text.append(currentText());
  }
}

void CppPreprocessor::writeTextLine(CppTokenKind kind) {
  if (output_.line() != currentFile_->line()) {
    writeLineDirective();
  }
  output_.write(leadingSpace_);
  for (; kind != TK_NEWLINE; kind = copyText()) {
    if (kind == TK_END) {
      return;
    }
    handleTextToken(kind);
  }
  output_.endLine();
}

void CppPreprocessor::handleTextToken(CppTokenKind kind) {
  if (kind == TK_PRAGMA_OP) {
    handlePragmaOperator();
  } else if (isName(kind)) {
    expandInText();
  } else {
    output_.write(currentText());
  }
}

// Takes the next token of the line that has to be handled, and writes the plain ones before it.
CppTokenKind CppPreprocessor::copyText() {
  for (;;) {
    const CppTokenKind kind = isCurrentFile() ? fileSource().copyText() : listSource().copyText();
    if (kind != TK_END || !hasEnclosingSource()) {
      return kind;
    }
    popSource();
  }
}

void CppPreprocessor::processDirective() {
  skipBlanks();
  const CppTokenKind kind = nextToken();
  if (skipping_ && !isConditional(kind)) {
    // One token is read whatever it is. Behind a "#" that stands alone, whose line end has just been taken, it is the
    // first of the next line, and that line goes with it even if it is a directive.
    discardLine();
    output_.endLine();
    return;
  }
  switch (kind) {
    case TK_NEWLINE:
    case TK_END:
      return;  // The null directive.
    case TK_IF:
      return handleIf();
    case TK_IFDEF:
      return handleIfdef(true);
    case TK_IFNDEF:
      return handleIfdef(false);
    case TK_ELIF:
      return handleElif();
    case TK_ELSE:
      return handleElse();
    case TK_ENDIF:
      return handleEndif();
    case TK_INCLUDE:
      return handleInclude();
    case TK_DEFINE:
      return handleDefine();
    case TK_UNDEF:
      return handleUndef();
    case TK_LINE:
      return handleLine();
    case TK_ERROR:
      return handleError();
    case TK_PRAGMA:
      return handlePragma();
    default:
      reportError("the indicated directive is not a recognized preprocessing directive");
      discardLine();
      return;
  }
}

}  // namespace qnpp
