#include "macros/DirectExpansion.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>

#include "lexer/ByteSet.h"
#include "lexer/CppLexer.h"
#include "lexer/PlainToken.h"
#include "lexer/ShortCopy.h"
#include "macros/Arguments.h"

namespace qnpp {
namespace {

constexpr std::size_t kDeepest = 40;
constexpr std::size_t kMostWork = std::size_t{1} << 21;
constexpr std::size_t kLeastWork = std::size_t{1} << 10;
constexpr std::size_t kBytesLikeAToken = 16;
constexpr std::size_t kMostText = std::size_t{1} << 21;
constexpr std::size_t kSlack = 4;  // Bytes behind a word that may be read, the first of which ends it.

constexpr ByteSet kQuoteAndBackslash = bytesOf("\"\\");

// What a byte of an argument is.
enum class ByteClass : std::uint8_t { Other, Word, Blank, Parenthesis, Comma, Quote, Slash, Unsure };

constexpr std::array<ByteClass, 256> kByteClasses = [] {
  std::array<ByteClass, 256> classes{};
  const auto set = [&classes](std::string_view bytes, ByteClass byteClass) {
    for (const char byte : bytes) {
      classes[static_cast<unsigned char>(byte)] = byteClass;
    }
  };
  set(" \t\v\f", ByteClass::Blank);
  set("()", ByteClass::Parenthesis);
  set(",", ByteClass::Comma);
  set("\"'", ByteClass::Quote);
  set("/", ByteClass::Slash);
  set(std::string_view("\\\n\r\0", 4), ByteClass::Unsure);
  for (std::size_t byte = 0; byte < classes.size(); ++byte) {
    if (kWordBytes[byte]) {
      classes[byte] = ByteClass::Word;
    }
  }
  return classes;
}();

// Whether the last byte of a token and the first of the next could become a part of one token that is more, or other,
// than the two of them: a word or a comment. Operators that become one stay the same text.
bool mayMeet(char last, char first) {
  const unsigned ways =
      kMergingWays.ofLast[static_cast<unsigned char>(last)] & kMergingWays.ofFirst[static_cast<unsigned char>(first)];
  return (ways & (MergingWays::kWord | MergingWays::kComment)) != 0;
}

// Whether what "#" has made is a string to the lexer, which knows two escapes. Where an apostrophe stands in a string
// of the argument, backslashes may be left that are none.
bool isOneString(std::string_view literal) {
  if (literal.find('\\') == std::string_view::npos) {
    return true;
  }
  std::size_t at = 1;
  for (; at + 1 < literal.size(); ++at) {
    if (literal[at] == '"' || (literal[at] == '\\' && !has(kQuoteAndBackslash, literal[++at]))) {
      return false;
    }
  }
  return at + 1 == literal.size();
}

bool mayHoldComment(std::string_view text) {
  for (std::size_t at = text.find('/'); at != std::string_view::npos; at = text.find('/', at + 1)) {
    if (at + 1 < text.size() && (text[at + 1] == '/' || text[at + 1] == '*')) {
      return true;
    }
  }
  return false;
}

}  // namespace

struct DirectExpansion::Body {
  const Replacement& replacement;
  std::span<const Replacement::Step> steps;
  std::size_t firstValue;
  std::size_t step = 0;
  std::size_t token = 0;  // Of the step.

