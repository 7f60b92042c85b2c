// Replacement lists, ready for use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lexer/BlockStore.h"
#include "lexer/Messages.h"
#include "lexer/NameTable.h"
#include "lexer/ParameterNames.h"
#include "lexer/Spelling.h"
#include "lexer/StoredTextLexer.h"
#include "macros/ParameterIndex.h"

namespace qnpp {

/// A replacement list as the lexer sees it. By the rules a macro's text is lexed at each invocation; since that gives
/// the same tokens every time, it is done once per definition, and the work of a function-like macro is laid out as a
/// list of steps. But a text with a comment that is not closed or holds line ends (a body joined by a continuation into
/// "/*", a text of the command line) is lexed anew each time, since that reports or writes; and so are those texts of
/// predefined macros that change.
class Replacement {
 public:
  /// What stands in the place of a token or operand of the list.
  struct Item {
    enum class Kind : std::uint8_t {
      Token,      ///< `tokens()[index]` itself.
      Parameter,  ///< The argument at `index`.
      Literal,    ///< The argument at `index`, made a string literal.
    };
    Kind kind = Kind::Token;
    std::uint32_t index = 0;
  };

  /// One step of substituting arguments; `begin` and `end` mean what the kind says.
  struct Step {
    enum class Kind : std::uint8_t {
      Tokens,     ///< Append `tokens()[begin, end)`.
      Expand,     ///< Append argument `begin`, expanded.
      Stringize,  ///< Append a string literal of argument `begin`.
      Join,       ///< Append the joined texts of `operands()[begin, end)` as one element.
      Misuse,     ///< Report its `misuse` and stop.
    };
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
    Kind kind = Kind::Tokens;
    bool isWantedAgain = false;  ///< Of an Expand step: a later one expands the same argument.
  };

  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  /// The tokens of the object-like list, or those that the steps refer to.
  SpellingRange tokens() const { return tokens_; }
  std::span<const Step> steps() const { return steps_; }
  std::span<const Item> operands() const { return operands_; }

  /// Whether lexing the text did more than give tokens, so that this object is good for one use only.
  bool hasEffects() const { return hasEffects_; }

  /// Whether the tokens are written as the macro's text stands, whatever is defined: no name, line end or comment in
  /// it.
  bool isFixedText() const { return isFixedText_; }

  /// What a DirectExpansion has to know. Whether all tokens are ordinary ones and white space is single blanks, whether
  /// parentheses are balanced and no operator is misused;
  bool isText() const { return isText_; }
  /// then whether there is a comma outside of parentheses,
  bool hasComma() const { return hasComma_; }
  /// and whether an argument is wanted expanded, and as text for a "#" or "##".
  bool usesExpansionOf(std::size_t argument) const { return (uses_[argument] & kExpanded) != 0; }
  bool usesTextOf(std::size_t argument) const { return (uses_[argument] & kText) != 0; }

  /// The message of a Misuse step.
  static Message misuse(const Step& step) { return static_cast<Message>(step.begin); }

 private:
  friend class ReplacementMaker;
  Replacement() = default;
  ~Replacement() = default;

  // How an argument is wanted, each a bit.
  static constexpr std::uint8_t kExpanded = 1;
  static constexpr std::uint8_t kText = 2;

  SpellingRange tokens_;
  std::span<const Step> steps_;
  std::span<const Item> operands_;
  std::span<const std::uint8_t> uses_;  // By the parameter.
  std::size_t blockSize_ = 0;           // Of the block that begins with this object, and ends with what it refers to.
  bool hasEffects_ = false;
  bool isFixedText_ = false;
  bool isText_ = false;
  bool hasComma_ = false;
};

/// Makes replacement lists, each in one block of the store. One object for many: it keeps what it works with.
class ReplacementMaker {
 public:
  /// All are borrowed and outlive the object.
  ReplacementMaker(NameTable& names, StoredTextLexer& lexer, BlockStore& store)
      : names_(names), lexer_(lexer), store_(store) {}
  ReplacementMaker(const ReplacementMaker&) = delete;
  ReplacementMaker& operator=(const ReplacementMaker&) = delete;

  /// An object-like macro's list: its tokens as they stand. A NUL has to be behind the text.
  const Replacement& make(std::string_view text);
  /// A function-like macro's list, with the steps for `parameters`.
  const Replacement& make(std::string_view text, const ParameterNames& parameters);

  /// Gives the block back.
  static void free(const Replacement& replacement, BlockStore& store) {
    store.giveBack(const_cast<Replacement*>(&replacement), replacement.blockSize_);
  }

 private:
  using Item = Replacement::Item;
  using Step = Replacement::Step;
  class TokenBuilder;
  class StepBuilder;

  void clear();
  template <typename Builder>
  bool lex(std::string_view text);
  template <typename Builder>
  bool lexPlainText(std::string_view text, Builder& builder);
  void addToken(CppTokenKind kind, std::string_view token);
  void addWord(std::string_view word, std::uint32_t hash);
  void findIsText(std::span<const Step> steps);
  const Replacement& finish();

  NameTable& names_;
  StoredTextLexer& lexer_;
  BlockStore& store_;
  ParameterIndex parameters_;
  // Of the list that is being made. The tokens that are neither names nor single characters are `own_`, and `texts_`
  // what they consist of.
  std::vector<const Spelling*> tokens_;  // Null for those of `own_`, until all have been read.
  std::vector<Step> steps_;
  std::vector<Item> operands_;
  std::vector<std::uint8_t> uses_;  // By the parameter.
  std::string texts_;
  std::vector<Spelling> own_;
  bool hasEffects_ = false;
  bool isFixedText_ = false;
  bool isText_ = false;
  bool hasComma_ = false;
};

}  // namespace qnpp
