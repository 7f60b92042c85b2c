#include <algorithm>
#include <cstdint>

#include "lexer/LineNumber.h"
#include "qnpp/preprocessor.h"

namespace qnpp {

Place LineMap::find(std::uint64_t outputLine) const noexcept {
  const auto behind = std::upper_bound(entries.begin(), entries.end(), outputLine,
                                       [](std::uint64_t line, const Entry& entry) { return line < entry.outputLine; });
  if (behind == entries.begin()) {
    return {"", 0};
  }
  const Entry& entry = behind[-1];
  return {files[entry.file], addLines(entry.line, static_cast<std::int32_t>(outputLine - entry.outputLine))};
}

}  // namespace qnpp
