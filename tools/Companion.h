// What the companions of the program have in common: how they begin, and how they end.
#pragma once

#include <functional>
#include <stdexcept>

namespace qnpp {

// What a companion says by its exit status.
inline constexpr int kDone = 0;
inline constexpr int kErrorsInSource = 1;
inline constexpr int kFailed = 2;  ///< The command line was wrong, or a file could not be read or written.

/// A file that cannot be read or written, or a command line that makes no sense; the text is for the user. It has
/// nothing to do with what is in the source.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The whole of a companion's `main`: carries out `work`, whose answer is the exit status, within the memory that a run
/// may take, and says why it could not be done.
int runCompanion(const char* name, const std::function<int()>& work);

}  // namespace qnpp
