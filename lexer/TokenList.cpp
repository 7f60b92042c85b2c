#include "lexer/TokenList.h"

namespace qnpp {

void TokenList::append(const TokenList& tokens, const HideSet& hideSet) {
  std::size_t begin = 0;
  for (const Run& run : tokens.runs_) {
    append(tokens.spellings().subspan(begin, run.end - begin), run.hideSet.joined(hideSet));
    begin = run.end;
  }
}

}  // namespace qnpp
