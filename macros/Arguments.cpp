#include "macros/Arguments.h"

#include "lexer/ByteSet.h"
#include "lexer/Shortcuts.h"

namespace qnpp {
namespace {

void appendTexts(SpellingRange tokens, std::string& text) {
  for (const Spelling* const token : tokens) {
    text.append(token->data, token->size);
  }
}

}  // namespace

bool mayMerge(const Spelling& before, const Spelling& token) {
  const char last = before.data[before.size - 1];
  const char first = token.data[0];
  if (isWordByte(last)) {
    return isWordByte(first);
  }
  if (before.size > 1) {
    return false;  // No operator has more than two characters, and a literal is closed.
  }
  switch (last) {
    case '#':
    case '|':
    case '&':
      return first == last;
    case '=':
    case '!':
      return first == '=';
    case '<':
    case '>':
      return first == last || first == '=';
    case '/':
      return first == '/' || first == '*';
    default:
      return false;
  }
}

bool isLoneQuote(const Spelling& token) {
  return token.kind == TK_OTHER && (*token.data == '"' || *token.data == '\'');
}

void Arguments::appendText(std::size_t index, std::string& text) const {
  if (arguments_[index].text.data() != nullptr) {
    text.append(arguments_[index].text);
  } else {
    appendTexts(tokens(index), text);
  }
}

void Arguments::add(const Spelling* token, bool afterBlank) {
  if (tokens_.size() > begin_) {
    if (afterBlank) {
      tokens_.push_back(blankSpelling());
    } else {
      mustLex_ = mustLex_ || mayMerge(*tokens_.back(), *token);
    }
  }
  mustLex_ = mustLex_ || isLoneQuote(*token);
  tokens_.push_back(token);
}

void Arguments::finish(const HideSet& hideSet, SpellingPool& pool) {
  std::string_view text;
  if (mustLex_ || !kShortcuts) {
    std::string joined;
    appendTexts(SpellingRange(tokens_).subspan(begin_), joined);
    text = pool.keep(joined);
    tokens_.resize(begin_);
    pool.lex(text, tokens_);
    mustLex_ = false;
  }
  Argument& argument = addArgument(hideSet);
  argument.begin = begin_;
  argument.count = tokens_.size() - begin_;
  argument.text = text;
  begin_ = tokens_.size();
}

void Arguments::addInPlace(SpellingRange tokens, NormalizedTokens* surroundings, const HideSet& hideSet) {
  Argument& argument = addArgument(hideSet);
  argument.isInPlace = true;
  argument.inPlace = tokens;
  argument.surroundings = surroundings;
}

Arguments::Argument& Arguments::addArgument(const HideSet& hideSet) {
  if (count_ == arguments_.size()) {
    arguments_.emplace_back();
  }
  Argument& argument = arguments_[count_++];
  argument.hideSet = hideSet;
  return argument;
}

void Arguments::Argument::clear() {
  isInPlace = false;
  text = {};
  hideSet = HideSet();
  surroundings = nullptr;
}

NormalizedTokens& Arguments::surroundings(std::size_t index) {
  Argument& argument = arguments_[index];
  if (argument.surroundings == nullptr) {
    argument.own.reset(tokens(index));
    argument.surroundings = &argument.own;
  }
  return *argument.surroundings;
}

}  // namespace qnpp
