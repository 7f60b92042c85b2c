// Storage that is given back all at once.
#pragma once

#include <compare>
#include <cstddef>
#include <string_view>
#include <vector>

#include "lexer/LargeBytes.h"
#include "lexer/Sanitizer.h"

namespace qnpp {

/// A stack of bytes: allocation moves a pointer, and everything allocated behind a mark is given back in one step.
/// Only for objects without a destructor.
class TextArena {
 public:
  /// A moment in the life of the arena.
  struct Mark {
    std::size_t chunk = 0;
    std::size_t used = 0;
    auto operator<=>(const Mark&) const = default;
  };

  /// `size` bytes, aligned for any pointer; valid until `release` to an earlier mark.
  void* allocate(std::size_t size) {
    size = (size + kAlignment - 1) & ~(kAlignment - 1);
    if (size > room_ - used_) {
      return allocateInNewChunk(size);
    }
    char* const made = base_ + used_;
    used_ += size;
    allowUse(made, size);
    return made;
  }

  /// A copy of `text` in the arena.
  std::string_view copy(std::string_view text);

  Mark mark() const { return {current_, used_}; }

  /// Gives back everything allocated since `mark` was taken.
  void release(Mark mark);

 private:
  static constexpr std::size_t kAlignment = alignof(void*);
  // The first two chunks are of this size, and each of the next few is twice as large as the one before it. Where half
  // a megabyte does not do, the rest is in large pages.
  static constexpr std::size_t kChunkSize = std::size_t{16} * 1024;
  static constexpr std::size_t kMostDoublings = 4;
  static constexpr std::size_t kLargestChunkSize = std::size_t{4} * 1024 * 1024;

  struct Chunk {
    LargeBytes bytes;
    std::size_t size = 0;
  };

  static std::size_t sizeOfChunk(std::size_t index);
  void* allocateInNewChunk(std::size_t size);

  std::vector<Chunk> chunks_;
  std::size_t current_ = 0;  // Index of the chunk in use, one behind the last while there is none.
  char* base_ = nullptr;     // Bytes of the chunk in use.
  std::size_t room_ = 0;     // Its size.
  std::size_t used_ = 0;     // How much of it is taken.
};

}  // namespace qnpp
