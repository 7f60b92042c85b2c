// One source, from reading it to the files that come of it.
#pragma once

#include "tools/build/Options.h"

namespace qnpp::build {

/// Returns the exit status. Throws Failure; then too there is neither result nor dependency file any more, unless the
/// reason is that one of them is a file that is read.
int run(const Options& options);

}  // namespace qnpp::build
