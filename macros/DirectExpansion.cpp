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
constexpr std::size_t kMostText = std::size_t{1} << 21;
constexpr std::size_t kMostInput = std::size_t{1} << 26;
constexpr std::size_t kTextPerWork = 4;  // What comes of the input, and of the work, may be more than that.
constexpr std::size_t kSlack = 4;        // Bytes behind a word that may be read, the first of which ends it.
constexpr unsigned kAllWays = ~0U;       // In which tokens may meet, all of which matter in a condition.

// What a byte of an argument is. Those up to "(" may stand behind a blank that stands for itself.
enum class ByteClass : std::uint8_t { Other, Word, Quote, Opening, Closing, Comma, Blank, LineEnd, Slash, Nul, Unsure };

constexpr std::array<ByteClass, 256> kByteClasses = [] {
  std::array<ByteClass, 256> classes{};
  const auto set = [&classes](std::string_view bytes, ByteClass byteClass) {
    for (const char byte : bytes) {
      classes[static_cast<unsigned char>(byte)] = byteClass;
    }
  };
  set(" \t\v\f", ByteClass::Blank);
  set("(", ByteClass::Opening);
  set(")", ByteClass::Closing);
  set(",", ByteClass::Comma);
  set("\"'", ByteClass::Quote);
  set("/", ByteClass::Slash);
  set("\n", ByteClass::LineEnd);
  set(std::string_view("\0", 1), ByteClass::Nul);
  set("\\\r", ByteClass::Unsure);
  for (std::size_t byte = 0; byte < classes.size(); ++byte) {
    if (kWordBytes[byte]) {
      classes[byte] = ByteClass::Word;
    }
  }
  return classes;
}();

constexpr ByteClass classOf(char byte) { return kByteClasses[static_cast<unsigned char>(byte)]; }

// Whether in a condition a name in the text may have been an operand of `defined`, which is not expanded.
bool mayHoldDefined(std::string_view text) { return text.find("defined") != std::string_view::npos; }

// Whether the text from `at` to the NUL at `end`, which is not empty, consists of words that are no macros, of
// operators and blanks.
bool isPlain(const NameTable& names, const char* at, const char* end) {
  while (at != end) {
    const char* const behind = passAll(kWordBytes, at);
    if (behind == at) {
      const ByteClass byteClass = classOf(*at++);
      if (byteClass != ByteClass::Other && byteClass != ByteClass::Blank) {
        return false;
      }
    } else if (names.mayHoldMacro(at) && findMacroName(names, at, behind) != nullptr) {
      return false;
    } else {
      at = behind;
    }
  }
  return true;
}

}  // namespace

// A place in the bytes that are read, and the line ends before it.
struct DirectExpansion::Input {
  BytesAhead& bytes;
  bool isInCondition;
  std::size_t& furthest;  // That the offset has been.
  std::size_t offset = 0;
  std::size_t lines = 0;

  const char* at() const { return bytes.begin() + offset; }
  void moveTo(const char* at) {
    offset = static_cast<std::size_t>(at - bytes.begin());
    noteReading(at);
  }
  // To be told what has been read.
  void noteReading(const char* at) { furthest = std::max(furthest, static_cast<std::size_t>(at - bytes.begin())); }
  // At the NUL at `end`, gets more of the input. `from` moves along.
  bool getMore(const char*& from, const char*& end) {
    const auto size = end - from;
    const bool isTooLong = static_cast<std::size_t>(end - bytes.begin()) > kMostInput;
    const char* const moved = isTooLong ? nullptr : bytes.getMore(end);
    if (moved == nullptr) {
      return false;
    }
    end = moved;
    from = end - size;
    return true;
  }
  bool passWhiteSpace(const char*& at);
  bool passComment(const char*& at);
  bool passLiteral(const char*& from, const char*& at);
};

// False where it may go on in a way that is not known here.
bool DirectExpansion::Input::passWhiteSpace(const char*& at) {
  for (;;) {
    at = passAll(kBlankBytes, at);
    const char* end = *at == '/' ? at + 1 : at;
    if (*end == '\0') {
      if (!getMore(at, end)) {
        return false;
      }
    } else if (*at == '\n' && !isInCondition) {
      ++at;
      ++lines;
    } else if (!isCommentAt(at)) {
      return true;
    } else if (!passComment(at)) {
      return false;
    }
  }
}

// A comment with a line end in it is given up.
bool DirectExpansion::Input::passComment(const char*& at) {
  const bool isBlock = at[1] == '*';
  const char* end = at + 2;
  for (;;) {
    end = findEndOfComment(end, isBlock);
    if (*end != '\0') {
      break;
    }
    if (!getMore(at, end)) {
      return false;
    }
    end -= end - at > 2 && end[-1] == '*' ? 1 : 0;
  }
  at = isBlock ? end + 2 : end;
  return *end == (isBlock ? '*' : '\n');
}

