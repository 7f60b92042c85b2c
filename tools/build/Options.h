// The command line of qnpp-build: that of qnpp, and what a build needs beyond it.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/RunOptions.h"
#include "tools/build/DependencyFile.h"
#include "tools/build/FileNames.h"
#include "tools/build/LineDirectives.h"

namespace qnpp::build {

struct Options : RunOptions {
  // ---- Of the dependency file ----
  std::optional<std::string> dependencyFile;
  DependencyFormat dependencyFormat = DependencyFormat::Make;
  std::vector<std::string> targets;         ///< By their names, `-MQ`.
  std::vector<std::string> spelledTargets;  ///< As they are to stand there, `-MT`.
  bool hasEmptyRules = false;
  bool dependsOnProgram = false;

  // ---- Of the result ----
  bool keepsUnchanged = false;
  LineDirectiveStyle lineDirectives = LineDirectiveStyle::Hash;
  std::string fileTable;  ///< The file for the table of the style Glsl; empty: a comment in the result.
  std::string shownName;  ///< Stands for the source, but files are searched as if it did not; empty: none.
  PrefixMap prefixes;
};

/// Reads the command line. Nothing is left to do when the answer is empty: help or version went to `output`, or what
/// is wrong went to `messages`, and `status` is that of the program. Throws Failure for what is wrong with the words
/// that qnpp does not have.
std::optional<Options> readCommandLine(int argc, const char* const* argv, std::ostream& output, std::ostream& messages,
                                       int& status);

}  // namespace qnpp::build
