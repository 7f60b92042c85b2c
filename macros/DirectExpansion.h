// Invocations in text, replaced without tokens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "lexer/Budget.h"
#include "lexer/CppLexer.h"
#include "lexer/NameTable.h"
#include "lexer/TokenStream.h"
#include "macros/CppMacroTable.h"
#include "macros/Predefined.h"
#include "macros/Replacement.h"

namespace qnpp {

/// Replaces a macro in a text line of a file, by building the text that it comes to. For most macros tokens, hide sets
/// and rescanning come down to that: every macro's name in the arguments and in the replacement lists is invoked
/// completely in the argument or the list where it stands. Then no name is left in the result that might be expanded,
/// and so nothing to be rescanned; and such text is the same whether it is read as tokens or as bytes, as long as no
/// two tokens become one.
///
/// Whatever is not sure to be so is given up where it is met, with nothing reported, written or taken:
///  - a name that may stay for want of a "(". An argument may be such a name and nothing else, as lists of entries have
///    it that take the name of the macro for an entry. A name within its own expansion does stay, wherever it goes;
///  - whatever is to be reported; `_Pragma`;
///  - line ends in comments and other than "\n", backslashes and lone quotes;
///  - texts that meet and would lex as one token, in the argument of another invocation, say;
///  - arguments of an invocation in a replacement list that hold more or less than single blanks between tokens once
///    parameters are replaced: they would have to be normalized anew;
///  - too much work, and nesting too deep for functions that call each other.
class DirectExpansion {
 public:
  /// All are borrowed and outlive the object.
  DirectExpansion(CppMacroTable& macros, const NameTable& names, PredefinedMacros& predefined,
                  const TokenStream& stream, Budget& budget);

  /// Replaces the macro `name`, behind whose name `bytes` begin. Returns the place behind what has been replaced: the
  /// name, or the ")" of an invocation. Null when it has to be replaced token by token. Of the list of an object-like
  /// macro, the tokens from `firstToken` on are taken. To be called under a Hold of the stream.
  const char* expand(Name& name, BytesAhead& bytes, std::size_t firstToken = 0);

  /// The same for the invocation of a function-like macro in a condition, where operators matter, and the end of the
  /// line, which has to be in the buffer.
  const char* expandInCondition(Name& name, const char* at);

  /// What the macro has come to, in a condition with a NUL behind it; valid until the next.
  std::string_view text() const { return {bytes_.get(), size_}; }

 private:
  // Bytes from `begin` on. A value is small, since an invocation may have very many.
  struct Part {
    std::uint32_t begin = 0;
    std::uint32_t size = 0;
  };
  struct Value {
    Part expanded;
    Part text;              // Not expanded; set where a "#" or "##" asks for it.
    Name* macro = nullptr;  // The argument is the name of this function-like macro and nothing else.
    bool isNormal = true;   // Not empty, and the white space in it is single blanks between two tokens.
    bool hasComma = false;  // Outside of parentheses.
  };
  // Text that is being made, at the end of the bytes: an argument, or a result.
  struct Making {
    std::size_t begin;
    bool isArgument;
    bool isExpanded = true;
    bool blankWaits = false;  // In an argument, a blank that is due if anything follows.
    std::size_t depth = 0;    // Parentheses that are open in an argument,
    char end = '\0';          // and what has ended it.
    bool hasMacros = false;
    Value value = {};
  };
  // Where the input is read, and an argument in it.
  struct Input;
  struct Cursor;
  // Where a replacement list is read, and where the arguments begin that stand for its parameters.
  struct Body;

  const char* replaceInput(Name& name, Input& input, std::size_t firstToken);
  bool mayMeet(char last, char first) const;
  void spendOnText(std::size_t size);
  const Replacement* enter(const Name& name);
  template <typename Source>
  bool replaceInvocation(Name& name, Source& source, Making& making);
  bool replaceObjectLike(Name& name, Making& making, std::size_t firstToken = 0);
  bool appendRefreshed(const Name& name, Making& making);
  bool appendResult(Name& name, Body& body, Making& result);
  bool adoptResult(const Making& result, Making& making);
  template <typename Source>
  bool readArguments(Source& source, const CppMacro& macro, const Replacement& replacement);
  bool readArgument(Input& input, Making& argument);
  bool appendRun(Cursor& cursor);
  bool getMore(Cursor& cursor, const char* end);
  bool readWord(Cursor& cursor);
  bool readWhiteSpace(Cursor& cursor);
  bool mayHoldMacro(const char* word, const char* end) const;
  const char* passPlain(const char* at, const char* run, bool isExpanded) const;
  bool readName(Input& input, Name& name, Making& argument);
  bool readArgument(Body& body, Making& argument);
  bool appendItems(Body& body, Making& making);
  bool appendTokens(Body& body, Making& making);
  bool appendValue(Body& body, const Value& value, Making& making);
  bool appendLiteral(const Value& value, Making& making);
  bool appendJoined(Body& body, Making& making);
  bool appendOperands(const Body& body, const Replacement::Step& step);
  bool replaceJoined(Body& body, std::size_t begin, Making& making);
  bool appendBlank(Making& making);
  bool appendItem(std::string_view text, Making& making);
  bool standsApart(std::size_t begin, const Making& making) const;
  bool append(std::string_view text);
  bool append(const Part& part);
  Part partFrom(std::size_t begin) const;
  bool makeRoom(std::size_t size);

  CppMacroTable& macros_;
  const NameTable& names_;
  PredefinedMacros& predefined_;
  const TokenStream& stream_;
  Budget& budget_;
  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  std::vector<Value> values_;  // Arguments of the invocations under way, those of the innermost last.
  std::size_t depth_ = 0;      // Of the invocations under way.
  std::size_t inputSize_ = 0;  // Bytes of the input that have been read for the outermost of them.
  std::size_t work_ = 0;       // Tokens that have been handled for it, or what compares to them.
  // The most work that may be done beside one for each byte of the input. Work that is given up takes away from it, and
  // work that is of use gives that back: so a source that is made to defeat all this cannot have much of it done in
  // vain.
  std::size_t mostWork_;
  unsigned meetingWays_ = 0;            // In which two tokens must not become one, see MergingWays.
  std::string literal_;                 // Scratch space.
  std::vector<const Name*> refreshed_;  // Whose text changes at each use, and was used.
};

}  // namespace qnpp
