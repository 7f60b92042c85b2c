#include "lexer/NormalizedTokens.h"

#include <cassert>
#include <utility>

namespace qnpp {

const Spelling* const* NormalizedTokens::closing(const Spelling* const* open) {
  if (closing_.empty()) {
    matchParentheses();
  }
  assert(open >= tokens_.data() && open < tokens_.data() + tokens_.size() && (*open)->kind == '(');
  const std::uint32_t distance = closing_[static_cast<std::size_t>(open - tokens_.data())];
  return distance == 0 ? nullptr : open + distance;
}

void NormalizedTokens::matchParentheses() {
  closing_.assign(tokens_.size(), 0);
  // While it waits for its ")", a "(" holds the distance to the one that waits outside of it, 0 for none.
  bool isOpen = false;
  std::size_t innermost = 0;
  const auto close = [this, &isOpen, &innermost](std::size_t distance) {
    const std::size_t toOuter = std::exchange(closing_[innermost], static_cast<std::uint32_t>(distance));
    isOpen = toOuter != 0;
    innermost -= toOuter;
  };
  for (std::size_t at = 0; at < tokens_.size(); ++at) {
    if (tokens_[at]->kind == '(') {
      closing_[at] = isOpen ? static_cast<std::uint32_t>(at - innermost) : 0;
      isOpen = true;
      innermost = at;
    } else if (tokens_[at]->kind == ')' && isOpen) {
      close(at - innermost);
    }
  }
  while (isOpen) {
    close(0);
  }
}

}  // namespace qnpp
