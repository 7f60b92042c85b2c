// The conditionals that are open.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "directives/CppCondState.h"
#include "lexer/Messages.h"
#include "lexer/NestedConditionals.h"

namespace qnpp {

/// Follows `#if` to `#endif` and tells which groups are skipped. Conditionals belong to their file: none of the
/// includer's is open in an included file, and those open at its end end with it.
///
/// A function that returns a message has changed nothing; the message is to be reported.
class ConditionalStack final : public NestedConditionals {
 public:
  /// Whether the current group is skipped.
  bool isSkipping() const { return isSkipping_; }

  /// How many conditionals of the current file are open.
  std::size_t depth() const { return enclosing_.size() - fileBase_; }

  /// At an `#if`, `#ifdef` or `#ifndef`. Returns false inside a skipped group: the conditional is only counted there,
  /// and its line means nothing. Otherwise `setGroup` has to follow.
  bool open();
  /// Whether the condition that has just been looked at is true. One that cannot be evaluated counts as false.
  void setGroup(bool isTaken);

  /// What is to be done at an `#elif`.
  enum class Elif {
    Evaluate,  ///< Evaluate the condition and call `setGroup`.
    Ignore,    ///< Drop the rest of the line: not even its errors are reported.
  };
  /// At an `#elif`; with a message the rest of the line is dropped too.
  Elif takeElif(std::optional<Message>& message);
  /// At an `#else`.
  std::optional<Message> takeElse();
  /// At an `#endif`.
  std::optional<Message> close();

  /// All of that for a directive whose conditional is within a skipped group, but for those with a message.
  bool carryOutNested(CppTokenKind kind) override;

  /// A file is entered: it has conditionals of its own.
  void enterFile();
  /// The file has ended. Returns whether a conditional was open.
  bool leaveFile();

 private:
  // The enclosing conditional and group of an open conditional.
  struct Enclosing {
    CppCondState state;
    bool isSkipping;
  };

  bool isOpen() const { return enclosing_.size() > fileBase_; }
  void pop();

  bool isSkipping_ = false;
  CppCondState state_ = CppCondState::Inactive;  // Of the innermost conditional, if one is open.
  std::vector<Enclosing> enclosing_;             // One for each open conditional of all files.
  std::size_t fileBase_ = 0;                     // How many of them belong to the files around the current one.
  std::vector<std::size_t> fileBases_;           // The same for the files around it.
};

}  // namespace qnpp
