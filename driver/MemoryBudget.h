// The memory that a run may take.
#pragma once

#include <cstdint>
#include <optional>

namespace qnpp {

/// Keeps a run from outgrowing the memory of the machine or of its container: the system would kill it without a word,
/// or something else in its place.
///
/// The process gets a limit for its data (RLIMIT_DATA) that is low at first. Whenever it is reached, a new-handler
/// looks at what the system has left and raises the limit, or ends the growth by std::bad_alloc. So each step is paid
/// for by a look at a few small files, and a run that stays small never looks.
///
/// On Windows there is only `begin`, which does nothing.
class MemoryBudget {
 public:
  /// `root` stands before the names of the system's files; it must outlive the budget.
  explicit MemoryBudget(const char* root = "") : root_(root) {}

  /// Sets the first limit and the new-handler of the process. Does nothing where the user has limited data or address
  /// space: whoever set a limit has taken the decision.
  static void begin();

  /// Raises the limit by a part of what is left, or throws std::bad_alloc. Takes no memory from `operator new`.
  void grow() const;

  /// The data that this process may have at most: what it has, and what machine and container can still give beyond a
  /// reserve for others. Empty where the system does not tell.
  std::optional<std::uint64_t> most() const;

 private:
  const char* root_;
};

}  // namespace qnpp
