// What is legal and probably not meant.
#pragma once

#include <compare>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/explain/Explanation.h"

namespace qnpp {

/// A sort of findings.
struct Rule {
  std::string_view id;
  std::string_view summary;  ///< What it is about, as a sentence.
  std::string_view advice;   ///< What to do.
  bool isOn = true;          ///< Looked for unless something else is said.
};

/// All sorts, by id.
std::span<const Rule> rules();

struct Finding {
  std::string file;
  std::int32_t line = 0;  ///< 0 for the command line.
  const Rule* rule = nullptr;
  std::string text;  ///< A sentence without its full stop.

  auto operator<=>(const Finding&) const = default;
};

/// Looks through the files of a run, each once, with what happened there. The files are read again, but for a source
/// without a path, whose text is `textReadOnce`. Findings come in the order of files, lines and rules.
std::vector<Finding> check(const Explanation& explanation, const std::string& textReadOnce);

/// What is to be said of the rule with this id; there must be one.
Finding findingOf(std::string_view id, std::string file, std::int32_t line, std::string text);

}  // namespace qnpp
