// Storage for definitions.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <memory>

#include "lexer/TextArena.h"

namespace qnpp {

/// Blocks of bytes, of which a run takes very many and gives some back, in any order: those serve again for others that
/// are about as large, and all end with the store. Only for objects without a destructor.
class BlockStore {
 public:
  BlockStore() = default;
  BlockStore(const BlockStore&) = delete;
  BlockStore& operator=(const BlockStore&) = delete;

  /// At least `size` bytes, aligned for any pointer.
  void* take(std::size_t size) {
    const std::size_t sizeClass = classOf(size);
    Free*& first = free_[sizeClass];
    if (first == nullptr) {
      return arena_.allocate(sizeOf(sizeClass));
    }
    Free* const taken = first;
    first = taken->next;
    return taken;
  }

  /// `size` is what was asked for.
  void giveBack(void* block, std::size_t size) {
    const std::size_t sizeClass = classOf(size);
    if (!kKeepsSpares) {
      forbidUse(block, sizeOf(sizeClass));
      return;
    }
    free_[sizeClass] = std::construct_at(static_cast<Free*>(block), Free{free_[sizeClass]});
  }

 private:
  struct Free {
    Free* next;
  };

  // Small sizes are rounded up to whole units. Of the larger ones there are four between a power of two and the next.
  static constexpr std::size_t kUnit = sizeof(Free);
  static constexpr std::size_t kSmallClasses = 32;

  static std::size_t classOf(std::size_t size) {
    const std::size_t units = size == 0 ? 0 : (size - 1) / kUnit;  // One less.
    if (units < kSmallClasses) {
      return units;
    }
    const auto power = static_cast<std::size_t>(std::bit_width(units)) - 1;
    return kSmallClasses + 4 * (power - kLeastPower) + ((units >> (power - 2)) & 3U);
  }

  static std::size_t sizeOf(std::size_t sizeClass) {
    if (sizeClass < kSmallClasses) {
      return (sizeClass + 1) * kUnit;
    }
    const std::size_t power = kLeastPower + (sizeClass - kSmallClasses) / 4;
    return (4 + (sizeClass - kSmallClasses) % 4 + 1) * kUnit << (power - 2);
  }

  static constexpr std::size_t kLeastPower = std::countr_zero(kSmallClasses);

  TextArena arena_;
  std::array<Free*, kSmallClasses + 4 * (64 - kLeastPower)> free_{};
};

}  // namespace qnpp
