// What a run may spend.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace qnpp {

/// Thrown through the engine to end a run. Not derived from std::exception, so that nobody takes it for a fault.
struct RunEnded {
  enum class Reason { IncludeDepth, ExpansionWork, OutputBytes, Time, Cancelled, CallbackFailed };

  Reason reason;
};

/// Ends runs that take too much, or that nobody wants any more.
///
/// What does work says so beforehand. Mostly that is a subtraction: the clock, the limit and the wish to end the run
/// are looked at every few thousand units.
class Budget {
 public:
  /// Of a text that an expansion makes or passes over: what costs as much as a token.
  static constexpr std::size_t kBytesLikeAToken = 16;

  /// Without limits, until `setLimits`.
  Budget() = default;
  Budget(const Budget&) = delete;
  Budget& operator=(const Budget&) = delete;

  /// 0 means that there is no such limit. The time begins now; less than 0 is over already.
  void setLimits(std::uint64_t work, std::chrono::milliseconds time);
  /// Set by another thread to end the run; borrowed.
  void watch(const std::atomic<bool>& isCancelled) { isCancelled_ = &isCancelled; }

  /// Before a line is processed, and the like.
  void spend() {
    if (--left_ < 0) [[unlikely]] {
      beginAnew();
    }
  }
  /// Before macros are expanded: `work` tokens, or what compares to them.
  void spendOnExpansion(std::size_t work) {
    workLeft_ -= static_cast<std::int64_t>(work);
    if (workLeft_ < 0) [[unlikely]] {
      drawOnWork();
    }
  }
  /// Looks whether the run has to end; throws RunEnded.
  void look() const;

 private:
  static constexpr std::int64_t kUnitsBetweenLooks = 4096;

  // Apart, so that callers are no longer than a subtraction makes them.
  void beginAnew();
  void drawOnWork();

  std::int64_t left_ = kUnitsBetweenLooks;
  std::int64_t workLeft_ = 0;
  std::uint64_t workBeyond_ = UINT64_MAX;  // What has not been drawn on yet.
  const std::atomic<bool>* isCancelled_ = nullptr;
  std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::time_point::max();
};

}  // namespace qnpp