// Moves `at` from a quote behind its literal. `from` moves along where the bytes do.
bool DirectExpansion::Input::passLiteral(const char*& from, const char*& at) {
  const char quote = *at;
  const auto inside = at + 1 - from;
  ++at;
  while (*(at = findEndOfLiteral(quote, at)) == '\0') {
    if (!getMore(from, at)) {
      return false;
    }
  }
  const bool isEmptyCharacter = quote == '\'' && at == from + inside;
  return *at++ == quote && !isEmptyCharacter;
}

// Where an argument of the input is read.
struct DirectExpansion::Cursor {
  Input& input;
  Making& argument;
  const char* run;  // What has not been appended begins here,
  const char* at;   // and what has not been looked at here.
};

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

// Whether the last byte of a token and the first of the next could become a part of one token that is more, or other,
// than the two of them: a word or a comment. Operators that become one stay the same text, but mean something else.
inline bool DirectExpansion::mayMeet(char last, char first) const {
  const unsigned ways =
      kMergingWays.ofLast[static_cast<unsigned char>(last)] & kMergingWays.ofFirst[static_cast<unsigned char>(first)];
  return (ways & meetingWays_) != 0;
}

// Whether what has been appended behind `begin` does not become one token with what is before it.
inline bool DirectExpansion::standsApart(std::size_t begin, const Making& making) const {
  return begin == making.begin || begin == size_ || !mayMeet(bytes_[begin - 1], bytes_[begin]);
}

// Appends the blank that waits, if one does.
[[gnu::always_inline]] inline bool DirectExpansion::appendBlank(Making& making) {
  if (!making.blankWaits) {
    return true;
  }
  making.blankWaits = false;
  return append(" ");
}

