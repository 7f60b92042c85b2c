// A run of the program that is recorded.
#pragma once

#include <cstddef>
#include <istream>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "tools/explain/Explanation.h"
#include "tools/explain/Recorder.h"

namespace qnpp {

/// What the command line of qnpp says.
struct RunOptions {
  std::string source;  ///< Empty for standard input.
  std::vector<std::string> includeDirectories;
  std::vector<std::string> definitions;
  std::string sourceName;
  std::string output;
};

/// Runs the engine as the program would, writes nothing, and tells what happened. None if the source cannot be opened.
std::optional<Explanation> record(const RunOptions& options, std::istream& standardInput, LineRange range = {},
                                  std::size_t mostSteps = std::numeric_limits<std::size_t>::max());

}  // namespace qnpp
