// The arguments of a function-like invocation, read from whatever source it stands in.
#include "engine/Sources.h"
#include "lexer/Shortcuts.h"

namespace qnpp {
namespace {

// Position of the token that ends the argument beginning at `begin`; the size of `tokens` when it is not there. The
// tokens are a part of `surroundings`.
std::size_t findArgumentEnd(SpellingRange tokens, std::size_t begin, NormalizedTokens& surroundings) {
  for (std::size_t at = begin; at < tokens.size(); ++at) {
    switch (tokens[at]->kind) {
      case ')':
      case ',':
        return at;
      case '(': {
        const Spelling* const* const closing = surroundings.closing(&tokens[at]);
        if (closing == nullptr) {
          return tokens.size();
        }
        at = static_cast<std::size_t>(closing - tokens.data());
        break;
      }
      default:
        break;
    }
  }
  return tokens.size();
}

// The same for tokens of which nothing is known. Also the size of `tokens` when the argument is not normalized, or when
// its text would lex into other tokens.
std::size_t findNormalizedArgumentEnd(SpellingRange tokens, std::size_t begin) {
  std::size_t depth = 0;
  for (std::size_t at = begin; at < tokens.size(); ++at) {
    const Spelling& token = *tokens[at];
    const bool afterBlank = at > begin && tokens[at - 1] == blankSpelling();
    switch (token.kind) {
      case '(':
        ++depth;
        break;
      case ')':
      case ',':
        if (depth == 0) {
          return at;
        }
        depth -= token.kind == ')' ? 1U : 0U;
        break;
      case TK_SPACE:
        if (&token != blankSpelling() || afterBlank) {
          return tokens.size();
        }
        continue;
      case TK_NEWLINE:
      case TK_CONTINUATION:
        return tokens.size();
      default:
        if (!token.isSingleToken() || isLoneQuote(token)) {
          return tokens.size();
        }
        break;
    }
    if (at > begin && !afterBlank && mayMerge(*tokens[at - 1], token)) {
      return tokens.size();
    }
  }
  return tokens.size();
}

}  // namespace

// Reads "(", the arguments and ")". Reports and returns false when the list is not well-formed or has the wrong number
// of arguments; what has been read by then is lost, the rest stays to be read as text.
bool CppPreprocessor::collectArguments(const CppMacro& macro, Arguments& arguments) {
  const std::size_t expected = macro.parameters.size();
  nextToken();  // "("
  CppTokenKind kind = TK_END;
  do {
    if (kShortcuts && !isCurrentFile() && readArgumentInPlace(arguments)) {
      kind = listSource().spelling()->kind;
    } else {
      skipWhiteSpace();
      kind = nextToken();
      if (kind == ')') {
        break;  // "()" has no argument, and a "," directly before ")" adds none.
      }
      kind = readArgument(kind, arguments);
    }
    if (kind == ',' && arguments.count() > expected) {
      reportError("A macro invocation has too many arguments");
      return false;
    }
  } while (kind == ',');

  if (kind != ')') {
    reportError("The macro invocation is improperly terminated");
    return false;
  }
  if (arguments.count() < expected) {
    reportError("There are not enough arguments in a macro invocation");
    return false;
  }
  if (arguments.count() > expected) {
    reportError("A macro invocation has too many arguments");
    return false;
  }
  return true;
}

// Reads an argument that starts with the current token, of `kind`. Returns the kind of the token that ended it: "," or
// ")" outside of any parentheses, or the end of the input.
CppTokenKind CppPreprocessor::readArgument(CppTokenKind kind, Arguments& arguments) {
  std::size_t depth = 0;
  bool afterBlank = false;
  while (kind != TK_END) {
    if (kind == '(') {
      ++depth;
    } else if (kind == ')' || kind == ',') {
      if (depth == 0) {
        break;
      }
      depth -= kind == ')' ? 1U : 0U;
    }
    arguments.add(currentSpelling(kind), afterBlank);
    afterBlank = skipWhiteSpace();
    kind = nextToken();
  }
  arguments.finish(current_->hideSet(), pool_);
  return kind;
}

// Reads an argument and the token that ends it when both stand in the list that is being read, and the tokens there are
// those that the argument's normalized text lexes into. The argument then borrows them: each level of a deep nesting
// would otherwise hold a copy of all the levels in it. Returns false, with nothing taken, when that is not so.
bool CppPreprocessor::readArgumentInPlace(Arguments& arguments) {
  CppTokenScanner& source = listSource();
  NormalizedTokens* const surroundings = source.surroundings();
  const SpellingRange rest = source.rest();
  std::size_t begin = 0;
  while (begin < rest.size() && rest[begin] == blankSpelling()) {
    ++begin;
  }
  const std::size_t end =
      surroundings != nullptr ? findArgumentEnd(rest, begin, *surroundings) : findNormalizedArgumentEnd(rest, begin);
  if (end == begin || end == rest.size()) {
    return false;
  }
  source.take(end + 1);
  const std::size_t last = rest[end - 1] == blankSpelling() ? end - 1 : end;
  arguments.addInPlace(rest.subspan(begin, last - begin), surroundings, source.hideSet());
  return true;
}

}  // namespace qnpp
