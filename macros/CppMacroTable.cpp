#include "macros/CppMacroTable.h"

#include <utility>

namespace qnpp {

void CppMacroTable::defineFromCommandLine(std::string_view name, std::string_view definition) {
  if (lookup(name) == nullptr) {
    CppMacro macro;
    macro.text = definition;
    define(name, std::move(macro));
  }
}

void CppMacroTable::define(std::string_view name, CppMacro macro) {
  Name& entry = *names_.intern(name);
  if (entry.macro == nullptr) {
    stream_.nameBecameKnown(entry);
  }
  if (definitions_.size() <= entry.id) {
    definitions_.resize(names_.size());
  }
  auto definition = std::make_unique<CppMacro>(std::move(macro));
  dropDefinition(entry);
  names_.noteMacro(entry);
  entry.macro = definition.get();
  names_.beginGeneration();
  definitions_[entry.id] = std::move(definition);
  stream_.observe([&](Observer& observer) { observer.defined(entry, *entry.macro); });
}

void CppMacroTable::undefine(std::string_view name) {
  Name* const entry = names_.find(name);
  if (entry != nullptr && entry->macro != nullptr) {
    dropDefinition(*entry);
    stream_.observe([&](Observer& observer) { observer.undefined(*entry); });
  }
}

void CppMacroTable::dropDefinition(Name& name) {
  if (name.macro != nullptr) {
    name.macro = nullptr;
    stream_.retire(std::move(definitions_[name.id]));
    names_.beginGeneration();
  }
}

}  // namespace qnpp
