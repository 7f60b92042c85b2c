#include "lexer/CppTokenScanner.h"

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

namespace {

// True for a token that the expansion of a list collects as it is.
bool isPlain(const Spelling& token) {
  return token.isSingleToken() && (token.name == nullptr || (token.name->macro == nullptr && token.kind != TK_DEFINED));
}

}  // namespace

CppTokenScanner::CppTokenScanner(SpellingPool& pool, const LexerContext& context)
    : CppScanner(false), pool_(pool), context_(context) {}

CppTokenScanner::~CppTokenScanner() = default;

void CppTokenScanner::read(TokenList& list) {
  std::swap(list_, list);
  begin_ = at_ = list_.spellings().data();
  end_ = begin_ + list_.size();
  run_ = 0;
}

void CppTokenScanner::read(SpellingRange tokens, HideSet hideSet, NormalizedTokens* surroundings) {
  begin_ = at_ = tokens.data();
  end_ = begin_ + tokens.size();
  commonHideSet_ = std::move(hideSet);
  surroundings_ = surroundings;
}

void CppTokenScanner::reset() {
  list_.clear();
  commonHideSet_ = HideSet();
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
        return pool_.token(kind, reader_->lexer.text());
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
  if (kShortcuts && peek_ == nullptr && pieces_.empty() && reader_ == nullptr) {
    for (; at_ != end_; ++at_) {
      const Spelling& element = **at_;
      if (!element.isPlainText()) {
        break;
      }
      context_.output.write(element.data, element.size);
    }
  }
  return get();
}

const HideSet& CppTokenScanner::hideSet() {
  if (list_.empty()) {
    return commonHideSet_;
  }
  const auto read = static_cast<std::size_t>(at_ - begin_);
  const std::size_t element = read > 0 ? read - 1 : 0;
  const auto& runs = list_.runs();
  while (runs[run_].end <= element) {
    ++run_;
  }
  return runs[run_].hideSet;
}

void CppTokenScanner::takePlain(TokenList& list) {
  if (!kShortcuts || peek_ != nullptr || !pieces_.empty() || reader_ != nullptr) {
    return;
  }
  while (at_ != end_) {
    const Spelling* const* const first = at_;
    const Spelling* const* last = end_;
    ++at_;
    const HideSet& hideSet = this->hideSet();
    if (!list_.empty()) {
      last = begin_ + list_.runs()[run_].end;
    }
    if (!list_.empty() && list_.runs()[run_].isPlain) {
      at_ = last;
    } else {
      for (at_ = first; at_ != last && isPlain(**at_); ++at_) {
      }
    }
    list.append(SpellingRange(first, at_), hideSet, true);
    if (at_ != last) {
      return;
    }
  }
}

SpellingRange CppTokenScanner::rest() const {
  if (!pieces_.empty() || reader_ != nullptr) {
    return {};
  }
  if (peek_ == nullptr) {
    return {at_, end_};
  }
  return at_ != begin_ && at_[-1] == peek_ ? SpellingRange(at_ - 1, end_) : SpellingRange();
}

void CppTokenScanner::take(std::size_t count) {
  at_ += static_cast<std::ptrdiff_t>(count) - (peek_ != nullptr ? 1 : 0);
  peek_ = nullptr;
  handOut(at_[-1]);
}

}  // namespace qnpp
