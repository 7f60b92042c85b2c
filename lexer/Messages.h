// The messages about a source, all in one table.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace qnpp {

enum class Message : std::uint8_t {
  UnknownDirective,
  // Conditional inclusion.
  ElseWithoutIf,
  ElseAfterElse,
  ElifWithoutIf,
  ElifAfterElse,
  EndifWithoutIf,
  UnterminatedIf,
  NameExpectedAfterIfdef,
  NameExpectedAfterIfndef,
  LeftOverTokens,
  // Constant expressions.
  ColonExpected,
  ParenthesisExpected,
  CallInExpression,
  OperandExpected,
  NameExpectedAfterDefined,
  ParenthesisExpectedAfterDefined,
  TooManyCharacters,
  // #define and #undef.
  InvalidMacroName,
  ParameterNameExpected,
  ParenthesisOrCommaExpected,
  IncompatibleRedefinition,
  // Invocations.
  UnterminatedInvocation,
  TooFewArguments,
  TooManyArguments,
  ParameterExpectedAfterHash,
  PasteAtBeginning,
  PasteAtEnd,
  // The other directives.
  FileNameExpected,
  EmptyFileName,
  CannotOpenFile,
  InvalidLineNumber,
  InvalidLineFormat,
  InvalidPragmaOperator,
  ErrorDirective,
  // What ends a run.
  CannotOpenSource,
  OutOfMemory,
  // The scanner's own.
  UnterminatedComment,
  ScannerFailed,
};

/// How grave a message is. All but warnings and remarks make the run a failed one.
enum class Grade : std::uint8_t {
  Warning,
  Error,
  FatalError,
  Remark,   ///< A warning that shows a line, which is its detail, but neither file nor grade.
  Failure,  ///< A fatal error that shows nothing but its text.
};

struct MessageEntry {
  Message message;
  Grade grade;
  std::string_view identifier;  ///< The same in all versions, whatever becomes of the text.
  std::string_view text;        ///< Without the final full stop. "%s" stands for the detail that a report adds.
};

/// All messages, in the order of their numbers.
std::span<const MessageEntry> messageTable();
const MessageEntry& entryOf(Message message);

/// The text of `message` with `detail` in its place; the first adds it to `text`.
void appendText(Message message, std::string_view detail, std::string& text);
std::string textOf(Message message, std::string_view detail);

/// Where messages about the source go. Whoever gets them knows where in the source the run is.
class MessageSink {
 public:
  MessageSink() = default;
  MessageSink(const MessageSink&) = delete;
  MessageSink& operator=(const MessageSink&) = delete;
  virtual ~MessageSink() = default;

  void report(Message message, std::string_view detail = {}) {
    ++count_;
    deliver(message, detail);
  }

  /// How many messages there have been.
  std::uint64_t count() const { return count_; }

 private:
  virtual void deliver(Message message, std::string_view detail) = 0;

  std::uint64_t count_ = 0;
};

}  // namespace qnpp
