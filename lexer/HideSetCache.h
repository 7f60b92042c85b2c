// Remembered results of adding to hide sets and joining them.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "lexer/HideSet.h"
#include "lexer/NameTable.h"
#include "lexer/Shortcuts.h"

namespace qnpp {

/// The last results of `HideSet::with` and `HideSet::joined`. The same few macros are expanded within one another again
/// and again, so most sets that an expansion asks for have just been made; besides saving the work this lets equal sets
/// be one object, and token lists keep them in fewer runs.
class HideSetCache {
 public:
  /// `set` and `name`. Valid until the next question.
  const HideSet& with(const HideSet& set, Name& name) {
    if (!kShortcuts) {
      return uncached_ = set.with(name);
    }
    if (set.empty()) {
      return ofOneName(name);
    }
    // A link that is remembered would keep its line from going on otherwise.
    if (set.isLink()) {
      return uncached_ = set.with(name);
    }
    Addition& known = additions_[slotOf(set.identity(), name.id)];
    if (known.name != &name || !known.set.isSameObject(set)) {
      known = {set, &name, set.with(name)};
    }
    return known.result;
  }

  /// All names of `a` and `b`. Valid until the next question, or as long as both are.
  const HideSet& joined(const HideSet& a, const HideSet& b) {
    if (a.empty() || a.isSameObject(b)) {
      return b;
    }
    return b.empty() ? a : joinedAnew(a, b);
  }

 private:
  static constexpr std::size_t kSlots = 256;

  struct Addition {
    HideSet set;
    const Name* name = nullptr;
    HideSet result;
  };
  struct Union {
    HideSet a;
    HideSet b;
    HideSet result;
  };

  const HideSet& ofOneName(const Name& name) {
    if (name.id >= ofOneName_.size()) {
      ofOneName_.resize(name.id + std::size_t{1});
    }
    HideSet& set = ofOneName_[name.id];
    if (set.empty()) {
      set = HideSet().with(name);
    }
    return set;
  }

  // Apart, so that the common cases above are a few instructions where they are asked for.
  [[gnu::noinline]] const HideSet& joinedAnew(const HideSet& a, const HideSet& b) {
    if (!kShortcuts || a.isLink() || b.isLink()) {
      return uncached_ = a.joined(b);
    }
    Union& known = unions_[slotOf(a.identity(), b.identity())];
    if (!known.a.isSameObject(a) || !known.b.isSameObject(b)) {
      known = {a, b, a.joined(b)};
    }
    return known.result;
  }

  static std::size_t slotOf(std::size_t a, std::size_t b) {
    return static_cast<std::size_t>((a * 31U + b) * 0x9E3779B97F4A7C15U >> 32U) % kSlots;
  }

  std::array<Addition, kSlots> additions_;
  std::array<Union, kSlots> unions_;
  std::vector<HideSet> ofOneName_;  // By the name's id, once they have been asked for.
  HideSet uncached_;
};

}  // namespace qnpp
