// qnpp-build [options] [source_file]: qnpp for builds. The result appears whole or not at all, and what it was made
// from is written down for the build tool.

#include <csignal>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>

#include "driver/MemoryBudget.h"
#include "driver/Process.h"
#include "tools/build/ExitStatus.h"
#include "tools/build/Failure.h"
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
  qnpp::MemoryBudget::begin();
  qnpp::prepareStreams();
  cleanUpOnSignals();
  try {
    int status = qnpp::build::kFailed;
    const auto options = qnpp::build::readCommandLine(argc, argv, std::cout, std::cerr, status);
    return options ? qnpp::build::run(*options) : status;
  } catch (const qnpp::build::Failure& failure) {
    std::cerr << "qnpp-build: " << failure.what() << '\n';
  } catch (const std::filesystem::filesystem_error& error) {
    std::cerr << "qnpp-build: " << error.what() << '\n';
  } catch (const std::bad_alloc&) {
    std::cerr << "FATAL ERROR: out of memory.\n";
  }
  return qnpp::build::kFailed;
}
