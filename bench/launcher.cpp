// Runs one program and prints what it cost:
//
//   launcher SECONDS STDOUT STDERR PROGRAM [ARGUMENT...]
//
// prints one line "EXIT SIGNAL TIMED_OUT USER_US SYSTEM_US WALL_US PEAK_KB". Children that the program itself waited
// for are counted with it, so that a compiler driver is charged for the preprocessor it starts.
//
// It exists because the kernel starts the peak memory of a new program at that of the process it was started from:
// started from Python directly, every program would seem to need Python's 10 MB. This process stays near 1 MB.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

extern char** environ;

namespace {

// No workload needs more; a program that runs away is stopped before the machine starts to swap.
constexpr rlim_t kAddressSpaceLimit = rlim_t{12} << 30;

volatile sig_atomic_t childGroup = 0;
volatile sig_atomic_t timedOut = 0;

void stopChild(int) {
  timedOut = 1;
  if (childGroup > 0) kill(-childGroup, SIGKILL);
}

void setLimit(int resource, rlim_t value) {
  rlimit limit{};
  getrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
  limit.rlim_cur = value < limit.rlim_max ? value : limit.rlim_max;
  setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

long microseconds(const timeval& time) { return static_cast<long>(time.tv_sec) * 1000000 + time.tv_usec; }

long wallMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<long>(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

int fail(const char* what, int error) {
  std::fprintf(stderr, "launcher: %s: %s\n", what, std::strerror(error));
  return 2;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc < 5) {
    std::fputs("usage: launcher SECONDS STDOUT STDERR PROGRAM [ARGUMENT...]\n", stderr);
    return 2;
  }
  setLimit(RLIMIT_AS, kAddressSpaceLimit);
  setLimit(RLIMIT_CORE, 0);

  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, argv[2], O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&files, STDERR_FILENO, argv[3], O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);  // a group of its own: a time-out ends all of it

  struct sigaction onAlarm {};
  onAlarm.sa_handler = stopChild;
  sigaction(SIGALRM, &onAlarm, nullptr);

  const long start = wallMicroseconds();
  pid_t child = 0;
  const int spawnError = posix_spawnp(&child, argv[4], &files, &attributes, argv + 4, environ);
  if (spawnError != 0) return fail(argv[4], spawnError);
  childGroup = child;
  alarm(static_cast<unsigned>(std::atoi(argv[1])));

  int status = 0;
  rusage usage{};
  while (wait4(child, &status, 0, &usage) < 0) {
    if (errno != EINTR) return fail("wait4", errno);
  }
  const long wall = wallMicroseconds() - start;
  alarm(0);

  std::printf("%d %d %d %ld %ld %ld %ld\n", WIFEXITED(status) ? WEXITSTATUS(status) : -1,
              WIFSIGNALED(status) ? WTERMSIG(status) : 0, static_cast<int>(timedOut), microseconds(usage.ru_utime),
              microseconds(usage.ru_stime), wall, usage.ru_maxrss);
  return 0;
}
