#include "macros/Arguments.h"

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
    appendTexts(tokens(index).tokens, text);
  }
}

void Arguments::add(TokenStream& stream, CppTokenKind kind, bool afterBlank) {
  const SpellingRange before = collected_.spellings();
  const Spelling& token = *stream.spelling(kind);
  mustLex_ = mustLex_ || isLoneQuote(token);
  if (before.size() > begin_) {
    if (afterBlank) {
      collected_.appendUnasked(blankSpelling());
    } else {
      mustLex_ = mustLex_ || mayMerge(*before.back(), token);
    }
  }
  stream.appendCurrent(token, collected_);
}

void Arguments::finish(TokenStream& stream, const HideSet& hideSet) {
  std::string_view text;
  if (mustLex_ || !kShortcuts) {
    std::string joined;
    appendTexts(collected_.spellings().subspan(begin_), joined);
    text = stream.keep(joined);
    lexAnew(stream, text);
    mustLex_ = false;
  }
  Argument& argument = addArgument();
  argument.hideSet = hideSet;
  argument.begin = begin_;
  argument.count = collected_.size() - begin_;
  argument.text = text;
  begin_ = collected_.size();
}

// Puts what `text`, the text of the argument being read, lexes into in the place of its tokens.
void Arguments::lexAnew(TokenStream& stream, std::string_view text) {
  TokenList old;
  old.append({collected_.spellings().subspan(begin_), HideSet(), &collected_, begin_}, HideSet(), stream.hideSets());
  collected_.cutTo(begin_);
  std::size_t token = 0;       // The old token that holds the next byte to be lexed,
  std::size_t tokenBegin = 0;  // and where its text begins.
  std::size_t run = 0;
  stream.storedTextLexer().lex(text, [&](CppTokenKind kind, std::string_view lexed) {
    const Spelling* const spelling = stream.spell(kind, lexed);
    if (kind == TK_SPACE) {
      collected_.append(spelling, HideSet());
      return;  // Perhaps a comment, of which it is not known where it began.
    }
    const std::size_t begin = stream.storedTextLexer().offset();
    const auto tokenEnd = [&] { return tokenBegin + old.spellings()[token]->size; };
    while (tokenEnd() <= begin) {
      tokenBegin = tokenEnd();
      ++token;
    }
    HideSet all;
    for (;;) {
      while (old.runs()[run].end <= token) {
        ++run;
      }
      all = all.joined(old.hideSetAt(token, run));
      if (tokenEnd() >= begin + lexed.size()) {
        break;
      }
      tokenBegin = tokenEnd();
      ++token;
    }
    collected_.append(spelling, all);
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

void Arguments::keepExpanded(std::size_t index, TokenList& tokens) {
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
  if (isExpanded) {
    isExpanded = false;
    expanded.clear();
  }
}

NormalizedTokens& Arguments::surroundings(std::size_t index) {
  Argument& argument = arguments_[index];
  if (argument.surroundings == nullptr) {
    argument.own.reset(tokens(index).tokens);
    argument.surroundings = &argument.own;
  }
  return *argument.surroundings;
}

}  // namespace qnpp
