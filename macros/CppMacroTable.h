// The macro table.
#pragma once

#include <string_view>

#include "lexer/NameTable.h"
#include "lexer/TokenStream.h"
#include "macros/CppMacro.h"

namespace qnpp {

/// The macro definitions by name; at most one for each. Names are compared byte by byte.
///
/// The table answers through the name table: a Name points at its definition, so that a token whose name is known needs
/// no search. The tokens of a definition that is replaced or removed are left to the stream, since an expansion may be
/// reading them.
class CppMacroTable {
 public:
  CppMacroTable(NameTable& names, TokenStream& stream)
      : names_(names), stream_(stream), maker_(names, stream.storedTextLexer(), stream.blocks()) {}
  CppMacroTable(const CppMacroTable&) = delete;
  CppMacroTable& operator=(const CppMacroTable&) = delete;

  /// Defines an object-like macro whose text is `definition`, taken as it stands. The first definition of a name wins:
  /// when there is one already, nothing happens and nothing is reported.
  void defineFromCommandLine(std::string_view name, std::string_view definition);

  /// The definition of `name`, or null. It stays valid until the name is defined anew or removed.
  CppMacro* lookup(std::string_view name) const {
    const Name* const known = names_.find(name);
    return known == nullptr ? nullptr : known->macro;
  }

  /// The lexed replacement list of the definition of `name`, as its text is now. To be called under a Hold of the
  /// stream: what is good for one use lives only as long as that, or as the list that is pushed under it.
  const Replacement& replacementOf(const Name& name);

  /// The entry for `name` in the name table.
  Name* intern(std::string_view name) { return names_.intern(name); }

  /// Makes `macro` the definition of `name`, in the place of any other. What it refers to is copied.
  void define(Name& name, const CppMacro& macro);
  void define(std::string_view name, const CppMacro& macro) { define(*intern(name), macro); }
  /// Removes the definition of `name`, if there is one.
  void undefine(std::string_view name);

 private:
  CppMacro* store(const CppMacro& macro);
  void dropDefinition(Name& name);

  NameTable& names_;
  TokenStream& stream_;
  ReplacementMaker maker_;
};

}  // namespace qnpp
