// The options that the companions share with the program.
#pragma once

#include <CLI/CLI.hpp>

#include "tools/explain/RecordedRun.h"

namespace qnpp {

/// Lets `app` take the options of qnpp. `-o` does nothing here, so that a command line of qnpp can be used as it is.
inline void addRunOptions(CLI::App& app, RunOptions& options) {
  const auto addList = [&app](const char* name, std::vector<std::string>& list, const char* what, const char* type) {
    app.add_option(name, list, what)->expected(1)->take_all()->allow_extra_args(false)->type_name(type);
  };
  addList("-I", options.includeDirectories, "Add a directory for searching include files", "DIR");
  addList("-D", options.definitions, "Define a macro", "NAME[=TEXT]");
  app.add_option("-s", options.sourceName, "Source name in places and messages")->type_name("NAME");
  app.add_option("-o", options.output, "Output of qnpp; nothing is written there")->type_name("NAME");
}

}  // namespace qnpp