[[gnu::always_inline]] inline bool DirectExpansion::append(std::string_view text) {
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

inline DirectExpansion::Part DirectExpansion::partFrom(std::size_t begin) const {
  return {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(size_ - begin)};
}

bool DirectExpansion::makeRoom(std::size_t size) {
  const std::size_t most = kMostText + kTextPerWork * (inputSize_ + work_);
  if (size_ + size > std::min<std::size_t>(most, UINT32_MAX)) {  // A Part goes no further.
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

DirectExpansion::DirectExpansion(CppMacroTable& macros, const NameTable& names, PredefinedMacros& predefined,
                                 const TokenStream& stream, Budget& budget)
    : macros_(macros), names_(names), predefined_(predefined), stream_(stream), budget_(budget), mostWork_(kMostWork) {}

const char* DirectExpansion::expand(Name& name, BytesAhead& bytes, std::size_t firstToken) {
  Input input{bytes, false, inputSize_};
  meetingWays_ = MergingWays::kWord | MergingWays::kComment;
  const char* const behind = replaceInput(name, input, firstToken);
  bytes.setLines(input.lines);
  return behind;
}

const char* DirectExpansion::expandInCondition(Name& name, const char* at) {
  BytesAhead bytes(at);
  Input input{bytes, true, inputSize_};
  meetingWays_ = kAllWays;
  const char* const behind = replaceInput(name, input, 0);
  if (behind == nullptr || !append({"", 1})) {
    return nullptr;
  }
  --size_;
  return behind;
}

// Replaces the macro `name`, behind whose name the input is. Returns the place behind.
const char* DirectExpansion::replaceInput(Name& name, Input& input, std::size_t firstToken) {
  size_ = 0;
  inputSize_ = 0;
  values_.clear();
  depth_ = 0;
  work_ = 0;
  refreshed_.clear();
  Making result{.begin = 0, .isArgument = false};
  bool isReplaced = false;
  if (!name.macro->functionLike) {
    isReplaced = replaceObjectLike(name, result, firstToken);
  } else if (const char* at = input.at(); *at == '(' || (input.passWhiteSpace(at) && *at == '(')) {
    input.moveTo(at + 1);
    isReplaced = replaceInvocation(name, input, result);
  }
  // What changes from line to line is that of the last; and in a condition an operand of `defined` is not expanded.
  if (!isReplaced || (!refreshed_.empty() && (input.lines != 0 || input.isInCondition))) {
    mostWork_ -= std::min(work_, mostWork_ - kLeastWork);
    if (capacity_ > kMostText) {  // The general way takes enough by itself.
      bytes_.reset();
      capacity_ = size_ = 0;
    }
    return nullptr;
  }
  for (const Name* const refreshed : refreshed_) {
    predefined_.refresh(*refreshed, *stream_.file());
  }
  mostWork_ = std::min(kMostWork, mostWork_ + work_);
  budget_.spendOnExpansion(work_);
  return input.at();
}

void DirectExpansion::spendOnText(std::size_t size) { work_ += 1 + size / Budget::kBytesLikeAToken; }

// The replacement list of the macro `name`, if it may be used here.
const Replacement* DirectExpansion::enter(const Name& name) {
  if (name.isBeingReplaced || name.isRefreshed || depth_ == kDeepest || work_ > mostWork_ + inputSize_) {
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
bool DirectExpansion::replaceObjectLike(Name& name, Making& making, std::size_t firstToken) {
  if (name.isRefreshed) {
    return appendRefreshed(name, making);
  }
  const Replacement* const replacement = enter(name);
  if (replacement == nullptr) {
    return false;
  }
  const Replacement::Step all{0, static_cast<std::uint32_t>(replacement->tokens().size()),
                              Replacement::Step::Kind::Tokens};
  Body body{*replacement, {&all, 1}, values_.size(), 0, firstToken};
  Making result{.begin = size_, .isArgument = false};
  return appendResult(name, body, result) && adoptResult(result, making);
}

bool DirectExpansion::appendRefreshed(const Name& name, Making& making) {
  if (std::find(refreshed_.begin(), refreshed_.end(), &name) == refreshed_.end()) {
    refreshed_.push_back(&name);
  }
  literal_ = predefined_.textOf(name, *stream_.file());
  spendOnText(literal_.size());
  const char* const end = literal_.data() + literal_.size();
  return (literal_[0] != '"' || findEndOfLiteral('"', literal_.data() + 1) + 1 == end) && appendItem(literal_, making);
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
  if (firstValue + expected > values_.capacity()) {
    values_.reserve(std::max(firstValue + expected, 2 * values_.capacity()));
  }
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
    value.expanded = partFrom(argument.begin);
    if (argument.hasMacros && meetingWays_ == kAllWays &&
        mayHoldDefined({bytes_.get() + argument.begin, value.expanded.size})) {
      return false;
    }
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
      value.text = partFrom(text.begin);
    }
    values_.push_back(value);
  }
  return values_.size() - firstValue == expected;
}

// Whether a macro's name may be in the word, which may be empty.
inline bool DirectExpansion::mayHoldMacro(const char* word, const char* end) const {
  return names_.mayHoldMacro(word) && passAll(kDigitBytes, word) != end;
}

// Reads an argument from the input, and what ends it.
bool DirectExpansion::readArgument(Input& input, Making& argument) {
  const char* at = passAll(kBlankBytes, input.at());
  const char* const behind = passAll(kWordBytes, at);
  if ((*behind == ',' || *behind == ')') && !(argument.isExpanded && mayHoldMacro(at, behind))) {
    argument.end = *behind;  // Most arguments are one word.
    input.moveTo(behind + 1);
    return append({at, static_cast<std::size_t>(behind - at)});
  }
  if (!input.passWhiteSpace(at)) {
    return false;
  }
  Cursor cursor{input, argument, at, at};
  for (;;) {
    cursor.at = at = passPlain(cursor.at, cursor.run, argument.isExpanded);
    bool isPassed = false;
    switch (classOf(*at)) {
      case ByteClass::Word:
        isPassed = readWord(cursor);
        break;
      case ByteClass::Quote:
        isPassed = input.passLiteral(cursor.run, cursor.at);
        break;
      case ByteClass::Opening:
        ++argument.depth;
        ++cursor.at;
        continue;
      case ByteClass::Closing:
      case ByteClass::Comma:
        if (argument.depth == 0) {
          argument.end = *at;
          input.moveTo(at + 1);
          return appendRun(cursor);
        }
        argument.depth -= *at == ')' ? 1U : 0U;
        ++cursor.at;
        continue;
      case ByteClass::Slash:
      case ByteClass::LineEnd:
      case ByteClass::Blank:
        isPassed = readWhiteSpace(cursor);
        break;
      case ByteClass::Nul:
        isPassed = getMore(cursor, at);
        break;
      case ByteClass::Other:
      case ByteClass::Unsure:
        break;
    }
    if (!isPassed) {
      return false;
    }
  }
}

// Appends what has been passed over.
inline bool DirectExpansion::appendRun(Cursor& cursor) {
  const char* const begin = std::exchange(cursor.run, cursor.at);
  cursor.input.noteReading(cursor.at);
  return begin == cursor.at || appendItem({begin, static_cast<std::size_t>(cursor.at - begin)}, cursor.argument);
}

// The token at the cursor may go on behind the NUL at `end`.
bool DirectExpansion::getMore(Cursor& cursor, const char* end) {
  const bool isMore = appendRun(cursor) && cursor.input.getMore(cursor.at, end);
  cursor.run = cursor.at;
  return isMore;
}

// At a word which may go on behind the buffer, or hold the name of a macro.
bool DirectExpansion::readWord(Cursor& cursor) {
  const char* const end = passAll(kWordBytes, cursor.at);
  if (*end == '\0') {
    return getMore(cursor, end);
  }
  const char* word = cursor.at;
  Name* const name = findMacroName(names_, word, end);
  if (name == nullptr) {
    cursor.at = end;
    return true;
  }
  if (word != cursor.at || !appendRun(cursor)) {
    return false;
  }
  cursor.input.moveTo(end);
  const bool isRead = readName(cursor.input, *name, cursor.argument);
  cursor.run = cursor.at = cursor.input.at();
  return isRead;
}

// At a blank, a line end, or a slash that may begin a comment.
bool DirectExpansion::readWhiteSpace(Cursor& cursor) {
  if (*cursor.at == '/' && cursor.at[1] == '\0') {
    return getMore(cursor, cursor.at + 1);
  }
  if (!appendRun(cursor) || (*cursor.at == '\n' && cursor.input.isInCondition) ||
      !cursor.input.passWhiteSpace(cursor.at)) {
    return false;
  }
  cursor.argument.blankWaits = size_ != cursor.argument.begin;
  cursor.run = cursor.at;
  return true;
}

// Behind what stands for itself at `at`, a place behind `run`: operators, words that are no macros, single blanks.
inline const char* DirectExpansion::passPlain(const char* at, const char* run, bool isExpanded) const {
  for (;;) {
    switch (classOf(*at)) {
      case ByteClass::Other:
        ++at;
        break;
      case ByteClass::Word: {
        const char* const end = passAll(kWordBytes, at);
        if (*end == '\0' || (isExpanded && mayHoldMacro(at, end))) {
          return at;
        }
        at = end;
        break;
      }
      case ByteClass::Blank:
        if (*at != ' ' || at == run || classOf(at[1]) > ByteClass::Opening) {
          return at;
        }
        ++at;
        break;
      case ByteClass::Slash:
        if (at[1] == '\0' || isCommentAt(at)) {
          return at;
        }
        ++at;
        break;
      default:
        return at;
    }
  }
}

// At the name of a macro in an argument, behind the word.
bool DirectExpansion::readName(Input& input, Name& name, Making& argument) {
  if (name.macro == nullptr || !isName(name.spelling.kind)) {
    return false;
  }
  if (!name.macro->functionLike) {
    argument.hasMacros = true;
    return appendBlank(argument) && replaceObjectLike(name, argument);
  }
  const char* behind = input.at();
  if (!input.passWhiteSpace(behind)) {
    return false;
  }
  const bool isInvoked = *behind == '(';
  input.moveTo(isInvoked ? behind + 1 : behind);
  if (!isInvoked) {
    argument.value.macro = &name;
    return size_ == argument.begin && append(name.text());
  }
  argument.hasMacros = true;
  return appendBlank(argument) && replaceInvocation(name, input, argument);
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
    if (token.name != nullptr && token.name->macro != nullptr && making.isExpanded && !token.name->isBeingReplaced) {
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
  if (value.macro != nullptr && making.isExpanded && !value.macro->isBeingReplaced) {
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
  // Where an apostrophe stands in a string of the argument, backslashes may be left that are no escapes to the lexer.
  const bool isString = literal_.find('\\') == std::string::npos || isStringLiteral(literal_);
  return isString && appendItem(literal_, making);
}

// The operands of a "##" as one text, of words, operators and blanks.
bool DirectExpansion::appendJoined(Body& body, Making& making) {
  const Replacement::Step& step = body.steps[body.step++];
  if (!appendBlank(making)) {
    return false;
  }
  const std::size_t begin = size_;
  if (!appendOperands(body, step) || size_ == begin) {
    return false;
  }
  spendOnText(size_ - begin);
  bytes_[size_] = '\0';  // Ends the last word; what other texts have left there might belong to it.
  const char* const text = bytes_.get() + begin;
  const char* const end = bytes_.get() + size_;
  return isPlain(names_, text, end) ? standsApart(begin, making)
                                    : passAll(kWordBytes, text) == end && replaceJoined(body, begin, making);
}

bool DirectExpansion::appendOperands(const Body& body, const Replacement::Step& step) {
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
  return true;
}

// The word behind `begin`, which "##" has made and which holds the name of a macro.
bool DirectExpansion::replaceJoined(Body& body, std::size_t begin, Making& making) {
  const char* const text = bytes_.get() + begin;
  const char* word = text;
  Name* const name = findMacroName(names_, word, bytes_.get() + size_);
  if (word != text || name->macro == nullptr || !isName(name->spelling.kind)) {
    return false;
  }
  if (!making.isExpanded || name->isBeingReplaced) {
    return standsApart(begin, making);
  }
  size_ = begin;
  making.hasMacros = true;
  return name->macro->functionLike ? body.passOpening() && replaceInvocation(*name, body, making)
                                   : replaceObjectLike(*name, making);
}

}  // namespace qnpp
