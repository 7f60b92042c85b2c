// Reading the arguments of a function-like invocation.
#pragma once

#include "lexer/Messages.h"
#include "lexer/TokenStream.h"
#include "macros/Arguments.h"
#include "macros/CppMacro.h"

namespace qnpp {

/// Reads "(", which is the next token, the arguments of an invocation of `macro`, and ")", from whatever source they
/// stand in; that source may end meanwhile. To be called under a Hold and while ended lists are collected: the
/// arguments borrow tokens.
///
/// Reports and returns false when the list is not well-formed or has the wrong number of arguments; what has been read
/// by then is lost, the rest stays to be read as text.
bool collectArguments(TokenStream& stream, MessageSink& messages, const CppMacro& macro, Arguments& arguments);

}  // namespace qnpp
