#include "driver/Driver.h"

#include <fcntl.h>

#include <new>
#include <string_view>
#include <utility>

#include "driver/DescriptorStream.h"
#include "driver/OptionParser.h"
#include "driver/ProgramOptions.h"
#include "qnpp/version.h"

namespace qnpp {
namespace {

// The name of the program in what it says, however it was called.
constexpr std::string_view kProgramName = "qnpp";
constexpr std::string_view kMessagePrefix = "qnpp: ";

void writeHelp(std::ostream& output) {
  output << "Usage: " << kProgramName << " [options] [source_file]\n\n"
         << programOptionsHelp()
         << "\n"
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

bool defineMacros(const OptionParser& options, Preprocessor& preprocessor) {
  const auto definitions = options.letterValues("D");
  if (!definitions) {
    return false;
  }
  for (const std::string_view definition : *definitions) {
    preprocessor.define(definition);
  }
  return true;
}

bool addIncludeDirectories(const OptionParser& options, Preprocessor& preprocessor) {
  const auto directories = options.letterValues("I");
  if (!directories) {
    return false;
  }
  for (const std::string_view directory : *directories) {
    preprocessor.addIncludeDirectory(directory);
  }
  return true;
}

}  // namespace

Driver::Driver(std::ostream& output, std::ostream& messages, Reader standardInput)
    : output_(output), messages_(messages), source_(Source::ofReader(std::move(standardInput))) {}

std::optional<Status> Driver::run(int argc, const char* const* argv) {
  const OptionParser options(argc, argv, programOptions(), kMessagePrefix, PlainArguments::Anywhere, messages_);
  if (options.reportUnknownOptions() || options.reportMisplacedArguments()) {
    return std::nullopt;
  }
  options.warnAboutRepeatedOptions();
  if (answerQuestions(options, output_) || !prepare(options)) {
    return std::nullopt;
  }
  std::ostream& textOutput = outputFile_ != nullptr ? *outputFile_ : output_;
  // Failures of the streams are not looked at: the exit status speaks of the input alone.
  const auto* const written = dynamic_cast<const DescriptorStream*>(&textOutput);
  if (written != nullptr && !written->hasReader()) {
    preprocessor_.setOutputSink(StreamSink{&textOutput, written->descriptor()});
  } else {  // A reader may change included files while the run waits.
    preprocessor_.setOutputSink([&textOutput](std::string_view block) { textOutput << block; });
  }
  bool isFatal = false;
  preprocessor_.setDiagnosticSink([this, &isFatal](const Diagnostic& diagnostic) {
    isFatal = diagnostic.severity == Severity::FatalError;
    messages_ << diagnostic.text << std::flush;
  });
  preprocessor_.setDependencies(false);  // Nobody asks for them.
  const Result result = preprocessor_.run(std::move(source_), sourceName_);
  textOutput.flush();
  if (result.status == Status::OutOfMemory && !isFatal) {
    throw std::bad_alloc();  // There was none even for the preprocessor, which would have said so.
  }
  return result.status;
}

bool Driver::prepare(const OptionParser& options) {
  if (!defineMacros(options, preprocessor_) || !addIncludeDirectories(options, preprocessor_)) {
    return false;
  }
  // The file is made before the rest of the command line is looked at, so a later mistake leaves it behind empty.
  if (!openOutputFile(options)) {
    return false;
  }

  if (options.isPresent("s")) {
    const auto name = options.value("s");
    if (!name) {
      return false;
    }
    sourceName_ = *name;
  }

  if (options.plainArgumentCount() > 1) {
    messages_ << kMessagePrefix << "cannot provide more than one source file\n";
    return false;
  }
  // An empty file name means standard input.
  const bool isFile = options.plainArgumentCount() == 1 && !options.plainArgument(0).empty();
  if (isFile) {
    source_ = Source::ofFile(std::string(options.plainArgument(0)));
  } else if (sourceName_.empty()) {
    sourceName_ = "stdin";
  }
  return true;
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
  constexpr int kReadableAndWritable = 0666;
  const int descriptor = ::open(std::string(*fileName).c_str(), O_WRONLY | O_CREAT | O_TRUNC, kReadableAndWritable);
  if (descriptor < 0) {
    messages_ << kMessagePrefix << "cannot open output file '" << *fileName << "'\n";
    return false;
  }
  outputFile_ = std::make_unique<DescriptorStream>(descriptor, DescriptorStream::Ownership::Owned);
  return true;
}

}  // namespace qnpp
