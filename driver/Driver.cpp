#include "driver/Driver.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "driver/OptionParser.h"
#include "engine/CppPreprocessor.h"
#include "macros/CppMacroTable.h"
#include "qnpp/version.h"

namespace qnpp {
namespace {

// The name of the program in what it says, however it was called.
constexpr std::string_view kProgramName = "qnpp";
constexpr std::string_view kMessagePrefix = "qnpp: ";

// The first row matters to the parser beyond its own option: only words that begin like it may follow `-I` with a dash.
constexpr std::array<OptionEntry, 8> kOptions{{
    {"I ", 1, "missing path name for '-I' option number %d"},
    {"D_", 1, "missing macro for '-D' option number %d"},
    {"o", 1, "missing output file name for '-o' option"},
    {"s", 1, "no source name provided to '-s' option"},
    {"v", OptionEntry::kTakesNoValue, ""},
    {"-version", OptionEntry::kTakesNoValue, ""},
    {"h", OptionEntry::kTakesNoValue, ""},
    {"-help", OptionEntry::kTakesNoValue, ""},
}};

void writeHelp(std::ostream& output) {
  output << "Usage: " << kProgramName
         << " [options] [source_file]\n"
            "\n"
            "  -I<dir>        : add a directory for searching include files.\n"
            "  -D<name>       : define preprocessor symbol.\n"
            "  -o <name>      : output file. If not specified, writes to standard out.\n"
            "  -s <name>      : source name. Overrides source file name in messages. Useful when reading from standard "
            "in.\n"
            "  -v, --version  : show version number.\n"
            "  -h, --help     : show this help text.\n"
            "\n"
            "The order you specify options and source file does not matter.\n"
            "If no source file is specified, qnpp reads from standard in.\n"
            "\n";
}

void writeVersion(std::ostream& output) {
  output << kProgramName << " version " << QnGetVersionString() << '\n' << QnGetCopyrightString() << '\n';
}

// Answers `-h` and `-v`, help first; true if one of them was there and the program has nothing more to do.
bool answerQuestions(const OptionParser& options, std::ostream& output) {
  if (options.isPresent("h") || options.isPresent("-help")) {
    options.warnAboutIgnoredWords();
    writeHelp(output);
    return true;
  }
  if (options.isPresent("v") || options.isPresent("-version")) {
    options.warnAboutIgnoredWords();
    writeVersion(output);
    return true;
  }
  return false;
}

// `-DNAME=text` defines NAME as the text behind the first "=", which may be empty; `-DNAME` defines it as 1.
bool defineMacros(const OptionParser& options, CppMacroTable& macros) {
  const auto values = options.letterValues("D");
  if (!values) {
    return false;
  }
  for (const std::string_view value : *values) {
    const std::size_t equals = value.find('=');
    if (equals == std::string_view::npos) {
      macros.defineFromCommandLine(value, "1");
    } else {
      macros.defineFromCommandLine(value.substr(0, equals), value.substr(equals + 1));
    }
  }
  return true;
}

bool addIncludeDirectories(const OptionParser& options, CppPreprocessor& preprocessor) {
  const auto directories = options.letterValues("I");
  if (!directories) {
    return false;
  }
  for (const std::string_view directory : *directories) {
    preprocessor.addIncludeDirectory(std::string(directory));
  }
  return true;
}

}  // namespace

Driver::Driver(std::ostream& output, std::ostream& messages) : output_(output), messages_(messages) {}

bool Driver::prepare(int argc, const char* const* argv, CppPreprocessor& preprocessor) {
  const OptionParser options(argc, argv, kOptions, kMessagePrefix, PlainArguments::Anywhere, messages_);
  if (options.reportUnknownOptions() || options.reportMisplacedArguments()) {
    return false;
  }
  options.warnAboutRepeatedOptions();
  if (answerQuestions(options, output_)) {
    return false;
  }

  if (!defineMacros(options, preprocessor.macroTable()) || !addIncludeDirectories(options, preprocessor)) {
    return false;
  }
  // The file is made before the rest of the command line is looked at, so a later mistake leaves it behind empty.
  if (!openOutputFile(options)) {
    return false;
  }

  std::string sourceName;
  if (options.isPresent("s")) {
    const auto name = options.value("s");
    if (!name) {
      return false;
    }
    sourceName = *name;
  }

  if (options.plainArgumentCount() > 1) {
    messages_ << kMessagePrefix << "cannot provide more than one source file\n";
    return false;
  }
  // An empty file name means standard input.
  std::string fileName;
  if (options.plainArgumentCount() == 1) {
    fileName = options.plainArgument(0);
  }

  preprocessor.setOutput(textOutput());
  preprocessor.openSource(fileName, sourceName);
  return !preprocessor.hasError();
}

// Makes the file of `-o`, if there is one. Reports and returns false when that cannot be done.
bool Driver::openOutputFile(const OptionParser& options) {
  if (!options.isPresent("o")) {
    return true;
  }
  const auto fileName = options.value("o");
  if (!fileName) {
    return false;
  }
  outputFile_ = std::make_unique<std::ofstream>(std::string(*fileName));
  if (!outputFile_->is_open()) {
    messages_ << kMessagePrefix << "cannot open output file '" << *fileName << "'\n";
    return false;
  }
  return true;
}

void Driver::flush() {
  textOutput().flush();
  output_.flush();
  messages_.flush();
}

std::ostream& Driver::textOutput() {
  if (outputFile_) {
    return *outputFile_;
  }
  return output_;
}

}  // namespace qnpp
