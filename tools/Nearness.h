// Words that may be meant for one another.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace qnpp {

/// How many letters have to be changed, added, left out or swapped with their neighbour to make `b` of `a`; `most` + 1
/// for more than `most`.
inline std::size_t editDistance(std::string_view a, std::string_view b, std::size_t most) {
  if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) > most) {
    return most + 1;
  }
  std::vector<std::size_t> twoBefore(b.size() + 1);
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) {
    row[j] = j;
  }
  for (std::size_t i = 1; i <= a.size(); ++i) {
    twoBefore.swap(before);
    before.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool isSame = a[i - 1] == b[j - 1];
      row[j] = std::min({before[j] + 1, row[j - 1] + 1, before[j - 1] + (isSame ? 0U : 1U)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], twoBefore[j - 2] + 1);
      }
    }
  }
  return std::min(row[b.size()], most + 1);
}

/// How many letters a word may be off and still be taken for another.
inline std::size_t mostOff(std::string_view word) { return word.size() < 4 ? 0 : word.size() < 8 ? 1 : 2; }

}  // namespace qnpp
