#include "lexer/Budget.h"

#include <algorithm>

namespace qnpp {

void Budget::setLimits(std::uint64_t work, std::chrono::milliseconds time) {
  using Clock = std::chrono::steady_clock;
  workLeft_ = 0;
  workBeyond_ = work == 0 ? UINT64_MAX : work;
  end_ = Clock::time_point::max();
  if (time.count() < 0) {
    end_ = Clock::time_point::min();
  } else if (time.count() > 0) {
    const Clock::time_point now = Clock::now();
    if (time < std::chrono::duration_cast<std::chrono::milliseconds>(end_ - now)) {
      end_ = now + time;
    }
  }
}

void Budget::beginAnew() {
  left_ = kUnitsBetweenLooks;
  look();
}

void Budget::drawOnWork() {
  const auto missing = static_cast<std::uint64_t>(-workLeft_);
  if (missing > workBeyond_) {
    throw RunEnded{RunEnded::Reason::ExpansionWork};
  }
  const std::uint64_t drawn = std::min(workBeyond_, missing + static_cast<std::uint64_t>(kUnitsBetweenLooks));
  workBeyond_ -= drawn;
  workLeft_ += static_cast<std::int64_t>(drawn);
  look();
}

void Budget::look() const {
  if (isCancelled_ != nullptr && isCancelled_->load(std::memory_order_relaxed)) {
    throw RunEnded{RunEnded::Reason::Cancelled};
  }
  if (end_ != std::chrono::steady_clock::time_point::max() && std::chrono::steady_clock::now() >= end_) {
    throw RunEnded{RunEnded::Reason::Time};
  }
}

}  // namespace qnpp
