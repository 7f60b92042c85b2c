#include "macros/Arguments.h"

#include <cassert>
#include <utility>

#include "lexer/ByteSet.h"
#include "lexer/Shortcuts.h"

namespace qnpp {
namespace {

void appendTexts(SpellingRange tokens, std::string& text) {
  for (const Spelling* const token : tokens) {
    text.append(token->data, token->size);
  }
}

// Whether the white space among the tokens is single blanks between two others.
bool areNormalized(SpellingRange tokens) {
  const Spelling* before = blankSpelling();
  for (const Spelling* const token : tokens) {
    if (isWhiteSpace(token->kind) && (token != blankSpelling() || before == blankSpelling())) {
      return false;
    }
    before = token;
  }
  return tokens.empty() || before != blankSpelling();
}

}  // namespace

bool mayMerge(const Spelling& before, const Spelling& token) {
  assert(before.size > 0 && token.size > 0);
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
  assert(index < count_);
  if (arguments_[index].text.data() != nullptr) {
    text.append(arguments_[index].text);
  } else {
    appendTexts(tokens(index).tokens, text);
  }
}

void Arguments::add(TokenStream& stream, CppTokenKind kind) {
  const Spelling* const before = collected_.size() > begin_ ? collected_.spellings().back() : nullptr;
  const Spelling& token = stream.appendCurrent(kind, collected_);
  mustLex_ = mustLex_ || isLoneQuote(token) || (before != nullptr && mayMerge(*before, token));
}

void Arguments::finish(TokenStream& stream, HideSet hideSet) {
  std::string_view text;
  const bool isLexedAnew = mustLex_ || !kShortcuts;
  if (isLexedAnew) {
    std::string joined;
    appendTexts(collected_.spellings().subspan(begin_), joined);
    text = stream.store(joined);
    lexAnew(stream, text);
    mustLex_ = false;
  }
  Argument& argument = addArgument();
  argument.hideSet = std::move(hideSet);
  argument.begin = begin_;
  argument.count = collected_.size() - begin_;
  argument.text = text;
  argument.isNormalized = !isLexedAnew || areNormalized(collected_.spellings().subspan(begin_));
  begin_ = collected_.size();
}

// Puts what `text`, the text of the argument being read, lexes into in the place of its tokens. A new token carries the
// hide sets of all the old ones in which it has a part.
void Arguments::lexAnew(TokenStream& stream, std::string_view text) {
  TokenList old;
  old.append({collected_.spellings().subspan(begin_), HideSet(), &collected_, begin_}, HideSet(), stream.hideSets());
  collected_.cutTo(begin_);
  StoredTextLexer& lexer = stream.storedTextLexer();
  std::size_t begin = 0;   // Of the new token in the text.
  std::size_t begun = 0;   // How many of the old tokens begin before it,
  std::size_t oldEnd = 0;  // and where the last of these ends.
  lexer.lex(text, [&](CppTokenKind kind, std::string_view lexed) {
    const auto hideSetOf = [&old](std::size_t token) { return old.hideSetAt(token, old.runAt(token)); };
    HideSet all = oldEnd > begin ? hideSetOf(begun - 1) : HideSet();
    for (begin = lexer.endOffset(); oldEnd < begin; ++begun) {
      oldEnd += old.spellings()[begun]->size;
      all = all.joined(hideSetOf(begun));
    }
    collected_.append(stream.spell(kind, lexed), all);
  });
}

void Arguments::addInPlace(TokenRange tokens, NormalizedTokens* surroundings) {
  Argument& argument = addArgument();
  argument.isInPlace = true;
  argument.inPlace = std::move(tokens);
  argument.surroundings = surroundings;
}

Arguments::Argument& Arguments::addArgument() {
  if (count_ == arguments_.size()) {
    arguments_.emplace_back();
  }
  return arguments_[count_++];
}

void Arguments::rememberExpanded(std::size_t index, TokenList& tokens) {
  assert(index < count_);
  Argument& argument = arguments_[index];
  argument.isExpanded = true;
  std::swap(argument.expanded, tokens);
}

void Arguments::clear() {
  while (count_ > 0) {
    arguments_[--count_].clear();
  }
  collected_.clear();
  begin_ = 0;
  mustLex_ = false;
}

void Arguments::Argument::clear() {
  hideSet = HideSet();
  if (isInPlace) {
    isInPlace = false;
    inPlace = {};
  }
  text = {};
  surroundings = nullptr;
  isNormalized = true;
  if (isExpanded) {
    isExpanded = false;
    expanded.clear();
  }
}

NormalizedTokens* Arguments::surroundings(std::size_t index) {
  assert(index < count_);
  Argument& argument = arguments_[index];
  if (argument.surroundings == nullptr && argument.isNormalized) {
    argument.whole.reset(tokens(index).tokens);
    argument.surroundings = &argument.whole;
  }
  return argument.surroundings;
}

}  // namespace qnpp
