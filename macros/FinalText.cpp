#include "macros/FinalText.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "lexer/ByteSet.h"
#include "lexer/CppLexer.h"
#include "lexer/PlainToken.h"
#include "macros/CppMacro.h"

namespace qnpp {
namespace {

// Names, line ends and what may be a literal: text with one of these may come to something else.
constexpr ByteSet kMoreThanItself = bytesOf("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_\"'\n\r");

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
    } else if (token.name != nullptr && token.name->finalText.isLasting()) {
      text.append(token.name->finalText.text());
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

void keepText(FinalTextSearch& search, std::string_view text, BlockStore& store) {
  if (!search.text.empty()) {
    store.giveBack(const_cast<char*>(search.text.data()), search.text.size());
    search.text = {};
  }
  if (!text.empty()) {
    char* const made = static_cast<char*>(store.take(text.size()));
    std::memcpy(made, text.data(), text.size());
    search.text = {made, text.size()};
  }
}

}  // namespace

FinalText findLastingText(const CppMacro& macro) {
  if (macro.functionLike) {
    return {};
  }
  const char* const begin = macro.text.data();
  const char* const end = begin + macro.text.size();
  for (const char* at = begin; at != end;) {
    if (has(kDigitBytes, *at)) {
      at = passNumber(at);  // Behind it a name may follow directly.
    } else if (has(kMoreThanItself, *at) || isCommentAt(at)) {
      return {};
    } else {
      ++at;
    }
  }
  return {begin, macro.text.size(), FinalText::kAnyGeneration};
}

void freeSearch(FinalTextSearch& search, BlockStore& store) {
  keepText(search, {}, store);
  store.giveBack(&search, sizeof search);
}

bool findFinalText(Name& name, const NameTable& names, BlockStore& store) {
  if (name.finalText.holdsIn(names.generation())) {
    return true;  // The first word of a line is handed out all the same.
  }
  if (!hasLastingTokens(name)) {
    return false;  // Lexing it does more than give tokens, each time.
  }
  CppMacro& macro = *name.macro;
  const bool isFixed = macro.replacement->isFixedText();
  if (!isFixed) {
    if (macro.finalTextSearch == nullptr) {
      macro.finalTextSearch = std::construct_at(static_cast<FinalTextSearch*>(store.take(sizeof(FinalTextSearch))));
    }
    FinalTextSearch& search = *macro.finalTextSearch;
    if (search.usedIn != names.generation()) {
      search.usedIn = names.generation();
      search.isInVain = false;
      return false;
    }
    if (search.isInVain) {
      return false;
    }
    std::string text;
    search.isInVain = !appendExpandedText(name, text);
    if (search.isInVain) {
      return false;
    }
    keepText(search, text, store);
  }
  const std::string_view text = isFixed ? macro.text : macro.finalTextSearch->text;
  name.finalText = {text.data(), text.size(), names.generation()};
  return true;
}

std::optional<std::string_view> findTextInPlace(const Name& name) {
  const bool isSimple = name.macro != nullptr && !name.macro->functionLike && !name.isRefreshed;
  return isSimple ? std::optional<std::string_view>(name.macro->text) : std::nullopt;
}

}  // namespace qnpp
