// What object-like macros come to wherever they stand.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "lexer/BlockStore.h"
#include "lexer/NameTable.h"

namespace qnpp {

struct CppMacro;

/// How far the search for the final text of a macro has come; a part of its definition.
struct FinalTextSearch {
  std::string_view text;     ///< What `Name::finalText` shows, unless that is the text of the definition itself.
  std::uint64_t usedIn = 0;  ///< The generation of definitions in which the macro was last used,
  bool isInVain = false;     ///< and whether it was found then that there is no such text.
};

/// Gives back what the search has taken, itself included.
void freeSearch(FinalTextSearch& search, BlockStore& store);

/// Most object-like macros come to the same text wherever they stand in a file's text lines: what is in
/// them is written as it stands, or is another such macro. That text is kept with the name until a definition changes,
/// and the lexer writes it without handing the name out. It is sought when a macro is used for the second time, so that
/// definitions and uses that take turns do not pay for it.
///
/// To be called at each use of `name`, the name of a macro, in a text line. Returns whether
/// `name.finalText` holds; it never does for a function-like macro. What belongs to the definition is kept in `store`.
bool findFinalText(Name& name, const NameTable& names, BlockStore& store);

/// The text of most macros has no name in it, and is final as long as the definition stands: known with the definition,
/// and without lexing it. An empty one where that takes more to tell.
FinalText findLastingText(const CppMacro& macro);

/// The text of an object-like macro, of which an expansion is nothing but reading it in the place of the name; none of
/// any other, and of one whose text changes at each use.
std::optional<std::string_view> findTextInPlace(const Name& name);

}  // namespace qnpp
