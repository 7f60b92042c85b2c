// Who may watch a run.
#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "lexer/CppTokenKind.h"
#include "lexer/Spelling.h"

namespace qnpp {

class TokenStream;
struct CppMacro;
struct Name;

/// Is told what happens in a run, step by step, and numbers what it wants to hear of again. It only listens: nothing
/// that a run reads, writes or reports depends on it.
///
/// A run can be watched in a build of its own only, which takes no shortcuts and defines QNPP_OBSERVED as well; in any
/// other build a link to an observer is empty, and so is all that is done for it.
///
/// Each function is called when the thing has just happened, so that the stream tells the place. Texts and tokens are
/// valid during the call only.
class Observer {
 public:
  /// Why a name, or the use of a macro, stands as it is.
  enum class Kept : std::uint8_t {
    NoMacro,           ///< No macro of that name is defined.
    Hidden,            ///< It came out of an expansion of that macro.
    OperandOfDefined,  ///< `defined` asks whether it is a macro.
    NoParenthesis,     ///< No "(" is behind the name of a function-like macro.
    BadArguments,      ///< The arguments are too few or too many, or do not end; that has been reported.
  };
  /// What a part of a replacement is.
  enum class Part : std::uint8_t {
    Body,      ///< Tokens of the replacement list as they stand.
    Argument,  ///< An argument, expanded.
    Literal,   ///< An argument behind "#", as a string literal.
    Joined,    ///< What "##" made of its operands.
  };

  virtual ~Observer() = default;

  /// The stream outlives the run.
  virtual void watch(const TokenStream& stream) = 0;

  // ---- Lines and output ----

  /// A line of the run loop begins; nothing of it has been read.
  virtual void lineBegan(bool isSkipped) = 0;
  /// The line is a directive, whose word has just been read; in a skipped group only a conditional is one.
  virtual void directiveBegan(CppTokenKind word) = 0;
  virtual void directiveEnded(bool isSkipping) = 0;
  /// What is written next is a line directive.
  virtual void lineDirectiveBegan() = 0;
  /// Text of the output. A token that did not come straight from the source has an origin.
  virtual void written(std::string_view text, Origin origin) = 0;

  // ---- Files ----

  /// A file was looked for under this path.
  virtual void lookedFor(std::string_view path, bool isFound) = 0;
  virtual void fileEntered() = 0;
  virtual void fileEnded() = 0;
  /// The current line is going to be number `line`.
  virtual void renumbered(std::int32_t line) = 0;

  // ---- Definitions ----

  virtual void defined(const Name& name, const CppMacro& macro) = 0;
  virtual void undefined(const Name& name) = 0;
  /// A conditional asked whether the name has a definition.
  virtual void askedFor(std::string_view name, bool isDefined) = 0;

  // ---- Operands of directives ----

  /// The rest of the line of #if, #elif, #include or #line is going to be expanded, and has been.
  virtual void operandRead(SpellingRange tokens) = 0;
  virtual void operandExpanded(SpellingRange tokens) = 0;
  /// The value of a condition.
  virtual void evaluated(std::uint32_t value, bool isSigned, bool isOk) = 0;

  // ---- Expansion ----

  /// A name stands as it is.
  virtual void nameKept(std::string_view name, Origin origin, Kept why) = 0;
  /// The name of a macro is going to be replaced. What stands behind it has not been read. Returns the number of this
  /// expansion.
  virtual Origin expansionBegan(const Name& name, Origin origin) = 0;
  /// But it stands as it is.
  virtual void expansionFailed(Origin expansion, Kept why) = 0;
  /// An argument has been read, from the first one on, and lexed. The current token is the one behind all of them.
  virtual void argumentRead(Origin expansion, SpellingRange tokens) = 0;
  /// An argument is going to be expanded before it stands in the place of its parameter, and has been. Each place has
  /// its own expansion, within which others begin and end.
  virtual void argumentExpansionBegan(Origin expansion, std::uint32_t argument) = 0;
  virtual void argumentExpanded(Origin expansion, std::uint32_t argument, SpellingRange tokens) = 0;
  /// A part of the replacement is made; of an argument, one for each run of tokens `from` the same origin. Returns the
  /// origin of its tokens.
  virtual Origin made(Origin expansion, Part part, std::uint32_t argument, Origin from) = 0;
  /// The replacement is complete, and rescanning begins.
  virtual void replaced(Origin expansion, SpellingRange tokens) = 0;
};

/// What a function comes to that is called with an observer.
template <typename Tell>
using ToldOf = std::invoke_result_t<Tell, Observer&>;

/// The way to the observer of a run, if there is one.
class ObserverLink {
 public:
  /// Calls `tell` with the observer. What is returned without one is zero.
  template <typename Tell>
  ToldOf<Tell> operator()([[maybe_unused]] Tell tell) const {
#if defined(QNPP_OBSERVED)
    if (observer_ != nullptr) {
      return tell(*observer_);
    }
#endif
    return ToldOf<Tell>();
  }

  void set([[maybe_unused]] Observer& observer) {
#if defined(QNPP_OBSERVED)
    observer_ = &observer;
#endif
  }

#if defined(QNPP_OBSERVED)

 private:
  Observer* observer_ = nullptr;
#endif
};

}  // namespace qnpp
