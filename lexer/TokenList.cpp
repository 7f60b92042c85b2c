#include "lexer/TokenList.h"

#include <algorithm>
#include <cassert>
#include <memory>

#include "lexer/NameTable.h"

namespace qnpp {
namespace {

// Up to so many runs are joined one by one when a list is appended; more are kept whole. Joining sets is quicker for a
// few, since the same few have mostly been joined before; and lists are nested less deep.
constexpr std::size_t kMostJoined = 4;
// And so many may be left of a list that was appended. More become one, so that each level of a nesting has only that
// to add to.
constexpr std::size_t kMostRuns = 16;

std::size_t findRun(const std::vector<TokenList::Run>& runs, std::size_t position) {
  const auto found = std::upper_bound(runs.begin(), runs.end(), position,
                                      [](std::size_t at, const TokenList::Run& run) { return at < run.end; });
  return static_cast<std::size_t>(found - runs.begin());
}

// True for a token that the expansion of a list collects as it is, whatever its hide set. (`defined` is in every table
// of names.)
bool isSettled(const Spelling& token) {
  return token.name == nullptr ? token.isSingleToken() : token.name->macro == nullptr && token.kind != TK_DEFINED;
}

std::size_t beginOf(const std::vector<TokenList::Run>& runs, std::size_t run) {
  return run == 0 ? 0 : runs[run - 1].end;
}

}  // namespace

// ---- Nested runs ----

struct TokenList::Nested::Shared {
  std::vector<Run> runs;
  std::size_t references = 1;
  Shared* next = nullptr;  // Among those that are being freed.
};

TokenList::Nested::Nested(const Run* first, const Run* last, std::size_t begin) {
  auto made = std::make_unique<Shared>();
  made->runs.assign(first, last);
  for (Run& run : made->runs) {
    run.end -= begin;
  }
  shared_ = made.release();  // Counted from now on.
}

void TokenList::Nested::addReference(Shared& shared) { ++shared.references; }

// Runs are nested as deep as invocations are, so what is nested in them is not freed by recursion.
void TokenList::Nested::dropReference(Shared* shared) {
  Shared* unused = nullptr;
  const auto drop = [&unused](Shared* dropped) {
    if (dropped != nullptr && --dropped->references == 0) {
      dropped->next = std::exchange(unused, dropped);
    }
  };
  drop(shared);
  while (unused != nullptr) {
    const std::unique_ptr<Shared> ended(std::exchange(unused, unused->next));
    for (Run& run : ended->runs) {
      drop(std::exchange(run.nested.shared_, nullptr));
    }
  }
}

const std::vector<TokenList::Run>& TokenList::Nested::runs() const { return shared_->runs; }

// ---- Asking for sets ----

std::size_t TokenList::findRunBehindFirst(std::size_t position) const { return findRun(runs_, position); }

// Calls `visit` with each set that makes up that of the token at `position`, until it returns false.
template <typename Visit>
void TokenList::visitSets(std::size_t position, std::size_t run, Visit visit) const {
  const std::vector<Run>* runs = &runs_;
  for (;;) {
    const Run& covering = (*runs)[run];
    if (!visit(covering.hideSet) || !covering.nested) {
      return;
    }
    position = covering.nestedAt + (position - beginOf(*runs, run));
    runs = &covering.nested.runs();
    run = findRun(*runs, position);
  }
}

HideSet TokenList::hideSetAt(std::size_t position, std::size_t run) const {
  assert(position < size() && run == runAt(position));
  HideSet all;
  visitSets(position, run, [&all](const HideSet& set) {
    all = all.joined(set);
    return true;
  });
  return all;
}

bool TokenList::isHiddenAt(std::size_t position, std::size_t run, const Name& name) const {
  assert(position < size() && run == runAt(position));
  bool isHidden = false;
  visitSets(position, run, [&isHidden, &name](const HideSet& set) {
    isHidden = set.contains(name);
    return !isHidden;
  });
  return isHidden;
}

// ---- Appending ----

void TokenList::append(const TokenRange& tokens, const HideSet& hideSet, HideSetCache& hideSets) {
  if (tokens.list == nullptr) {
    appendOneRun(tokens.tokens, hideSets.joined(tokens.hideSet, hideSet), false);
    return;
  }
  settledIn_ = std::min(settledIn_, tokens.list->settledIn_);
  // A copy, since the cache's answer holds until its next question only.
  const std::size_t firstRun = runs_.size();
  appendRange(tokens, HideSet(hideSets.joined(tokens.hideSet, hideSet)), false, hideSets);
  if (runs_.size() > firstRun + kMostRuns) {
    nestRunsFrom(firstRun);
  }
}

void TokenList::appendSettled(const TokenRange& tokens, std::uint64_t generation, HideSetCache& hideSets) {
  settledIn_ = std::min(settledIn_, generation);
  if (tokens.list == nullptr) {
    appendOneRun(tokens.tokens, tokens.hideSet, true);
  } else {
    appendRange(tokens, tokens.hideSet, true, hideSets);
  }
}

std::size_t TokenList::appendLeadingSettled(const TokenRange& tokens, std::uint64_t generation,
                                            HideSetCache& hideSets) {
  const std::size_t size = tokens.tokens.size();
  const bool mayPassRuns = size > 0 && tokens.list != nullptr && tokens.list->isSettledIn(generation);
  std::size_t run = mayPassRuns ? tokens.list->runAt(tokens.position) : 0;
  std::size_t at = 0;
  for (std::size_t behind = size; at < size; behind = size) {
    if (mayPassRuns) {
      const Run& covering = tokens.list->runs_[run++];
      behind = std::min(size, covering.end - tokens.position);
      at = covering.isSettled ? behind : at;
    }
    while (at < behind && isSettled(*tokens.tokens[at])) {
      ++at;
    }
    if (at < behind) {
      break;
    }
  }
  if (at > 0) {
    appendSettled(tokens.part(0, at), generation, hideSets);
  }
  return at;
}

// Appends tokens of a list, each with its own set and `added`. All of them are settled, or those that were.
void TokenList::appendRange(const TokenRange& tokens, const HideSet& added, bool areSettled, HideSetCache& hideSets) {
  if (tokens.tokens.empty()) {
    return;
  }
  assert(tokens.position + tokens.tokens.size() <= tokens.list->size() && tokens.list != this);
  const std::size_t begin = spellings_.size();
  addSpellings(tokens.tokens);
  const std::size_t index = tokens.list->runAt(tokens.position);
  const Run& run = tokens.list->runs_[index];
  if (tokens.position + tokens.tokens.size() <= run.end && !run.nested) {
    coverNewTokens(hideSets.joined(run.hideSet, added), areSettled || run.isSettled);
  } else {
    coverByRuns(tokens, index, begin, added, areSettled, hideSets);
  }
}

// Covers the tokens from `begin` on, those of a list that have just been appended, whose runs there begin with `run`.
void TokenList::coverByRuns(const TokenRange& tokens, std::size_t run, std::size_t begin, const HideSet& added,
                            bool areSettled, HideSetCache& hideSets) {
  const std::vector<Run>& runs = tokens.list->runs_;
  const std::size_t end = tokens.position + tokens.tokens.size();
  const auto isSettled = [areSettled](const Run& covering) { return areSettled || covering.isSettled; };
  std::size_t at = tokens.position;
  while (at < end) {
    std::size_t behind = run + 1;  // The settled runs from `run` on.
    while (isSettled(runs[behind - 1]) && runs[behind - 1].end < end && isSettled(runs[behind])) {
      ++behind;
    }
    const std::size_t runBegin = beginOf(runs, run);
    if (behind - run > kMostJoined) {
      const std::size_t nestedAt = at - runBegin;
      at = std::min(end, runs[behind - 1].end);
      cover({begin + (at - tokens.position), added, Nested(runs.data() + run, runs.data() + behind, runBegin), nestedAt,
             true});
      run = behind;
      continue;
    }
    const std::size_t nestedAt = runs[run].nestedAt + (at - runBegin);
    at = std::min(end, runs[run].end);
    cover({begin + (at - tokens.position), hideSets.joined(runs[run].hideSet, added), runs[run].nested, nestedAt,
           isSettled(runs[run])});
    ++run;
  }
}

void TokenList::cutTo(std::size_t count) {
  assert(count <= size());
  spellings_.resize(count);
  while (!runs_.empty() && beginOf(runs_, runs_.size() - 1) >= count) {
    runs_.pop_back();
  }
  if (!runs_.empty()) {
    runs_.back().end = std::min(runs_.back().end, count);
  }
}

// Makes the runs from index `first` on a single one.
void TokenList::nestRunsFrom(std::size_t first) {
  const auto begin = runs_.begin() + static_cast<std::ptrdiff_t>(first);
  const bool areSettled = std::all_of(begin, runs_.end(), [](const Run& run) { return run.isSettled; });
  Run all{runs_.back().end, HideSet(), Nested(&*begin, runs_.data() + runs_.size(), beginOf(runs_, first)), 0,
          areSettled};
  runs_.erase(begin, runs_.end());
  runs_.push_back(std::move(all));
}

// Covers the tokens behind the last run by `run`.
void TokenList::cover(Run run) {
  if (!runs_.empty()) {
    Run& last = runs_.back();
    const bool isContinued =
        last.isSettled == run.isSettled && last.hideSet.isSameObject(run.hideSet) && last.nested == run.nested &&
        (!run.nested || last.nestedAt + (last.end - beginOf(runs_, runs_.size() - 1)) == run.nestedAt);
    if (isContinued) {
      last.end = run.end;
      return;
    }
  }
  runs_.push_back(std::move(run));
}

HideSet TokenRange::firstHideSet() const {
  return list == nullptr ? hideSet : list->hideSetAt(position, list->runAt(position)).joined(hideSet);
}

bool TokenRange::isFirstHidden(const Name& name) const {
  return hideSet.contains(name) || (list != nullptr && list->isHiddenAt(position, list->runAt(position), name));
}

void TokenRange::unite(HideSetCache& hideSets) {
  if (list == nullptr || tokens.empty()) {
    list = nullptr;
    return;
  }
  const TokenList::Run& run = list->runs()[list->runAt(position)];
  if (position + tokens.size() <= run.end && !run.nested && !run.isSettled) {
    hideSet = hideSets.joined(run.hideSet, hideSet);
    list = nullptr;
  }
}

}  // namespace qnpp
