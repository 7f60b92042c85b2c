#include "macros/CppMacroTable.h"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "lexer/ShortCopy.h"
#include "lexer/Shortcuts.h"

namespace qnpp {
namespace {

struct FreeReplacement {
  BlockStore& store;
  void operator()(const Replacement* replacement) const { ReplacementMaker::free(*replacement, store); }
};

struct FreeMacro {
  BlockStore& store;
  void operator()(CppMacro* macro) const {
    if (macro->replacement != nullptr) {
      ReplacementMaker::free(*macro->replacement, store);
    }
    if (macro->finalTextSearch != nullptr) {
      freeSearch(*macro->finalTextSearch, store);
    }
    // The text may be another by now; the parameters are the same, and at the block's end.
    const std::string_view list = macro->parameters.list();
    store.giveBack(macro, static_cast<std::size_t>(list.data() + list.size() - reinterpret_cast<const char*>(macro)));
  }
};

}  // namespace

void CppMacroTable::defineFromCommandLine(std::string_view name, std::string_view definition) {
  Name& entry = *intern(name);
  if (entry.macro == nullptr) {
    define(entry, {definition, {}, false});
  }
}

void CppMacroTable::define(Name& name, const CppMacro& macro) {
  CppMacro* const stored = store(macro);
  if (name.macro == nullptr) {
    stream_.nameBecameKnown(name);
    names_.noteMacro(name);
    names_.beginGeneration();
  } else {
    dropDefinition(name);
  }
  name.macro = stored;
  name.wantsParenthesis = stored->functionLike && !name.isRefreshed;
  // The command line may define words that are no names, such as `defined`: no text is written in their place.
  if (kShortcuts && !name.isRefreshed && isName(name.spelling.kind)) {
    name.finalText = findLastingText(*stored);
  }
  stream_.observe([&](Observer& observer) { observer.defined(name, *name.macro); });
}

// A definition is one block: the object, its text, and its parameters at the end.
CppMacro* CppMacroTable::store(const CppMacro& macro) {
  const std::string_view list = macro.parameters.list();
  const std::size_t size = sizeof(CppMacro) + macro.text.size() + 1 + list.size();
  char* const block = static_cast<char*>(stream_.blocks().take(size));
  char* const text = block + sizeof(CppMacro);
  char* const parameters = text + macro.text.size() + 1;
  copyShort(text, macro.text.data(), macro.text.size());
  text[macro.text.size()] = '\0';
  copyShort(parameters, list.data(), list.size());
  const auto count = static_cast<std::uint32_t>(macro.parameters.size());
  return std::construct_at(reinterpret_cast<CppMacro*>(block),
                           CppMacro{{text, macro.text.size()}, {{parameters, list.size()}, count}, macro.functionLike});
}

void CppMacroTable::undefine(std::string_view name) {
  Name* const entry = names_.find(name);
  if (entry != nullptr && entry->macro != nullptr) {
    dropDefinition(*entry);
    stream_.observe([&](Observer& observer) { observer.undefined(*entry); });
  }
}

const Replacement& CppMacroTable::replacementOf(const Name& name) {
  assert(stream_.isHolding() && name.macro != nullptr);
  CppMacro& macro = *name.macro;
  if (macro.replacement != nullptr) {
    return *macro.replacement;
  }
  const Replacement& made = macro.functionLike ? maker_.make(macro.text, macro.parameters) : maker_.make(macro.text);
  if (made.hasEffects() || name.isRefreshed || !kShortcuts) {
    stream_.retire(std::unique_ptr<const Replacement, FreeReplacement>(&made, {stream_.blocks()}));
  } else {
    macro.replacement = &made;
  }
  return made;
}

void CppMacroTable::dropDefinition(Name& name) {
  if (name.macro == nullptr) {
    return;
  }
  const FreeMacro free{stream_.blocks()};
  CppMacro* const dropped = name.macro;
  name.macro = nullptr;
  name.wantsParenthesis = false;
  name.finalText = {};
  names_.beginGeneration();
  if (dropped->replacement != nullptr) {
    stream_.retire(std::unique_ptr<CppMacro, FreeMacro>(dropped, free));
  } else {
    free(dropped);
  }
}

}  // namespace qnpp
