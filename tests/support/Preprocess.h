// Whole runs, without a process.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qnpp/preprocessor.h"

namespace qnpp {

/// What came of a run.
struct Preprocessed {
  std::string output;
  std::string messages;
  bool hasError = false;
  Status status = Status::Clean;

  bool operator==(const Preprocessed&) const = default;
};

struct PreprocessOptions {
  std::string fileName = "";       ///< Empty: the text is the source.
  std::string sourceName = "a.c";  ///< Of the source in messages and line directives.
  std::vector<std::pair<std::string, std::string>> definitions = {};  ///< Like those of the command line.
  std::vector<std::string> includeDirectories = {};
};

/// The first line of the output of a source named "a.c".
constexpr const char* kFirstLine = "#line 1 \"a.c\"\n";

/// Preprocesses `source`, or a file if one is named.
inline Preprocessed preprocess(std::string_view source, const PreprocessOptions& options = {}) {
  Preprocessor preprocessor;
  for (const auto& [name, text] : options.definitions) {
    preprocessor.define(name + '=' + text);
  }
  for (const std::string& directory : options.includeDirectories) {
    preprocessor.addIncludeDirectory(directory);
  }
  Preprocessed preprocessed;
  preprocessor.setDiagnosticSink(
      [&preprocessed](const Diagnostic& diagnostic) { preprocessed.messages.append(diagnostic.text); });
  Result result = preprocessor.run(
      options.fileName.empty() ? Source::borrowing(source) : Source::ofFile(options.fileName), options.sourceName);
  preprocessed.output = std::move(result.output);
  preprocessed.hasError = result.hasErrors;
  preprocessed.status = result.status;
  return preprocessed;
}

}  // namespace qnpp
