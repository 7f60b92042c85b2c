// Macro expansion.
//
// Why expansion ends, and does not use the stack of the program
//
// A token carries a hide set: the names of macros that are not expanded at it. An invocation takes the set of its
// name's token, adds the name, and gives the sum to every token of its result; a token of an argument keeps in addition
// what it had. So think of each token of a result as a child of the name that was expanded: its set holds all that its
// parent's held, and the parent's name, which was not in there, too. Sets grow from parent to child, and there are only
// so many names (even with those that a #define among arguments adds), so no line of descent goes on for ever; and each
// expansion has finitely many children, so all of them together are finite. (An argument that is expanded beforehand is
// a list that ends, and the same holds in it.)
// `#define A A+1` makes `A+1` of `A`, and with `#define g(x) x` and `#define f(x) g(x)`, `f(A)` gives `A+1` too,
// although the second `A` goes through two more invocations. What can grow without end is the input alone: a file that
// includes itself.
//
// Finite is not small: thirty macros, each twice the one before, stand for a thousand million words.
//
// Two kinds of work call for each other: replacing an invocation wants its arguments expanded, and expanding a list
// wants the invocations in it replaced. Written as two functions, nesting would be limited by the stack of the program.
// Here both are objects on a stack in memory, a Substitution and a ListExpansion in turn, and `run` works on the
// innermost until it is finished or has to wait for a new one. A Substitution owns the arguments, and the lists that
// ended while they were read; it gives them back once its result, which brings along what they were made of, is pushed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "lexer/Messages.h"
#include "lexer/PlainLine.h"
#include "lexer/Spares.h"
#include "lexer/TokenStream.h"
#include "macros/Arguments.h"
#include "macros/CppMacroTable.h"
#include "macros/DirectExpansion.h"
#include "macros/ExpansionTrace.h"
#include "macros/FinalText.h"
#include "macros/Predefined.h"

namespace qnpp {

/// Expands macros: names in text, whose expansion becomes the current source of the stream, and lists of tokens.
class MacroExpander final : public PlainLine::Macros {
 public:
  /// All are borrowed and outlive the object. Defines the predefined macros in `macros`.
  MacroExpander(const LexerContext& context, NameTable& names, TokenStream& stream, CppMacroTable& macros,
                MessageSink& messages);
  MacroExpander(const MacroExpander&) = delete;
  MacroExpander& operator=(const MacroExpander&) = delete;
  ~MacroExpander();

  /// Macros in a condition that is read right in the line.
  std::optional<std::string_view> textOf(const Name& name) override { return findTextInPlace(name); }
  std::optional<std::string_view> expand(Name& name, const char*& at) override;

  /// The current token of the stream is a name in a text line. It is written, or its expansion becomes the current
  /// source, so that rescanning is reading on. A function-like name takes its arguments from the stream.
  void expandInText();

  /// Takes the tokens out of the list and leaves their expansion there. To be called under a Hold of the stream.
  /// Nothing in the list takes a "(" or an argument from outside. In a condition the operand of `defined` stays as it
  /// is.
  void expandTokenList(TokenList& tokens, bool isCondition);

 private:
  struct Substitution;
  struct ListExpansion;
  enum class Invocation : std::uint8_t { None, Malformed, Complete };  // What stands behind a function-like name.

  bool expandDirectly(Name& name, std::size_t firstToken = 0);
  void expandFunctionLikeInText(Name& name);
  void expandObjectLikeInText(Name& name);
  void pushObjectLike(const Name& name, const HideSet& hideSet);

  template <typename Take, typename IsHidden>
  Invocation readInvocation(const CppMacro& macro, Substitution& substitution, Take take, IsHidden isHidden);
  void run();
  void beginSubstitution(std::unique_ptr<Substitution> substitution, const Name& name, const HideSet& hideSet);
  void substitute(Substitution& substitution);
  void finishSubstitution();
  bool appendExpanded(Substitution& substitution, std::uint32_t argument);
  void stringize(const Arguments& arguments, std::uint32_t argument, std::string& literal);
  void spendOnText();
  const Spelling* join(const Substitution& substitution, std::size_t begin, std::size_t end);

  void beginListExpansion(Arguments& arguments, std::uint32_t argument);
  void expandList(ListExpansion& expansion);
  void finishListExpansion();
  void expandNameInList(TokenList& result);
  void expandFunctionLikeInList(Name& name, TokenList& result);
  void passDefinedOperand(TokenList& result);
  void collect(TokenList& result);

  ExpansionTrace trace() { return ExpansionTrace(stream_); }

  // What happened beside the making of tokens; see `finishListExpansion`.
  std::uint64_t eventCount() const { return messages_.count() + context_.effectCount; }

  LexerContext context_;
  NameTable& names_;
  TokenStream& stream_;
  MessageSink& messages_;
  CppMacroTable& macros_;
  PredefinedMacros predefined_;
  DirectExpansion direct_;

  // Under way, innermost last: the two sorts take turns, each waiting for the next.
  std::vector<std::variant<std::unique_ptr<Substitution>, std::unique_ptr<ListExpansion>>> expansions_;
  Spares<Substitution> spareSubstitutions_;
  Spares<ListExpansion> spareListExpansions_;
  bool inCondition_ = false;
  TokenList expandedList_;    // Result of the last outermost list expansion.
  std::string argumentText_;  // Scratch space for stringizing and joining.
  std::string joinedText_;
};

}  // namespace qnpp
