#include "macros/Arguments.h"

#include <algorithm>
#include <cassert>
#include <utility>

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

void appendStringLiteral(std::string_view text, std::string& literal) {
  literal.push_back('"');
  if (std::none_of(text.begin(), text.end(), [](char byte) { return has(kQuotesAndBackslash, byte); })) {
    literal.append(text);
    literal.push_back('"');
    return;
  }
  bool inLiteral = false;
  char before = '\0';
  for (const char byte : text) {
    if (byte == '"' || (byte == '\\' && inLiteral)) {
      literal.push_back('\\');
    }
    if ((byte == '"' || byte == '\'') && before != '\\') {
      inLiteral = !inLiteral;
    }
    literal.push_back(byte);
    before = byte;
  }
  literal.push_back('"');
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
  const Spelling& token = stream.appendCurrent(kind, collected_);
  mustLex_ = mustLex_ || isLoneQuote(token) || mayMerge(*last_, token);
  last_ = &token;
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
  const SpellingRange collected = collected_.spellings();
  if (collected.data() != collectedAt_) {
    collectedAt_ = collected.data();  // So those of the arguments before have moved, too.
    for (std::size_t index = 0; index < count_; ++index) {
      TokenRange& tokens = arguments_[index].tokens;
      if (!arguments_[index].isInPlace) {
        tokens.tokens = collected.subspan(tokens.position, tokens.tokens.size());
      }
    }
  }
  Argument& argument = addArgument();
  // Tokens of a file have no sets of their own.
  const auto& runs = collected_.runs();
  const bool haveSets = runs.size() != 1 || !runs.front().hideSet.empty() || runs.front().nested;
  argument.tokens = {collected.subspan(begin_), std::move(hideSet), haveSets ? &collected_ : nullptr, begin_};
  argument.text = text;
  argument.isNormalized = !isLexedAnew || areNormalized(argument.tokens.tokens);
  begin_ = collected.size();
  last_ = blankSpelling();
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
    const Origin origin = old.spellings()[oldEnd > begin ? begun - 1 : begun]->origin;
    HideSet all = oldEnd > begin ? hideSetOf(begun - 1) : HideSet();
    for (begin = lexer.endOffset(); oldEnd < begin; ++begun) {
      oldEnd += old.spellings()[begun]->size;
      all = all.joined(hideSetOf(begun));
    }
    collected_.append(stream.traced(stream.spell(kind, lexed), origin), all);
  });
}

void Arguments::addInPlace(TokenRange tokens, NormalizedTokens* surroundings) {
  Argument& argument = addArgument();
  argument.isInPlace = true;
  argument.tokens = std::move(tokens);
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
  last_ = blankSpelling();
}

void Arguments::Argument::clear() {
  tokens = {};
  isInPlace = false;
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
