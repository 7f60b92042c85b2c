// What the program does around a run: the command line and the streams.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "qnpp/preprocessor.h"

namespace qnpp {

class OptionParser;

/// Carries out a command line.
class Driver {
 public:
  /// `output` receives the help and version texts, and the preprocessed text if there is no `-o`; `messages` receives
  /// all messages. Both must outlive the driver.
  Driver(std::ostream& output, std::ostream& messages, Reader standardInput);

  /// How the run ended. Nothing when the program ends without one, with status 1: something was wrong with the command
  /// line and has been reported, or the help or version text was asked for and has been written.
  /// Throws std::bad_alloc when memory ran out and that has not been reported.
  std::optional<Status> run(int argc, const char* const* argv);

 private:
  bool prepare(const OptionParser& options);
  bool openOutputFile(const OptionParser& options);

  std::ostream& output_;                      // Borrowed.
  std::ostream& messages_;                    // Borrowed.
  std::unique_ptr<std::ostream> outputFile_;  // Null without `-o`.
  Preprocessor preprocessor_;
  Source source_;
  std::string sourceName_;
};

}  // namespace qnpp
