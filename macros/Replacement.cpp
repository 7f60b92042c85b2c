#include "macros/Replacement.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <new>
#include <type_traits>

#include "lexer/ByteSet.h"
#include "lexer/PlainToken.h"
#include "lexer/Shortcuts.h"

namespace qnpp {

// ---- Tokens ----

void ReplacementMaker::clear() {
  tokens_.clear();
  steps_.clear();
  operands_.clear();
  texts_.clear();
  own_.clear();
}

// Hands each token of the text to a Builder, and tells it where there are no more. Returns whether the tokens are all
// of the text.
template <typename Builder>
bool ReplacementMaker::lex(std::string_view text) {
  hasEffects_ = isFixedText_ = isText_ = hasComma_ = false;
  clear();
  std::size_t written = text.size();
  Builder plain(*this);
  if (kShortcuts && lexPlainText(text, plain)) {
    plain.finish();
  } else {
    clear();
    Builder builder(*this);
    const std::uint64_t effects = lexer_.effectCount();
    written = 0;  // A comment is more than its blank, a line end of two bytes more than its token.
    lexer_.lex(text, [&builder, &written](CppTokenKind kind, std::string_view token) {
      written += token.size();
      builder.take(kind, token);
    });
    builder.finish();
    hasEffects_ = lexer_.effectCount() != effects;
  }

  // Only now do the texts and the spellings stay where they are.
  const char* data = texts_.data();
  auto own = own_.begin();
  if (own != own_.end()) {
    for (const Spelling*& token : tokens_) {
      if (token == nullptr) {
        own->data = data;
        data += own->size;
        token = &*own++;
      }
    }
  }
  return written == text.size();
}

// Does as the lexer would, which takes far longer for short texts. Returns false where it has to be asked: a text with
// literals that are not simple, or what may be a comment or a line end.
template <typename Builder>
bool ReplacementMaker::lexPlainText(std::string_view text, Builder& builder) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    CppTokenKind kind = TK_OTHER;
    const char* const behind = passPlainToken(at, kind);
    if (behind == nullptr || behind > end) {
      return false;
    }
    builder.take(kind, {at, static_cast<std::size_t>(behind - at)});
    at = behind;
  }
  return true;
}

void ReplacementMaker::addToken(CppTokenKind kind, std::string_view token) {
  if (isWord(kind)) {
    addWord(token, names_.hashOf(token));
  } else if (isCharacterToken(kind, token)) {
    tokens_.push_back(characterSpelling(token[0]));
  } else {
    texts_.append(token);
    own_.push_back({nullptr, static_cast<std::uint32_t>(token.size()), static_cast<std::int16_t>(kind), nullptr});
    tokens_.push_back(nullptr);
  }
}

void ReplacementMaker::addWord(std::string_view word, std::uint32_t hash) {
  tokens_.push_back(&names_.intern(word, hash)->spelling);
}

// ---- Object-like macros ----

class ReplacementMaker::TokenBuilder {
 public:
  explicit TokenBuilder(ReplacementMaker& maker) : maker_(maker) {}

  void take(CppTokenKind kind, std::string_view token) { maker_.addToken(kind, token); }
  void finish() {}

 private:
  ReplacementMaker& maker_;
};

const Replacement& ReplacementMaker::make(std::string_view text) {
  const auto isFixed = [](const Spelling* token) { return token->kind != TK_NEWLINE && token->name == nullptr; };
  uses_.clear();
  const bool isAll = lex<TokenBuilder>(text);
  isFixedText_ = isAll && !hasEffects_ && std::all_of(tokens_.begin(), tokens_.end(), isFixed);
  const Step all{0, static_cast<std::uint32_t>(tokens_.size()), Step::Kind::Tokens};
  findIsText({&all, 1});
  return finish();
}

// ---- Function-like macros ----

// Makes items of the tokens, and steps of the items. An item is what a "##" can join: a token, a parameter, or a "#"
// with its parameter. The tokens of the list are added as they come, each behind the blank that is due before its item.
class ReplacementMaker::StepBuilder {
 public:
  explicit StepBuilder(ReplacementMaker& maker) : maker_(maker) {}

