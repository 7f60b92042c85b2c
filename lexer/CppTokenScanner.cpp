#include "lexer/CppTokenScanner.h"

#include <cassert>
#include <string_view>
#include <utility>

#include "lexer/Shortcuts.h"

namespace qnpp {

struct CppTokenScanner::CommentReader {
  CommentReader(std::string_view text, const LexerContext& context) : lexer(input, context) {
    input.reset(text);
    lexer.restart(input);
  }
  InputText input;
  CppLexer lexer;
};

std::size_t writeLeadingText(SpellingRange tokens, OutputBuffer& output) {
  const Spelling* const* at = tokens.data();
  const Spelling* const* const end = at + tokens.size();
  for (; at != end && (*at)->isWrittenAsIs(); ++at) {
    // Most tokens of a replacement list are parentheses, operators and blanks.
    if ((*at)->size == 1) {
      output.write(*(*at)->data);
    } else {
      output.write((*at)->data, (*at)->size);
    }
  }
  return static_cast<std::size_t>(at - tokens.data());
}

CppTokenScanner::CppTokenScanner(SpellingPool& pool, const LexerContext& context, HideSetCache& hideSets)
    : CppScanner(false), pool_(pool), context_(context), hideSets_(hideSets) {}

CppTokenScanner::~CppTokenScanner() = default;

void CppTokenScanner::read(TokenList& list, std::size_t first) {
  assert(first <= list.size() && list_.empty());
  std::swap(list_, list);
  range_.tokens = list_.spellings().subspan(first);
  range_.list = &list_;
  range_.position = first;
  range_.unite(hideSets_);
  start();
}

void CppTokenScanner::read(const TokenRange& tokens, NormalizedTokens* surroundings) {
  range_ = tokens;
  surroundings_ = surroundings;
  start();
}

void CppTokenScanner::start() {
  assert(isBetweenElements() && peek_ == nullptr && spelling_ == nullptr);
  begin_ = at_ = range_.tokens.data();
  end_ = begin_ + range_.tokens.size();
  run_ = range_.list == nullptr || begin_ == end_ ? 0 : range_.list->runAt(range_.position);
}

void CppTokenScanner::reset() {
  list_.clear();
  range_ = {};
  hideSet_ = HideSet();
  surroundings_ = nullptr;
  begin_ = at_ = end_ = nullptr;
  pieces_ = {};
  reader_.reset();
  peek_ = spelling_ = nullptr;
}

// Finds the next single token; null at the end of the list.
const Spelling* CppTokenScanner::next() {
  for (;;) {
    if (!pieces_.empty()) {
      const Spelling* const piece = pieces_.front();
      pieces_ = pieces_.subspan(1);
      return piece;
    }
    if (reader_ != nullptr) {
      const CppTokenKind kind = reader_->lexer.next();
      if (kind != TK_END) {
        const Spelling* const token = pool_.spell(kind, reader_->lexer.text());
        return kObserved ? pool_.copy(*token, at_[-1]->origin) : token;
      }
      reader_.reset();
    }
    if (at_ == end_) {
      return nullptr;
    }
    const Spelling* const element = *at_++;
    if (element->isSingleToken()) {
      return element;
    }
    if (element->kind == Spelling::kCompound) {
      pieces_ = static_cast<const CompoundSpelling*>(element)->pieces;
    } else {
      reader_ = std::make_unique<CommentReader>(element->text(), context_);
    }
  }
}

CppTokenKind CppTokenScanner::handOut(const Spelling* spelling) {
  if (spelling == nullptr) {
    return TK_END;
  }
  spelling_ = spelling;
  text_ = spelling->text();
  return spelling->kind;
}

CppTokenKind CppTokenScanner::peek() {
  if (peek_ == nullptr) {
    peek_ = next();
  }
  return peek_ == nullptr ? TK_END : CppTokenKind{peek_->kind};
}

CppTokenKind CppTokenScanner::get() { return handOut(peek_ != nullptr ? std::exchange(peek_, nullptr) : next()); }

CppTokenKind CppTokenScanner::copyText() {
  if (kShortcuts && peek_ == nullptr && isBetweenElements()) {
    at_ += writeLeadingText({at_, end_}, context_.output);
  }
  return get();
}

// ---- Hide sets ----

// Position in the range's list of the element that the current token came from; of the first before any was taken.
std::size_t CppTokenScanner::currentPosition() const {
  return range_.position + static_cast<std::size_t>(at_ == begin_ ? 0 : at_ - begin_ - 1);
}

// Elements are asked for in their order.
std::size_t CppTokenScanner::findRun(std::size_t position) {
  const auto& runs = range_.list->runs();
  assert(run_ == 0 || runs[run_ - 1].end <= position);
  while (runs[run_].end <= position) {
    ++run_;
  }
  return run_;
}

const HideSet& CppTokenScanner::hideSet() {
  if (range_.list == nullptr || range_.tokens.empty()) {
    return range_.hideSet;
  }
  const std::size_t position = currentPosition();
  const TokenList::Run& run = range_.list->runs()[findRun(position)];
  if (!run.nested && range_.hideSet.empty()) {
    return run.hideSet;
  }
  if (!run.nested) {
    return hideSets_.joined(run.hideSet, range_.hideSet);
  }
  return hideSet_ = range_.list->hideSetAt(position, run_).joined(range_.hideSet);
}

bool CppTokenScanner::isHidden(const Name& name) {
  if (range_.hideSet.contains(name)) {
    return true;
  }
  if (range_.list == nullptr) {
    return false;
  }
  const std::size_t position = currentPosition();
  return range_.list->isHiddenAt(position, findRun(position), name);
}

bool CppTokenScanner::isSurelyHidden(const Name& name) {
  return range_.hideSet.contains(name) ||
         (range_.list != nullptr && range_.list->runs()[findRun(currentPosition())].hideSet.contains(name));
}

// ---- Taking tokens with their hide sets ----

void CppTokenScanner::takeSettled(TokenList& list) {
  if (kShortcuts && peek_ == nullptr && isBetweenElements()) {
    const TokenRange left = range_.part(static_cast<std::size_t>(at_ - begin_), static_cast<std::size_t>(end_ - at_));
    at_ += list.appendLeadingSettled(left, context_.names.generation(), hideSets_);
  }
}

void CppTokenScanner::appendCurrent(TokenList& list, bool isSettled) {
  assert(spelling_ != nullptr);
  if (range_.list == nullptr && !isSettled) {
    list.append(spelling_, range_.hideSet);
    return;
  }
  if (isSettled && kShortcuts) {
    list.appendSettled(current(spelling_), context_.names.generation(), hideSets_);
  } else {
    list.append(current(spelling_), HideSet(), hideSets_);
  }
}

// ---- Arguments that are used where they stand ----

SpellingRange CppTokenScanner::rest() const {
  if (!isBetweenElements()) {
    return {};
  }
  if (peek_ == nullptr) {
    return {at_, end_};
  }
  return at_ != begin_ && at_[-1] == peek_ ? SpellingRange(at_ - 1, end_) : SpellingRange();
}

TokenRange CppTokenScanner::take(std::size_t begin, std::size_t end, std::size_t taken) {
  assert(begin <= end && end <= taken && taken > 0 && taken <= rest().size());
  const Spelling* const* const first = peek_ != nullptr ? at_ - 1 : at_;
  at_ = first + taken;
  peek_ = nullptr;
  handOut(at_[-1]);
  // The hide set of the last one holds what all of the range's have.
  TokenRange range{SpellingRange(first + begin, first + end), hideSet(), range_.list,
                   range_.position + static_cast<std::size_t>(first - begin_) + begin};
  range.unite(hideSets_);
  return range;
}

}  // namespace qnpp
