#include "macros/ArgumentReading.h"

#include <cassert>
#include <cstddef>

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
  const Spelling* before = blankSpelling();
  for (std::size_t at = begin; at < tokens.size(); before = tokens[at++]) {
    const Spelling& token = *tokens[at];
    // Blanks, parentheses and commas merge with nothing.
    if (token.kind == '(') {
      ++depth;
      continue;
    }
    if (token.kind == ')' || token.kind == ',') {
      if (depth == 0) {
        return at;
      }
      depth -= token.kind == ')' ? 1U : 0U;
      continue;
    }
    if (&token == blankSpelling() && before != &token) {
      continue;
    }
    if (!token.isSingleToken() || isWhiteSpace(token.kind) || isLoneQuote(token)) {
      return tokens.size();
    }
    if (mayMerge(*before, token)) {
      return tokens.size();
    }
  }
  return tokens.size();
}

// Reads an argument and the token that ends it when both stand in the list that is being read, and the tokens there are
// those that the argument's normalized text lexes into. The argument then borrows them: each level of a deep nesting
// would otherwise hold a copy of all the levels in it. Returns false, with nothing taken, when that is not so.
bool readArgumentInPlace(CppTokenScanner& source, Arguments& arguments) {
  NormalizedTokens* const surroundings = source.surroundings();
  const SpellingRange tokens = source.rest();
  std::size_t begin = 0;
  while (begin < tokens.size() && tokens[begin] == blankSpelling()) {
    ++begin;
  }
  const std::size_t end = surroundings != nullptr ? findArgumentEnd(tokens, begin, *surroundings)
                                                  : findNormalizedArgumentEnd(tokens, begin);
  if (end == begin || end == tokens.size()) {
    return false;
  }
  const std::size_t last = tokens[end - 1] == blankSpelling() ? end - 1 : end;
  arguments.addInPlace(source.take(begin, last, end + 1), surroundings);
  return true;
}

// Reads an argument that starts with the current token, of `kind`. Returns the kind of the token that ended it: "," or
// ")" outside of any parentheses, or the end of the input.
CppTokenKind readArgument(TokenStream& stream, CppTokenKind kind, Arguments& arguments) {
  std::size_t depth = 0;
  HideSet blankHideSet;
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
    if (afterBlank) {
      arguments.addBlank(blankHideSet);
      blankHideSet = HideSet();
    }
    arguments.add(stream, kind);
    kind = stream.getBehindWhiteSpace(afterBlank, blankHideSet);
  }
  arguments.finish(stream, stream.hideSet());
  return kind;
}

}  // namespace

bool collectArguments(TokenStream& stream, MessageSink& messages, const CppMacro& macro, Arguments& arguments) {
  assert(stream.isHolding());
  const std::size_t expected = macro.parameters.size();
  const auto fail = [&messages](Message message) {
    messages.report(message);
    return false;
  };
  stream.get();  // "("
  CppTokenKind kind = TK_END;
  do {
    if (kShortcuts && !stream.isInFile() && readArgumentInPlace(stream.listSource(), arguments)) {
      kind = stream.listSource().spelling()->kind;
    } else {
      stream.skipWhiteSpace();
      kind = stream.get();
      if (kind == ')') {
        break;  // "()" has no argument, and a "," directly before ")" adds none.
      }
      kind = readArgument(stream, kind, arguments);
    }
    if (kind == ',' && arguments.count() > expected) {
      return fail(Message::TooManyArguments);
    }
  } while (kind == ',');

  if (kind != ')') {
    return fail(Message::UnterminatedInvocation);
  }
  if (arguments.count() < expected) {
    return fail(Message::TooFewArguments);
  }
  if (arguments.count() > expected) {
    return fail(Message::TooManyArguments);
  }
  return true;
}

}  // namespace qnpp
