#include "macros/FinalText.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "macros/CppMacro.h"

namespace qnpp {
namespace {

// Whether the name is that of an object-like macro whose list is the same at each use.
bool hasLastingTokens(const Name& name) {
  return name.macro != nullptr && !name.macro->functionLike && name.macro->replacement != nullptr;
}

// Appends what the object-like macro comes to. Returns false, with the text in pieces, if that is more than
// tokens written as they stand, depends on what stands behind the name, or is too long to be worth keeping.
bool appendExpandedText(const Name& name, std::string& text) {
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
    if (isHidden || token.isWrittenAsIs()) {
      text.append(token.text());
    } else if (token.name != nullptr && hasLastingTokens(*token.name)) {
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

}  // namespace

bool findFinalText(Name& name, const NameTable& names) {
  if (name.finalText.generation == names.generation()) {
    return true;  // The first word of a line is handed out all the same.
  }
  if (!hasLastingTokens(name)) {
    return false;  // Lexing it does more than give tokens, each time.
  }
  CppMacro& macro = *name.macro;
  const bool isFixed = macro.replacement->isFixedText();
  if (!isFixed) {
    FinalTextSearch& search = macro.finalTextSearch;
    if (search.usedIn != names.generation()) {
      search.usedIn = names.generation();
      search.isInVain = false;
      return false;
    }
    if (search.isInVain) {
      return false;
    }
    search.text.clear();
    search.isInVain = !appendExpandedText(name, search.text);
    if (search.isInVain) {
      return false;
    }
  }
  const std::string& text = isFixed ? macro.text : macro.finalTextSearch.text;
  name.finalText = {text.data(), text.size(), names.generation()};
  return true;
}

}  // namespace qnpp
