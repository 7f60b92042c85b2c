#include "lexer/SpellingPool.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "lexer/ByteSet.h"
#include "lexer/PlainToken.h"

namespace qnpp {

Spelling* SpellingPool::make(CppTokenKind kind, std::string_view text) {
  return std::construct_at(
      static_cast<Spelling*>(arena_.allocate(sizeof(Spelling))),
      Spelling{text.data(), static_cast<std::uint32_t>(text.size()), static_cast<std::int16_t>(kind), nullptr});
}

const Spelling* SpellingPool::spell(CppTokenKind kind, std::string_view text) {
  if (isCharacterToken(kind, text)) {
    return characterSpelling(text[0]);
  }
  if (isWord(kind)) {
    if (Name* const known = names_.find(text)) {
      return &known->spelling;
    }
  }
  Spelling* const made = make(kind, arena_.copy(text));
  if (isWord(kind)) {
    unknownNames_.push_back(made);
  }
  return made;
}

const Spelling* SpellingPool::spell(std::string_view text) {
  if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw std::bad_alloc();  // No scanner could read it back.
  }
  if (isWordText(text)) {  // By far the commonest joined text.
    return spell(TK_IDENTIFIER, text);
  }
  const std::string_view kept = arena_.copy(text);
  if (isStringLiteral(kept)) {
    return make(TK_STRING, kept);
  }
  if (mayHoldComment(kept)) {
    return make(Spelling::kOpensComment, kept);
  }
  pieces_.clear();
  lex(kept, pieces_);
  if (pieces_.size() == 1 && pieces_[0]->size == kept.size()) {
    return pieces_[0];
  }
  const std::span<const Spelling*> list = makeList(pieces_.size());
  std::copy(pieces_.begin(), pieces_.end(), list.begin());
  auto* const made = std::construct_at(static_cast<CompoundSpelling*>(arena_.allocate(sizeof(CompoundSpelling))));
  made->data = kept.data();
  made->size = static_cast<std::uint32_t>(kept.size());
  made->kind = Spelling::kCompound;
  made->pieces = list;
  return made;
}

std::span<const Spelling*> SpellingPool::makeList(std::size_t size) {
  // NOLINTNEXTLINE(bugprone-sizeof-expression): pointers are what is kept.
  return {static_cast<const Spelling**>(arena_.allocate(size * sizeof(const Spelling*))), size};
}

const Spelling* SpellingPool::copy(const Spelling& token, Origin origin) {
  if (token.kind == Spelling::kCompound) {
    const auto& pieces = static_cast<const CompoundSpelling&>(token).pieces;
    const std::span<const Spelling*> list = makeList(pieces.size());
    std::transform(pieces.begin(), pieces.end(), list.begin(),
                   [&](const Spelling* piece) { return copy(*piece, origin); });
    auto* const made = std::construct_at(static_cast<CompoundSpelling*>(arena_.allocate(sizeof(CompoundSpelling))),
                                         static_cast<const CompoundSpelling&>(token));
    made->origin = origin;
    made->pieces = list;
    return made;
  }
  Spelling* const made = std::construct_at(static_cast<Spelling*>(arena_.allocate(sizeof(Spelling))), token);
  made->origin = origin;
  if (made->name == nullptr && isWord(CppTokenKind{made->kind})) {
    unknownNames_.push_back(made);
  }
  return made;
}

void SpellingPool::lex(std::string_view text, std::vector<const Spelling*>& tokens) {
  lexer_.lex(text, [this, &tokens](CppTokenKind kind, std::string_view tokenText) {
    tokens.push_back(spell(kind, tokenText));
  });
}

void SpellingPool::release(const Mark& mark) {
  assert(mark <= this->mark());
  while (indexedNames_ > mark.unknownNames) {
    const auto found = namesByText_.find(unknownNames_[--indexedNames_]->text());
    found->second.pop_back();
    if (found->second.empty()) {
      namesByText_.erase(found);
    }
  }
  unknownNames_.resize(mark.unknownNames);
  arena_.release(mark.arena);
}

void SpellingPool::makeKnown(Name& name) {
  for (; indexedNames_ < unknownNames_.size(); ++indexedNames_) {
    Spelling* const unknown = unknownNames_[indexedNames_];
    namesByText_[unknown->text()].push_back(unknown);
  }
  const auto found = namesByText_.find(name.text());
  // Words that come later find the name, so all of these have it or none.
  if (found != namesByText_.end() && found->second.front()->name == nullptr) {
    for (Spelling* const spelling : found->second) {
      spelling->name = &name;
    }
  }
}

}  // namespace qnpp
