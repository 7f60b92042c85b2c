// A macro expansion under way.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "lexer/HideSet.h"
#include "lexer/TokenList.h"
#include "macros/Arguments.h"
#include "macros/Replacement.h"

namespace qnpp {

/// One of the two kinds of work that call for each other: the replacement of an invocation needs its arguments
/// expanded, and the expansion of a token list needs the invocations in it replaced. They wait for each other on a
/// stack of these objects, not on the stack of the C++ program, so nesting is limited by memory alone.
struct Expansion {
  /// True for the replacement of an invocation, false for the expansion of a list.
  bool isSubstitution = false;
  /// What has been made so far.
  TokenList result;

  // ---- Replacement of an invocation ----
  const Replacement* replacement = nullptr;
  std::size_t step = 0;  ///< The next of its steps.
  Arguments arguments;
  HideSet hideSet;                ///< Of the invocation, the macro's name included.
  std::size_t graveyardSize = 0;  ///< Sources that ended since then may hold tokens of the arguments.

  /// An expanded argument that a later step wants again.
  struct ExpandedArgument {
    std::uint32_t index = 0;
    TokenList tokens;
  };
  std::vector<ExpandedArgument> expanded;  ///< The first `expandedCount` are in use; the others keep their memory.
  std::size_t expandedCount = 0;

  // ---- Expansion of a list ----
  std::size_t floor = 0;         ///< To be restored: where reading ended before the list was begun.
  std::uint32_t argument = 0;    ///< Which argument of the waiting invocation the list is.
  std::uint64_t eventCount = 0;  ///< Messages and comments when the list was begun.

  /// Whether a step that is left wants the expansion of `wanted`.
  bool wantsAgain(std::uint32_t wanted) const {
    const auto& steps = replacement->steps();
    return std::any_of(steps.begin() + static_cast<std::ptrdiff_t>(step), steps.end(), [wanted](const auto& left) {
      return left.kind == Replacement::Step::Kind::Expand && left.begin == wanted;
    });
  }

  /// The expansion of an argument, if it has been kept; null otherwise.
  const TokenList* findExpanded(std::uint32_t wanted) const {
    for (std::size_t at = 0; at < expandedCount; ++at) {
      if (expanded[at].index == wanted) {
        return &expanded[at].tokens;
      }
    }
    return nullptr;
  }

  /// Keeps the expansion of an argument, taking the tokens out of the list.
  void keepExpanded(std::uint32_t index, TokenList& tokens) {
    if (expandedCount == expanded.size()) {
      expanded.emplace_back();
    }
    ExpandedArgument& kept = expanded[expandedCount++];
    kept.index = index;
    std::swap(kept.tokens, tokens);
  }

  void clear() {
    result.clear();
    arguments.clear();
    hideSet = HideSet();
    while (expandedCount > 0) {
      expanded[--expandedCount].tokens.clear();
    }
  }
};

}  // namespace qnpp
