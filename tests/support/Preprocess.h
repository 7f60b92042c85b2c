// Whole runs of the engine, without a process.
#pragma once

#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "engine/CppPreprocessor.h"

namespace qnpp {

/// What came of a run.
struct Preprocessed {
  std::string output;
  std::string messages;
  bool hasError = false;

  bool operator==(const Preprocessed&) const = default;
};

struct PreprocessOptions {
  std::string fileName = "";       ///< Empty: standard input.
  std::string sourceName = "a.c";  ///< Of the source in messages and line directives.
  std::vector<std::pair<std::string, std::string>> definitions = {};  ///< Like those of the command line.
  std::vector<std::string> includeDirectories = {};
};

/// The first line of the output of a source named "a.c".
constexpr const char* kFirstLine = "#line 1 \"a.c\"\n";

/// Does with a preprocessor what is to be done before the source is opened.
inline void prepare(CppPreprocessor& preprocessor, std::ostream& output, const PreprocessOptions& options) {
  for (const auto& [name, text] : options.definitions) {
    preprocessor.macroTable().defineFromCommandLine(name, text);
  }
  for (const std::string& directory : options.includeDirectories) {
    preprocessor.addIncludeDirectory(directory);
  }
  preprocessor.setOutput(output);
}

/// Prepares a preprocessor, opens its source and runs it. Returns whether an error was reported.
inline bool preprocess(CppPreprocessor& preprocessor, std::ostream& output, const PreprocessOptions& options = {}) {
  prepare(preprocessor, output, options);
  preprocessor.openSource(options.fileName, options.sourceName);
  return preprocessor.run();
}

/// A preprocessor with its streams, all in memory.
struct EngineInMemory {
  explicit EngineInMemory(const std::string& standardInput) : input(standardInput) { preprocessor.setOutput(output); }

  std::istringstream input;
  std::ostringstream output;
  std::ostringstream messages;
  CppPreprocessor preprocessor{messages, input};
};

/// Preprocesses `source` as standard input, or a file if one is named.
inline Preprocessed preprocess(const std::string& source, const PreprocessOptions& options = {}) {
  EngineInMemory engine(source);
  const bool hasError = preprocess(engine.preprocessor, engine.output, options);
  return {engine.output.str(), engine.messages.str(), hasError};
}

}  // namespace qnpp
