// How long something takes.
#pragma once

#include <algorithm>
#include <ctime>

namespace qnpp {

/// Seconds of the processor that `work` takes; what other programs do meanwhile does not count. The best of `goes`.
template <typename Work>
double secondsOf(Work work, int goes = 3) {
  double best = 1e9;
  for (; goes > 0; --goes) {
    const std::clock_t start = std::clock();
    work();
    best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return best;
}

}  // namespace qnpp
