#include "tools/explain/RecordedRun.h"

#include <memory>
#include <ostream>
#include <sstream>
#include <utility>

#include "driver/Driver.h"
#include "engine/CppPreprocessor.h"

namespace qnpp {
namespace {

// The messages of a run, which the recorder gets line by line.
class MessageBuffer final : public std::stringbuf {
 public:
  explicit MessageBuffer(Recorder& recorder) : recorder_(recorder) {}

 protected:
  int sync() override {
    std::string text = str();
    str("");
    while (text.ends_with('\n')) {
      text.pop_back();
    }
    if (!text.empty()) {
      recorder_.addMessage(std::move(text));
    }
    return 0;
  }

 private:
  Recorder& recorder_;
};

std::vector<std::string> commandLineOf(const RunOptions& options) {
  std::vector<std::string> words = {"qnpp"};
  for (const std::string& directory : options.includeDirectories) {
    // An empty name can only be a word of its own.
    words.push_back(directory.empty() ? "-I" : "-I" + directory);
    words.insert(words.end(), directory.empty() ? 1 : 0, directory);
  }
  for (const std::string& definition : options.definitions) {
    words.push_back("-D" + definition);
  }
  if (!options.sourceName.empty()) {
    words.insert(words.end(), {"-s", options.sourceName});
  }
  if (!options.source.empty()) {
    words.push_back(options.source);
  }
  return words;
}

}  // namespace

std::optional<Explanation> record(const RunOptions& options, std::istream& standardInput, LineRange range,
                                  std::size_t mostSteps) {
  Recorder recorder(options.source, range, mostSteps);
  MessageBuffer messageBuffer(recorder);
  std::ostream messages(&messageBuffer);
  std::ostream discarded(nullptr);
  Driver driver(discarded, discarded);
  const auto preprocessor = std::make_unique<CppPreprocessor>(messages, standardInput);
  preprocessor->setObserver(recorder);
  const std::vector<std::string> words = commandLineOf(options);
  std::vector<const char*> argv;
  for (const std::string& word : words) {
    argv.push_back(word.c_str());
  }
  if (!driver.prepare(static_cast<int>(argv.size()), argv.data(), *preprocessor)) {
    return std::nullopt;
  }
  try {
    preprocessor->run();
  } catch (const FatalLexerError& error) {
    recorder.addMessage(error.what());
  } catch (const DivisionByZero& error) {
    recorder.addMessage(std::string("the run ends here: ") + error.what());
  }
  return recorder.finish();
}

}  // namespace qnpp
