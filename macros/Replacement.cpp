#include "macros/Replacement.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>

#include "lexer/ByteSet.h"
#include "lexer/PlainToken.h"
#include "lexer/Shortcuts.h"

namespace qnpp {

const Replacement& ReplacementMaker::make(std::string_view text) {
  lex(text);
  tokens_.swap(source_);
  const Step all{Step::Kind::Tokens, 0, static_cast<std::uint32_t>(tokens_.size())};
  findIsText({&all, 1});
  return finish();
}

// ---- Tokens ----

void ReplacementMaker::lex(std::string_view text) {
  source_.clear();
  tokens_.clear();
  steps_.clear();
  operands_.clear();
  texts_.clear();
  own_.clear();
  uses_.clear();
  hasEffects_ = isText_ = hasComma_ = false;
  std::size_t written = text.size();
  if (!kShortcuts || !lexPlainText(text)) {
    source_.clear();
    texts_.clear();
    own_.clear();
    const std::uint64_t effects = lexer_.effectCount();
    written = 0;  // A comment is more than its blank, a line end of two bytes more than its token.
    lexer_.lex(text, [this, &written](CppTokenKind kind, std::string_view token) {
      written += token.size();
      addToken(kind, token);
    });
    hasEffects_ = lexer_.effectCount() != effects;
  }
  const auto isFixed = [](const Spelling* token) {
    return token == nullptr || (token->kind != TK_NEWLINE && token->name == nullptr);
  };
  isFixedText_ = !hasEffects_ && written == text.size() && std::all_of(source_.begin(), source_.end(), isFixed);

  // Only now do the texts and the spellings stay where they are.
  const char* data = texts_.data();
  auto own = own_.begin();
  if (own != own_.end()) {
    for (const Spelling*& token : source_) {
      if (token == nullptr) {
        own->data = data;
        data += own->size;
        token = &*own++;
      }
    }
  }
}

void ReplacementMaker::addToken(CppTokenKind kind, std::string_view token) {
  if (isWord(kind)) {
    source_.push_back(&names_.intern(token)->spelling);
  } else if (isCharacterToken(kind, token)) {
    source_.push_back(characterSpelling(token[0]));
  } else {
    texts_.append(token);
    own_.push_back({nullptr, static_cast<std::uint32_t>(token.size()), static_cast<std::int16_t>(kind), nullptr});
    source_.push_back(nullptr);
  }
}

// Does as the lexer would, which takes far longer for short texts. Returns false where it has to be asked: a text with
// literals that are not simple, or what may be a comment or a line end.
bool ReplacementMaker::lexPlainText(std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    CppTokenKind kind = TK_OTHER;
    const char* const behind = passPlainToken(at, kind);
    if (behind == nullptr || behind > end) {
      return false;
    }
    addToken(kind, {at, static_cast<std::size_t>(behind - at)});
    at = behind;
  }
  return true;
}

// ---- Steps ----

// Reads the tokens item by item. An item is what a "##" can join: a token, a parameter, or a "#" with its parameter.
class ReplacementMaker::StepBuilder {
 public:
  StepBuilder(ReplacementMaker& maker, const ParameterNames& parameters)
      : maker_(maker), parameterCount_(parameters.size()) {
    std::uint32_t count = 0;
    parameters.forEach([this, &count](std::string_view text) {
      ++count;
      if (Name* const name = maker_.names_.find(text)) {
        name->parameter = count;  // Of equal names the last one counts.
        maker_.parameters_.push_back(name);
      }
    });
  }
  StepBuilder(const StepBuilder&) = delete;
  StepBuilder& operator=(const StepBuilder&) = delete;
  ~StepBuilder() {
    for (Name* const name : maker_.parameters_) {
      name->parameter = 0;
    }
    maker_.parameters_.clear();
  }

  void build() {
    bool pasteWaits = false;
    bool blankWaits = false;
    while (at_ < source().size()) {
      const CppTokenKind kind = source()[at_]->kind;
      if (isBlank(kind)) {
        blankWaits = true;
        ++at_;
      } else if (kind == TK_PASTE) {
        if (!hasItem_) {
          return stop(Message::PasteAtBeginning, false);
        }
        pasteWaits = true;
        ++at_;
      } else {
        const std::optional<Item> item = takeItem();
        if (!item) {
          return stop(Message::ParameterExpectedAfterHash, pasteWaits);
        }
        if (pasteWaits) {
          item_.push_back(*item);
          joined_ = true;
        } else {
          finishItem();
          blankBefore_ = hasItem_ && blankWaits;
          item_.push_back(*item);
          hasItem_ = true;
        }
        pasteWaits = blankWaits = false;
      }
    }
    if (pasteWaits) {
      return stop(Message::PasteAtEnd, true);
    }
    finishItem();
    finishTokens();
  }

