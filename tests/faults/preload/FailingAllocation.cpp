// Preloaded into the program: makes an allocation fail.
//
//   QNPP_FAIL_AT=N      the N-th allocation fails, counted from 1 and from the start of the process
//   QNPP_FAIL_ALSO=1    and so do all that follow
//   QNPP_FAIL_MARK=F    the empty file F is made when it happens

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* old, std::size_t size);
}

namespace {

long numberOf(const char* variable) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? 0 : std::strtol(text, nullptr, 10);
}

// Counts an allocation; true when it has to fail.
bool fails() {
  static const long failAt = numberOf("QNPP_FAIL_AT");
  static const bool failAlso = numberOf("QNPP_FAIL_ALSO") != 0;
  static long count = 0;
  ++count;
  if (failAt == 0 || count < failAt || (count > failAt && !failAlso)) {
    return false;
  }
  if (const char* const mark = std::getenv("QNPP_FAIL_MARK"); mark != nullptr && count == failAt) {
    ::close(::open(mark, O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  }
  errno = ENOMEM;
  return true;
}

}  // namespace

#define QNPP_PRELOADED extern "C" [[gnu::visibility("default")]]

QNPP_PRELOADED void* malloc(std::size_t size) noexcept { return fails() ? nullptr : __libc_malloc(size); }
QNPP_PRELOADED void* calloc(std::size_t count, std::size_t size) noexcept {
  return fails() ? nullptr : __libc_calloc(count, size);
}
QNPP_PRELOADED void* realloc(void* old, std::size_t size) noexcept {
  return fails() ? nullptr : __libc_realloc(old, size);
}
