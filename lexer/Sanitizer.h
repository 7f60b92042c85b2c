// What the address sanitizer is told about memory that is kept for later use.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define QNPP_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QNPP_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(QNPP_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#endif

namespace qnpp {

/// Whether objects that are done with are kept for the next need. Not under the address sanitizer: there they go back
/// to the system at once, so that a use of one that comes too late is found.
#if defined(QNPP_ADDRESS_SANITIZER)
inline constexpr bool kKeepsSpares = false;
#else
inline constexpr bool kKeepsSpares = true;
#endif

/// Makes any use of these bytes an error, until `allowUse`.
inline void forbidUse([[maybe_unused]] const void* bytes, [[maybe_unused]] std::size_t size) {
#if defined(QNPP_ADDRESS_SANITIZER)
  __asan_poison_memory_region(bytes, size);
#endif
}

inline void allowUse([[maybe_unused]] const void* bytes, [[maybe_unused]] std::size_t size) {
#if defined(QNPP_ADDRESS_SANITIZER)
  __asan_unpoison_memory_region(bytes, size);
#endif
}

}  // namespace qnpp
