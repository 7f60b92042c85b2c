#include "tests/support/LimitedAllocation.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace qnpp {
namespace {

AllocationLimits left;

void take(std::size_t& limited, std::size_t amount) { limited -= limited == SIZE_MAX ? 0 : amount; }

void* allocate(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
  const std::size_t rounded = (size / alignment + 1) * alignment;
  void* const made = LimitedAllocation::allows(size) ? std::aligned_alloc(alignment, rounded) : nullptr;
  if (made == nullptr) {
    throw std::bad_alloc();
  }
  return made;
}

}  // namespace

LimitedAllocation::LimitedAllocation(const AllocationLimits& limits) { left = limits; }
LimitedAllocation::~LimitedAllocation() { left = AllocationLimits(); }

bool LimitedAllocation::allows(std::size_t size) {
  if (left.count == 0 || size > left.bytes) {
    return false;
  }
  take(left.count, 1);
  take(left.bytes, size);
  return true;
}

}  // namespace qnpp

// All forms that a sanitizer's run-time library would otherwise supply, so that none of its own meets one of these.
void* operator new(std::size_t size) { return qnpp::allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return qnpp::allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* old, std::align_val_t) noexcept { std::free(old); }
void operator delete(void* old, std::size_t, std::align_val_t) noexcept { std::free(old); }
void* operator new[](std::size_t size) { return qnpp::allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size > 0 ? size : 1); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size > 0 ? size : 1); }
void operator delete(void* old) noexcept { std::free(old); }
void operator delete[](void* old) noexcept { std::free(old); }
void operator delete(void* old, std::size_t) noexcept { std::free(old); }
void operator delete[](void* old, std::size_t) noexcept { std::free(old); }
void operator delete(void* old, const std::nothrow_t&) noexcept { std::free(old); }
void operator delete[](void* old, const std::nothrow_t&) noexcept { std::free(old); }
