// A switch for all the shortcuts at once.
#pragma once

namespace qnpp {

/// Whether text is passed over, arguments are used and macros are replaced in one go where what comes out is known,
/// instead of token by token. Nothing else depends on it. A second build of the program without the shortcuts, which
/// defines QNPP_WITHOUT_SHORTCUTS, is what the tests hold them against; a fuzz target goes both ways in one process.
#if defined(QNPP_SWITCHABLE_SHORTCUTS)
inline bool kShortcuts = true;
#elif defined(QNPP_WITHOUT_SHORTCUTS)
inline constexpr bool kShortcuts = false;
#else
inline constexpr bool kShortcuts = true;
#endif

}  // namespace qnpp