  void take(CppTokenKind kind, std::string_view token) {
    if (isStopped_) {
      return;
    }
    if (hashWaits_) {
      if (!isWhiteSpace(kind)) {
        takeBehindHash(kind, token);
      }
    } else if (isBlank(kind)) {
      blankWaits_ = true;
    } else if (kind == TK_PASTE) {
      if (!hasItem_) {
        return stop(Message::PasteAtBeginning);
      }
      pasteWaits_ = true;
    } else if (kind == '#') {
      hashWaits_ = true;
    } else if (isWord(kind)) {
      takeWord(token);
    } else {
      beginItem();
      setItem(Item::Kind::Token, tokenCount());
      maker_.addToken(kind, token);
    }
  }

  void finish() {
    if (isStopped_) {
      return;
    }
    if (hashWaits_) {
      stop(Message::ParameterExpectedAfterHash);
    } else if (pasteWaits_) {
      stop(Message::PasteAtEnd);
    } else {
      finishItem();
      finishTokens(tokenCount());
    }
  }

 private:
  void takeBehindHash(CppTokenKind kind, std::string_view token) {
    const std::uint32_t parameter = isWord(kind) ? maker_.parameters_.find(token, maker_.names_.hashOf(token)) : 0;
    if (parameter == 0) {
      stop(Message::ParameterExpectedAfterHash);
      return;
    }
    hashWaits_ = false;
    beginItem();
    setItem(Item::Kind::Literal, parameter - 1);
  }

  void takeWord(std::string_view word) {
    const std::uint32_t hash = maker_.names_.hashOf(word);
    const std::uint32_t parameter = maker_.parameters_.find(word, hash);
    beginItem();
    if (parameter != 0) {
      setItem(Item::Kind::Parameter, parameter - 1);
    } else {
      setItem(Item::Kind::Token, tokenCount());
      maker_.addWord(word, hash);
    }
  }

  void beginItem() {
    if (pasteWaits_) {
      beginJoin();
    } else if (hasItem_) {
      finishItem();
      if (blankWaits_) {
        maker_.tokens_.push_back(blankSpelling());
      }
    }
    pasteWaits_ = blankWaits_ = false;
    hasItem_ = true;
  }

  void setItem(Item::Kind kind, std::uint32_t index) {
    if (isJoined_) {
      maker_.operands_.push_back({kind, index});
    } else {
      item_ = {kind, index};
    }
  }

  // The item becomes the first operand. The operands' tokens stand behind those that are appended as they are; nothing
  // else refers to them.
  void beginJoin() {
    if (!isJoined_) {
      finishTokens(item_.kind == Item::Kind::Token ? item_.index : tokenCount());
      isJoined_ = true;
      operandsBegin_ = static_cast<std::uint32_t>(maker_.operands_.size());
      maker_.operands_.push_back(item_);
    }
  }

  // Lays out the step for the item that has been read.
  void finishItem() {
    if (isJoined_) {
      isJoined_ = false;
      addStep(Step::Kind::Join, operandsBegin_, static_cast<std::uint32_t>(maker_.operands_.size()));
      tokensBegin_ = tokenCount();
    } else if (hasItem_ && item_.kind != Item::Kind::Token) {
      finishTokens(tokenCount());
      addStep(item_.kind == Item::Kind::Parameter ? Step::Kind::Expand : Step::Kind::Stringize, item_.index, 0);
    }
  }

  void finishTokens(std::uint32_t end) {
    if (end > tokensBegin_) {
      addStep(Step::Kind::Tokens, tokensBegin_, end);
      tokensBegin_ = end;
    }
  }

  // What has been read stands; the left operand of a "##" that waits in vain stands unexpanded, as it would have been
  // joined.
  void stop(Message misuse) {
    isStopped_ = true;
    if (pasteWaits_) {
      beginJoin();
    }
    finishItem();
    finishTokens(tokenCount());
    addStep(Step::Kind::Misuse, static_cast<std::uint32_t>(misuse), 0);
  }

  void addStep(Step::Kind kind, std::uint32_t begin, std::uint32_t end) { maker_.steps_.push_back({begin, end, kind}); }

  std::uint32_t tokenCount() const { return static_cast<std::uint32_t>(maker_.tokens_.size()); }

  ReplacementMaker& maker_;
  bool isStopped_ = false;
  bool hashWaits_ = false;           // For its parameter.
  bool pasteWaits_ = false;          // For its right operand.
  bool blankWaits_ = false;          // White space has been read behind the last item, so
  bool hasItem_ = false;             // it counts if there is one.
  bool isJoined_ = false;            // The item is several,
  std::uint32_t operandsBegin_ = 0;  // which are the operands from here on;
  Item item_;                        // otherwise it is this.
  std::uint32_t tokensBegin_ = 0;    // Where the tokens begin that no step covers yet.
};

