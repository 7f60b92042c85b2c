#include "lexer/Messages.h"

#include <array>
#include <cstddef>

namespace qnpp {
namespace {

constexpr std::size_t kCount = static_cast<std::size_t>(Message::ScannerFailed) + 1;

constexpr std::array<MessageEntry, kCount> kTable = {{
    {Message::UnknownDirective, Grade::Error, "unknown-directive",
     "the indicated directive is not a recognized preprocessing directive"},

    {Message::ElseWithoutIf, Grade::Error, "else-without-if", "No \"#if\" directive associated to \"#else\""},
    {Message::ElseAfterElse, Grade::Error, "else-after-else",
     "Cannot use another \"#else\" directive after an \"#else\""},
    {Message::ElifWithoutIf, Grade::Error, "elif-without-if", "No \"#if\" directive associated to \"elif\""},
    {Message::ElifAfterElse, Grade::Error, "elif-after-else", "Cannot use an \"#elif\" directive after an \"#else\""},
    {Message::EndifWithoutIf, Grade::Error, "endif-without-if", "No \"#if\" directive associated to \"#endif\""},
    {Message::UnterminatedIf, Grade::Error, "unterminated-if", "Unterminated \"#if\" conditional"},
    {Message::NameExpectedAfterIfdef, Grade::Error, "ifdef-name", "An identifier is expected after \"#ifdef\""},
    {Message::NameExpectedAfterIfndef, Grade::Error, "ifndef-name", "An identifier is expected after \"#ifndef\""},
    {Message::LeftOverTokens, Grade::Error, "left-over-tokens",
     "Invalid characters appear before a new-line in the preprocessor directive"},

    {Message::ColonExpected, Grade::Error, "expression-colon", "\":\" expected in constant expression"},
    {Message::ParenthesisExpected, Grade::Error, "expression-parenthesis", "\")\" expected"},
    {Message::CallInExpression, Grade::Error, "expression-call",
     "A function call is not allowed in a constant expression"},
    {Message::OperandExpected, Grade::Error, "expression-operand", "Lexical element expected"},
    {Message::NameExpectedAfterDefined, Grade::Error, "defined-name", "Identifier expected for 'defined' operator"},
    {Message::ParenthesisExpectedAfterDefined, Grade::Error, "defined-parenthesis",
     "\")\" expected for \"defined\" operator"},
    {Message::TooManyCharacters, Grade::Error, "long-character-literal", "Too many characters in character literal"},

    {Message::InvalidMacroName, Grade::Error, "macro-name", "Invalid macro name"},
    {Message::ParameterNameExpected, Grade::Error, "parameter-name", "An identifier is expected"},
    {Message::ParenthesisOrCommaExpected, Grade::Error, "parameter-list", "An ')' or ',' was expected"},
    {Message::IncompatibleRedefinition, Grade::Warning, "incompatible-redefinition",
     "Macro \"%s\" has an incompatible redefinition"},

    {Message::UnterminatedInvocation, Grade::Error, "unterminated-invocation",
     "The macro invocation is improperly terminated"},
    {Message::TooFewArguments, Grade::Error, "too-few-arguments",
     "There are not enough arguments in a macro invocation"},
    {Message::TooManyArguments, Grade::Error, "too-many-arguments", "A macro invocation has too many arguments"},
    {Message::ParameterExpectedAfterHash, Grade::Error, "hash-without-parameter",
     "Macro variable expected after '#' operator"},
    {Message::PasteAtBeginning, Grade::Error, "paste-at-beginning",
     "'##' operator cannot be at the beginning of the replacement list"},
    {Message::PasteAtEnd, Grade::Error, "paste-at-end", "'##' operator cannot be at the end of the replacement list"},

    {Message::FileNameExpected, Grade::Error, "file-name", "Filename expected after #include directive"},
    {Message::EmptyFileName, Grade::Error, "empty-file-name", "An expected file name is missing"},
    {Message::CannotOpenFile, Grade::Error, "missing-file", "Cannot open file: %s"},
    {Message::InvalidLineNumber, Grade::Error, "line-number", "Invalid line number"},
    {Message::InvalidLineFormat, Grade::Error, "line-format", "Invalid format for \"#line\" directive"},
    {Message::InvalidPragmaOperator, Grade::Error, "pragma-operator",
     "_Pragma requires a parenthesized string literal"},
    {Message::ErrorDirective, Grade::Error, "error-directive", "#error directive: %s"},

    {Message::CannotOpenSource, Grade::FatalError, "missing-source", "cannot open %s"},
    {Message::OutOfMemory, Grade::FatalError, "out-of-memory", "out of memory"},

    {Message::UnterminatedComment, Grade::Remark, "unterminated-comment", "unterminated comment"},
    {Message::ScannerFailed, Grade::Failure, "scanner-failed", "%s"},
}};

consteval bool isInOrder() {
  for (std::size_t index = 0; index < kCount; ++index) {
    if (static_cast<std::size_t>(kTable[index].message) != index) {
      return false;
    }
  }
  return true;
}
static_assert(isInOrder());

}  // namespace

std::span<const MessageEntry> messageTable() { return kTable; }

const MessageEntry& entryOf(Message message) { return kTable[static_cast<std::size_t>(message)]; }

void appendText(Message message, std::string_view detail, std::string& text) {
  const std::string_view form = entryOf(message).text;
  const std::size_t place = form.find("%s");
  text.append(form.substr(0, place));
  if (place != std::string_view::npos) {
    text.append(detail).append(form.substr(place + 2));
  }
}

std::string textOf(Message message, std::string_view detail) {
  std::string text;
  appendText(message, detail, text);
  return text;
}

}  // namespace qnpp
