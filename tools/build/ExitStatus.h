// What the program says by its exit status.
#pragma once

namespace qnpp::build {

inline constexpr int kDone = 0;
inline constexpr int kErrorsInSource = 1;
inline constexpr int kFailed = 2;  ///< The command line was wrong, or a file could not be read or written.

}  // namespace qnpp::build
