#include "lexer/NameTable.h"

#ifndef _WIN32
#include <sys/random.h>
#endif

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <span>
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

#ifdef _WIN32
bool drawFromSystem(NameTable::Secret& secret) {
  const auto draw = [](std::uint64_t& word) {
    unsigned high = 0;
    unsigned low = 0;
    const bool isDrawn = ::rand_s(&high) == 0 && ::rand_s(&low) == 0;
    word = std::uint64_t{high} << 32 | low;
    return isDrawn;
  };
  return draw(secret.first) && draw(secret.second) && draw(secret.ofPriorities);
}
#else
bool drawFromSystem(NameTable::Secret& secret) {
  return ::getrandom(&secret, sizeof secret, GRND_NONBLOCK) == ssize_t{sizeof secret};
}
#endif

}  // namespace

NameTable::Secret NameTable::drawSecret() {
  Secret secret{};
  if (!drawFromSystem(secret)) {
    // An old system, or one that has only just started: where the process lies in memory and the time will have to do.
    const auto time = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    const auto place = std::uint64_t{reinterpret_cast<std::uintptr_t>(&secret)};
    secret.first = foldedProduct(time ^ 0x9E3779B97F4A7C15U, place ^ 0xD1B54A32D192ED03U);
    secret.second = foldedProduct(secret.first ^ place, time ^ 0x8CB92BA72F3D8DD7U);
    secret.ofPriorities = foldedProduct(secret.first, secret.second);
  }
  return secret;
}

NameTable::NameTable(const Secret& secret) : secret_(secret) {
  static_cast<void>(makeSlots(kInitialSlots));
  for (const auto& [text, kind] : kKeywords) {
    intern(text)->spelling.kind = static_cast<std::int16_t>(kind);
  }
  noteMacro(*intern("_Pragma"));
}

Name* NameTable::intern(std::string_view text, std::uint32_t hash) {
  Slot* slot = &slotOf(text, hash);
  if (slot->number != 0) {
    return &nameOf(slot->number - 1);
  }
  if ((size_ + 1) * 2 > mask_ + 1) {
    grow();
    slot = &slotOf(text, hash);
  }
  Name& name = addName(text);
  *slot = {hash, name.id + 1};
  return &name;
}

Name& NameTable::addName(std::string_view text) {
  if (size_ % kNamesInRow == 0) {
    names_.push_back(static_cast<Name*>(arena_.allocate(kNamesInRow * sizeof(Name))));
  }
  const std::string_view stored = arena_.copy(text);
  Name& name = *std::construct_at(&nameOf(size_));
  name.spelling = Spelling{stored.data(), static_cast<std::uint32_t>(stored.size()), TK_IDENTIFIER, &name};
  name.id = static_cast<std::uint32_t>(size_++);
  name.priority = drawPriority();
  return name;
}

std::size_t NameTable::longestRow() const {
  std::size_t longest = 0;
  std::size_t current = 0;
  // Twice around, since a row may go on behind the last slot with the first. Half of the slots are free at least.
  for (std::size_t at = 0; at < 2 * (mask_ + 1); ++at) {
    current = slots_[at & mask_].number == 0 ? 0 : current + 1;
    longest = std::max(longest, current);
  }
  return longest;
}

// The generator known as SplitMix64.
std::uint32_t NameTable::drawPriority() {
  std::uint64_t bits = secret_.ofPriorities += 0x9E3779B97F4A7C15U;
  bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9U;
  bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBU;
  return static_cast<std::uint32_t>((bits ^ (bits >> 31)) >> 32);
}

void NameTable::noteMacro(Name& name) {
  if (name.isInFilter || name.spelling.size == 0) {
    return;
  }
  name.isInFilter = true;
  longestMacroName_ = std::max(longestMacroName_, name.text().size());
  if (!macroNames_.add(name.text())) {
    macroNames_.beginLarger();
    for (std::size_t id = 0; id < size_; ++id) {
      const Name& other = nameOf(id);
      if (other.isInFilter) {
        static_cast<void>(macroNames_.add(other.text()));
      }
    }
  }
}

// Returns what the slots lay in before.
LargeBytes NameTable::makeSlots(std::size_t count) {
  LargeBytes bytes = makeLargeBytes(count * sizeof(Slot));
  slots_ = reinterpret_cast<Slot*>(bytes.get());
  std::uninitialized_fill_n(slots_, count, Slot{});
  mask_ = count - 1;
  return std::exchange(slotBytes_, std::move(bytes));
}

void NameTable::grow() {
  const std::span slots(slots_, mask_ + 1);
  const LargeBytes bytes = makeSlots(slots.size() * 2);
  for (const Slot& slot : slots) {
    if (slot.number != 0) {
      std::size_t at = slot.hash & mask_;
      while (slots_[at].number != 0) {
        at = (at + 1) & mask_;
      }
      slots_[at] = slot;
    }
  }
}

}  // namespace qnpp
