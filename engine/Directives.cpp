// The handlers of the directives. What a directive means is found in directives/ and macros/; here it is tied to the
// stream of tokens, the output and the messages, and each handler says who takes the line end.
#include "directives/LineOperand.h"
#include "directives/Operand.h"
#include "directives/PragmaOperator.h"
#include "engine/CppPreprocessor.h"
#include "macros/Define.h"

namespace qnpp {

void CppPreprocessor::handleDefine() { carryOutDefine(stream_, macroTable_, diagnostics_); }

void CppPreprocessor::handleUndef() { carryOutUndef(stream_, macroTable_, diagnostics_); }

// Reads the rest of the line with its white space into `operand_`, macros expanded. The line end has been looked at,
// but stays. Under a Hold.
void CppPreprocessor::readOperand(bool isCondition) {
  operand_.clear();
  for (CppTokenKind kind = stream_.peek(); kind != TK_NEWLINE && kind != TK_END; kind = stream_.peek()) {
    stream_.get();
    stream_.appendCurrent(kind, operand_);
  }
  expander_.expandTokenList(operand_, isCondition);
}

// ---- Conditionals ----

bool CppPreprocessor::openConditional() {
  const bool isLookedAt = conditionals_.open();
  if (!isLookedAt) {
    stream_.discardLine();
  }
  return isLookedAt;
}

void CppPreprocessor::handleIf() {
  if (openConditional()) {
    evaluateCondition();
  }
}

void CppPreprocessor::evaluateCondition() {
  const TokenStream::Hold hold(stream_);
  readOperand(true);
  {
    const TokenStream::Closed source(stream_, operand_);
    CppExprValue value;
    bool ok = true;
    evaluate(value, ok);
    conditionals_.setGroup(ok && value.value != 0);
    if (ok) {
      checkEndOfOperand(stream_, diagnostics_);
    }
  }
  stream_.get();  // The line end.
}

void CppPreprocessor::handleIfdef(bool wantDefined) {
  if (!openConditional()) {
    return;
  }
  stream_.skipBlanks();
  if (!isName(stream_.peek())) {
    reportError(wantDefined ? Message::NameExpectedAfterIfdef : Message::NameExpectedAfterIfndef);
    stream_.discardLine();
    conditionals_.setGroup(false);
    return;
  }
  stream_.get();
  const Name* const name = stream_.name();
  const bool isDefined = name != nullptr && name->macro != nullptr;
  conditionals_.setGroup(isDefined == wantDefined);
  stream_.skipBlanks();
  if (stream_.peek() == TK_NEWLINE) {
    stream_.get();
  } else if (stream_.peek() != TK_END) {
    // What is left is the next line of the run loop: written when the group is taken.
    reportError(Message::LeftOverTokens);
  }
}

void CppPreprocessor::handleElif() {
  std::optional<Message> message;
  if (conditionals_.takeElif(message) == ConditionalStack::Elif::Evaluate) {
    evaluateCondition();
    return;
  }
  if (message) {
    reportError(*message);
  }
  stream_.discardLine();
}

// #else and #endif read nothing behind their word: the rest of the line is the next line of the run loop, so that it is
// written as text when the group it then stands in is taken, and leaves an empty line when there is nothing.
void CppPreprocessor::handleElse() {
  if (const std::optional<Message> message = conditionals_.takeElse()) {
    reportError(*message);
  }
}

void CppPreprocessor::handleEndif() {
  if (const std::optional<Message> message = conditionals_.close()) {
    reportError(*message);
  }
}

// A file has ended: its conditionals end with it, and those of the file that included it are open again.
void CppPreprocessor::checkEndOfFile() {
  if (conditionals_.leaveFile()) {
    reportError(Message::UnterminatedIf);
  }
}

// ---- Other directives ----

void CppPreprocessor::handleInclude() {
  std::optional<IncludeName> name;
  IncludedFile included;
  std::int32_t line = 0;
  {
    const TokenStream::Hold hold(stream_);
    readOperand(false);
    {
      const TokenStream::Closed source(stream_, operand_);
      name = readIncludeName(stream_, diagnostics_);
    }
    line = stream_.file()->line();
    if (name) {
      included = findFile(*name);
      if (included.file != nullptr) {
        host_.enter({*name, place(), included.file->fileName(), included.origin}, stream_.files().size());
      } else {
        reportError(Message::CannotOpenFile, name->name);
      }
    }
    stream_.get();  // The line end: not before the search, so that its message shows this line.
  }
  if (included.file != nullptr) {
    includeLines_.push_back(line);
    conditionals_.enterFile();
    stream_.pushFile(std::move(included.file));
    markLine(LineMark::Entered);
  }
}

void CppPreprocessor::handleLine() {
  const TokenStream::Hold hold(stream_);
  readOperand(false);
  {
    const TokenStream::Closed source(stream_, operand_);
    renumber();
  }
  stream_.get();  // The line end.
}

// The number is in force at once, even if what follows is wrong. It is that of this very line: its line end counts.
void CppPreprocessor::renumber() {
  CppFileScanner& file = *stream_.file();
  LineOperand operand = readLineOperand(stream_);
  if (operand.line) {
    file.setLine(*operand.line);
  }
  if (operand.error) {
    reportError(*operand.error);
    return;
  }
  if (operand.fileName) {
    file.setFileName(std::move(*operand.fileName));
  }
  markLine(LineMark::Renumbered);
  checkEndOfOperand(stream_, diagnostics_);
}

// Goes to the output as it stands, without a line directive before it.
void CppPreprocessor::handlePragma() {
  output_.write("#pragma ");
  for (CppTokenKind kind = stream_.get(); kind != TK_NEWLINE && kind != TK_END; kind = stream_.get()) {
    if (kind != TK_CONTINUATION) {
      output_.write(stream_.text());
    }
  }
  output_.endLine();
}

// Behind the word _Pragma in a text line.
void CppPreprocessor::handlePragmaOperator() {
  const std::optional<std::string> text = readPragmaOperator(stream_);
  if (!text) {
    reportError(Message::InvalidPragmaOperator);
    return;
  }
  output_.endLine();
  output_.write("#pragma ");
  output_.write(*text);
  output_.endLine();
}

void CppPreprocessor::handleError() {
  std::string message;
  for (CppTokenKind kind = stream_.peek(); kind != TK_NEWLINE && kind != TK_END; kind = stream_.peek()) {
    stream_.get();
    if (kind != TK_CONTINUATION) {
      message.append(stream_.text());
    }
  }
  reportError(Message::ErrorDirective, message);
  stream_.get();  // The line end: not before the message, so that it shows this line.
}

}  // namespace qnpp
