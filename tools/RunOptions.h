// What the command line of qnpp says.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qnpp {

/// The options of a run, those that the companions share with the program.
struct RunOptions {
  std::vector<std::string> definitions;
  std::vector<std::string> includeDirectories;
  std::string source;                 ///< Empty: standard input.
  std::string sourceName;             ///< Of `-s`; empty without it.
  std::optional<std::string> result;  ///< Of `-o`; none: standard output.
};

}  // namespace qnpp
