// Macro definitions.
#pragma once

#include <string_view>

#include "lexer/ParameterNames.h"
#include "macros/FinalText.h"
#include "macros/Replacement.h"

namespace qnpp {

/// One macro definition. `text`, `parameters` and `functionLike` are the definition; the rest is what has been found
/// out about it. All that it refers to is borrowed: for the definition of a name it is the CppMacroTable's.
struct CppMacro {
  /// The replacement list as normalized text: spellings of the tokens, one blank where white space stood between two,
  /// none at either end. For a definition of the command line the text as given. A NUL is behind it.
  std::string_view text;
  /// A name may stand there twice and then means the last of its arguments.
  ParameterNames parameters = {};
  /// Whether "(" followed the name directly in the definition.
  bool functionLike = false;

  /// The lexed text, made at the first use; null before, and for a text that has to be lexed at each use.
  const Replacement* replacement = nullptr;

  /// Made when it is begun.
  FinalTextSearch* finalTextSearch = nullptr;
};

}  // namespace qnpp
