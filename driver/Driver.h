// What the program does around a run: the command line and the streams.
#pragma once

#include <fstream>
#include <memory>
#include <ostream>

namespace qnpp {

class CppPreprocessor;
class OptionParser;

/// Turns a command line into a preprocessor that is ready to run.
///
/// Owns the stream of the `-o` file, which the preprocessor only borrows: keep the driver alive until the run is over.
class Driver {
 public:
  /// `output` receives the help and version texts, and the preprocessed text if there is no `-o`; `messages` receives
  /// what is wrong with the command line. Both must outlive the driver.
  Driver(std::ostream& output, std::ostream& messages);

  /// Carries out the whole command line, up to the opening of the source. False means that the program ends here with
  /// status 1: something was wrong and has been reported, or the help or version text was asked for and has been
  /// written.
  bool prepare(int argc, const char* const* argv, CppPreprocessor& preprocessor);

  /// Hands everything that the program has written to the operating system.
  void flush();

 private:
  bool openOutputFile(const OptionParser& options);
  std::ostream& textOutput();

  std::ostream& output_;                       // Borrowed.
  std::ostream& messages_;                     // Borrowed.
  std::unique_ptr<std::ofstream> outputFile_;  // Null without `-o`.
};

}  // namespace qnpp
