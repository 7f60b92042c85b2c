// qnpp-check [options] SOURCE...: finds what is legal for qnpp and probably not meant.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>

#include "qnpp/version.h"
#include "tools/CommandLine.h"
#include "tools/check/Check.h"
#include "tools/check/Report.h"

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
  if (!run.output.empty() && std::filesystem::equivalent(run.output, source, none)) {
    findings.push_back(qnpp::findingOf("output-is-source", source, 0, "-o names the source \"" + source + "\""));
  }
  std::string standardInput;
  if (source.empty()) {
    standardInput.assign(std::istreambuf_iterator<char>(std::cin), {});
  }
  const std::optional<qnpp::Explanation> explanation = qnpp::record(run, standardInput);
  if (!explanation) {
    std::cerr << "qnpp-check: cannot open " << source << '\n';
    return false;
  }
  for (qnpp::Finding& finding : qnpp::check(*explanation, standardInput)) {
    findings.push_back(std::move(finding));
  }
  return true;
}

int checkAll(const Options& options) {
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
  std::cout.flush();
  return !areAllRead || !std::cout ? 2 : options.isError && !findings.empty() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  std::vector<std::string> ids;
  for (const qnpp::Rule& rule : qnpp::rules()) {
    ids.emplace_back(rule.id);
  }
  CLI::App app("Finds what is legal for qnpp and probably not meant.", "qnpp-check");
  app.set_version_flag("-v,--version", QnGetVersionString());
  app.add_option("SOURCE", options.sources, "Sources; standard input if there is none");
  qnpp::addRunOptions(app, options.run);
  app.add_option("--format", options.format, "text, json or sarif")
      ->check(CLI::IsMember({"text", "json", "sarif"}))
      ->type_name("FORM");
  app.add_option("--disable", options.disabled, "Leave out findings of this sort")
      ->expected(1)
      ->take_all()
      ->allow_extra_args(false)
      ->check(CLI::IsMember(ids))
      ->type_name("ID");
  app.add_option("--enable", options.enabled, "Look for a sort that is off by default")
      ->expected(1)
      ->take_all()
      ->allow_extra_args(false)
      ->check(CLI::IsMember(ids))
      ->type_name("ID");
  app.add_flag("--error", options.isError, "End with status 1 if anything was found");
  CLI11_PARSE(app, argc, argv);
  return checkAll(options);
}
