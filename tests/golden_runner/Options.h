// The runner's command line.
#pragma once

#include <filesystem>
#include <string>

#include "CaseRun.h"

namespace qnpp::golden {

// The runner's own command line. GoogleTest has taken its `--gtest_...` words out of it before.
struct Options {
  RunSettings settings;
  std::filesystem::path cases;  // the folder of the areas
  std::string area;             // run the cases of this area only; empty: of all
  std::string filter;           // run the cases whose "area/name" contains this text only
  bool update = false;
  bool help = false;
};

// Throws std::runtime_error with a message for the user at a word that it does not know.
Options parseOptions(int argc, const char* const* argv);

// The help text, with both ways of choosing cases and the warning that belongs to --update.
extern const char* const kHelpText;

}  // namespace qnpp::golden
