// A run of the engine that is recorded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "lexer/OutputBuffer.h"
#include "tools/RunOptions.h"
#include "tools/explain/Explanation.h"
#include "tools/explain/Recorder.h"

namespace qnpp {

/// How much is recorded.
struct RecordOptions {
  LineRange range = {};
  std::size_t mostSteps = std::numeric_limits<std::size_t>::max();
  std::uint64_t mostWork = 0;  ///< After so much, see Budget, the run is ended; 0 for never.
};

/// Whether a source can be read only once: standard input, which has no name, or a pipe.
bool isReadOnce(const std::string& source);
/// The text of a source that can be read only once; empty for any other.
std::string textOfReadOnce(const std::string& source);

/// Runs the engine as the program would, and tells what happened. What the program would write goes to `output`, if
/// there is one. None if the source cannot be opened. `textReadOnce` is the text of a source that
/// can be read only once.
std::optional<Explanation> record(const RunOptions& options, std::string_view textReadOnce,
                                  const RecordOptions& recordOptions = {}, TextSink* output = nullptr);

}  // namespace qnpp
