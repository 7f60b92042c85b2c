// The texts of the sources, as people wrote them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/explain/Explanation.h"

namespace qnpp {

/// Reads what is to be shown from the files once more.
class Sources {
 public:
  /// Both are borrowed. `textReadOnce` is the text of a source without a path.
  Sources(const Explanation& explanation, const std::string& textReadOnce)
      : explanation_(explanation), textReadOnce_(textReadOnce) {}

  struct SourceLine {
    std::uint64_t begin = 0;  ///< Offset in the file.
    std::string text;         ///< Without the line end.
  };

  /// Lines of a file, from `first` to `last` as far as there are so many.
  std::vector<SourceLine> lines(Id file, std::int32_t first, std::int32_t last) const;

  /// A use of a macro as it was written, or put together where it does not stand in a file.
  std::string written(const Expansion& expansion) const;

 private:
  std::string slice(Id file, std::uint64_t begin, std::uint64_t end) const;

  // The line of a file that was reached, and its offset.
  struct Reached {
    Id file = 0;
    std::int32_t line = 1;
    std::uint64_t offset = 0;
  };

  const Explanation& explanation_;
  const std::string& textReadOnce_;
  mutable Reached reached_;
};

/// The text with each run of white space as one blank.
std::string onOneLine(std::string_view text);

}  // namespace qnpp
