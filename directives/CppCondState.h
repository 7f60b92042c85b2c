// State of a conditional.
#pragma once

#include <cstdint>

namespace qnpp {

/// How far a conditional (`#if` to `#endif`) has come.
enum class CppCondState : std::int32_t {
  Inactive = 0,   ///< Opened inside a skipped group: none of its groups is ever taken.
  Taken = 1,      ///< One of its groups has been taken; every later one is skipped.
  Pending = 2,    ///< None has been taken yet; an `#elif` is evaluated, an `#else` group is taken.
  AfterElse = 3,  ///< `#else` has been seen.
};

}  // namespace qnpp
