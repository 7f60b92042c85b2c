// The explanation for a terminal.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include "tools/explain/Explanation.h"
#include "tools/explain/Sources.h"

namespace qnpp {

struct TerminalOptions {
  bool hasColour = false;
  bool isUnicode = true;
  std::size_t width = 100;
  std::string macro;  ///< Only what involves this macro; empty for all.
  std::string lines;  ///< What was asked for, as "in lines 5 to 9 "; empty for the whole source.
};

/// Writes each line that something can be said about, and below it a tree of what happened there.
void writeTerminal(const Explanation& explanation, const Sources& sources, const TerminalOptions& options,
                   std::ostream& output);

}  // namespace qnpp