  // The tokens of the step from the next one on, if they are what it appends.
  SpellingRange rest() const {
    if (step == steps.size() || steps[step].kind != Replacement::Step::Kind::Tokens) {
      return {};
    }
    return replacement.tokens().subspan(steps[step].begin, steps[step].end - steps[step].begin).subspan(token);
  }
  // Passes over a "(" and a blank before it, if they come next.
  bool passOpening() {
    const SpellingRange tokens = rest();
    const std::size_t blanks = !tokens.empty() && tokens.front() == blankSpelling() ? 1 : 0;
    if (tokens.size() <= blanks || tokens[blanks]->kind != '(') {
      return false;
    }
    token += blanks + 1;
    return true;
  }
};

// ---- Bytes ----

// Appends one or more tokens, and before them the blank that waits. False where they may become one with what is
// before.
inline bool DirectExpansion::appendItem(std::string_view text, Making& making) {
  if (!appendBlank(making)) {
    return false;
  }
  const std::size_t begin = size_;
  return append(text) && standsApart(begin, making);
}

// Whether what has been appended behind `begin` does not become one token with what is before it.
inline bool DirectExpansion::standsApart(std::size_t begin, const Making& making) const {
  return begin == making.begin || begin == size_ || !mayMeet(bytes_[begin - 1], bytes_[begin]);
}

// Appends the blank that waits, if one does.
inline bool DirectExpansion::appendBlank(Making& making) {
  if (!making.blankWaits) {
    return true;
  }
  making.blankWaits = false;
  return append(" ");
}

inline bool DirectExpansion::append(std::string_view text) {
  if (text.size() > capacity_ - size_ && !makeRoom(text.size())) {
    return false;
  }
  copyShort(bytes_.get() + size_, text.data(), text.size());
  size_ += text.size();
  return true;
}

inline bool DirectExpansion::append(const Part& part) {
  if (part.size > capacity_ - size_ && !makeRoom(part.size)) {
    return false;
  }
  copyShort(bytes_.get() + size_, bytes_.get() + part.begin, part.size);
  size_ += part.size;
  return true;
}

bool DirectExpansion::makeRoom(std::size_t size) {
  if (size_ + size > kMostText) {
    return false;
  }
  const std::size_t capacity = std::max<std::size_t>(4096, 2 * (size_ + size));
  std::unique_ptr<char[]> bytes(new (std::nothrow) char[capacity + kSlack]);
  if (bytes == nullptr) {
    return false;
  }
  if (size_ > 0) {
    std::memcpy(bytes.get(), bytes_.get(), size_);
  }
  bytes_ = std::move(bytes);
  capacity_ = capacity;
  return true;
}

// ---- Replacing ----

DirectExpansion::DirectExpansion(CppMacroTable& macros, const NameTable& names, Budget& budget)
    : macros_(macros), names_(names), budget_(budget), mostWork_(kMostWork) {}

const char* DirectExpansion::expand(Name& name, const char* at) {
  at = passAll(kBlankBytes, at);
  if (*at++ != '(') {
    return nullptr;
  }
  size_ = 0;
  values_.clear();
  depth_ = 0;
  work_ = 0;
  Making result{.begin = 0, .isArgument = false};
  if (!replaceInvocation(name, at, result)) {
    mostWork_ -= std::min(work_, mostWork_ - kLeastWork);
    return nullptr;
  }
  mostWork_ = std::min(kMostWork, mostWork_ + work_);
  budget_.spendOnExpansion(work_);
  return at;
}

void DirectExpansion::spendOnText(std::size_t size) { work_ += 1 + size / kBytesLikeAToken; }

// The replacement list of the macro `name`, if it may be used here.
const Replacement* DirectExpansion::enter(const Name& name) {
  if (name.isBeingReplaced || name.isRefreshed || depth_ == kDeepest || work_ > mostWork_) {
    return nullptr;
  }
  const CppMacro& macro = *name.macro;
  if (macro.replacement == nullptr && mayHoldComment(macro.text)) {
    return nullptr;  // Lexing it may do more than give tokens.
  }
  const Replacement& replacement = macros_.replacementOf(name);
  ++depth_;
  work_ += 1 + replacement.tokens().size();
  return replacement.isText() ? &replacement : nullptr;
}

// Appends what the invocation of `name` comes to whose arguments begin at `source`, which is moved behind its ")".
template <typename Source>
bool DirectExpansion::replaceInvocation(Name& name, Source& source, Making& making) {
  const Replacement* const replacement = enter(name);
  if (replacement == nullptr) {
    return false;
  }
  const std::size_t begin = size_;
  const std::size_t firstValue = values_.size();
  if (!readArguments(source, *name.macro, *replacement)) {
    return false;
  }
  const std::size_t resultBegin = size_;
  Body body{*replacement, replacement->steps(), firstValue};
  Making result{.begin = resultBegin, .isArgument = false};
  if (!appendResult(name, body, result)) {
    return false;
  }
  values_.resize(firstValue);
  if (begin != resultBegin) {  // The arguments go.
    std::memmove(bytes_.get() + begin, bytes_.get() + resultBegin, size_ - resultBegin);
    size_ -= resultBegin - begin;
  }
  result.begin = begin;
  return adoptResult(result, making);
}

// Appends what the object-like macro `name` comes to.
bool DirectExpansion::replaceObjectLike(Name& name, Making& making) {
  const Replacement* const replacement = enter(name);
  if (replacement == nullptr) {
    return false;
  }
  const Replacement::Step all{Replacement::Step::Kind::Tokens, 0,
                              static_cast<std::uint32_t>(replacement->tokens().size())};
  Body body{*replacement, {&all, 1}, values_.size()};
  Making result{.begin = size_, .isArgument = false};
  return appendResult(name, body, result) && adoptResult(result, making);
}

// Appends what the replacement list comes to, while the name is hidden.
bool DirectExpansion::appendResult(Name& name, Body& body, Making& result) {
  result.value.hasComma = body.replacement.hasComma();
  name.isBeingReplaced = true;
  const bool isDone = appendItems(body, result);
  name.isBeingReplaced = false;
  --depth_;
  return isDone;
}

// What has been appended behind `result.begin` is a part of `making` now.
bool DirectExpansion::adoptResult(const Making& result, Making& making) {
  const char* const text = bytes_.get();
  const bool isNormal =
      result.value.isNormal && size_ > result.begin && text[result.begin] != ' ' && text[size_ - 1] != ' ';
  if (making.isArgument && !isNormal) {
    return false;
  }
  making.value.isNormal = making.value.isNormal && isNormal;
  making.value.hasComma = making.value.hasComma || result.value.hasComma;
  return standsApart(result.begin, making);
}

// ---- Arguments ----

template <typename Source>
bool DirectExpansion::readArguments(Source& source, const CppMacro& macro, const Replacement& replacement) {
  const std::size_t firstValue = values_.size();
  const std::size_t expected = macro.parameters.size();
  char end = ',';
  while (end == ',') {
    const std::size_t index = values_.size() - firstValue;
    const Source start = source;
    const bool isExpanded = index < expected && replacement.usesExpansionOf(index);
    Making argument{.begin = size_, .isArgument = true, .isExpanded = isExpanded};
    if (!readArgument(source, argument)) {
      return false;
    }
    end = argument.end;
    Value& value = argument.value;
    value.expanded = {argument.begin, size_ - argument.begin};
    if (value.expanded.size == 0) {
      if (end == ')') {
        break;  // "()" has no argument, and a "," directly before ")" adds none.
      }
      value.isNormal = false;
    }
    if (index == expected || (value.macro != nullptr && value.macro->text().size() != value.expanded.size)) {
      return false;
    }
    value.text = value.expanded;
    if (argument.hasMacros && replacement.usesTextOf(index)) {
      Making text{.begin = size_, .isArgument = true, .isExpanded = false};
      Source again = start;
      if (!readArgument(again, text)) {
        return false;
      }
      value.text = {text.begin, size_ - text.begin};
    }
    values_.push_back(value);
  }
  return values_.size() - firstValue == expected;
}

// Reads an argument from the scanner's buffer, and what ends it.
bool DirectExpansion::readArgument(const char*& at, Making& argument) {
  at = passAll(kBlankBytes, at);
  const char* run = at;  // What has not been appended.
  const auto appendRun = [this, &run, &argument](const char* end) {
    return end == run || appendItem({run, static_cast<std::size_t>(end - run)}, argument);
  };
  for (;;) {
    switch (kByteClasses[static_cast<unsigned char>(*at)]) {
      case ByteClass::Other:
        ++at;
        break;
      case ByteClass::Word: {
        const char* const end = passAll(kWordBytes, at);
        if (!argument.isExpanded || !names_.mayHoldMacro(at)) {
          at = end;
          break;
        }
        const char* word = at;
        Name* const name = findMacroName(names_, word, end);
        if (name == nullptr) {
          at = end;
          break;
        }
        if (name->macro == nullptr || !isName(name->spelling.kind) || word != at || !appendRun(word)) {
          return false;
        }
        at = end;
        if (!readName(word, at, *name, argument)) {
          return false;
        }
        run = at;
        break;
      }
      case ByteClass::Blank: {
        const char* const end = passAll(kBlankBytes, at);
        if (end == at + 1 && *at == ' ' && at != run && *end != ')' && *end != ',') {
          ++at;
          break;
        }
        if (!appendRun(at)) {
          return false;
        }
        argument.blankWaits = size_ != argument.begin;
        run = at = end;
        break;
      }
      case ByteClass::Parenthesis:
        if (*at == '(') {
          ++argument.depth;
        } else if (argument.depth-- == 0) {
          argument.end = *at;
          return appendRun(at++);
        }
        ++at;
        break;
      case ByteClass::Comma:
        if (argument.depth == 0) {
          argument.end = *at;
          return appendRun(at++);
        }
        ++at;
        break;
      case ByteClass::Quote:
        at = passSimpleLiteral(at);
        if (at == nullptr) {
          return false;
        }
        break;
      case ByteClass::Slash:
        if (at[1] == '/' || at[1] == '*') {
          return false;
        }
        ++at;
        break;
      case ByteClass::Unsure:
        return false;
    }
  }
}

// At the name of a macro in an argument: `at` is behind the word.
bool DirectExpansion::readName(const char* word, const char*& at, Name& name, Making& argument) {
  if (!name.macro->functionLike) {
    argument.hasMacros = true;
    return appendBlank(argument) && replaceObjectLike(name, argument);
  }
  const char* const behind = passAll(kBlankBytes, at);
  if (*behind != '(') {
    argument.value.macro = &name;
    return size_ == argument.begin && append({word, static_cast<std::size_t>(at - word)});
  }
  at = behind + 1;
  argument.hasMacros = true;
  return appendBlank(argument) && replaceInvocation(name, at, argument);
}

bool DirectExpansion::readArgument(Body& body, Making& argument) {
  return appendItems(body, argument) && argument.end != '\0';
}

// ---- Replacement lists ----

// Appends what follows in a replacement list: up to its end, or to what ends the argument.
bool DirectExpansion::appendItems(Body& body, Making& making) {
  while (body.step < body.steps.size()) {
    const Replacement::Step& step = body.steps[body.step];
    bool isDone = false;
    switch (step.kind) {
      case Replacement::Step::Kind::Tokens:
        isDone = appendTokens(body, making);
        if (isDone && making.end != '\0') {
          return true;
        }
        break;
      case Replacement::Step::Kind::Expand:
        ++body.step;
        isDone = appendValue(body, values_[body.firstValue + step.begin], making);
        break;
      case Replacement::Step::Kind::Stringize:
        ++body.step;
        isDone = appendLiteral(values_[body.firstValue + step.begin], making);
        break;
      case Replacement::Step::Kind::Join:
        isDone = appendJoined(body, making);
        ++body.step;
        break;
      case Replacement::Step::Kind::Misuse:
        break;
    }
    if (!isDone) {
      return false;
    }
  }
  return true;
}

// The tokens of a step, up to its end, or the end of the argument, or to a name whose replacement ends in another step.
bool DirectExpansion::appendTokens(Body& body, Making& making) {
  const std::size_t step = body.step;
  const SpellingRange tokens =
      body.replacement.tokens().subspan(body.steps[step].begin, body.steps[step].end - body.steps[step].begin);
  // Of these tokens no two become one, since they have been lexed as they stand here.
  if (!making.blankWaits && size_ != making.begin && body.token != tokens.size() &&
      mayMeet(bytes_[size_ - 1], *tokens[body.token]->data)) {
    return false;
  }
  const Spelling* const* at = tokens.data() + body.token;
  const Spelling* const* const end = tokens.data() + tokens.size();
  for (; at != end; ++at) {
    const Spelling& token = **at;
    if (token.name != nullptr && token.name->macro != nullptr && making.isExpanded) {
      body.token = static_cast<std::size_t>(at - tokens.data()) + 1;
      making.hasMacros = true;
      if (!appendBlank(making) ||
          !(token.name->macro->functionLike ? body.passOpening() && replaceInvocation(*token.name, body, making)
                                            : replaceObjectLike(*token.name, making))) {
        return false;
      }
      return true;  // What follows is appended next.
    }
    if (making.isArgument) {
      if (&token == blankSpelling()) {
        making.blankWaits = size_ != making.begin;
        continue;
      }
      if (token.kind == '(') {
        ++making.depth;
      } else if (token.kind == ')' || token.kind == ',') {
        if (making.depth == 0) {
          making.end = *token.data;
          body.token = static_cast<std::size_t>(at - tokens.data()) + 1;
          return true;
        }
        making.depth -= token.kind == ')' ? 1U : 0U;
      }
      if (!appendBlank(making)) {
        return false;
      }
    }
    if (token.size > capacity_ - size_ && !makeRoom(token.size)) {
      return false;
    }
    char* const to = bytes_.get() + size_;
    size_ += token.size;
    if (token.size == 1) {
      *to = *token.data;
    } else {
      copyShort(to, token.data, token.size);
    }
  }
  ++body.step;
  body.token = 0;
  return true;
}

// The argument in the place of its parameter.
bool DirectExpansion::appendValue(Body& body, const Value& value, Making& making) {
  if (value.macro != nullptr && making.isExpanded) {
    Name& name = *value.macro;
    if (body.passOpening()) {
      making.hasMacros = true;
      return appendBlank(making) && replaceInvocation(name, body, making);
    }
    making.value.macro = &name;
    return making.isArgument && size_ == making.begin && append(value.expanded);
  }
  if (making.isArgument && (!value.isNormal || (value.hasComma && making.depth == 0))) {
    return false;
  }
  making.value.isNormal = making.value.isNormal && value.isNormal;
  making.value.hasComma = making.value.hasComma || value.hasComma;
  spendOnText(value.expanded.size);
  if (!appendBlank(making)) {
    return false;
  }
  const std::size_t begin = size_;
  return append(value.expanded) && standsApart(begin, making);
}

bool DirectExpansion::appendLiteral(const Value& value, Making& making) {
  literal_.clear();
  appendStringLiteral({bytes_.get() + value.text.begin, value.text.size}, literal_);
  spendOnText(literal_.size());
  return isOneString(literal_) && appendItem(literal_, making);
}

// The operands of a "##" as one text, if it is a word without a macro's name.
bool DirectExpansion::appendJoined(const Body& body, Making& making) {
  if (!appendBlank(making)) {
    return false;
  }
  const Replacement::Step& step = body.steps[body.step];
  const std::size_t begin = size_;
  for (const Replacement::Item& operand :
       std::span(body.replacement.operands()).subspan(step.begin, step.end - step.begin)) {
    const bool isAppended = operand.kind == Replacement::Item::Kind::Token
                                ? append(body.replacement.tokens()[operand.index]->text())
                                : operand.kind == Replacement::Item::Kind::Parameter &&
                                      append(values_[body.firstValue + operand.index].text);
    if (!isAppended) {
      return false;
    }
  }
  spendOnText(size_ - begin);
  if (size_ == begin) {
    return false;
  }
  bytes_[size_] = '\0';  // Ends the word; what other texts have left there might belong to it.
  const char* word = bytes_.get() + begin;
  const char* const end = bytes_.get() + size_;
  return std::all_of(word, end, isWordByte) && findMacroName(names_, word, end) == nullptr &&
         standsApart(begin, making);
}

}  // namespace qnpp
