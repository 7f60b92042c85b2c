// The explanation for a browser.
#pragma once

#include <cstddef>
#include <ostream>

#include "tools/explain/Explanation.h"
#include "tools/explain/Sources.h"

namespace qnpp {

/// Writes one page that needs nothing else: no network, and for reading no scripts. Takes about `mostUses` uses of
/// macros apart; behind that, only the source and the output are shown.
void writeHtml(const Explanation& explanation, const Sources& sources, std::size_t mostUses, std::ostream& output);

}  // namespace qnpp
