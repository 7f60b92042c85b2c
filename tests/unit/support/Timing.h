// How long something takes.
#pragma once

#include <algorithm>
#include <chrono>

namespace qnpp {

/// Seconds that `work` takes; the best of three goes, so that other work of the machine counts little.
template <typename Work>
double secondsOf(Work work) {
  double best = 1e9;
  for (int go = 0; go < 3; ++go) {
    const auto start = std::chrono::steady_clock::now();
    work();
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

}  // namespace qnpp
