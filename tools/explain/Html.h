// The explanation for a browser.
#pragma once

#include <ostream>

#include "tools/explain/Explanation.h"
#include "tools/explain/Sources.h"

namespace qnpp {

/// Writes one page that needs nothing else: no network, and for reading no scripts.
void writeHtml(const Explanation& explanation, const Sources& sources, std::ostream& output);

}  // namespace qnpp
