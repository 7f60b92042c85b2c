#include "tools/explain/RecordedRun.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <system_error>
#include <utility>

#include "engine/CppPreprocessor.h"
#include "engine/Host.h"
#include "lexer/Budget.h"
#include "lexer/InputFile.h"

namespace qnpp {
namespace {

// Hands the messages to the recorder; files are found on disk.
class RecordingHost final : public Host {
 public:
  RecordingHost(Recorder& recorder, TextSink* output) : recorder_(recorder), output_(output) {}

  void write(std::string_view text) override {
    if (output_ != nullptr) {
      output_->write(text);
    }
  }
  void report(const Report& report) override {
    std::string text(report.printed);
    while (text.ends_with('\n')) {
      text.pop_back();
    }
    recorder_.addMessage(std::move(text));
  }
  bool isResolver() const override { return false; }
  std::optional<FoundFile> resolve(const IncludeName& /*name*/, const FilePlace& /*place*/,
                                   std::string_view /*includerPath*/) override {
    return std::nullopt;
  }
  std::uint64_t callCount() const override { return 0; }
  bool isOutput(const FileStamp& /*file*/) const override { return false; }
  void enter(const Inclusion& /*inclusion*/, std::size_t /*depth*/) override {}
  void mark(LineMark /*mark*/, const FilePlace& /*place*/, std::uint64_t /*offset*/) override {}

 private:
  Recorder& recorder_;
  TextSink* output_;
};

// Of several definitions of one name the first holds; without a text it is 1.
void define(std::string_view definition, CppMacroTable& macros) {
  const std::size_t equals = definition.find('=');
  macros.defineFromCommandLine(definition.substr(0, equals),
                               equals == std::string_view::npos ? "1" : definition.substr(equals + 1));
}

bool open(const RunOptions& options, std::string_view textReadOnce, CppPreprocessor& preprocessor) {
  if (!isReadOnce(options.source)) {
    return preprocessor.openSource(std::make_unique<InputFile>(options.source), options.source, options.sourceName);
  }
  auto text = std::make_unique<InputText>();
  text->reset(textReadOnce);
  const std::string name = options.source.empty() ? "stdin" : options.source;
  return preprocessor.openSource(std::move(text), name, options.sourceName);
}

}  // namespace

bool isReadOnce(const std::string& source) {
  std::error_code none;
  const std::filesystem::file_status status = std::filesystem::status(source, none);
  const bool isStream = std::filesystem::is_fifo(status) || std::filesystem::is_character_file(status);
  return source.empty() || (isStream && ::access(source.c_str(), R_OK) == 0);
}

std::string textOfReadOnce(const std::string& source) {
  if (!isReadOnce(source)) {
    return "";
  }
  std::ifstream file(source, std::ios::binary);
  return {std::istreambuf_iterator<char>(source.empty() ? std::cin : file), {}};
}

std::optional<Explanation> record(const RunOptions& options, std::string_view textReadOnce,
                                  const RecordOptions& recordOptions, TextSink* output) {
  Recorder recorder(isReadOnce(options.source) ? "" : options.source, recordOptions.range, recordOptions.mostSteps);
  RecordingHost host(recorder, output);
  Budget budget;
  budget.setLimits(recordOptions.mostWork, {});
  const auto preprocessor = std::make_unique<CppPreprocessor>(host, budget);
  preprocessor->setObserver(recorder);
  for (const std::string& definition : options.definitions) {
    define(definition, preprocessor->macroTable());
  }
  preprocessor->setIncludeDirectories(options.includeDirectories);
  if (!open(options, textReadOnce, *preprocessor)) {
    return std::nullopt;
  }
  bool hasDividedByZero = false;
  try {
    preprocessor->run();
  } catch (const FatalLexerError& error) {
    recorder.addMessage(error.what());
  } catch (const DivisionByZero& error) {
    hasDividedByZero = true;
    recorder.addMessage(std::string("the run ends here: ") + error.what());
  } catch (const RunEnded&) {
    recorder.addMessage("the run ends here: it takes too much");
  }
  preprocessor->finishEarly();
  Explanation told = recorder.finish();
  told.hasDividedByZero = hasDividedByZero;
  return told;
}

}  // namespace qnpp
