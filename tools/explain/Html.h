// The explanation for a browser.
#pragma once

#include <cstddef>
#include <ostream>
#include <string_view>

#include "tools/explain/Explanation.h"
#include "tools/explain/Sources.h"

namespace qnpp {

/// What each page begins with.
inline constexpr std::string_view kPageBeginning = "<!DOCTYPE html>\n<html lang=\"en\">\n";

/// Writes one page that needs nothing else: no network, and for reading no scripts. Takes about `mostUses` uses of
/// macros apart; behind that, only the source and the output are shown.
void writeHtml(const Explanation& explanation, const Sources& sources, std::size_t mostUses, std::ostream& output);

}  // namespace qnpp
