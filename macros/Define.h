// #define and #undef.
#pragma once

#include "lexer/Messages.h"
#include "lexer/TokenStream.h"
#include "macros/CppMacroTable.h"

namespace qnpp {

/// Behind the word of a #define: reads name, parameters and replacement list, and defines the macro. A definition whose
/// text is that of the present one changes nothing; another text takes its place, with a warning. Behind a name that is
/// none, nothing is taken; behind a parameter list that is none, the rest of the line is.
void carryOutDefine(TokenStream& stream, CppMacroTable& macros, MessageSink& messages);

/// Behind the word of an #undef: removes the definition of the name that follows, if there is one, and takes one token
/// more, normally the line end.
void carryOutUndef(TokenStream& stream, CppMacroTable& macros, MessageSink& messages);

}  // namespace qnpp
