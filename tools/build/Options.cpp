#include "tools/build/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <fstream>
#include <iomanip>
#include <string_view>
#include <utility>

#include "driver/Driver.h"
#include "driver/OptionParser.h"
#include "qnpp/version.h"
#include "tools/build/ExitStatus.h"
#include "tools/build/Failure.h"

namespace qnpp::build {
namespace {

// To CLI11 all long names stand behind two dashes: `-MF FILE` becomes `--MF=FILE`, in which FILE may be any word.
constexpr std::array<std::string_view, 3> kCompilerFlags = {"-MD", "-MMD", "-MP"};
constexpr std::array<std::string_view, 3> kCompilerOptions = {"-MF", "-MT", "-MQ"};
constexpr std::string_view kOptionsFrom = "--options-from";

// What has to be looked at before it goes into the options.
struct Wishes {
  bool hasDependencyFile = false;
  std::string dependencyFile;
  std::string format = "make";
  std::string lineDirectives = "hash";
  std::vector<std::string> prefixes;
};

// The one table of the options that qnpp does not have: what CLI11 reads and what `--help` shows.
void addOptions(CLI::App& app, Options& options, Wishes& wishes) {
  const auto addFlag = [&app](const char* name, bool& flag, const char* text) { app.add_flag(name, flag, text); };
  const auto addValue = [&app](const char* name, const char* value, std::string& to, const char* text) {
    return app.add_option(name, to, text)->type_name(value)->take_last();
  };
  const auto addValues = [&app](const char* name, const char* value, std::vector<std::string>& to, const char* text) {
    // Each time one value: an option with a list would take the source behind it too.
    const auto append = [&to](const std::string& word) { to.push_back(word); };
    app.add_option_function<std::string>(name, append, text)->type_name(value)->take_last()->trigger_on_parse();
  };
  addFlag("--MD", wishes.hasDependencyFile, "write a dependency file, named like the result with \".d\" behind.");
  addFlag("--MMD", wishes.hasDependencyFile, "the same; there are no system headers to be left out.");
  addValue("--MF", "<file>", wishes.dependencyFile, "write the dependency file <file>.");
  addValues("--MT", "<target>", options.spelledTargets, "name of the result in the dependency file, as it stands.");
  addValues("--MQ", "<target>", options.targets, "the same, with escapes for what is special there.");
  addFlag("--MP", options.hasEmptyRules, "an empty rule for each included file, in case it goes away.");
  addFlag("--depend-on-program", options.dependsOnProgram, "name qnpp-build in the dependency file too.");
  addValue("--depfile-format", "<tool>", wishes.format, "make, ninja or cmake: whose spelling of names to use.")
      ->check(CLI::IsMember({"make", "ninja", "cmake"}).description(""));
  addFlag("--keep-unchanged", options.keepsUnchanged, "leave a result alone that holds the same already.");
  addValue("--line-directives", "<style>", wishes.lineDirectives, "hash (as qnpp writes them), gnu, glsl or none.")
      ->check(CLI::IsMember({"hash", "gnu", "glsl", "none"}).description(""));
  addValue("--file-table", "<file>", options.fileTable, "write the numbers of files in the style glsl to <file>.");
  addValue("--source-name", "<name>", options.shownName, "like -s, but files are searched next to the source.");
  addValues("--prefix-map", "<old>=<new>", wishes.prefixes,
            "in names of files, write <new> for <old> at the beginning.");
}

std::string spellingOf(const CLI::Option& option) {
  const std::string name = option.get_name();
  if (name.starts_with("--M")) {
    return name.substr(1) + (option.get_type_name().empty() ? "" : ' ' + option.get_type_name());
  }
  return name + (option.get_type_name().empty() ? "" : '=' + option.get_type_name());
}

void writeHelp(const CLI::App& app, std::ostream& output) {
  output << "Usage: qnpp-build [options] [source_file]\n\n" << programOptionsHelp() << '\n';
  const auto writeRow = [&output](const std::string& spelling, const std::string& text) {
    output << "  " << std::left << std::setw(27) << spelling << ": " << text << '\n';
  };
  for (const CLI::Option* option : app.get_options()) {
    writeRow(spellingOf(*option), option->get_description());
  }
  writeRow(std::string(kOptionsFrom) + "=<file>", "take further words from <file>, one from each line.");
  output << "\nThe order you specify options and source file does not matter.\n"
            "If no source file is specified, qnpp-build reads from standard in.\n\n";
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

std::vector<std::string> wordsOf(int argc, const char* const* argv) {
  std::vector<std::string> words;
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (word == kOptionsFrom && i + 1 < argc) {
      appendWordsOf(argv[++i], words);
    } else if (word.starts_with(kOptionsFrom) && word.size() > kOptionsFrom.size() &&
               word[kOptionsFrom.size()] == '=') {
      appendWordsOf(std::string(word.substr(kOptionsFrom.size() + 1)), words);
    } else {
      words.emplace_back(word);
    }
  }
  return words;
}

std::vector<std::string> forCli11(const std::vector<std::string>& words) {
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

// The words that are left, as qnpp reads them and with what it says about them. Returns whether there is a run.
bool readProgramOptions(const OptionParser& parser, Options& options, std::ostream& messages) {
  const auto definitions = parser.letterValues("D");
  if (!definitions) {
    return false;
  }
  options.definitions.assign(definitions->begin(), definitions->end());
  const auto directories = parser.letterValues("I");
  if (!directories) {
    return false;
  }
  options.includeDirectories.assign(directories->begin(), directories->end());
  if (parser.isPresent("o")) {
    const auto name = parser.value("o");
    if (!name) {
      return false;
    }
    options.result = *name;
  }
  if (parser.isPresent("s")) {
    const auto name = parser.value("s");
    if (!name) {
      return false;
    }
    options.sourceName = *name;
  }
  if (parser.plainArgumentCount() > 1) {
    messages << "qnpp: cannot provide more than one source file\n";
    return false;
  }
  if (parser.plainArgumentCount() == 1) {
    options.source = parser.plainArgument(0);
  }
  return true;
}

}  // namespace

std::optional<Options> readCommandLine(int argc, const char* const* argv, std::ostream& output, std::ostream& messages,
                                       int& status) {
  Options options;
  Wishes wishes;
  CLI::App app;
  app.set_help_flag();
  app.allow_extras();
  addOptions(app, options, wishes);
  std::vector<std::string> words = forCli11(wordsOf(argc, argv));
  std::reverse(words.begin(), words.end());
  try {
    app.parse(words);
  } catch (const CLI::ParseError& error) {
    throw Failure(error.what());
  }

  const std::vector<std::string> rest = app.remaining();
  std::vector<const char*> restWords = {argv[0]};
  for (const std::string& word : rest) {
    restWords.push_back(word.c_str());
  }
  const OptionParser parser(static_cast<int>(restWords.size()), restWords.data(), programOptions(),
                            "qnpp: ", PlainArguments::Anywhere, messages);
  status = kFailed;
  if (parser.reportUnknownOptions() || parser.reportMisplacedArguments()) {
    return std::nullopt;
  }
  parser.warnAboutRepeatedOptions();
  if (parser.isPresent("h") || parser.isPresent("-help")) {
    writeHelp(app, output);
    status = kDone;
    return std::nullopt;
  }
  if (parser.isPresent("v") || parser.isPresent("-version")) {
    output << "qnpp-build version " << QnGetVersionString() << '\n' << QnGetCopyrightString() << '\n';
    status = kDone;
    return std::nullopt;
  }
  if (!readProgramOptions(parser, options, messages)) {
    return std::nullopt;
  }
  grant(wishes, options);
  return options;
}

}  // namespace qnpp::build
