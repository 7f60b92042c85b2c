// Memory that runs out, in the test's own process.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qnpp {

/// What `operator new` may still hand out.
struct AllocationLimits {
  std::size_t bytes = SIZE_MAX;  ///< In sum; without a limit while this is the largest number.
  std::size_t count = SIZE_MAX;  ///< So many allocations; likewise.
};

/// While one lives, `operator new` throws std::bad_alloc beyond the limits, for good once there are none left. A
/// program that links LimitedAllocation.cpp has its allocation functions replaced.
class LimitedAllocation {
 public:
  explicit LimitedAllocation(const AllocationLimits& limits);
  LimitedAllocation(const LimitedAllocation&) = delete;
  LimitedAllocation& operator=(const LimitedAllocation&) = delete;
  ~LimitedAllocation();

  /// Counts an allocation of `size` bytes; false when it has to fail. For allocation functions that a test replaces.
  static bool allows(std::size_t size);
};

}  // namespace qnpp
