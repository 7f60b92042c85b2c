#include "macros/CppMacroTable.h"

#include <cassert>
#include <memory>
#include <string>
#include <utility>

#include "lexer/Shortcuts.h"

namespace qnpp {

void CppMacroTable::defineFromCommandLine(std::string_view name, std::string_view definition) {
  Name& entry = *intern(name);
  if (entry.macro == nullptr) {
    define(entry, {std::string(definition), {}, false});
  }
}

void CppMacroTable::define(Name& name, CppMacro macro) {
  if (name.macro == nullptr) {
    stream_.nameBecameKnown(name);
  }
  dropDefinition(name);
  names_.noteMacro(name);
  if (unused_.empty()) {
    name.macro = &definitions_.emplace_back(std::move(macro));
  } else {
    name.macro = unused_.back();
    unused_.pop_back();
    *name.macro = std::move(macro);
  }
  // On the command line words may be defined that no text asks for.
  if (kShortcuts && !name.isRefreshed && isName(name.spelling.kind)) {
    name.finalText = findLastingText(*name.macro);
  }
  names_.beginGeneration();
  stream_.observe([&](Observer& observer) { observer.defined(name, *name.macro); });
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
  StoredTextLexer& lexer = stream_.storedTextLexer();
  auto made = macro.functionLike ? std::make_unique<const Replacement>(macro.text, macro.parameters, names_, lexer)
                                 : std::make_unique<const Replacement>(macro.text, names_, lexer);
  const Replacement& replacement = *made;
  if (made->hasEffects() || name.isRefreshed || !kShortcuts) {
    stream_.retire(std::move(made));
  } else {
    macro.replacement = std::move(made);
  }
  return replacement;
}

void CppMacroTable::dropDefinition(Name& name) {
  if (name.macro == nullptr) {
    return;
  }
  CppMacro& dropped = *name.macro;
  unused_.push_back(&dropped);
  name.macro = nullptr;
  name.finalText = {};
  names_.beginGeneration();
  if (dropped.replacement != nullptr) {
    stream_.retire(std::move(dropped.replacement));
  }
  dropped = CppMacro();
}

}  // namespace qnpp
