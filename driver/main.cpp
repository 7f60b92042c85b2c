// qnpp [options] [source_file]: one pass over one source, then exit.
//
// Status 0: no error was reported. Status 1: at least one was, or memory ran out, or the command line ended the
// program, which `--help` and `--version` do as well. Status 2: the scanner gave up, after saying so on standard error.

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <exception>
#include <new>
#include <optional>
#include <string_view>

#include "driver/DescriptorStream.h"
#include "driver/Driver.h"
#include "driver/MemoryBudget.h"
#include "driver/Process.h"

namespace {

// Where not even an exception can be thrown, for want of memory: before anything has been written.
[[noreturn]] void endOutOfMemory() {
  constexpr std::string_view kMessage = "FATAL ERROR: out of memory.\n";
  static_cast<void>(!::write(STDERR_FILENO, kMessage.data(), kMessage.size()));
  ::_exit(1);
}

// Reads until `size` bytes are there or the input ends.
std::ptrdiff_t readStandardInput(char* to, std::size_t size) {
  std::size_t got = 0;
  while (got < size) {
    const ssize_t count = ::read(STDIN_FILENO, to + got, qnpp::atOnce(size - got));
    if (count == 0) {
      break;
    }
    if (count > 0) {
      got += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return -1;
    }
  }
  return static_cast<std::ptrdiff_t>(got);
}

int preprocess(int argc, char** argv) {
  qnpp::DescriptorStream output(STDOUT_FILENO);
  qnpp::DescriptorStream messages(STDERR_FILENO);
  const std::optional<qnpp::Status> status = qnpp::Driver(output, messages, readStandardInput).run(argc, argv);
  switch (status.value_or(qnpp::Status::Errors)) {
    case qnpp::Status::Clean:
      return 0;
    case qnpp::Status::DivisionByZero:
      qnpp::raiseArithmeticFault();  // Without a message.
    case qnpp::Status::ScannerFailed:
      return 2;
    default:
      return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::set_terminate(endOutOfMemory);
  qnpp::MemoryBudget::begin();
  qnpp::prepareStreams();
  try {
    return preprocess(argc, argv);
  } catch (const std::bad_alloc&) {
    endOutOfMemory();
  }
}
