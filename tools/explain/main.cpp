// qnpp-explain [options] [source_file[:line[-line]]]: shows what qnpp does with a source, and why.

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <clocale>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>

#include "tools/CommandLine.h"
#include "tools/Companion.h"
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
  auto read = std::from_chars(source.data() + colon + 1, end, range.first);
  range.last = range.first;
  if (read.ec == std::errc() && read.ptr != end && *read.ptr == '-') {
    read = std::from_chars(read.ptr + 1, end, range.last);
  }
  if (read.ec == std::errc() && read.ptr == end) {
    options.range = range;
    source.resize(colon);
  }
}

// "in lines 5 to 9 "; empty for all lines.
std::string wordsFor(const qnpp::LineRange& range) {
  if (range.last == qnpp::LineRange().last) {
    return "";
  }
  const std::string first = std::to_string(range.first);
  return range.first == range.last ? "in line " + first + ' '
                                   : "in lines " + first + " to " + std::to_string(range.last) + ' ';
}

std::size_t terminalWidth() {
  winsize size{};
  return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 20 ? size.ws_col : 100;
}

// A name that was not meant for the page, say that of the source, must not cost the file that is called so.
void checkPage(const std::string& name, const qnpp::Explanation& explanation) {
  std::error_code none;
  if (!std::filesystem::is_regular_file(name, none)) {
    return;
  }
  for (const qnpp::SourceFile& file : explanation.files) {
    if (std::filesystem::equivalent(name, file.path.empty() ? "/dev/stdin" : file.path, none)) {
      throw qnpp::Failure('\'' + name + "' would be overwritten, but it is read too");
    }
  }
  std::ifstream old(name, std::ios::binary);
  std::string beginning(qnpp::kPageBeginning.size(), '\0');
  old.read(beginning.data(), static_cast<std::streamsize>(beginning.size()));
  beginning.resize(static_cast<std::size_t>(old.gcount()));
  if (!beginning.empty() && beginning != qnpp::kPageBeginning) {
    throw qnpp::Failure('\'' + name + "' would be overwritten, but it is no page");
  }
}

int show(const Options& options) {
  const std::string textReadOnce = qnpp::textOfReadOnce(options.run.source);
  const std::optional<qnpp::Explanation> explanation =
      qnpp::record(options.run, textReadOnce, {options.range, options.most});
  if (!explanation) {
    throw qnpp::Failure("cannot open " + options.run.source);
  }
  const qnpp::Sources sources(*explanation, textReadOnce);
  if (!options.html.empty()) {
    checkPage(options.html, *explanation);
    std::ofstream page(options.html, std::ios::binary);
    qnpp::writeHtml(*explanation, sources, options.mostUses, page);
    page.flush();
    if (!page) {
      throw qnpp::Failure("cannot write " + options.html);
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
                                     options.macro, wordsFor(options.range)};
    qnpp::writeTerminal(*explanation, sources, view, std::cout);
  }
  if (!std::cout.flush()) {
    throw qnpp::Failure("cannot write to standard output");
  }
  return qnpp::kDone;
}

// The options that qnpp does not have.
void addOptions(qnpp::CommandLine& line, Options& options) {
  line.addValue("--macro", "<name>", options.macro, "show only what involves this macro.");
  line.addValue("--html", "<file>", options.html, "write a page for a browser to <file> instead.");
  line.addFlag("--json", options.isJson, "write what happened as JSON instead.");
  line.addValue("--color", "<when>", options.colour, "auto (on a terminal), always or never.",
                {"auto", "always", "never"});
  line.addNumber("--width", "<columns>", options.width, "cut lines there, not where the terminal ends.", {{20, 10000}});
  line.addNumber("--most", "<steps>", options.most,
                 "stop writing down what happens after so many; without it, 10000000.");
  line.addNumber("--most-uses", "<uses>", options.mostUses,
                 "let a page take apart so many uses of macros; without it, 10000.");
}

}  // namespace

int main(int argc, char** argv) {
  return qnpp::runCompanion("qnpp-explain", [argc, argv] {
    std::setlocale(LC_CTYPE, "");
    Options options;
    qnpp::CommandLine line("qnpp-explain", "[source_file[:line[-line]]]");
    line.addNote("Nothing is written to the output file.");
    addOptions(line, options);
    if (!line.read(qnpp::wordsOf(argc, argv), options.run, std::cout, std::cerr)) {
      return line.status();
    }
    takeRange(options);
    return show(options);
  });
}
