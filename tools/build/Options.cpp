#include "tools/build/Options.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <utility>

#include "tools/CommandLine.h"
#include "tools/Companion.h"

namespace qnpp::build {
namespace {

// To a CommandLine all long names stand behind two dashes: `-MF FILE` becomes `--MF=FILE`, FILE being any word.
constexpr std::array<std::string_view, 3> kCompilerFlags = {"-MD", "-MMD", "-MP"};
constexpr std::array<std::string_view, 3> kCompilerOptions = {"-MF", "-MT", "-MQ"};
constexpr const char* kOptionsFrom = "--options-from";

// What has to be looked at before it goes into the options.
struct Wishes {
  bool hasDependencyFile = false;
  std::string dependencyFile;
  std::string format = "make";
  std::string lineDirectives = "hash";
  std::vector<std::string> prefixes;
  std::string optionsFrom;  // None is left when the options are read.
};

// The one table of the options that qnpp does not have: what is read and what `--help` shows.
void addOptions(CommandLine& line, Options& options, Wishes& wishes) {
  line.addFlag("--MD", wishes.hasDependencyFile, "write a dependency file, named like the result with \".d\" behind.");
  line.addFlag("--MMD", wishes.hasDependencyFile, "the same; there are no system headers to be left out.");
  line.addValue("--MF", "<file>", wishes.dependencyFile, "write the dependency file <file>.");
  line.addValues("--MT", "<target>", options.spelledTargets,
                 "name of the result in the dependency file, as it stands.");
  line.addValues("--MQ", "<target>", options.targets, "the same, with escapes for what is special there.");
  line.addFlag("--MP", options.hasEmptyRules, "write an empty rule for each included file, in case it goes away.");
  line.addFlag("--depend-on-program", options.dependsOnProgram, "name qnpp-build in the dependency file too.");
  line.addValue("--depfile-format", "<tool>", wishes.format, "make, ninja or cmake: whose spelling of names to use.",
                {"make", "ninja", "cmake"});
  line.addFlag("--keep-unchanged", options.keepsUnchanged, "leave a result alone that holds the same already.");
  line.addValue("--line-directives", "<style>", wishes.lineDirectives, "hash (as qnpp writes them), gnu, glsl or none.",
                {"hash", "gnu", "glsl", "none"});
  line.addValue("--file-table", "<file>", options.fileTable, "write the numbers of files in the style glsl to <file>.");
  line.addValue("--source-name", "<name>", options.shownName, "like -s, but files are searched next to the source.");
  line.addValues("--prefix-map", "<old>=<new>", wishes.prefixes,
                 "in names of files, write <new> for <old> at the beginning.");
  line.addValue(kOptionsFrom, "<file>", wishes.optionsFrom, "take further words from <file>, one from each line.");
}

// An empty line is no word: what made the file may have had nothing to put there.
void appendWordsOf(const std::string& name, std::vector<std::string>& words) {
  std::ifstream file(name);
  if (!file) {
    throw Failure("cannot read '" + name + "'");
  }
  for (std::string line; std::getline(file, line);) {
    if (!line.empty()) {
      words.push_back(line);
    }
  }
}

std::vector<std::string> withWordsOfFiles(const std::vector<std::string>& words) {
  const std::string beginning = std::string(kOptionsFrom) + '=';
  std::vector<std::string> result;
  for (auto word = words.begin(); word != words.end(); ++word) {
    if (*word == kOptionsFrom && word + 1 != words.end()) {
      appendWordsOf(*++word, result);
    } else if (word->starts_with(beginning)) {
      appendWordsOf(word->substr(beginning.size()), result);
    } else {
      result.push_back(*word);
    }
  }
  return result;
}

std::vector<std::string> withTwoDashes(const std::vector<std::string>& words) {
  std::vector<std::string> result;
  for (auto word = words.begin(); word != words.end(); ++word) {
    const auto isWord = [&word](std::string_view option) { return *word == option; };
    const auto isBeginning = [&word](std::string_view option) { return word->starts_with(option); };
    if (std::any_of(kCompilerFlags.begin(), kCompilerFlags.end(), isWord)) {
      result.push_back('-' + *word);
    } else if (std::any_of(kCompilerOptions.begin(), kCompilerOptions.end(), isBeginning)) {
      const std::string option = word->substr(0, 3);
      const bool isAttached = word->size() > 3;
      if (!isAttached && ++word == words.end()) {
        throw Failure("missing value for '" + option + '\'');
      }
      result.push_back('-' + option + '=' + (isAttached ? word->substr(3) : *word));
    } else {
      result.push_back(*word);
    }
  }
  return result;
}

// Without "=" or with nothing before it, there would be no telling what is meant.
void addPrefixes(const std::vector<std::string>& prefixes, PrefixMap& map) {
  for (const std::string& prefix : prefixes) {
    const std::size_t equals = prefix.find('=');
    if (equals == std::string::npos || equals == 0) {
      throw Failure("'--prefix-map' wants <old>=<new>, not '" + prefix + '\'');
    }
    map.add(prefix.substr(0, equals), prefix.substr(equals + 1));
  }
}

void grant(const Wishes& wishes, Options& options) {
  using enum LineDirectiveStyle;
  options.dependencyFormat = wishes.format == "ninja"   ? DependencyFormat::Ninja
                             : wishes.format == "cmake" ? DependencyFormat::CMake
                                                        : DependencyFormat::Make;
  options.lineDirectives = wishes.lineDirectives == "gnu"    ? Gnu
                           : wishes.lineDirectives == "glsl" ? Glsl
                           : wishes.lineDirectives == "none" ? None
                                                             : Hash;
  addPrefixes(wishes.prefixes, options.prefixes);
  const bool hasTarget = !options.targets.empty() || !options.spelledTargets.empty();
  if (!wishes.hasDependencyFile && wishes.dependencyFile.empty()) {
    if (options.hasEmptyRules || options.dependsOnProgram || hasTarget) {
      throw Failure("there is no dependency file without '-MD', '-MMD' or '-MF'");
    }
    return;
  }
  if (!options.result && (wishes.dependencyFile.empty() || !hasTarget)) {
    throw Failure("without '-o', a dependency file wants '-MF' and '-MT' or '-MQ'");
  }
  options.dependencyFile = wishes.dependencyFile.empty() ? *options.result + ".d" : wishes.dependencyFile;
  if (!hasTarget) {
    options.targets.push_back(*options.result);
  }
}

}  // namespace

std::optional<Options> readCommandLine(int argc, const char* const* argv, std::ostream& output, std::ostream& messages,
                                       int& status) {
  Options options;
  Wishes wishes;
  CommandLine line("qnpp-build", "[source_file]");
  addOptions(line, options, wishes);
  if (!line.read(withTwoDashes(withWordsOfFiles(wordsOf(argc, argv))), options, output, messages)) {
    status = line.status();
    return std::nullopt;
  }
  grant(wishes, options);
  return options;
}

}  // namespace qnpp::build
