#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

namespace qnpp::faults {

namespace {

using Clock = std::chrono::steady_clock;

// No test needs more. A runaway program (a file that includes itself, say) reaches it long before its time is up.
constexpr std::size_t kMostBytesRead = std::size_t{64} << 20;

// The variables that pass from the developer's environment to the program: what finding the program and its libraries
// takes, and the settings of the sanitizers and of the coverage tools.
constexpr std::array kPassedVariables = {"PATH",          "LD_LIBRARY_PATH",   "ASAN_OPTIONS", "LSAN_OPTIONS",
                                         "UBSAN_OPTIONS", "LLVM_PROFILE_FILE", "GCOV_PREFIX",  "GCOV_PREFIX_STRIP"};

[[noreturn]] void throwSystemError(const std::string& action) {
  throw std::runtime_error(action + ": " + std::strerror(errno));
}

// A file descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int value = -1) : value_(value) {}
  Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(); }

  int get() const { return value_; }
  void close() {
    if (value_ >= 0) ::close(std::exchange(value_, -1));
  }

 private:
  int value_;
};

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throwSystemError("cannot make a pipe");
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
    for (const int end : ends) ::fcntl(end, F_SETFD, FD_CLOEXEC);
  }

  Descriptor readEnd;
  Descriptor writeEnd;
};

std::vector<std::string> makeEnvironment() {
  // A fixed locale and time zone: `__DATE__`, `__TIME__` and messages of the C library must not depend on the machine.
  std::vector<std::string> variables = {"LC_ALL=C", "TZ=UTC"};
  for (const char* name : kPassedVariables) {
    if (const char* value = std::getenv(name)) variables.push_back(std::string(name) + "=" + value);
  }
  return variables;
}

// The form that exec takes: pointers to the strings of `texts`, which must outlive the result, and a null pointer.
std::vector<char*> toPointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Runs in the child between fork and exec. It makes only calls that are safe there, and says what went wrong by
// writing the error number to `failure`, which exec closes when all goes well.
[[noreturn]] void becomeProgram(const ProcessRequest& request, int input, int output, int error, int failure,
                                char* const* command, char** environment) {
  ::setpgid(0, 0);
  const rlimit noCoreFile{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCoreFile);
  const bool isReady = ::dup2(input, STDIN_FILENO) >= 0 && ::dup2(output, STDOUT_FILENO) >= 0 &&
                       ::dup2(error, STDERR_FILENO) >= 0 && ::chdir(request.workingFolder.c_str()) == 0;
  // The program meets the standard descriptors alone, whatever the test itself was started with: a test counts them.
  ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
  if (isReady) {
    environ = environment;
    ::execvp(command[0], command);
  }
  const int reason = errno;
  [[maybe_unused]] const ssize_t written = ::write(failure, &reason, sizeof reason);
  ::_exit(127);
}

// A started process, the leader of a process group of its own. Destroying it kills whatever is left of the group.
class Child {
 public:
  explicit Child(const ProcessRequest& request);
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  Child(Child&&) = delete;
  Child& operator=(Child&&) = delete;
  ~Child() { kill(); }

  void kill();
  // True once the process has ended; its wait status is then in `waitStatus()`.
  bool hasEnded();
  int waitStatus() const { return waitStatus_; }
  Descriptor& output() { return output_.readEnd; }
  Descriptor& error() { return error_.readEnd; }

 private:
  Pipe output_;
  Pipe error_;
  pid_t id_ = -1;
  int waitStatus_ = 0;
  bool isReaped_ = false;
};

