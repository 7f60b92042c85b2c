// Macro definitions.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "macros/FinalText.h"
#include "macros/Replacement.h"

namespace qnpp {

/// One macro definition. `text`, `parameters` and `functionLike` are the definition; the rest is what has been found
/// out about it.
struct CppMacro {
  /// The replacement list as normalized text: spellings of the tokens, one blank where white space stood between two,
  /// none at either end. For a definition of the command line the text as given.
  std::string text;
  /// Parameter names in the order written; a name may stand there twice and then means the last of its arguments.
  std::vector<std::string> parameters;
  /// Whether "(" followed the name directly in the definition.
  bool functionLike = false;

  /// The lexed text, made at the first use; null before, and for a text that has to be lexed at each use.
  std::unique_ptr<const Replacement> replacement = nullptr;

  /// Made when it is begun.
  std::unique_ptr<FinalTextSearch> finalTextSearch = nullptr;
};

}  // namespace qnpp