  void findExpanded() {
    maker_.uses_.assign(parameterCount_, 0);
    for (auto step = maker_.steps_.rbegin(); step != maker_.steps_.rend(); ++step) {
      if (step->kind == Step::Kind::Expand) {
        std::uint8_t& uses = maker_.uses_[step->begin];
        step->isWantedAgain = uses != 0;
        uses = Replacement::kExpanded;
      }
    }
  }

 private:
  std::optional<std::uint32_t> parameterOf(const Spelling& token) const {
    const bool isParameter = isName(token.kind) && token.name->parameter != 0;
    return isParameter ? std::optional(token.name->parameter - 1) : std::nullopt;
  }

  // Takes an item; none when a "#" has no parameter behind it.
  std::optional<Item> takeItem() {
    const Spelling& token = *source()[at_++];
    if (token.kind == '#') {
      while (at_ < source().size() && isWhiteSpace(source()[at_]->kind)) {
        ++at_;
      }
      const auto parameter = at_ < source().size() ? parameterOf(*source()[at_++]) : std::nullopt;
      return parameter ? std::optional(Item{Item::Kind::Literal, *parameter}) : std::nullopt;
    }
    if (const auto parameter = parameterOf(token)) {
      return Item{Item::Kind::Parameter, *parameter};
    }
    return Item{Item::Kind::Token, static_cast<std::uint32_t>(at_ - 1)};
  }

  // Lays out the step for the item that has been read.
  void finishItem() {
    if (item_.empty()) {
      return;
    }
    if (blankBefore_) {
      maker_.tokens_.push_back(blankSpelling());
    }
    const Item& first = item_.front();
    if (joined_) {
      finishTokens();
      const auto begin = static_cast<std::uint32_t>(maker_.operands_.size());
      for (Item& operand : item_) {
        if (operand.kind == Item::Kind::Token) {
          // The operands' tokens stand behind those that are appended as they are; nothing else refers to them.
          maker_.tokens_.push_back(source()[operand.index]);
          operand.index = static_cast<std::uint32_t>(maker_.tokens_.size() - 1);
        }
        maker_.operands_.push_back(operand);
      }
      addStep(Step::Kind::Join, begin, static_cast<std::uint32_t>(maker_.operands_.size()));
      tokensBegin_ = maker_.tokens_.size();
    } else if (first.kind == Item::Kind::Token) {
      maker_.tokens_.push_back(source()[first.index]);
    } else {
      finishTokens();
      addStep(first.kind == Item::Kind::Parameter ? Step::Kind::Expand : Step::Kind::Stringize, first.index, 0);
    }
    item_.clear();
    joined_ = false;
  }

  void finishTokens() {
    const std::size_t end = maker_.tokens_.size();
    if (end > tokensBegin_) {
      addStep(Step::Kind::Tokens, static_cast<std::uint32_t>(tokensBegin_), static_cast<std::uint32_t>(end));
      tokensBegin_ = end;
    }
  }

  // What has been read stands; the left operand of a "##" that waits in vain stands unexpanded, as it would have been
  // joined.
  void stop(Message misuse, bool pasteWaits) {
    joined_ = joined_ || pasteWaits;
    finishItem();
    finishTokens();
    addStep(Step::Kind::Misuse, static_cast<std::uint32_t>(misuse), 0);
  }

  void addStep(Step::Kind kind, std::uint32_t begin, std::uint32_t end) { maker_.steps_.push_back({kind, begin, end}); }

  const std::vector<const Spelling*>& source() const { return maker_.source_; }

  ReplacementMaker& maker_;
  std::size_t parameterCount_;
  std::size_t at_ = 0;
  std::vector<Item>& item_ = maker_.item_;  // The item being read; several when joined.
  bool joined_ = false;
  bool hasItem_ = false;  // An item has been read, so white space before the next one counts.
  bool blankBefore_ = false;
  std::size_t tokensBegin_ = 0;  // Where the tokens begin that no step covers yet.
};

const Replacement& ReplacementMaker::make(std::string_view text, const ParameterNames& parameters) {
  lex(text);
  {
    StepBuilder builder(*this, parameters);
    builder.build();
    builder.findExpanded();
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
