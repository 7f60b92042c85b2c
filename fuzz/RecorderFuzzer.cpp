// The record of a run, from which qnpp-explain tells what happened.
//
// What must hold: no fault; the output put together from the record is that of the run; what is recorded of some lines
// is a part of that; and words can be found for all of it.

#include <limits>
#include <string>

#include "FuzzSupport.h"
#include "tools/explain/Reasons.h"
#include "tools/explain/Recorder.h"

namespace {

using qnpp::fuzz::require;

constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();

struct Recorded {
  qnpp::fuzz::RunResult result;
  qnpp::Explanation told;
};

Recorded record(const std::string& source, qnpp::LineRange range, std::size_t mostSteps) {
  qnpp::Recorder recorder("", range, mostSteps);
  Recorded recorded;
  const auto run = [&](std::istream& input, std::ostream& output, std::ostream& messages) {
    qnpp::CppPreprocessor preprocessor(messages, input);
    preprocessor.setObserver(recorder);
    const bool hasError = qnpp::preprocess(preprocessor, output);
    recorded.told = recorder.finish();
    return hasError;
  };
  recorded.result = qnpp::fuzz::runWithLimits(source, qnpp::fuzz::kWhole, run);
  return recorded;
}

// Visits everything below the lines as the views do, but for the depth that they stop at.
void putIntoWords(const qnpp::Explanation& told) {
  const qnpp::Reasons reasons(told);
  for (std::size_t at = 1; at < told.lines.size(); ++at) {
    for (const qnpp::Reasons::Item& item : reasons.itemsOf(told.lines[at])) {
      static_cast<void>(reasons.involves(item, "f"));
    }
    if (told.lines[at].isSkipped && !told.lines[at].isDirective) {
      require(!reasons.whySkipped(told.directives[told.lines[at].directive]).empty(), "a line is skipped for a reason");
    }
  }
  for (std::size_t at = 1; at < told.expansions.size(); ++at) {
    const qnpp::Expansion& expansion = told.expansions[at];
    require(expansion.resultEnd <= told.contexts[expansion.context].result.size(), "a result is there");
    for (std::size_t index = 0; index < expansion.arguments.size(); ++index) {
      static_cast<void>(reasons.whyUnexpanded(expansion, index));
    }
  }
  for (const qnpp::Directive& directive : told.directives) {
    static_cast<void>(reasons.outcomeOf(directive));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string source(qnpp::fuzz::textOf(data, size));
  // No file of this machine is to be read.
  for (std::size_t at = source.find("include"); at != std::string::npos; at = source.find("include", at)) {
    source[at] = 'I';
  }
  qnpp::fuzz::show(source);
  const Recorded whole = record(source, {}, kMost);
  if (!whole.result.isComplete || whole.result.dividesByZero) {
    return 0;  // It has not been told to the end.
  }
  require(qnpp::textOf(whole.told.output()) == whole.result.output, "the record holds the output");
  putIntoWords(whole.told);
  for (const Recorded& part : {record(source, {2, 3}, kMost), record(source, {}, 20)}) {
    if (part.result.isComplete && !part.told.contexts.empty()) {
      putIntoWords(part.told);
    }
  }
  return 0;
}
