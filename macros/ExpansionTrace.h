// What an observer is told of an expansion.
#pragma once

#include <cstddef>
#include <cstdint>

#include "lexer/TokenStream.h"
#include "macros/Arguments.h"

namespace qnpp {

/// Tells the observer of a run, if there is one, how an expansion goes on, and lets the tokens that come out of it say
/// so. Without one, and in a build that cannot be watched, each function does nothing or hands back what it was given.
class ExpansionTrace {
 public:
  using Kept = Observer::Kept;

  /// The stream is borrowed.
  explicit ExpansionTrace(TokenStream& stream) : stream_(stream) {}

  /// The current token is a name, and stands as it is.
  void kept(Kept why) {
    stream_.observe([&](Observer& observer) { observer.nameKept(stream_.text(), stream_.origin(), why); });
  }
  /// The current token is the name of a macro that is about to be replaced. Returns the number of the expansion.
  Origin begin(const Name& name) {
    return stream_.observe([&](Observer& observer) { return observer.expansionBegan(name, stream_.origin()); });
  }
  void fail(Origin expansion, Kept why) {
    stream_.observe([&](Observer& observer) { observer.expansionFailed(expansion, why); });
  }
  void argumentsRead(Origin expansion, const Arguments& arguments) {
    stream_.observe([&](Observer& observer) {
      for (std::size_t index = 0; index < arguments.count(); ++index) {
        observer.argumentRead(expansion, arguments.tokens(index).tokens);
      }
    });
  }
  void argumentBegan(Origin expansion, std::uint32_t argument) {
    stream_.observe([&](Observer& observer) { observer.argumentExpansionBegan(expansion, argument); });
  }
  void argumentExpanded(Origin expansion, std::uint32_t argument, const TokenList& tokens) {
    stream_.observe([&](Observer& observer) { observer.argumentExpanded(expansion, argument, tokens.spellings()); });
  }
  void replaced(Origin expansion, SpellingRange tokens) {
    stream_.observe([&](Observer& observer) { observer.replaced(expansion, tokens); });
  }

  // Parts of a replacement. The tokens live as those that the stream spells now.

  SpellingRange body(SpellingRange tokens, Origin expansion) {
    return tokens.empty() ? tokens : marked(tokens, made(expansion, Observer::Part::Body, 0));
  }
  const Spelling* body(const Spelling* token, Origin expansion) {
    return marked(token, made(expansion, Observer::Part::Body, 0));
  }
  SpellingRange argument(SpellingRange tokens, Origin expansion, std::uint32_t argument) {
    Origin from{};
    Origin origin{};
    bool isFirst = true;
    return stream_.traced(tokens, [&](const auto& token) {
      if (isFirst || token.origin != from) {
        from = token.origin;
        origin = made(expansion, Observer::Part::Argument, argument, from);
        isFirst = false;
      }
      return origin;
    });
  }
  const Spelling* literal(const Spelling* token, Origin expansion, std::uint32_t argument) {
    return marked(token, made(expansion, Observer::Part::Literal, argument));
  }
  const Spelling* joined(const Spelling* token, Origin expansion) {
    return marked(token, made(expansion, Observer::Part::Joined, 0));
  }

 private:
  Origin made(Origin expansion, Observer::Part part, std::uint32_t argument, Origin from = {}) {
    return stream_.observe([&](Observer& observer) { return observer.made(expansion, part, argument, from); });
  }
  SpellingRange marked(SpellingRange tokens, Origin origin) {
    return stream_.traced(tokens, [origin](const Spelling&) { return origin; });
  }
  const Spelling* marked(const Spelling* token, Origin origin) { return stream_.traced(token, origin); }

  TokenStream& stream_;
};

}  // namespace qnpp
