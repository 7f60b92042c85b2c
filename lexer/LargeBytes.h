// Memory in large pieces.
#pragma once

#include <cstddef>
#include <memory>
#include <new>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

namespace qnpp {

/// Frees what `makeLargeBytes` has made.
class FreeLargeBytes {
 public:
  explicit FreeLargeBytes(std::size_t size = 0) : size_(size) {}
  void operator()(char* bytes) const {
    if (size_ < kLargePage) {
      ::operator delete(bytes);
    } else {
      ::operator delete(bytes, std::align_val_t(kLargePage));
    }
  }

  /// From this size on the system is asked for large pages, of which each has to begin at a multiple of its size. Where
  /// they are of another size this does no harm.
  static constexpr std::size_t kLargePage = std::size_t{1} << 21;

 private:
  std::size_t size_;
};

using LargeBytes = std::unique_ptr<char[], FreeLargeBytes>;

/// `size` bytes, aligned for any object. Those of a table that grows for as long as the input does are touched for the
/// first time page by page, and that costs more than what is written there; with large pages it is a fifth of it.
inline LargeBytes makeLargeBytes(std::size_t size) {
  constexpr std::size_t kLargePage = FreeLargeBytes::kLargePage;
  const FreeLargeBytes free(size);
  if (size < kLargePage) {
    return {static_cast<char*>(::operator new(size)), free};
  }
  LargeBytes made(static_cast<char*>(::operator new(size, std::align_val_t(kLargePage))), free);
#if defined(MADV_HUGEPAGE)
  ::madvise(made.get(), size, MADV_HUGEPAGE);  // A wish: without them it is slower, that is all.
#endif
  return made;
}

}  // namespace qnpp
