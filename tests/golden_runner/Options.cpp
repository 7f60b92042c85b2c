#include "Options.h"

#include <charconv>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace qnpp::golden {

namespace {

std::vector<std::string> splitAtBlanks(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

std::chrono::milliseconds parseSeconds(std::string_view text) {
  int seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || seconds <= 0) {
    throw std::runtime_error("--time-limit takes a number of seconds");
  }
  return std::chrono::seconds(seconds);
}

}  // namespace

const char* const kHelpText =
    "Usage: qnpp_golden_runner --program PATH --cases DIR [options]\n"
    "\n"
    "Runs the golden cases DIR/<area>/<case> against a program and compares what it writes byte for byte.\n"
    "\n"
    "  --program PATH        the program under test\n"
    "  --cases DIR           the folder of the areas\n"
    "  --area AREA           only the cases of this area\n"
    "  --filter TEXT         only the cases whose `area/case` contains TEXT\n"
    "  --gtest_filter=GLOB   only the tests `Area.CaseName` of this pattern; all other options of GoogleTest work too\n"
    "  --wrapper \"WORDS\"     put these words, split at blanks, in front of the program, e.g. \"valgrind -q\"\n"
    "  --time-limit SECONDS  kill a case that runs longer; 20 if not given\n"
    "  --update              rewrite stdout, stderr, status and expect/ of the chosen cases from what the program "
    "does\n"
    "                        now. This checks nothing: read the change of every file (`git diff`) and work out\n"
    "                        from the rules that each new byte is right before you keep it.\n"
    "  --help                show this text\n";

Options parseOptions(int argc, const char* const* argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    const auto value = [&]() -> std::string {
      if (i + 1 >= argc) throw std::runtime_error(std::string(word) + " lacks its value");
      return argv[++i];
    };
    if (word == "--program") {
      options.settings.program = std::filesystem::absolute(value());
    } else if (word == "--cases") {
      options.cases = value();
    } else if (word == "--area") {
      options.area = value();
    } else if (word == "--filter") {
      options.filter = value();
    } else if (word == "--wrapper") {
      options.settings.wrapper = splitAtBlanks(value());
    } else if (word == "--time-limit") {
      options.settings.timeLimit = parseSeconds(value());
    } else if (word == "--update") {
      options.update = true;
    } else if (word == "--help" || word == "-h") {
      options.help = true;
    } else {
      throw std::runtime_error("unknown option " + std::string(word));
    }
  }
  if (options.help) return options;
  if (options.settings.program.empty()) throw std::runtime_error("--program is missing");
  if (options.cases.empty()) throw std::runtime_error("--cases is missing");
  return options;
}

}  // namespace qnpp::golden
