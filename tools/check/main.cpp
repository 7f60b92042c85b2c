// qnpp-check [options] [source_file...]: finds what is legal for qnpp and probably not meant.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <limits>

#include "tools/CommandLine.h"
#include "tools/Companion.h"
#include "tools/Utf8.h"
#include "tools/check/Check.h"
#include "tools/check/Report.h"
#include "tools/explain/RecordedRun.h"

namespace {

struct Options {
  qnpp::RunOptions run;
  std::vector<std::string> sources;
  std::vector<std::string> disabled;
  std::vector<std::string> enabled;
  std::string format = "text";
  bool isError = false;
};

bool isAskedFor(const Options& options, const qnpp::Rule& rule) {
  const auto names = [&rule](const std::vector<std::string>& list) {
    return std::find(list.begin(), list.end(), rule.id) != list.end();
  };
  return (rule.isOn || names(options.enabled)) && !names(options.disabled);
}

// Appends what is found in one source. False if it cannot be read.
bool checkSource(const Options& options, const std::string& source, std::vector<qnpp::Finding>& findings) {
  qnpp::RunOptions run = options.run;
  run.source = source;
  std::error_code none;
  if (run.result && std::filesystem::equivalent(*run.result, source, none)) {
    findings.push_back(qnpp::findingOf("output-is-source", source, 0, "-o names the source \"" + source + "\""));
  }
  const std::string textReadOnce = qnpp::textOfReadOnce(source);
  const std::optional<qnpp::Explanation> explanation = qnpp::record(run, textReadOnce);
  if (!explanation) {
    std::cerr << "qnpp-check: cannot open " << qnpp::withEscapes(source) << '\n';
    return false;
  }
  for (qnpp::Finding& finding : qnpp::check(*explanation, textReadOnce)) {
    findings.push_back(std::move(finding));
  }
  return true;
}

int checkAll(const Options& options) {
  if (!options.run.sourceName.empty() && options.sources.size() > 1) {
    throw qnpp::Failure("'-s' names one source, and there are several");
  }
  std::vector<qnpp::Finding> findings;
  bool areAllRead = true;
  for (const std::string& source : options.sources.empty() ? std::vector<std::string>{""} : options.sources) {
    areAllRead = checkSource(options, source, findings) && areAllRead;
  }
  std::erase_if(findings, [&](const qnpp::Finding& finding) { return !isAskedFor(options, *finding.rule); });
  // Sources of one project share their headers.
  std::sort(findings.begin(), findings.end());
  findings.erase(std::unique(findings.begin(), findings.end()), findings.end());
  if (options.format == "json") {
    qnpp::writeJson(findings, std::cout);
  } else if (options.format == "sarif") {
    qnpp::writeSarif(findings, std::cout);
  } else {
    qnpp::writeText(findings, std::cout);
  }
  if (!std::cout.flush()) {
    throw qnpp::Failure("cannot write to standard output");
  }
  return !areAllRead ? qnpp::kFailed : options.isError && !findings.empty() ? qnpp::kErrorsInSource : qnpp::kDone;
}

// The options that qnpp does not have.
void addOptions(qnpp::CommandLine& line, Options& options) {
  std::vector<std::string> ids;
  for (const qnpp::Rule& rule : qnpp::rules()) {
    ids.emplace_back(rule.id);
  }
  line.addValue("--format", "<form>", options.format, "text, json, or sarif for code scanners.",
                {"text", "json", "sarif"});
  line.addValues("--disable", "<id>", options.disabled, "leave out findings of this sort.", ids);
  line.addValues("--enable", "<id>", options.enabled, "look for a sort that is off by default.", ids);
  line.addFlag("--error", options.isError, "end with status 1 if anything was found.");
}

}  // namespace

int main(int argc, char** argv) {
  return qnpp::runCompanion("qnpp-check", [argc, argv] {
    Options options;
    qnpp::CommandLine line("qnpp-check", "[source_file...]", std::numeric_limits<std::size_t>::max());
    line.addNote("Nothing is written to the output file. With -s, there can be only one source file.");
    addOptions(line, options);
    if (!line.read(qnpp::wordsOf(argc, argv), options.run, std::cout, std::cerr)) {
      return line.status();
    }
    options.sources = line.sources();
    return checkAll(options);
  });
}
