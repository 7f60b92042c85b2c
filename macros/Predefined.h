// __FILE__, __LINE__, __DATE__ and __TIME__.
#pragma once

#include <string>

#include "lexer/CppFileScanner.h"
#include "lexer/NameTable.h"
#include "macros/CppMacroTable.h"

namespace qnpp {

/// The macros that are defined before anything else.
class PredefinedMacros {
 public:
  /// Defines them in `table`. Date and time are those of now.
  PredefinedMacros(CppMacroTable& table, NameTable& names);

  /// Brings the text of the macro `name` up to date for a use in `file`, if it is one of those. It stays stored, so a
  /// later definition is compared with the value of the last use. Only the name counts: a definition of the source's
  /// own is overwritten too.
  void refresh(const Name& name, const CppFileScanner& file);
  /// That text, for one of these names that changes.
  std::string textOf(const Name& name, const CppFileScanner& file) const;

 private:
  Name* file_;
  Name* line_;
  // Texts of the two.
  std::string fileText_;
  std::string lineText_;
};

}  // namespace qnpp
