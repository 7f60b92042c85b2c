#include "tools/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iomanip>
#include <ostream>
#include <utility>

#include "driver/OptionParser.h"
#include "driver/ProgramOptions.h"
#include "qnpp/version.h"
#include "tools/Companion.h"

namespace qnpp {
namespace {

bool isLikeOneOfCompilers(std::string_view name) { return name.starts_with("--M"); }

std::string spellingOf(const CLI::Option& option) {
  const std::string name = option.get_name();
  const std::string value = option.get_type_name();
  if (isLikeOneOfCompilers(name)) {
    return name.substr(1) + (value.empty() ? "" : ' ' + value);
  }
  return name + (value.empty() ? "" : '=' + value);
}

// "--html=" has no value, but CLI11 would take the next word for one: a source, which would then be the page.
void refuseEmptyValues(const CLI::App& app, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    const std::string name = word.ends_with('=') ? word.substr(0, word.size() - 1) : "";
    const CLI::Option* const option = name.starts_with("--") ? app.get_option_no_throw(name) : nullptr;
    if (option != nullptr && option->get_items_expected_max() > 0) {
      throw Failure("missing value for '" + name.substr(isLikeOneOfCompilers(name) ? 1 : 0) + '\'');
    }
  }
}

// With a description it would show behind the word for the value in the help.
void letChoose(CLI::Option& option, const std::vector<std::string>& choices) {
  if (!choices.empty()) {
    option.check(CLI::IsMember(choices).description(""));
  }
}

bool take(const OptionParser& parser, std::string_view letter, std::vector<std::string>& to) {
  const auto values = parser.letterValues(letter);
  if (values) {
    to.assign(values->begin(), values->end());
  }
  return values.has_value();
}

}  // namespace

CommandLine::CommandLine(std::string name, std::string sourcesWord, std::size_t mostSources)
    : name_(std::move(name)),
      sourcesWord_(std::move(sourcesWord)),
      mostSources_(mostSources),
      app_(std::make_unique<CLI::App>()),
      status_(kFailed) {
  app_->set_help_flag();
  app_->allow_extras();
}

CommandLine::~CommandLine() = default;

void CommandLine::addFlag(const std::string& name, bool& flag, const std::string& text) {
  app_->add_flag(name, flag, text);
}

void CommandLine::addValue(const std::string& name, const std::string& valueWord, std::string& to,
                           const std::string& text, const std::vector<std::string>& choices) {
  letChoose(*app_->add_option(name, to, text)->type_name(valueWord)->take_last(), choices);
}

void CommandLine::addNumber(const std::string& name, const std::string& valueWord, std::size_t& to,
                            const std::string& text, std::optional<std::pair<int, int>> bounds) {
  // One less than 0 would become a very large number.
  app_->add_option(name, to, text)
      ->type_name(valueWord)
      ->take_last()
      ->check(bounds ? CLI::Range(bounds->first, bounds->second).description("")
                     : CLI::NonNegativeNumber.description(""));
}

void CommandLine::addValues(const std::string& name, const std::string& valueWord, std::vector<std::string>& to,
                            const std::string& text, const std::vector<std::string>& choices) {
  // Each time one value: an option with a list would take the source behind it too.
  const auto append = [&to](const std::string& word) { to.push_back(word); };
  letChoose(*app_->add_option_function<std::string>(name, append, text)
                 ->type_name(valueWord)
                 ->take_last()
                 ->trigger_on_parse(),
            choices);
}

void CommandLine::writeHelp(std::ostream& output) const {
  output << "Usage: " << name_ << " [options] " << sourcesWord_ << "\n\n" << programOptionsHelp() << '\n';
  for (const CLI::Option* option : app_->get_options()) {
    output << "  " << std::left << std::setw(27) << spellingOf(*option) << ": " << option->get_description() << '\n';
  }
  output << '\n'
         << (note_.empty() ? "" : note_ + '\n')
         << "The order you specify options and source file does not matter.\n"
            "If no source file is specified, "
         << name_ << " reads from standard in.\n\n";
}

// Unlike with qnpp, it is no failure to have asked.
bool CommandLine::answerQuestions(const OptionParser& parser, std::ostream& output) {
  if (parser.isPresent("h") || parser.isPresent("-help")) {
    writeHelp(output);
  } else if (parser.isPresent("v") || parser.isPresent("-version")) {
    output << name_ << " version " << QnGetVersionString() << '\n' << QnGetCopyrightString() << '\n';
  } else {
    return false;
  }
  status_ = kDone;
  return true;
}

bool CommandLine::readProgramOptions(const OptionParser& parser, RunOptions& options, std::ostream& messages) {
  if (!take(parser, "D", options.definitions) || !take(parser, "I", options.includeDirectories)) {
    return false;
  }
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
  for (std::size_t position = 0; position < parser.plainArgumentCount(); ++position) {
    sources_.emplace_back(parser.plainArgument(position));
  }
  if (sources_.size() > mostSources_) {
    messages << "qnpp: cannot provide more than one source file\n";
    return false;
  }
  options.source = sources_.empty() ? "" : sources_.front();
  return true;
}

bool CommandLine::read(const std::vector<std::string>& words, RunOptions& options, std::ostream& output,
                       std::ostream& messages) {
  refuseEmptyValues(*app_, words);
  try {
    app_->parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError& error) {
    throw Failure(error.what());
  }
  const std::vector<std::string> rest = app_->remaining();
  std::vector<const char*> restWords = {name_.c_str()};
  for (const std::string& word : rest) {
    restWords.push_back(word.c_str());
  }
  const OptionParser parser(static_cast<int>(restWords.size()), restWords.data(), programOptions(),
                            "qnpp: ", PlainArguments::Anywhere, messages);
  if (parser.reportUnknownOptions() || parser.reportMisplacedArguments()) {
    return false;
  }
  parser.warnAboutRepeatedOptions();
  return !answerQuestions(parser, output) && readProgramOptions(parser, options, messages);
}

std::vector<std::string> wordsOf(int argc, const char* const* argv) { return {argv + std::min(argc, 1), argv + argc}; }

}  // namespace qnpp
