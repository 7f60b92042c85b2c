// What ends a build that has nothing to do with what is in the source.
#pragma once

#include <stdexcept>

namespace qnpp::build {

/// A file that cannot be read or written, or a command line that makes no sense; the text is for the user.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace qnpp::build
