// Whole runs of the engine, without a process.
#pragma once

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
};

struct PreprocessOptions {
  std::string sourceName = "a.c";  ///< Of the source in messages and line directives.
  std::vector<std::pair<std::string, std::string>> definitions = {};  ///< Like those of the command line.
  std::vector<std::string> includeDirectories = {};
};

/// The first line of the output of a source named "a.c".
constexpr const char* kFirstLine = "#line 1 \"a.c\"\n";

/// Preprocesses `source` as standard input.
inline Preprocessed preprocess(const std::string& source, const PreprocessOptions& options = {}) {
  std::istringstream input(source);
  std::ostringstream output;
  std::ostringstream messages;
  CppPreprocessor preprocessor(messages, input);
  for (const auto& [name, text] : options.definitions) {
    preprocessor.macroTable().defineFromCommandLine(name, text);
  }
  for (const std::string& directory : options.includeDirectories) {
    preprocessor.addIncludeDirectory(directory);
  }
  preprocessor.setOutput(output);
  preprocessor.openSource("", options.sourceName);
  const bool hasError = preprocessor.run();
  return {output.str(), messages.str(), hasError};
}

/// `text` as many times as told, one after the other.
inline std::string repeat(std::size_t times, const std::string& text) {
  std::string result;
  result.reserve(times * text.size());
  for (std::size_t count = 0; count < times; ++count) {
    result += text;
  }
  return result;
}

}  // namespace qnpp
