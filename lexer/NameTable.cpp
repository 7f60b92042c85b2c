#include "lexer/NameTable.h"

#include <array>
#include <utility>

namespace qnpp {
namespace {

constexpr std::array<std::pair<std::string_view, CppTokenKind>, 15> kKeywords = {{
    {"if", TK_IF},
    {"ifdef", TK_IFDEF},
    {"ifndef", TK_IFNDEF},
    {"else", TK_ELSE},
    {"elif", TK_ELIF},
    {"endif", TK_ENDIF},
    {"include", TK_INCLUDE},
    {"define", TK_DEFINE},
    {"undef", TK_UNDEF},
    {"line", TK_LINE},
    {"error", TK_ERROR},
    {"pragma", TK_PRAGMA},
    {"ident", TK_IDENT},
    {"defined", TK_DEFINED},
    {"_Pragma", TK_PRAGMA_OP},
}};

constexpr std::size_t kInitialSlots = 256;

}  // namespace

NameTable::NameTable() : slots_(kInitialSlots), mask_(kInitialSlots - 1) {
  for (const auto& [text, kind] : kKeywords) {
    intern(text)->spelling.kind = static_cast<std::int16_t>(kind);
  }
}

Name* NameTable::intern(std::string_view text) {
  if (Name* const known = find(text)) {
    return known;
  }
  if ((names_.size() + 1) * 2 > slots_.size()) {
    grow();
  }
  const std::string_view stored = texts_.copy(text);
  Name& name = names_.emplace_back();
  name.spelling = Spelling{stored.data(), static_cast<std::uint32_t>(stored.size()), TK_IDENTIFIER, &name};
  name.id = static_cast<std::uint32_t>(names_.size() - 1);
  insertSlot({hashOf(stored), &name});
  return &name;
}

void NameTable::insertSlot(const Slot& slot) {
  std::size_t at = slot.hash & mask_;
  while (slots_[at].name != nullptr) {
    at = (at + 1) & mask_;
  }
  slots_[at] = slot;
}

void NameTable::grow() {
  const std::vector<Slot> slots = std::exchange(slots_, std::vector<Slot>(slots_.size() * 2));
  mask_ = slots_.size() - 1;
  for (const Slot& slot : slots) {
    if (slot.name != nullptr) {
      insertSlot(slot);
    }
  }
}

}  // namespace qnpp