const Replacement& ReplacementMaker::make(std::string_view text, const ParameterNames& parameters) {
  parameters_.reset(parameters, names_);
  // Mostly each of them stands there once, and something between two.
  steps_.reserve(2 * parameters.size());
  tokens_.reserve(2 * parameters.size());
  lex<StepBuilder>(text);
  uses_.assign(parameters.size(), 0);
  for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
    if (step->kind == Step::Kind::Expand) {
      std::uint8_t& uses = uses_[step->begin];
      step->isWantedAgain = uses != 0;
      uses = Replacement::kExpanded;
    }
  }
  findIsText(steps_);
  return finish();
}

// ---- Properties ----

void ReplacementMaker::findIsText(std::span<const Step> steps) {
  const auto isOrdinary = [](const Spelling* token) {
    return token->kind != TK_NEWLINE && token->kind != TK_CONTINUATION && isWord(token->kind) == isName(token->kind) &&
           (token->kind != TK_SPACE || token == blankSpelling()) &&
           (token->kind != TK_OTHER || !has(kQuotesAndBackslash, *token->data));
  };
  if (hasEffects_ || !std::all_of(tokens_.begin(), tokens_.end(), isOrdinary)) {
    return;
  }
  std::size_t depth = 0;
  for (const Step& step : steps) {
    const Spelling* before = nullptr;
    switch (step.kind) {
      case Step::Kind::Tokens:
        for (const Spelling* const token : SpellingRange(tokens_).subspan(step.begin, step.end - step.begin)) {
          if ((token->kind == ')' && depth-- == 0) || (token == blankSpelling() && before == token)) {
            return;
          }
          before = token;
          depth += token->kind == '(' ? 1U : 0U;
          hasComma_ = hasComma_ || (token->kind == ',' && depth == 0);
        }
        break;
      case Step::Kind::Expand:
        break;
      case Step::Kind::Stringize:
        uses_[step.begin] |= Replacement::kText;
        break;
      case Step::Kind::Join:
        for (const Item& item : std::span(operands_).subspan(step.begin, step.end - step.begin)) {
          if (item.kind != Item::Kind::Token) {
            uses_[item.index] |= Replacement::kText;
          }
        }
        break;
      case Step::Kind::Misuse:
        return;
    }
  }
  isText_ = depth == 0;
}

// ---- Storage ----

const Replacement& ReplacementMaker::finish() {
  const std::size_t size = sizeof(Replacement) + std::span(tokens_).size_bytes() + std::span(own_).size_bytes() +
                           std::span(steps_).size_bytes() + std::span(operands_).size_bytes() + texts_.size() +
                           uses_.size();
  char* at = static_cast<char*>(store_.take(size));
  auto& made = *new (at) Replacement;
  at += sizeof(Replacement);
  const auto copy = [&at](const auto& from) {
    using Element = typename std::remove_reference_t<decltype(from)>::value_type;
    auto* const to = reinterpret_cast<Element*>(at);
    std::uninitialized_copy(from.begin(), from.end(), to);
    at = reinterpret_cast<char*>(to + from.size());
    return std::span<Element>(to, from.size());
  };
  const std::span<const Spelling*> tokens = copy(tokens_);
  const std::span<Spelling> own = copy(own_);
  made.steps_ = copy(steps_);
  made.operands_ = copy(operands_);
  made.uses_ = copy(uses_);
  copy(texts_);
  // What referred to the spellings and texts here refers to the copies now.
  const Spelling* const first = own_.data();
  const char* const texts = at - texts_.size();
  for (Spelling& spelling : own) {
    spelling.data = texts + (spelling.data - texts_.data());
  }
  if (!own.empty()) {
    for (const Spelling*& token : tokens) {
      if (!std::less<>()(token, first) && std::less<>()(token, first + own.size())) {
        token = &own[static_cast<std::size_t>(token - first)];
      }
    }
  }
  made.tokens_ = tokens;
  made.blockSize_ = size;
  made.hasEffects_ = hasEffects_;
  made.isFixedText_ = isFixedText_;
  made.isText_ = isText_;
  made.hasComma_ = hasComma_;
  return made;
}

}  // namespace qnpp
