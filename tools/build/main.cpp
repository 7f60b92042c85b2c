// qnpp-build [options] [source_file]: qnpp for builds. The result appears whole or not at all, and what it was made
// from is written down for the build tool.

#include <csignal>
#include <iostream>
#include <optional>

#include "tools/Companion.h"
#include "tools/build/Options.h"
#include "tools/build/Run.h"
#include "tools/build/WholeFile.h"

namespace {

extern "C" void cleanUpAndEnd(int signal) {
  qnpp::build::WholeFile::removeParts();
  static_cast<void>(std::signal(signal, SIG_DFL));
  static_cast<void>(std::raise(signal));
}

// A build that is called off leaves nothing lying about. What the caller ignores stays ignored.
void cleanUpOnSignals() {
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    if (std::signal(signal, cleanUpAndEnd) == SIG_IGN) {
      static_cast<void>(std::signal(signal, SIG_IGN));
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  return qnpp::runCompanion("qnpp-build", [argc, argv] {
    cleanUpOnSignals();
    int status = qnpp::kFailed;
    const auto options = qnpp::build::readCommandLine(argc, argv, std::cout, std::cerr, status);
    return options ? qnpp::build::run(*options) : status;
  });
}
