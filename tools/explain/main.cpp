// qnpp-explain [options] SOURCE[:LINE[-LINE]]: shows what qnpp does with a source, and why.

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <clocale>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

#include "qnpp/version.h"
#include "tools/CommandLine.h"
#include "tools/explain/Html.h"
#include "tools/explain/Json.h"
#include "tools/explain/RecordedRun.h"
#include "tools/explain/Terminal.h"

namespace {

struct Options {
  qnpp::RunOptions run;
  std::string macro;
  std::string html;
  bool isJson = false;
  std::string colour = "auto";
  std::size_t width = 0;
  std::size_t most = 10'000'000;
  std::size_t mostUses = 10'000;
  qnpp::LineRange range;
};

// Splits "main.c:12-20" into name and range, unless a file is called so.
void takeRange(Options& options) {
  std::string& source = options.run.source;
  const std::size_t colon = source.rfind(':');
  if (colon == std::string::npos || std::filesystem::exists(source)) {
    return;
  }
  qnpp::LineRange range;
  const char* const end = source.data() + source.size();
  auto [behind, error] = std::from_chars(source.data() + colon + 1, end, range.first);
  if (error != std::errc()) {
    return;
  }
  range.last = range.first;
  if (behind != end && *behind == '-') {
    std::tie(behind, error) = [&] {
      const auto last = std::from_chars(behind + 1, end, range.last);
      return std::pair(last.ptr, last.ec);
    }();
  }
  if (error == std::errc() && behind == end) {
    options.range = range;
    source.resize(colon);
  }
}

std::size_t terminalWidth() {
  winsize size{};
  return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 20 ? size.ws_col : 100;
}

int show(const Options& options) {
  std::string standardInput;
  if (options.run.source.empty()) {
    standardInput.assign(std::istreambuf_iterator<char>(std::cin), {});
  }
  const std::optional<qnpp::Explanation> explanation =
      qnpp::record(options.run, standardInput, {options.range, options.most});
  if (!explanation) {
    std::cerr << "qnpp-explain: cannot open " << options.run.source << '\n';
    return 1;
  }
  const qnpp::Sources sources(*explanation, standardInput);
  if (!options.html.empty()) {
    std::ofstream page(options.html, std::ios::binary);
    qnpp::writeHtml(*explanation, sources, options.mostUses, page);
    page.flush();
    if (!page) {
      std::cerr << "qnpp-explain: cannot write " << options.html << '\n';
      return 1;
    }
  }
  if (options.isJson) {
    qnpp::writeJson(*explanation, sources, std::cout);
  }
  if (options.html.empty() && !options.isJson) {
    const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
    const std::string charset = ::nl_langinfo(CODESET);
    const qnpp::TerminalOptions view{options.colour == "always" || (options.colour == "auto" && isTerminal),
                                     charset == "UTF-8", options.width > 0 ? options.width : terminalWidth(),
                                     options.macro};
    qnpp::writeTerminal(*explanation, sources, view, std::cout);
  }
  std::cout.flush();
  return std::cout ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");
  Options options;
  CLI::App app("Shows what qnpp does with a source, and why: each macro use, condition and include.", "qnpp-explain");
  app.set_version_flag("-v,--version", QnGetVersionString());
  app.add_option("SOURCE", options.run.source,
                 "Source, or SOURCE:LINE or SOURCE:LINE-LINE; standard input if there is none");
  qnpp::addRunOptions(app, options.run);
  app.add_option("--macro", options.macro, "Show only what involves this macro")->type_name("NAME");
  app.add_option("--html", options.html, "Write a page for a browser instead")->type_name("FILE");
  app.add_flag("--json", options.isJson, "Write what happened as JSON instead");
  app.add_option("--color", options.colour, "Colour: auto, always or never")
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->type_name("WHEN");
  app.add_option("--width", options.width, "Columns of the terminal")->check(CLI::Range(20, 10000))->type_name("N");
  app.add_option("--most", options.most, "Steps after which the rest is left out (10000000)")->type_name("N");
  app.add_option("--most-uses", options.mostUses, "Uses of macros that a page takes apart (10000)")->type_name("N");
  CLI11_PARSE(app, argc, argv);
  takeRange(options);
  return show(options);
}
