// #line, #pragma, _Pragma and #error.
#include "engine/Sources.h"

namespace qnpp {
namespace {

// Decimal digits as a number; the low 32 bits when it is larger.
std::int32_t parseLineNumber(std::string_view digits) {
  std::uint32_t number = 0;
  for (const char digit : digits) {
    number = number * 10U + static_cast<std::uint32_t>(digit - '0');
  }
  return static_cast<std::int32_t>(number);
}

// The text of a literal without its quotes; a backslash stands for the character behind it, whichever that is.
std::string destringize(std::string_view literal) {
  std::string text;
  bool escaped = false;
  for (const char character : literal.substr(1, literal.size() - 2)) {
    escaped = character == '\\' && !escaped;
    if (!escaped) {
      text.push_back(character);
    }
  }
  return text;
}

constexpr std::string_view kLineFormatError = "Invalid format for \"#line\" directive";

}  // namespace

void CppPreprocessor::handleLine() {
  InFlight inFlight(*this);
  {
    readOperand();
    const ClosedSource source(*this, operand_);
    const CppTokenKind kind = nextOperandToken();
    const std::string_view number = currentText();
    if (kind == TK_DEC_INT && number.back() >= '0' && number.back() <= '9') {
      // In force at once, even if what follows is wrong. It is the number of this very line: its line end counts.
      currentFile_->setLine(parseLineNumber(number));
      renumber();
    } else if (kind == TK_OCT_INT && number == "0") {
      reportError("Invalid line number");
    } else {
      reportError(kLineFormatError);
    }
  }
  nextToken();  // The line end.
  inFlight.release();
}

// Behind the number of #line: an optional name, and nothing else.
void CppPreprocessor::renumber() {
  const CppTokenKind kind = nextOperandToken();
  if (kind == TK_STRING) {
    currentFile_->setFileName(std::string(currentText().substr(1, currentText().size() - 2)));
  } else if (kind != TK_END) {
    reportError(kLineFormatError);
    return;
  }
  writeLineDirective();
  checkEndOfOperand();
}

// Goes to the output as it stands, without a line directive before it.
void CppPreprocessor::handlePragma() {
  output_.write("#pragma ");
  for (CppTokenKind kind = nextToken(); kind != TK_NEWLINE && kind != TK_END; kind = nextToken()) {
    if (kind != TK_CONTINUATION) {
      output_.write(currentText());
    }
  }
  output_.endLine();
}

// Behind the word _Pragma in a text line. A token that does not fit is lost.
void CppPreprocessor::handlePragmaOperator() {
  const auto take = [this](CppTokenKind wanted) {
    skipWhiteSpace();
    return nextToken() == wanted;
  };
  std::string text;
  bool fits = take('(') && take(TK_STRING);
  if (fits) {
    text = destringize(currentText());
    fits = take(')');
  }
  if (!fits) {
    reportError("_Pragma requires a parenthesized string literal");
    return;
  }
  output_.endLine();
  output_.write("#pragma ");
  output_.write(text);
  output_.endLine();
}

void CppPreprocessor::handleError() {
  std::string message = "#error directive: ";
  for (CppTokenKind kind = peekToken(); kind != TK_NEWLINE && kind != TK_END; kind = peekToken()) {
    nextToken();
    if (kind != TK_CONTINUATION) {
      message.append(currentText());
    }
  }
  reportError(message);
  nextToken();  // The line end: not before the message, so that it shows this line.
}

}  // namespace qnpp
