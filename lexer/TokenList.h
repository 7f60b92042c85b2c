// Stored tokens and lists of them.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "lexer/HideSet.h"
#include "lexer/HideSetCache.h"
#include "lexer/Spelling.h"

namespace qnpp {

struct TokenRange;

/// A list of stored tokens: texts, each with the macro names that must not be expanded at it. A stored token has no
/// kind; that is found by lexing the text when the token is read. The list owns its contents but borrows the spellings.
///
/// Neighbours mostly carry the same hide set, so the sets are kept once per run of tokens: a token costs one pointer.
/// And where a list with many sets is appended to another with one set in addition to all of them, the result keeps the
/// runs of the first as they are, and the addition once beside them: with `#define M1(x) [x]` and so on, M1(M2(M3(1)))
/// takes a list of more and more sets through one level after the other, and each level adds its name to all.
class TokenList {
 public:
  struct Run;

  /// The runs of a list that has become a part of others: shared by them, and never changed.
  class Nested {
   public:
    Nested() = default;
    /// The runs from `first` to before `last`, which begin at position `begin`.
    Nested(const Run* first, const Run* last, std::size_t begin);
    Nested(const Nested& other) noexcept : shared_(other.shared_) {
      if (shared_ != nullptr) {
        addReference(*shared_);
      }
    }
    Nested(Nested&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}
    Nested& operator=(Nested other) noexcept {
      std::swap(shared_, other.shared_);
      return *this;
    }
    ~Nested() {
      if (shared_ != nullptr) {
        dropReference(shared_);
      }
    }

    explicit operator bool() const { return shared_ != nullptr; }
    bool operator==(const Nested& other) const { return shared_ == other.shared_; }
    const std::vector<Run>& runs() const;

   private:
    struct Shared;

    static void addReference(Shared& shared);
    static void dropReference(Shared* shared);

    Shared* shared_ = nullptr;
  };

  /// Tokens up to, not including, position `end` that begin where the run before ends.
  struct Run {
    std::size_t end = 0;
    HideSet hideSet;           ///< Of each of them.
    Nested nested = {};        ///< What each has beside that; none for nothing.
    std::size_t nestedAt = 0;  ///< Position of the first one there.
    bool isSettled = false;    ///< None has to be looked at when the list is expanded further, see `settledIn`.
  };

  bool empty() const { return spellings_.empty(); }
  std::size_t size() const { return spellings_.size(); }
  SpellingRange spellings() const { return spellings_; }
  const std::vector<Run>& runs() const { return runs_; }

  /// All of it, borrowed.
  TokenRange all() const;

  /// Whether runs that are called settled are so in this generation of definitions (see NameTable).
  bool isSettledIn(std::uint64_t generation) const { return settledIn_ == generation; }

  /// Index of the run that holds the token at `position`.
  std::size_t runAt(std::size_t position) const {
    assert(position < size());
    return position < runs_.front().end ? 0 : findRunBehindFirst(position);
  }
  /// The hide set of the token at `position`, which is in the run of that index.
  HideSet hideSetAt(std::size_t position, std::size_t run) const;
  /// Whether `name` is in that set.
  bool isHiddenAt(std::size_t position, std::size_t run, const Name& name) const;

  void append(const Spelling* spelling, const HideSet& hideSet) {
    spellings_.push_back(spelling);
    coverNewTokens(hideSet);
  }
  void append(SpellingRange spellings, const HideSet& hideSet) { appendOneRun(spellings, hideSet, false); }
  /// Appends tokens, each with its own hide set and `hideSet` in addition.
  void append(const TokenRange& tokens, const HideSet& hideSet, HideSetCache& hideSets);
  /// The same for tokens of which none is expanded in what is made of this list, in this generation of definitions:
  /// they are single tokens, and neither `defined` nor a name with a macro definition that its hide set does not hold.
  void appendSettled(const TokenRange& tokens, std::uint64_t generation, HideSetCache& hideSets);

  /// The same for the tokens up to the first of which that may not be so. Returns how many.
  std::size_t appendLeadingSettled(const TokenRange& tokens, std::uint64_t generation, HideSetCache& hideSets);

  /// Drops all but the first `count` tokens.
  void cutTo(std::size_t count);
  void clear() {
    spellings_.clear();
    runs_.clear();
    settledIn_ = kNeverSettled;
  }

 private:
  static constexpr std::uint64_t kNeverSettled = std::numeric_limits<std::uint64_t>::max();

  void appendOneRun(SpellingRange spellings, const HideSet& hideSet, bool areSettled) {
    if (!spellings.empty()) {
      addSpellings(spellings);
      coverNewTokens(hideSet, areSettled);
    }
  }
  // Mostly one to three, for which `insert` takes longer to make up its mind than to copy.
  void addSpellings(SpellingRange spellings) {
    if (spellings.size() > 8) {
      spellings_.insert(spellings_.end(), spellings.begin(), spellings.end());
      return;
    }
    for (const Spelling* const spelling : spellings) {
      spellings_.push_back(spelling);
    }
  }
  void coverNewTokens(const HideSet& hideSet, bool areSettled = false) {
    if (!runs_.empty()) {
      Run& last = runs_.back();
      if (last.hideSet.isSameObject(hideSet) && last.isSettled == areSettled && !last.nested) {
        last.end = spellings_.size();
        return;
      }
    }
    runs_.push_back({spellings_.size(), hideSet, {}, 0, areSettled});
  }
  std::size_t findRunBehindFirst(std::size_t position) const;
  void appendRange(const TokenRange& tokens, const HideSet& added, bool areSettled, HideSetCache& hideSets);
  void coverByRuns(const TokenRange& tokens, std::size_t run, std::size_t begin, const HideSet& added, bool areSettled,
                   HideSetCache& hideSets);
  void cover(Run run);
  void nestRunsFrom(std::size_t first);
  template <typename Visit>
  void visitSets(std::size_t position, std::size_t run, Visit visit) const;

  std::vector<const Spelling*> spellings_;
  std::vector<Run> runs_;
  std::uint64_t settledIn_ = kNeverSettled;  // The oldest generation in which a run was appended as settled.
};

/// Tokens that somebody else holds, each with a hide set of its own and `hideSet` in addition.
struct TokenRange {
  SpellingRange tokens = {};
  HideSet hideSet = {};
  /// Where their own sets are found: in this list from this position on. Null: they have none.
  const TokenList* list = nullptr;
  std::size_t position = 0;

  /// `count` of the tokens, from the one at `begin` on.
  TokenRange part(std::size_t begin, std::size_t count) const {
    assert(begin <= tokens.size() && count <= tokens.size() - begin);
    return {tokens.subspan(begin, count), hideSet, list, position + begin};
  }

  /// The hide set of the first token, and whether `name` is in it; the latter is quicker.
  HideSet firstHideSet() const;
  bool isFirstHidden(const Name& name) const;

  /// Forgets the list if the own sets of all tokens are the same one; that is then a part of `hideSet`.
  void unite(HideSetCache& hideSets);
};

inline TokenRange TokenList::all() const { return {spellings_, HideSet(), this, 0}; }

}  // namespace qnpp
