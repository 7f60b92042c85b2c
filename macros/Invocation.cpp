// Macro invocations in text, and the replacement lists that every expansion begins with.
#include <algorithm>
#include <utility>

#include "engine/Sources.h"
#include "lexer/Shortcuts.h"

namespace qnpp {

// The current token is a name in a text line. It is written, or its expansion becomes the current source, so that
// rescanning is reading on.
void CppPreprocessor::expandInText() {
  Name* const name = currentName();
  if (name == nullptr || name->macro == nullptr || current_->hideSet().contains(*name)) {
    output_.write(currentText());
    return;
  }
  if (name->macro->functionLike) {
    // A copy, since the cache's answer holds until its next question only.
    expandFunctionLikeInText(*name, HideSet(hideSets_.with(current_->hideSet(), *name)));
    return;
  }
  if (!kShortcuts || isRefreshed(*name)) {
    pushObjectLike(*name, hideSets_.with(current_->hideSet(), *name));
    return;
  }
  const Replacement& replacement = replacementOf(*name);
  if (isCurrentFile() && findExpandedText(*name)) {
    output_.write(name->expandedText());
    return;
  }
  // What would be read back and written is written right here.
  const SpellingRange tokens = replacement.tokens();
  std::size_t written = 0;
  for (; written < tokens.size() && tokens[written]->isPlainText(); ++written) {
    output_.write(tokens[written]->data, tokens[written]->size);
  }
  if (written < tokens.size()) {
    pushTokens(tokens.subspan(written), hideSets_.with(current_->hideSet(), *name));
  }
}

// Most object-like macros come to the same text wherever they stand in a file's text lines: what is in them is plain,
// or is another such macro. That text is kept with the name until a definition changes, and the lexer writes it without
// handing the name out. It is sought when a macro is used for the second time, so that definitions and uses that take
// turns do not pay for it. Returns whether it is known.
bool CppPreprocessor::findExpandedText(Name& name) {
  if (name.expandedIn == names_.generation()) {
    return true;  // The first word of a line is handed out all the same.
  }
  CppMacro& macro = *name.macro;
  if (macro.replacement == nullptr) {
    return false;  // Lexing it does more than give tokens, each time.
  }
  if (!macro.replacement->isFixedText()) {
    if (macro.usedIn != names_.generation()) {
      macro.usedIn = names_.generation();
      macro.isUnsettled = false;
      return false;
    }
    if (macro.isUnsettled) {
      return false;
    }
    macro.expandedText.clear();
    macro.isUnsettled = !appendExpandedText(name, macro.expandedText);
    if (macro.isUnsettled) {
      return false;
    }
  }
  const std::string& text = macro.replacement->isFixedText() ? macro.text : macro.expandedText;
  name.expandedData = text.data();
  name.expandedSize = static_cast<std::uint32_t>(text.size());
  name.expandedIn = names_.generation();
  return true;
}

// Appends what the object-like macro comes to. Returns false, with the text in pieces, if that is more than plain text,
// depends on what stands behind the name, or is too long to be worth keeping.
bool CppPreprocessor::appendExpandedText(const Name& name, std::string& text) const {
  constexpr std::size_t kMostTokens = 200;
  constexpr std::size_t kMostBytes = 250;
  struct Level {
    const Name* name;
    SpellingRange rest;
  };
  std::vector<Level> levels = {{&name, name.macro->replacement->tokens()}};
  for (std::size_t count = 0; !levels.empty(); ++count) {
    SpellingRange& rest = levels.back().rest;
    if (rest.empty()) {
      levels.pop_back();
      continue;
    }
    const Spelling& token = *rest.front();
    rest = rest.subspan(1);
    // The names of the macros around a token are its hide set.
    const bool isHidden =
        std::any_of(levels.begin(), levels.end(), [&token](const Level& level) { return level.name == token.name; });
    if (isHidden || token.isPlainText()) {
      text.append(token.text());
    } else if (token.name != nullptr && hasSettledTokens(*token.name)) {
      levels.push_back({token.name, token.name->macro->replacement->tokens()});
    } else {
      return false;
    }
    if (count == kMostTokens || text.size() > kMostBytes) {
      return false;
    }
  }
  return true;
}

// Whether the name is that of an object-like macro whose list is the same at each use.
bool CppPreprocessor::hasSettledTokens(const Name& name) const {
  return name.macro != nullptr && !name.macro->functionLike && !isRefreshed(name) && name.macro->replacement != nullptr;
}

void CppPreprocessor::expandFunctionLikeInText(const Name& name, const HideSet& hideSet) {
  refreshPredefined(name);
  InFlight inFlight(*this);
  isCollecting_ = true;
  std::string skipped;
  while (isWhiteSpace(peekToken())) {
    nextToken();
    skipped.append(currentText());
  }
  const std::size_t base = expansions_.size();
  if (peekToken() != '(') {
    output_.write(skipped);  // The white space behind the name comes out before it.
  } else if (beginSubstitution(name, hideSet, 0)) {
    runExpansions(base);
    return;
  }
  isCollecting_ = false;
  output_.write(name.text());
  emptyGraveyard(0);
  inFlight.release();
}

// The macro's tokens become the current source.
void CppPreprocessor::pushObjectLike(const Name& name, const HideSet& hideSet) {
  if (isRefreshed(name)) {
    refreshPredefined(name);
    std::vector<const Spelling*> tokens;
    pool_.lex(name.macro->text, tokens);
    TokenList list;
    list.append(tokens, hideSet);
    pushTokens(list);
  } else {
    pushTokens(replacementOf(name).tokens(), hideSet);
  }
}

// The lexed replacement list of the macro's text as it is now. Valid while any list source or expansion is alive.
const Replacement& CppPreprocessor::replacementOf(const Name& name) {
  CppMacro& macro = *name.macro;
  if (macro.replacement != nullptr) {
    return *macro.replacement;
  }
  auto made = macro.functionLike
                  ? std::make_unique<const Replacement>(macro.text, macro.parameters, names_, storedTextLexer_)
                  : std::make_unique<const Replacement>(macro.text, names_, storedTextLexer_);
  if (made->opensComment() || isRefreshed(name) || !kShortcuts) {
    return macroTable_.keep(std::move(made));
  }
  macro.replacement = std::move(made);
  return *macro.replacement;
}

}  // namespace qnpp
