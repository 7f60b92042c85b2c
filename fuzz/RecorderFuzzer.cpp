// The record of a run, from which qnpp-explain tells what happened.
//
// What must hold: no fault; the output put together from the record is that of the run; what is recorded of some lines
// is a part of that; and words can be found for all of it.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "FuzzSupport.h"
#include "tools/explain/Reasons.h"
#include "tools/explain/RecordedRun.h"

// What FuzzSupport.cpp does beside this wants the library, with the other engine.
void qnpp::fuzz::require(bool holds, std::string_view rule) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", std::string(rule).c_str());
    std::abort();
  }
}

namespace {

using qnpp::fuzz::require;

// Enough for any input to mean something, and little enough for one that stands for an expansion without end.
constexpr std::uint64_t kMostWork = 100000;

class Output final : public qnpp::TextSink {
 public:
  void write(std::string_view text) override { text_.append(text); }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

qnpp::Explanation record(const std::string& source, qnpp::RecordOptions options, qnpp::TextSink* output = nullptr) {
  options.mostWork = kMostWork;
  return *qnpp::record(qnpp::RunOptions(), source, options, output);
}

// Visits everything below the lines as the views do, but for the depth that they stop at.
void putIntoWords(const qnpp::Explanation& told, const std::string& source) {
  const qnpp::Sources sources(told, source);
  const qnpp::Reasons reasons(told, sources);
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
  std::string source(reinterpret_cast<const char*>(data), size);
  // No file of this machine is to be read.
  for (std::size_t at = source.find("include"); at != std::string::npos; at = source.find("include", at)) {
    source[at] = 'I';
  }
  Output output;
  const qnpp::Explanation whole = record(source, {}, &output);
  require(qnpp::textOf(whole.output()) == output.text(), "the record holds the output");
  putIntoWords(whole, source);
  putIntoWords(record(source, {.range = {2, 3}}), source);
  putIntoWords(record(source, {.mostSteps = 20}), source);
  return 0;
}
