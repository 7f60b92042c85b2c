// How much memory something takes.
#pragma once

#include <sys/resource.h>

#include "lexer/Sanitizer.h"

namespace qnpp {

/// Whether `mostMemory` tells anything: with the address sanitizer memory is kept on purpose.
constexpr bool kCountsMemory = kKeepsSpares;

/// Megabytes that the process has held at most so far.
inline double mostMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

}  // namespace qnpp
