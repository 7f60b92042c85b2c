#include "macros/Replacement.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "lexer/ByteSet.h"
#include "lexer/Shortcuts.h"

namespace qnpp {

Replacement::Replacement(std::string_view text, NameTable& names, StoredTextLexer& lexer) {
  lex(text, names, lexer);
  const Step all{Step::Kind::Tokens, 0, static_cast<std::uint32_t>(tokens_.size())};
  findIsText({&all, 1});
}

void Replacement::lex(std::string_view text, NameTable& names, StoredTextLexer& lexer) {
  if (kShortcuts && isWordText(text)) {
    tokens_.push_back(&names.intern(text)->spelling);
    return;
  }
  const std::uint64_t effects = lexer.effectCount();
  std::size_t written = 0;  // A comment is more than its blank, a line end of two bytes more than its token.
  lexer.lex(text, [this, &names, &written](CppTokenKind kind, std::string_view token) {
    written += token.size();
    if (isWord(kind)) {
      tokens_.push_back(&names.intern(token)->spelling);
    } else if (isCharacterToken(kind, token)) {
      tokens_.push_back(characterSpelling(token[0]));
    } else {
      texts_.append(token);
      own_.push_back({nullptr, static_cast<std::uint32_t>(token.size()), static_cast<std::int16_t>(kind), nullptr});
      tokens_.push_back(nullptr);
    }
  });
  hasEffects_ = lexer.effectCount() != effects;
  const auto isFixed = [](const Spelling* token) {
    return token == nullptr || (token->kind != TK_NEWLINE && token->name == nullptr);
  };
  isFixedText_ = !hasEffects_ && written == text.size() && std::all_of(tokens_.begin(), tokens_.end(), isFixed);

  // Only now do the texts and the spellings stay where they are.
  const char* data = texts_.data();
  auto own = own_.begin();
  for (const Spelling*& token : tokens_) {
    if (token == nullptr) {
      own->data = data;
      data += own->size;
      token = &*own++;
    }
  }
}

// Reads the tokens item by item. An item is what a "##" can join: a token, a parameter, or a "#" with its parameter.
class Replacement::StepBuilder {
 public:
  StepBuilder(Replacement& replacement, const std::vector<std::string>& parameters, const NameTable& names)
      : replacement_(replacement), source_(std::exchange(replacement.tokens_, {})), parameterCount_(parameters.size()) {
    for (std::uint32_t index = 0; index < parameters.size(); ++index) {
      if (const Name* const name = names.find(parameters[index])) {
        parameterIndex_[name] = index;  // Of equal names the last one counts.
      }
    }
  }

  void build() {
    bool pasteWaits = false;
    bool blankWaits = false;
    while (at_ < source_.size()) {
      const CppTokenKind kind = source_[at_]->kind;
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

  void findWantedAgain() {
    std::vector<bool> isWanted(parameterCount_);
    for (auto step = replacement_.steps_.rbegin(); step != replacement_.steps_.rend(); ++step) {
      if (step->kind == Step::Kind::Expand) {
        step->isWantedAgain = isWanted[step->begin];
        isWanted[step->begin] = true;
      }
    }
  }

 private:
  std::optional<std::uint32_t> parameterOf(const Spelling& token) const {
    if (!isName(token.kind)) {
      return std::nullopt;
    }
    const auto found = parameterIndex_.find(token.name);
    return found == parameterIndex_.end() ? std::nullopt : std::optional(found->second);
  }

  // Takes an item; none when a "#" has no parameter behind it.
  std::optional<Item> takeItem() {
    const Spelling& token = *source_[at_++];
    if (token.kind == '#') {
      while (at_ < source_.size() && isWhiteSpace(source_[at_]->kind)) {
        ++at_;
      }
      const auto parameter = at_ < source_.size() ? parameterOf(*source_[at_++]) : std::nullopt;
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
      replacement_.tokens_.push_back(blankSpelling());
    }
    const Item& first = item_.front();
    if (joined_) {
      finishTokens();
      const auto begin = static_cast<std::uint32_t>(replacement_.operands_.size());
      for (Item& operand : item_) {
        if (operand.kind == Item::Kind::Token) {
          // The operands' tokens stand behind those that are appended as they are; nothing else refers to them.
          replacement_.tokens_.push_back(source_[operand.index]);
          operand.index = static_cast<std::uint32_t>(replacement_.tokens_.size() - 1);
        }
        replacement_.operands_.push_back(operand);
      }
      addStep(Step::Kind::Join, begin, static_cast<std::uint32_t>(replacement_.operands_.size()));
      tokensBegin_ = replacement_.tokens_.size();
    } else if (first.kind == Item::Kind::Token) {
      replacement_.tokens_.push_back(source_[first.index]);
    } else {
      finishTokens();
      addStep(first.kind == Item::Kind::Parameter ? Step::Kind::Expand : Step::Kind::Stringize, first.index, 0);
    }
    item_.clear();
    joined_ = false;
  }

  void finishTokens() {
    const std::size_t end = replacement_.tokens_.size();
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

  void addStep(Step::Kind kind, std::uint32_t begin, std::uint32_t end) {
    replacement_.steps_.push_back({kind, begin, end});
  }

  Replacement& replacement_;
  std::vector<const Spelling*> source_;  // The tokens of the list as lexed.
  std::size_t at_ = 0;
  std::size_t parameterCount_;
  std::unordered_map<const Name*, std::uint32_t> parameterIndex_;
  std::vector<Item> item_;  // The item being read; several when joined.
  bool joined_ = false;
  bool hasItem_ = false;  // An item has been read, so white space before the next one counts.
  bool blankBefore_ = false;
  std::size_t tokensBegin_ = 0;  // Where the tokens begin that no step covers yet.
};

Replacement::Replacement(std::string_view text, const std::vector<std::string>& parameters, NameTable& names,
                         StoredTextLexer& lexer) {
  lex(text, names, lexer);
  StepBuilder builder(*this, parameters, names);
  builder.build();
  builder.findWantedAgain();
  if (parameters.size() <= 64) {
    findIsText(steps_);
  }
}

void Replacement::findIsText(std::span<const Step> steps) {
  const auto isOrdinary = [](const Spelling* token) {
    return token->kind != TK_NEWLINE && token->kind != TK_CONTINUATION && isWord(token->kind) == isName(token->kind) &&
           (token->name == nullptr || !token->name->isRefreshed) &&
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
        for (const Spelling* const token : tokens().subspan(step.begin, step.end - step.begin)) {
          if ((token->kind == ')' && depth-- == 0) || (token == blankSpelling() && before == token)) {
            return;
          }
          before = token;
          depth += token->kind == '(' ? 1U : 0U;
          hasComma_ = hasComma_ || (token->kind == ',' && depth == 0);
        }
        break;
      case Step::Kind::Expand:
        expandedArguments_ |= std::uint64_t{1} << step.begin;
        break;
      case Step::Kind::Stringize:
        textArguments_ |= std::uint64_t{1} << step.begin;
        break;
      case Step::Kind::Join:
        for (const Item& item : std::span(operands_).subspan(step.begin, step.end - step.begin)) {
          textArguments_ |= item.kind == Item::Kind::Token ? 0 : std::uint64_t{1} << item.index;
        }
        break;
      case Step::Kind::Misuse:
        return;
    }
  }
  isText_ = depth == 0;
}

}  // namespace qnpp
