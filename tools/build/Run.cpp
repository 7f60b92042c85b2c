#include "tools/build/Run.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qnpp/preprocessor.h"
#include "tools/Companion.h"
#include "tools/build/WholeFile.h"

namespace qnpp::build {
namespace {

void say(std::string_view text) { static_cast<void>(writeAll(STDERR_FILENO, text)); }

Source standardInput() {
  return Source::ofReader([](char* to, std::size_t size) -> std::ptrdiff_t {
    ssize_t count = 0;
    do {
      count = ::read(STDIN_FILENO, to, size);
    } while (count < 0 && errno == EINTR);
    return count;
  });
}

// The files that a run leaves behind; those that are not wanted are null.
class Outcome {
 public:
  explicit Outcome(const Options& options) {
    const auto make = [this](const std::string& name) {
      files_.push_back(std::make_unique<WholeFile>(name));
      return files_.back().get();
    };
    // The result comes last: if it is new, so is the rest.
    if (options.dependencyFile) {
      dependencyFile = make(*options.dependencyFile);
    }
    if (!options.fileTable.empty()) {
      fileTable = make(options.fileTable);
    }
    if (options.result) {
      result = make(*options.result);
    }
  }

  WholeFile* dependencyFile = nullptr;
  WholeFile* fileTable = nullptr;
  WholeFile* result = nullptr;

  // One of them would take the place of what it is made from, or of another of them.
  void checkAgainst(const std::string& input) const {
    for (const auto& file : files_) {
      if (file->isSameFileAs(input)) {
        throw Failure('\'' + file->name() + "' would be overwritten, but it is read too");
      }
    }
  }
  void checkAgainstEachOther() const {
    for (std::size_t i = 0; i < files_.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        if (files_[i]->isSameFileAs(files_[j]->name())) {
          throw Failure('\'' + files_[i]->name() + "' would be two of the files to be written");
        }
      }
    }
  }

  void commit() const {
    for (const auto& file : files_) {
      file->commit();
    }
  }
  void remove() const {
    for (const auto& file : files_) {
      file->remove();
    }
  }

 private:
  std::vector<std::unique_ptr<WholeFile>> files_;
};

Result preprocess(const Options& options, RenamingSearch& search) {
  Preprocessor preprocessor;
  for (const std::string& definition : options.definitions) {
    preprocessor.define(definition);
  }
  for (const std::string& directory : options.includeDirectories) {
    preprocessor.addIncludeDirectory(directory);
  }
  preprocessor.setLineDirectives(options.lineDirectives != LineDirectiveStyle::None);
  preprocessor.setLineMap(true);
  preprocessor.setDiagnosticSink([&search](const Diagnostic& diagnostic) { say(search.textOf(diagnostic)); });

  std::string name = options.source.empty() ? "stdin" : options.source;
  if (!options.sourceName.empty()) {
    name = options.sourceName;
  }
  if (!options.shownName.empty() || !options.prefixes.isEmpty()) {
    // With `-s` the files are searched next to that name, with `--source-name` next to the source.
    const std::string path = options.sourceName.empty() ? options.source : options.sourceName;
    name = search.addSource(path, options.shownName.empty() ? name : options.shownName);
    preprocessor.setResolver([&search](const IncludeRequest& request) { return search.find(request); });
  }
  return preprocessor.run(options.source.empty() ? standardInput() : Source::ofFile(options.source), name);
}

// What is left to be said about a run that has failed; returns the exit status.
int explain(const Result& result, const RenamingSearch& search) {
  switch (result.status) {
    case Status::DivisionByZero:
      say(search.nameOf(result.endFile) + ':' + std::to_string(result.endLine) +
          ": Division by zero, or out of range, in a condition.\n");
      return kErrorsInSource;
    case Status::Errors:
      return kErrorsInSource;
    default:
      return kFailed;  // The message has said why.
  }
}

std::string textOf(const Options& options, Result& result) {
  if (options.lineDirectives != LineDirectiveStyle::Gnu && options.lineDirectives != LineDirectiveStyle::Glsl) {
    return std::move(result.output);
  }
  std::string text = restyle(result.output, result.lineMap, options.lineDirectives);
  if (options.lineDirectives == LineDirectiveStyle::Glsl && options.fileTable.empty()) {
    if (!text.empty() && text.back() != '\n') {
      text += '\n';
    }
    text += fileTable(result.lineMap, "// ");
  }
  return text;
}

std::string dependencyText(const Options& options, const Result& result, const RenamingSearch& search) {
  DependencyFile file(options.dependencyFormat, *options.dependencyFile + ".links");
  for (const std::string& target : options.spelledTargets) {
    file.addSpelledTarget(target);
  }
  for (const std::string& target : options.targets) {
    file.addTarget(target);
  }
  if (!options.source.empty()) {
    file.addSource(options.source);
  }
  for (const Dependency& dependency : result.dependencies) {
    file.addIncluded(search.pathOf(dependency.path));
  }
  if (options.dependsOnProgram) {
    file.addIncluded(std::filesystem::read_symlink("/proc/self/exe").string());
  }
  return file.text(options.hasEmptyRules);
}

void write(const Options& options, const Outcome& outcome, Result& result, const RenamingSearch& search) {
  std::string dependencies;
  std::string table;
  const std::string text = textOf(options, result);
  if (outcome.dependencyFile != nullptr) {
    dependencies = dependencyText(options, result, search);
    outcome.dependencyFile->prepare(dependencies, false);
  }
  if (outcome.fileTable != nullptr) {
    table = fileTable(result.lineMap, "");
    outcome.fileTable->prepare(table, options.keepsUnchanged);
  }
  if (outcome.result != nullptr) {
    outcome.result->prepare(text, options.keepsUnchanged);
  }
  outcome.commit();
  if (outcome.result == nullptr && !writeAll(STDOUT_FILENO, text)) {
    throw Failure(std::string("cannot write to standard output: ") + std::strerror(errno));
  }
}

}  // namespace

int run(const Options& options) {
  const Outcome outcome(options);
  outcome.checkAgainstEachOther();
  if (!options.source.empty()) {
    outcome.checkAgainst(options.source);
  }
  RenamingSearch search(options.prefixes, options.includeDirectories);
  Result result = preprocess(options, search);
  for (const Dependency& dependency : result.dependencies) {
    outcome.checkAgainst(search.pathOf(dependency.path));
  }
  if (result.status != Status::Clean) {
    outcome.remove();
    if (result.exception != nullptr) {
      std::rethrow_exception(result.exception);
    }
    return explain(result, search);
  }
  try {
    write(options, outcome, result, search);
  } catch (...) {
    outcome.remove();
    throw;
  }
  return kDone;
}

}  // namespace qnpp::build
