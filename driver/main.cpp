// qnpp [options] [source_file]: one pass over one source, then exit.
//
// Status 0: no error was reported. Status 1: at least one was, or memory ran out, or the command line ended the
// program, which `--help` and `--version` do as well. Status 2: the scanner gave up, after saying so on standard error.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string_view>

#include "driver/Driver.h"
#include "driver/MemoryBudget.h"
#include "engine/CppPreprocessor.h"
#include "lexer/CppLexer.h"

namespace {

// Where not even an exception can be thrown, for want of memory: before anything has been written.
[[noreturn]] void endOutOfMemory() {
  constexpr std::string_view kMessage = "FATAL ERROR: out of memory.\n";
  static_cast<void>(!::write(STDERR_FILENO, kMessage.data(), kMessage.size()));
  ::_exit(1);
}

// The program runs to its end whatever becomes of the output: a failed write does not count, so a reader that goes away
// and a file that may not grow must not end it by a signal.
void ignoreFailedWrites() {
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

// A file that is opened takes the first descriptor that is free. Were standard error closed, messages would go into it.
void occupyStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) == -1) {
      // Opened for the use that is not made of it: reading or writing fails as it did when it was closed.
      static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
}

// A division by zero has no message: it ends the process by the processor's arithmetic fault. Raising the signal makes
// that so on processors whose division does not trap, and keeps the compiler, to which such a division is undefined,
// out of it.
[[noreturn]] void raiseArithmeticFault() {
  static_cast<void>(std::signal(SIGFPE, SIG_DFL));
  static_cast<void>(std::raise(SIGFPE));
  std::abort();  // Only if the signal is blocked.
}

int preprocess(int argc, char** argv) {
  qnpp::Driver driver(std::cout, std::cerr);
  // Not on the stack, which may be limited to less than its buffers take.
  const auto preprocessor = std::make_unique<qnpp::CppPreprocessor>(std::cerr, std::cin);
  int status = 1;
  try {
    // Read the command line; open the output and the source.
    if (driver.prepare(argc, argv, *preprocessor)) {
      // Preprocess.
      status = preprocessor->run() ? 1 : 0;
    }
  } catch (const qnpp::FatalLexerError&) {
    status = 2;
  } catch (const qnpp::DivisionByZero&) {
    driver.flush();
    raiseArithmeticFault();
  } catch (const std::bad_alloc&) {
    preprocessor->reportOutOfMemory();
  } catch (const std::length_error&) {  // A container that would grow beyond what can be addressed.
    preprocessor->reportOutOfMemory();
  }
  driver.flush();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  std::set_terminate(endOutOfMemory);
  qnpp::MemoryBudget::begin();
  ignoreFailedWrites();
  occupyStandardDescriptors();
  try {
    // Nothing here uses stdio, and reading need not push out what was written.
    std::ios::sync_with_stdio(false);
    std::cin.tie(nullptr);
    return preprocess(argc, argv);
  } catch (const std::bad_alloc&) {
    endOutOfMemory();
  }
}
