// The stack of token sources.
#include "engine/Sources.h"

#include <algorithm>
#include <utility>

namespace qnpp {

CppTokenKind CppPreprocessor::peekToken() {
  for (;;) {
    const CppTokenKind kind = isCurrentFile() ? fileSource().peek() : listSource().peek();
    if (kind != TK_END || !hasEnclosingSource()) {
      return kind;
    }
    popSource();
  }
}

CppTokenKind CppPreprocessor::nextToken() {
  for (;;) {
    const CppTokenKind kind = isCurrentFile() ? fileSource().get() : listSource().get();
    if (kind != TK_END || !hasEnclosingSource()) {
      return kind;
    }
    popSource();
  }
}

Name* CppPreprocessor::currentName() {
  if (!isCurrentFile()) {
    return listSource().spelling()->name;
  }
  Name* const found = fileSource().name();
  return found != nullptr ? found : names_.find(currentText());
}

const Spelling* CppPreprocessor::currentSpelling(CppTokenKind kind) {
  return isCurrentFile() ? pool_.token(kind, currentText()) : listSource().spelling();
}

void CppPreprocessor::skipBlanks() {
  while (isBlank(peekToken())) {
    nextToken();
  }
}

bool CppPreprocessor::skipWhiteSpace() {
  bool skipped = isCurrentFile() && fileSource().passBlanks();
  while (isWhiteSpace(peekToken())) {
    nextToken();
    skipped = true;
  }
  return skipped;
}

void CppPreprocessor::discardLine() {
  for (;;) {
    if (isCurrentFile()) {
      if (fileSource().skipLine()) {
        return;
      }
    } else {
      CppTokenKind kind = current_->get();
      while (kind != TK_NEWLINE && kind != TK_END) {
        kind = current_->get();
      }
      if (kind == TK_NEWLINE) {
        return;
      }
    }
    if (!hasEnclosingSource()) {
      return;
    }
    popSource();
  }
}

void CppPreprocessor::pushFile(std::unique_ptr<CppFileScanner> file) {
  if (currentFile_ != nullptr) {
    fileStack_.push_back(currentFile_);
  }
  // Current only once it is owned: the message about memory running out here names the current file.
  CppFileScanner* const entered = file.get();
  sources_.push_back({std::move(file), pool_.mark()});
  currentFile_ = entered;
  current_ = entered;
}

void CppPreprocessor::pushTokens(TokenList& tokens) {
  SpellingPool::Mark mark = markForSource();
  dropExhaustedLists(mark);
  std::unique_ptr<CppTokenScanner> scanner = spareScanner();
  scanner->read(tokens);
  pushScanner(std::move(scanner), mark);
}

void CppPreprocessor::pushTokens(SpellingRange tokens, const HideSet& hideSet) {
  SpellingPool::Mark mark = markForSource();
  dropExhaustedLists(mark);
  std::unique_ptr<CppTokenScanner> scanner = spareScanner();
  scanner->read(tokens, hideSet, nullptr);
  pushScanner(std::move(scanner), mark);
}

std::size_t CppPreprocessor::pushClosed(TokenList& tokens) {
  std::unique_ptr<CppTokenScanner> scanner = spareScanner();
  scanner->read(tokens);
  pushScanner(std::move(scanner), markForSource());
  return closeSources();
}

std::size_t CppPreprocessor::pushClosed(SpellingRange tokens, const HideSet& hideSet, NormalizedTokens& surroundings) {
  std::unique_ptr<CppTokenScanner> scanner = spareScanner();
  scanner->read(tokens, hideSet, &surroundings);
  pushScanner(std::move(scanner), markForSource());
  return closeSources();
}

std::size_t CppPreprocessor::closeSources() { return std::exchange(floor_, sources_.size() - 1); }

void CppPreprocessor::openSources(std::size_t floor) {
  removeSource();
  floor_ = floor;
}

// A list that has been read to its end is dropped as soon as another is pushed on it, not when that one has ended:
// nobody can tell, and a long chain of macros, each the last word of the one before, stays flat. Not so below a closed
// source: the tokens of an argument that is being expanded may stand in such a list.
void CppPreprocessor::dropExhaustedLists(SpellingPool::Mark& mark) {
  while (hasEnclosingSource() && !isCurrentFile() && listSource().isExhausted()) {
    mark = std::min(mark, sources_.back().mark);
    removeSource();
  }
}

void CppPreprocessor::pushScanner(std::unique_ptr<CppTokenScanner> scanner, const SpellingPool::Mark& mark) {
  CppTokenScanner* const entered = scanner.get();
  sources_.push_back({std::move(scanner), mark});
  current_ = entered;
  ++listCount_;
}

std::unique_ptr<CppTokenScanner> CppPreprocessor::spareScanner() {
  if (spareScanners_.empty()) {
    return std::make_unique<CppTokenScanner>(pool_, lexerContext_);
  }
  std::unique_ptr<CppTokenScanner> scanner = std::move(spareScanners_.back());
  spareScanners_.pop_back();
  return scanner;
}

void CppPreprocessor::popSource() {
  if (isCurrentFile()) {
    checkEndOfFile();
    sources_.pop_back();
    current_ = sources_.back().scanner.get();
    currentFile_ = fileStack_.back();
    fileStack_.pop_back();
    writeLineDirective();
    return;
  }
  const SpellingPool::Mark mark = sources_.back().mark;
  removeSource();
  if (inFlight_ == 0) {
    pool_.release(mark);
    dropRetiredMacros();
  } else {
    inFlightMark_ = std::min(inFlightMark_, mark);
  }
}

void CppPreprocessor::removeSource() {
  std::unique_ptr<CppTokenScanner> list(static_cast<CppTokenScanner*>(sources_.back().scanner.release()));
  sources_.pop_back();
  current_ = sources_.back().scanner.get();
  --listCount_;
  if (isCollecting_) {
    graveyard_.push_back(std::move(list));
    return;
  }
  recycle(std::move(list));
}

void CppPreprocessor::recycle(std::unique_ptr<CppTokenScanner> scanner) {
  if (spareScanners_.size() < kMostSpares) {
    scanner->reset();
    spareScanners_.push_back(std::move(scanner));
  }
}

void CppPreprocessor::emptyGraveyard(std::size_t size) {
  while (graveyard_.size() > size) {
    recycle(std::move(graveyard_.back()));
    graveyard_.pop_back();
  }
}

}  // namespace qnpp
