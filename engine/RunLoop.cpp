// The run loop: line by line through the input.
#include "engine/CppPreprocessor.h"

namespace qnpp {

void CppPreprocessor::run() {
  processLines();
  output_.flush();
}

void CppPreprocessor::processLines() {
  for (;;) {
    leadingSpace_.clear();
    const CppTokenKind directive =
        conditionals_.isSkipping() ? stream_.skipWholeLines(conditionals_) : stream_.passLineStart(leadingSpace_);
    if (directive != TK_END) {
      lexerContext_.budget.spend();
      if (directive == TK_OTHER) {
        beginTextLine();
        writeTextLine(stream_.copyText());
      } else if (directive == '#') {
        processDirective();
      } else {
        carryOutDirective(directive);
      }
      continue;
    }
    if (stream_.peek() == TK_END) {
      break;
    }
    lexerContext_.budget.spend();
    processLine();
  }
  checkEndOfFile();
}

void CppPreprocessor::processLine() {
  observe([this](Observer& observer) { observer.lineBegan(conditionals_.isSkipping()); });
  collectLeadingSpace();
  const CppTokenKind kind = stream_.get();
  if (kind == '#') {
    processDirective();
    observe([this](Observer& observer) { observer.directiveEnded(conditionals_.isSkipping()); });
  } else if (conditionals_.isSkipping()) {
    if (kind != TK_NEWLINE) {
      stream_.discardLine();
    }
    output_.endLine();  // Each line of a skipped group leaves an empty one.
  } else if (kind == TK_NEWLINE) {
    output_.endLine();  // Without the leading space: a line of blanks becomes an empty one.
  } else {
    beginTextLine();
    writeTextLine(kind);
  }
}

void CppPreprocessor::collectLeadingSpace() {
  while (isBlank(stream_.peek())) {
    stream_.get();
    leadingSpace_.append(stream_.text());
    if (stream_.passBlanks()) {
      leadingSpace_.append(stream_.text());
    }
  }
}

void CppPreprocessor::beginTextLine() {
  guardedFiles_.seeText();
  if (output_.line() != stream_.file()->line()) {
    markLine(LineMark::Corrected);
  }
  output_.write(leadingSpace_);
}

void CppPreprocessor::writeTextLine(CppTokenKind kind) {
  for (; kind != TK_NEWLINE; kind = stream_.copyText()) {
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
    expander_.expandInText();
  } else {
    output_.write(stream_.text(), stream_.origin());
  }
}

void CppPreprocessor::processDirective() {
  stream_.skipBlanks();
  carryOutDirective(stream_.get());
}

void CppPreprocessor::carryOutDirective(CppTokenKind kind) {
  if (guardedFiles_.isFollowing()) {
    guardedFiles_.seeDirective(kind, conditionals_.isSkipping(), conditionals_.depth(), traces(),
                               stream_.isInFile() ? stream_.file() : nullptr);
  }
  if (conditionals_.isSkipping() && !isConditional(kind)) {
    // One token is read whatever it is. Behind a "#" that stands alone, whose line end has just been taken, it is the
    // first of the next line, and that line goes with it even if it is a directive.
    stream_.discardLine();
    output_.endLine();
    return;
  }
  observe([kind](Observer& observer) { observer.directiveBegan(kind); });
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
      reportError(Message::UnknownDirective);
      stream_.discardLine();
      return;
  }
}

}  // namespace qnpp
