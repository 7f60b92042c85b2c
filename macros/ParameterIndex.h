// The parameters of a definition by their names.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "lexer/NameTable.h"
#include "lexer/ParameterNames.h"

namespace qnpp {

/// Finds parameters while a replacement list is made. Their names are kept apart from those of the NameTable: no list
/// refers to them once it is made, and there may be very many. One object for many definitions: it keeps its memory.
class ParameterIndex {
 public:
  /// Takes other parameters, which are borrowed. Hashes are those of `names`, drawn from a secret for each run.
  void reset(const ParameterNames& parameters, const NameTable& names) {
    list_ = parameters.list();
    begins_.clear();
    slots_.assign(std::bit_ceil(parameters.size() + parameters.size() / 2 + 1), Slot{});
    parameters.forEach([this, &names](std::string_view name) {
      const std::uint32_t hash = names.hashOf(name);
      begins_.push_back(static_cast<std::size_t>(name.data() - list_.data()));
      slotOf(name, hash) = {hash, static_cast<std::uint32_t>(begins_.size())};  // Of equal names the last one counts.
    });
  }

  /// The place of the parameter `name`, from 1, or 0.
  std::uint32_t find(std::string_view name, std::uint32_t hash) {
    return begins_.empty() ? 0 : slotOf(name, hash).place;
  }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t place = 0;  // 0 for none.
  };

  // The slot of the name, or the empty one where it would have to be.
  Slot& slotOf(std::string_view name, std::uint32_t hash) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].place != 0 && (slots_[at].hash != hash || !isAt(begins_[slots_[at].place - 1], name))) {
      at = (at + 1) & mask;
    }
    return slots_[at];
  }

  // Whether the name that begins there is `name`.
  bool isAt(std::size_t begin, std::string_view name) const {
    const std::string_view rest = list_.substr(begin);
    return rest.size() > name.size() && rest[name.size()] == ',' && rest.starts_with(name);
  }

  std::string_view list_;
  std::vector<std::size_t> begins_;  // Of each name in the list.
  std::vector<Slot> slots_;
};

}  // namespace qnpp
