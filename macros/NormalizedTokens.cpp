#include "macros/NormalizedTokens.h"

namespace qnpp {

const Spelling* const* NormalizedTokens::closing(const Spelling* const* open) {
  if (closing_.empty()) {
    matchParentheses();
  }
  const std::uint32_t distance = closing_[static_cast<std::size_t>(open - tokens_.data())];
  return distance == 0 ? nullptr : open + distance;
}

void NormalizedTokens::matchParentheses() {
  closing_.assign(tokens_.size(), 0);
  std::vector<std::size_t> open;
  for (std::size_t at = 0; at < tokens_.size(); ++at) {
    if (tokens_[at]->kind == '(') {
      open.push_back(at);
    } else if (tokens_[at]->kind == ')' && !open.empty()) {
      closing_[open.back()] = static_cast<std::uint32_t>(at - open.back());
      open.pop_back();
    }
  }
}

}  // namespace qnpp
