#include "lexer/TokenList.h"

namespace qnpp {

void TokenList::append(const TokenList& tokens, const HideSet& hideSet, HideSetCache& hideSets) {
  std::size_t begin = 0;
  for (const Run& run : tokens.runs_) {
    append(tokens.spellings().subspan(begin, run.end - begin), hideSets.joined(run.hideSet, hideSet), run.isPlain);
    begin = run.end;
  }
}

}  // namespace qnpp
