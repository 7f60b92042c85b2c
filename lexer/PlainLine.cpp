#include "lexer/PlainLine.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "lexer/ByteSet.h"
#include "lexer/PlainToken.h"

namespace qnpp {
namespace {

// What a token may be that begins with a byte.
enum class Beginning : std::uint8_t { Unclear, Blank, LineEnd, Nul, Letter, Digit, Quote, Slash, Single, Double };

constexpr std::array<Beginning, 256> kBeginnings = [] {
  std::array<Beginning, 256> beginnings{};
  const auto set = [&beginnings](std::string_view bytes, Beginning beginning) {
    for (const char byte : bytes) {
      beginnings[static_cast<unsigned char>(byte)] = beginning;
    }
  };
  set(" \t\v\f", Beginning::Blank);
  set("\n", Beginning::LineEnd);
  set(std::string_view("\0", 1), Beginning::Nul);
  set("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_", Beginning::Letter);
  set("0123456789", Beginning::Digit);
  set("'", Beginning::Quote);
  set("/", Beginning::Slash);
  set("()?:^+-*%~", Beginning::Single);
  set("|&=!<>", Beginning::Double);  // Perhaps the first of two.
  return beginnings;
}();

// In the place of a kind: the text of a macro comes in the place of its name.
constexpr CppTokenKind kExpanded = -1;

// Whether the byte behind a backslash makes it an escape of a character literal. Further digits stand for themselves.
bool isCharacterEscape(const char* at) { return has(kCharacterEscapes, *at) || (*at == 'x' && has(kHexDigits, at[1])); }

}  // namespace

CppTokenKind PlainLine::next(bool isProtected) {
  for (;;) {
    switch (kBeginnings[static_cast<unsigned char>(*at_)]) {
      case Beginning::Blank:
        ++at_;
        break;
      case Beginning::Letter:
        if (const CppTokenKind kind = takeWord(isProtected); kind != kExpanded) {
          return kind;
        }
        break;
      case Beginning::Digit:
        return takeNumber();
      case Beginning::Quote:
        return takeCharacter();
      case Beginning::Single:
        return take(*at_, at_ + 1);
      case Beginning::Double:
        return takeOperator();
      case Beginning::Slash:
        if (!isCommentAt(at_)) {
          return take('/', at_ + 1);
        }
        passComment();
        break;
      case Beginning::LineEnd:
        if (macro_ != nullptr) {
          return giveUp();
        }
        end_ = at_;
        return TK_END;
      case Beginning::Nul:
        if (macro_ == nullptr || at_ != textEnd_) {
          return giveUp();
        }
        endExpansion();
        break;
      case Beginning::Unclear:
        return giveUp();
    }
  }
}

CppTokenKind PlainLine::giveUp() {
  at_ = "";
  macro_ = nullptr;
  end_ = nullptr;
  return TK_END;
}

CppTokenKind PlainLine::take(CppTokenKind kind, const char* end) {
  text_ = {at_, static_cast<std::size_t>(end - at_)};
  at_ = end;
  work_ += macro_ != nullptr ? 1 : 0;
  return kind;
}

CppTokenKind PlainLine::takeOperator() {
  if (const CppTokenKind kind = operatorOfTwo(at_[0], at_[1]); kind != TK_END) {
    return take(kind, at_ + 2);
  }
  return *at_ == '=' ? giveUp() : take(*at_, at_ + 1);
}

CppTokenKind PlainLine::takeNumber() {
  const char* const end = passNumber(at_);
  return isWordByte(*end) ? giveUp() : take(kindOfNumber({at_, static_cast<std::size_t>(end - at_)}), end);
}

// A literal with no other backslashes than those of escapes; see CppLexer::passLiteral.
CppTokenKind PlainLine::takeCharacter() {
  const char* at = at_ + 1;
  while (*at != '\'') {
    if (*at == '\\') {
      ++at;
      if (!isCharacterEscape(at)) {
        return giveUp();
      }
    } else if (has(kLineEndsAndNul, *at)) {
      return giveUp();
    }
    ++at;
  }
  return at == at_ + 1 ? giveUp() : take(TK_CHAR, at + 1);
}

// Moves behind the comment that begins here, if it ends on the line.
void PlainLine::passComment() {
  const bool isBlock = at_[1] == '*';
  const char* const at = findEndOfComment(at_ + 2, isBlock);
  if (macro_ != nullptr || *at != (isBlock ? '*' : '\n')) {
    static_cast<void>(giveUp());
    return;
  }
  at_ = isBlock ? at + 2 : at;
}

// ---- Words ----

CppTokenKind PlainLine::takeWord(bool isProtected) {
  const char* const end = passAll(kWordBytes, at_);
  const std::string_view word(at_, static_cast<std::size_t>(end - at_));
  if (word == "defined") {
    return macro_ != nullptr ? giveUp() : take(TK_DEFINED, end);
  }
  if (isExpanded_) {
    return take(TK_IDENTIFIER, end);
  }
  Name* const name = findName(word, isProtected);
  isMacro_ = name != nullptr && name->macro != nullptr;
  const CppTokenKind kind = name == nullptr ? CppTokenKind{TK_IDENTIFIER} : name->spelling.kind;
  if (isProtected || !isMacro_ || !isName(kind) || isHidden(*name)) {
    return take(kind, end);
  }
  static_cast<void>(take(kind, end));
  return beginExpansion(*name) ? kExpanded : giveUp();
}

// The entry of a word of which one is needed: because it is a macro, or no identifier like others.
Name* PlainLine::findName(std::string_view word, bool isProtected) const {
  // The filter may read behind the end of a short text, and does not know all words with a kind of their own.
  const bool isSure = macro_ != nullptr || isProtected;
  return isSure || (names_.mayHoldMacro(word.data()) && names_.mayBeMacro(word)) ? names_.find(word) : nullptr;
}

// The names of the macros around a token are its hide set.
bool PlainLine::isHidden(const Name& name) const {
  const auto isOf = [&name](const Enclosing& enclosing) { return enclosing.macro == &name; };
  return macro_ == &name || std::any_of(enclosing_.begin(), enclosing_.begin() + depth_, isOf);
}

bool PlainLine::beginExpansion(Name& name) {
  const char* behind = at_;
  std::optional<std::string_view> text = macros_.textOf(name);
  if (!text && macro_ == nullptr) {
    text = macros_.expand(name, behind);
    isExpanded_ = text.has_value();
  }
  if (!text || depth_ == kMostNested || ++work_ > kMostWork) {
    return false;
  }
  enclosing_[depth_++] = {behind, textEnd_, macro_};
  at_ = text->data();
  textEnd_ = text->data() + text->size();
  macro_ = &name;
  return true;
}

void PlainLine::endExpansion() {
  const Enclosing& enclosing = enclosing_[--depth_];
  at_ = enclosing.at;
  textEnd_ = enclosing.end;
  macro_ = enclosing.macro;
  isExpanded_ = false;
}

}  // namespace qnpp
