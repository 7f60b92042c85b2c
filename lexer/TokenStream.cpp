#include "lexer/TokenStream.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace qnpp {

TokenStream::TokenStream(NameTable& names, const LexerContext& context, Listener& listener)
    : context_(context), listener_(listener), storedTextLexer_(context), pool_(names, storedTextLexer_) {}

TokenStream::~TokenStream() = default;

// ---- Reading ----

Name* TokenStream::name() {
  if (!isInFile_) {
    return listSource().spelling()->name;
  }
  Name* const found = fileSource().name();
  return found != nullptr ? found : context_.names.find(text());
}

CppTokenKind TokenStream::skipBlanks() {
  passBlanks();
  CppTokenKind kind = peek();
  for (; isBlank(kind); kind = peek()) {
    get();
  }
  return kind;
}

bool TokenStream::skipWhiteSpace() {
  bool skipped = passBlanks();
  while (isWhiteSpace(peek())) {
    get();
    skipped = true;
  }
  return skipped;
}

CppTokenKind TokenStream::getBehindWhiteSpace(bool& skipped, HideSet& hideSet) {
  skipped = passBlanks();
  CppTokenKind kind = get();
  for (; isWhiteSpace(kind); kind = get()) {
    skipped = true;
    if (!isInFile_) {
      hideSet = hideSets_.joined(hideSet, listSource().hideSet());
    }
  }
  return kind;
}

void TokenStream::discardLine() {
  for (;;) {
    if (isInFile_) {
      if (fileSource().skipLine()) {
        return;
      }
    } else {
      CppTokenKind kind = listSource().get();
      while (kind != TK_NEWLINE && kind != TK_END) {
        kind = listSource().get();
      }
      if (kind == TK_NEWLINE) {
        return;
      }
    }
    if (!hasEnclosing()) {
      return;
    }
    popSource();
  }
}

// ---- The stack ----

void TokenStream::setCurrent(CppScanner& source) {
  current_ = &source;
  isInFile_ = source.isFile();
}

void TokenStream::pushFile(std::unique_ptr<CppFileScanner> file) {
  // Current only once it is owned: the message about memory running out here names the current file.
  CppFileScanner* const entered = file.get();
  sources_.push_back({std::move(file), pool_.mark()});
  files_.push_back(entered);
  setCurrent(*entered);
}

void TokenStream::push(TokenList& tokens, std::size_t first) {
  std::unique_ptr<CppTokenScanner> list = spareList();
  list->read(tokens, first);
  const SpellingPool::Mark mark = dropExhaustedLists();
  pushList(std::move(list), mark);
}

void TokenStream::push(const TokenRange& tokens) {
  std::unique_ptr<CppTokenScanner> list = spareList();
  list->read(tokens, nullptr);
  const SpellingPool::Mark mark = dropExhaustedLists();
  pushList(std::move(list), mark);
}

// A list that has been read to its end is dropped as soon as another is pushed on it, not when that one has ended:
// nobody can tell, and a long chain of macros, each the last word of the one before, stays flat. The new one takes over
// what they leave: returns the mark of all that it owns. Not so below a closed source: the tokens of an argument that
// is being expanded may stand in such a list.
SpellingPool::Mark TokenStream::dropExhaustedLists() {
  SpellingPool::Mark mark = held_.value_or(pool_.mark());
  while (hasEnclosing() && !isInFile_ && listSource().isExhausted()) {
    mark = std::min(mark, sources_.back().mark);
    removeList();
  }
  return mark;
}

void TokenStream::pushList(std::unique_ptr<CppTokenScanner> list, const SpellingPool::Mark& mark) {
  assert(current_ != nullptr);
  CppTokenScanner* const entered = list.get();
  sources_.push_back({std::move(list), mark});
  setCurrent(*entered);
  if (held_) {
    held_ = pool_.mark();  // What was held belongs to the new source.
  }
}

void TokenStream::popSource() {
  if (isInFile_) {
    popFile();
    return;
  }
  const SpellingPool::Mark mark = sources_.back().mark;
  removeList();
  giveBack(mark);
}

void TokenStream::popFile() {
  listener_.fileEnded();
  std::unique_ptr<CppFileScanner> file(static_cast<CppFileScanner*>(sources_.back().scanner.release()));
  sources_.pop_back();
  setCurrent(*sources_.back().scanner);
  files_.pop_back();
  spareFiles_.give(std::move(file));
  listener_.fileResumed();
}

void TokenStream::removeList() {
  assert(!isInFile_);
  std::unique_ptr<CppTokenScanner> list(static_cast<CppTokenScanner*>(sources_.back().scanner.release()));
  sources_.pop_back();
  setCurrent(*sources_.back().scanner);
  if (ended_ != nullptr) {
    ended_->lists_.push_back(std::move(list));
  } else {
    spareLists_.give(std::move(list));
  }
}

// Gives back what lies behind `mark`, or leaves it to the hold.
void TokenStream::giveBack(const SpellingPool::Mark& mark) {
  if (held_) {
    held_ = std::min(*held_, mark);
    return;
  }
  if (isInFile_ || !listSource().isLexing()) {
    pool_.release(mark);
  }
  if (!hasLists() && !retired_.empty()) {
    retired_.clear();
  }
}

// ---- Scopes ----

TokenStream::Closed::Closed(TokenStream& stream, TokenList& tokens) : stream_(stream), enclosingFloor_(stream.floor_) {
  std::unique_ptr<CppTokenScanner> list = stream.spareList();
  list->read(tokens);
  stream.pushClosed(std::move(list));
}

TokenStream::Closed::Closed(TokenStream& stream, const TokenRange& tokens, NormalizedTokens* surroundings)
    : stream_(stream), enclosingFloor_(stream.floor_) {
  std::unique_ptr<CppTokenScanner> list = stream.spareList();
  list->read(tokens, surroundings);
  stream.pushClosed(std::move(list));
}

TokenStream::Closed::~Closed() {
  assert(stream_.floor_ > enclosingFloor_);  // The last that was made goes first.
  const SpellingPool::Mark mark = stream_.sources_[stream_.floor_].mark;
  while (stream_.sources_.size() > stream_.floor_) {  // Lists are above it only where the run was ended early.
    stream_.removeList();
  }
  stream_.floor_ = enclosingFloor_;
  stream_.giveBack(mark);
}

void TokenStream::pushClosed(std::unique_ptr<CppTokenScanner> list) {
  assert(held_ && !sources_.empty());
  pushList(std::move(list), *held_);
  floor_ = sources_.size() - 1;
}

TokenStream::Hold::Hold(TokenStream& stream) : stream_(stream), isOutermost_(!stream.held_) {
  if (isOutermost_) {
    stream_.held_ = stream_.pool_.mark();
  }
}

TokenStream::Hold::~Hold() {
  if (isOutermost_) {
    const SpellingPool::Mark mark = *stream_.held_;
    stream_.held_.reset();
    stream_.giveBack(mark);
  }
}

void TokenStream::EndedLists::release() {
  for (std::unique_ptr<CppTokenScanner>& list : lists_) {
    stream_.spareLists_.give(std::move(list));
  }
  lists_.clear();
}

TokenStream::EndedLists::Collecting::Collecting(EndedLists& lists) : stream_(lists.stream_) {
  assert(stream_.ended_ == nullptr && stream_.held_);
  stream_.ended_ = &lists;
}

TokenStream::EndedLists::Collecting::~Collecting() { stream_.ended_ = nullptr; }

}  // namespace qnpp