Child::Child(const ProcessRequest& request) {
  const Descriptor input(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (input.get() < 0) throwSystemError("cannot open /dev/null");
  std::vector<std::string> words = request.command;
  std::vector<std::string> variables = makeEnvironment();
  const std::vector<char*> command = toPointers(words);
  std::vector<char*> environment = toPointers(variables);
  Pipe failure;

  id_ = ::fork();
  if (id_ < 0) throwSystemError("cannot fork");
  if (id_ == 0) {
    becomeProgram(request, input.get(), output_.writeEnd.get(), error_.writeEnd.get(), failure.writeEnd.get(),
                  command.data(), environment.data());
  }
  ::setpgid(id_, id_);  // here too, so that the group exists whichever of the two processes runs first
  output_.writeEnd.close();
  error_.writeEnd.close();
  failure.writeEnd.close();

  int reason = 0;
  if (::read(failure.readEnd.get(), &reason, sizeof reason) == static_cast<ssize_t>(sizeof reason)) {
    kill();
    errno = reason;
    throwSystemError("cannot start " + request.command.front());
  }
}

void Child::kill() {
  if (isReaped_) return;
  ::kill(-id_, SIGKILL);
  while (::waitpid(id_, &waitStatus_, 0) < 0 && errno == EINTR) {
  }
  isReaped_ = true;
}

bool Child::hasEnded() {
  if (!isReaped_) isReaped_ = ::waitpid(id_, &waitStatus_, WNOHANG) == id_;
  return isReaped_;
}

// Appends what can be read from `descriptor` now; closes it at the end of the stream.
void readSome(Descriptor& descriptor, std::string& text) {
  std::array<char, 65536> buffer;
  const ssize_t count = ::read(descriptor.get(), buffer.data(), buffer.size());
  if (count > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  } else if (count == 0 || errno != EINTR) {
    descriptor.close();
  }
}

// Milliseconds for poll, rounded up, so that a wait never ends just before its deadline.
int millisecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 0, 1'000'000));
}

// Waits until the process has closed both streams and ended. Returns why it was killed instead, or an empty text.
std::string collect(Child& child, const ProcessRequest& request, ProcessResult& result) {
  const Clock::time_point deadline = Clock::now() + request.timeLimit;
  const auto timeIsUp = [&] { return Clock::now() >= deadline; };
  std::string tooSlow = "it ran for more than " + std::to_string(request.timeLimit.count()) + " ms";
  while (child.output().get() >= 0 || child.error().get() >= 0) {
    // poll passes over a negative descriptor, so a stream that has ended is no exception.
    std::array<pollfd, 2> streams{pollfd{child.output().get(), POLLIN, 0}, pollfd{child.error().get(), POLLIN, 0}};
    ::poll(streams.data(), streams.size(), millisecondsUntil(deadline));
    if (timeIsUp()) return tooSlow;
    if (streams[0].revents != 0) readSome(child.output(), result.standardOutput);
    if (streams[1].revents != 0) readSome(child.error(), result.standardError);
    if (result.standardOutput.size() + result.standardError.size() > kMostBytesRead) {
      return "it wrote more than " + std::to_string(kMostBytesRead) + " bytes";
    }
  }
  while (!child.hasEnded()) {
    if (timeIsUp()) return tooSlow;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return {};
}

std::string signalName(int number) {
  static constexpr std::array<std::pair<int, std::string_view>, 11> kNames = {{{SIGABRT, "SIGABRT"},
                                                                               {SIGBUS, "SIGBUS"},
                                                                               {SIGFPE, "SIGFPE"},
                                                                               {SIGHUP, "SIGHUP"},
                                                                               {SIGILL, "SIGILL"},
                                                                               {SIGINT, "SIGINT"},
                                                                               {SIGKILL, "SIGKILL"},
                                                                               {SIGPIPE, "SIGPIPE"},
                                                                               {SIGSEGV, "SIGSEGV"},
                                                                               {SIGTERM, "SIGTERM"},
                                                                               {SIGTRAP, "SIGTRAP"}}};
  const auto found =
      std::find_if(kNames.begin(), kNames.end(), [&](const auto& entry) { return entry.first == number; });
  return found == kNames.end() ? "SIG" + std::to_string(number) : std::string(found->second);
}

std::string describeStatus(int waitStatus) {
  if (WIFSIGNALED(waitStatus)) return signalName(WTERMSIG(waitStatus));
  return std::to_string(WEXITSTATUS(waitStatus));
}

}  // namespace

ProcessResult runProcess(const ProcessRequest& request) {
  ProcessResult result;
  Child child(request);
  result.killedBy = collect(child, request, result);
  if (!result.killedBy.empty()) child.kill();
  result.status = describeStatus(child.waitStatus());
  return result;
}

}  // namespace qnpp::faults
