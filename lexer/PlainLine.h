// Reading the tokens of a line right in the scanner's buffer.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "lexer/CppTokenKind.h"
#include "lexer/NameTable.h"

namespace qnpp {

/// Reads the rest of a line as a constant expression needs it: without blanks and comments, and with its macros
/// expanded. Most conditions consist of names, numbers and operators; nothing is collected, made or kept for
/// them.
///
/// It knows only what is common. Whatever else comes, it gives up, and the line has to be read in the general way: so
/// it must not have been noticed that this one was tried.
class PlainLine {
 public:
  /// Knows what macros come to. All texts have a NUL behind them.
  class Macros {
   public:
    /// The text of the macro `name`, if reading it in the place of the name is all that an expansion does.
    virtual std::optional<std::string_view> textOf(const Name& name) = 0;
    /// What any other comes to after all rescanning, if `at`, in the line and behind its name, ends what is replaced;
    /// it moves behind that. Valid until the next question.
    virtual std::optional<std::string_view> expand(Name& name, const char*& at) = 0;

   protected:
    ~Macros() = default;
  };

  /// From `at` on there is the text, up to a NUL that is none of it; as many bytes as words take (see NameFilter) may
  /// be read behind that. All is borrowed.
  PlainLine(const char* at, const NameTable& names, Macros& macros) : names_(names), macros_(macros), at_(at) {}

  /// Kind of the next token, which is taken. TK_END at the end of the line and ever after, and so if it has given up.
  /// A name `isProtected` is not expanded. Any other may be of the kind TK_IDENTIFIER even if it is a directive word.
  CppTokenKind next(bool isProtected);

  /// Text of the token taken last.
  std::string_view text() const { return text_; }
  /// Whether it is the name of a macro, if it was protected.
  bool isMacro() const { return isMacro_; }

  /// Returns TK_END.
  CppTokenKind giveUp();
  /// The line end, once it has been met; null before, and when it has given up.
  const char* end() const { return end_; }
  /// How many macros have been expanded, and tokens read from them.
  std::size_t expansionWork() const { return work_; }

 private:
  // A text that goes on when a macro's has been read.
  struct Enclosing {
    const char* at;
    const char* end;
    const Name* macro;
  };

  CppTokenKind take(CppTokenKind kind, const char* end);
  CppTokenKind takeOperator();
  CppTokenKind takeNumber();
  CppTokenKind takeCharacter();
  void passComment();

  CppTokenKind takeWord(bool isProtected);
  Name* findName(std::string_view word, bool isProtected) const;
  bool isHidden(const Name& name) const;
  bool beginExpansion(Name& name);
  void endExpansion();

  static constexpr std::size_t kMostNested = 16;
  static constexpr std::size_t kMostWork = 4096;  // A few macros may come to any number of tokens.

  const NameTable& names_;
  Macros& macros_;
  const char* at_;
  std::string_view text_;
  bool isMacro_ = false;
  const char* end_ = nullptr;
  const char* textEnd_ = nullptr;  // Of the macro's text that is being read,
  const Name* macro_ = nullptr;    // and the macro; null in the line itself.
  bool isExpanded_ = false;        // No name in that text is to be expanded.
  std::array<Enclosing, kMostNested> enclosing_;
  std::size_t depth_ = 0;
  std::size_t work_ = 0;
};

}  // namespace qnpp
