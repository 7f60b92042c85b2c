// The handlers of the directives. What a directive means is found in directives/ and macros/; here it is tied to the
// stream of tokens, the output and the messages, and each handler says who takes the line end.
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "directives/LineOperand.h"
#include "directives/Operand.h"
#include "directives/PragmaOperator.h"
#include "engine/CppPreprocessor.h"
#include "lexer/Block.h"
#include "macros/Define.h"

namespace qnpp {

void CppPreprocessor::handleDefine() { carryOutDefine(stream_, macroTable_, diagnostics_); }

void CppPreprocessor::handleUndef() { carryOutUndef(stream_, macroTable_, diagnostics_); }

// Lets `read` read the rest of the line as an operand, macros expanded, and takes the line end.
//
// In general the tokens of the line are collected with their white space, expanded, and read back from a closed source.
// Where nothing but reading the operand can be noticed, because the line is plain and without macros, the operand is
// read right from the line. A condition is not: when it comes here, that has been tried (see evaluateCondition).
template <typename Read>
void CppPreprocessor::readOperand(bool isCondition, Read read) {
  if (!isCondition && stream_.isRestPlain()) {
    read();
    stream_.discardLine();
    return;
  }
  const TokenStream::Hold hold(stream_);
  operand_.clear();
  for (CppTokenKind kind = stream_.peek(); kind != TK_NEWLINE && kind != TK_END; kind = stream_.peek()) {
    stream_.get();
    stream_.appendCurrent(kind, operand_);
  }
  observe([this](Observer& observer) { observer.operandRead(operand_.spellings()); });
  expander_.expandTokenList(operand_, isCondition);
  observe([this](Observer& observer) { observer.operandExpanded(operand_.spellings()); });
  {
    const TokenStream::Closed source(stream_, operand_);
    read();
  }
  stream_.get();  // The line end has been looked at, and is taken only now, so that messages show this line.
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
  if (const std::optional<CppExprValue> value = evaluator_.evaluateLine(expander_)) {
    conditionals_.setGroup(value->value != 0);
    return;
  }
  readOperand(true, [this] {
    CppExprValue value;
    bool isOk = true;
    evaluate(value, isOk);
    observe([&](Observer& observer) { observer.evaluated(value.value, value.isSigned, isOk); });
    conditionals_.setGroup(isOk && value.value != 0);
    if (isOk) {
      checkEndOfOperand(stream_, diagnostics_);
    }
  });
}

void CppPreprocessor::handleIfdef(bool wantDefined) {
  if (!openConditional()) {
    return;
  }
  std::string_view word;
  if (!stream_.readMacroName(word)) {
    stream_.skipBlanks();
    if (!isName(stream_.peek())) {
      reportError(wantDefined ? Message::NameExpectedAfterIfdef : Message::NameExpectedAfterIfndef);
      stream_.discardLine();
      conditionals_.setGroup(false);
      return;
    }
    stream_.get();
    word = stream_.text();
  }
  const bool isGuard = guardedFiles_.isAtGuard();
  const Name* const name = isGuard ? names_.intern(word) : names_.find(word);
  const bool isDefined = name != nullptr && name->macro != nullptr;
  observe([&](Observer& observer) { observer.askedFor(word, isDefined); });
  conditionals_.setGroup(isDefined == wantDefined);
  if (!stream_.passLineEnd()) {
    stream_.skipBlanks();
    if (stream_.peek() == TK_NEWLINE) {
      stream_.get();
    } else if (stream_.peek() != TK_END) {
      // What is left is the next line of the run loop: written when the group is taken.
      reportError(Message::LeftOverTokens);
    }
  }
  if (isGuard) {
    guardedFiles_.seeGuard(*name, isDefined, traces(), stream_.isInFile() ? stream_.file() : nullptr);
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
  bool isFound = false;
  if (const std::optional<IncludeName> name = readQuotedName(stream_)) {
    isFound = findFile(*name);
    stream_.takeLineEnd();
  } else {
    readOperand(false, [this, &isFound] {
      const std::optional<IncludeName> read = readIncludeName(stream_, diagnostics_);
      isFound = read && findFile(*read);
    });
  }
  if (isFound) {
    enterFile();
  }
}

void CppPreprocessor::enterFile() {
  if (found_.file == nullptr) {
    markLine(LineMark::Entered, {found_.path, 1});
    output_.writeLineEnds(found_.lineEnds);
    markLine(LineMark::Returned);
    return;
  }
  conditionals_.enterFile();
  stream_.pushFile(std::move(found_.file));
  observe([](Observer& observer) { observer.fileEntered(); });
  markLine(LineMark::Entered);
  guardedFiles_.enter(traces());
}

void CppPreprocessor::handleLine() {
  readOperand(false, [this] { renumber(); });
}

// The number is in force at once, even if what follows is wrong. It is that of this very line: its line end counts.
void CppPreprocessor::renumber() {
  CppFileScanner& file = *stream_.file();
  LineOperand operand = readLineOperand(stream_);
  if (operand.line) {
    observe([&](Observer& observer) { observer.renumbered(*operand.line); });
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
  // Without a comment or a continued line end the message is what stands there.
  const bool isPlain = stream_.passAhead([&message](const BytesAhead& bytes) {
    const char* const at = bytes.begin();
    const char* const end = findAny<'/', '\\', '\r', '\n', '\0'>(at);
    message.assign(at, *end == '\n' ? end : at);
    return *end == '\n' ? end : nullptr;
  });
  for (CppTokenKind kind = isPlain ? TK_NEWLINE : stream_.peek(); kind != TK_NEWLINE && kind != TK_END;
       kind = stream_.peek()) {
    stream_.get();
    if (kind != TK_CONTINUATION) {
      message.append(stream_.text());
    }
  }
  reportError(Message::ErrorDirective, message);
  if (!stream_.passLineEnd()) {  // Not before the message, so that it shows this line.
    stream_.get();
  }
}

}  // namespace qnpp
