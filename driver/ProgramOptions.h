// The options of the program. Its companions take the same.
#pragma once

#include <span>
#include <string_view>

#include "driver/OptionParser.h"

namespace qnpp {

/// For OptionParser.
std::span<const OptionEntry> programOptions();
/// The lines of the help text that tell of them.
std::string_view programOptionsHelp();

}  // namespace qnpp
