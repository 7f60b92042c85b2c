#include "driver/Process.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <initializer_list>

#ifdef _WIN32
// Read by the C library: "*" in a word stays as it is.
extern "C" {
int _dowildcard = 0;
}
#endif

namespace qnpp {

#ifdef _WIN32

void prepareStreams() {
  // Writing never ends a process here, and the C library keeps the first three descriptors for the streams.
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    static_cast<void>(::_setmode(descriptor, _O_BINARY));
  }
  _fmode = _O_BINARY;
}

void raiseArithmeticFault() {
  constexpr unsigned kDivisionByZero = 0xC0000094U;
  // The exception itself might wait for somebody to close a window.
  ::_exit(static_cast<int>(kDivisionByZero));
}

#else

void prepareStreams() {
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) == -1) {
      // Opened for the use that is not made of it: reading or writing fails as it did when it was closed.
      static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
}

void raiseArithmeticFault() {
  // Raising the signal makes the fault so on processors whose division does not trap, and keeps the compiler, to which
  // such a division is undefined, out of it.
  static_cast<void>(std::signal(SIGFPE, SIG_DFL));
  static_cast<void>(std::raise(SIGFPE));
  std::abort();  // Only if the signal is blocked.
}

#endif

}  // namespace qnpp
