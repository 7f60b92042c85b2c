#include "tools/build/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "tools/Companion.h"

namespace qnpp::build {
namespace {

// The parts that lie about, for removeParts(): result, dependency file and table.
std::array<std::atomic<const char*>, 3> partNames;

void notePart(const char* name) {
  for (auto& slot : partNames) {
    const char* none = nullptr;
    if (slot.compare_exchange_strong(none, name)) {
      return;
    }
  }
}

void forgetPart(const char* name) {
  for (auto& slot : partNames) {
    const char* found = name;
    slot.compare_exchange_strong(found, nullptr);
  }
}

[[noreturn]] void fail(const std::string& what, const std::string& name) {
  throw Failure(what + " '" + name + "': " + std::strerror(errno));
}

// Where links lead to, as far as there is anything. A link to nothing is replaced.
std::string behindLinks(const std::string& name) {
  std::array<char, PATH_MAX> resolved;
  struct stat status;
  if (::lstat(name.c_str(), &status) == 0 && S_ISLNK(status.st_mode) &&
      ::realpath(name.c_str(), resolved.data()) != nullptr) {
    return resolved.data();
  }
  return name;
}

}  // namespace

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count < 0 && errno != EINTR) {
      return false;
    }
    text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
  return true;
}

WholeFile::WholeFile(std::string name) : name_(std::move(name)), path_(behindLinks(name_)) {
  struct stat status;
  isOrdinary_ = ::stat(path_.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

WholeFile::~WholeFile() {
  if (!part_.empty()) {
    ::unlink(part_.c_str());
    forgetPart(part_.c_str());
  }
}

bool WholeFile::isSameFileAs(const std::string& other) const {
  struct stat mine;
  struct stat others;
  if (::stat(path_.c_str(), &mine) == 0) {
    return isOrdinary_ && ::stat(other.c_str(), &others) == 0 && mine.st_dev == others.st_dev &&
           mine.st_ino == others.st_ino;
  }
  return name_ == other;
}

bool WholeFile::holds(std::string_view text) const {
  const int descriptor = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor == -1) {
    return false;
  }
  std::array<char, 1 << 16> block;
  ssize_t count = 0;
  while ((count = ::read(descriptor, block.data(), block.size())) > 0) {
    const std::string_view found(block.data(), static_cast<std::size_t>(count));
    if (!text.starts_with(found)) {
      break;
    }
    text.remove_prefix(found.size());
  }
  ::close(descriptor);
  return count == 0 && text.empty();
}

void WholeFile::prepare(std::string_view text, bool keepsUnchanged) {
  if (!isOrdinary_) {
    waiting_ = text;
  } else if (!keepsUnchanged || !holds(text)) {
    writePart(text);
  }
}

void WholeFile::writePart(std::string_view text) {
  // In the same folder, since a file can be given a new name only within its file system. The name is a short one,
  // whatever the length of that of the file.
  const std::size_t slash = path_.rfind('/');
  const std::string folder = slash == std::string::npos ? std::string() : path_.substr(0, slash + 1);
  int descriptor = -1;
  for (int attempt = 0; descriptor == -1; ++attempt) {
    std::string part = folder + ".qnpp-build-" + std::to_string(::getpid()) + '-' + std::to_string(attempt);
    descriptor = ::open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor != -1) {
      part_ = std::move(part);
      notePart(part_.c_str());
    } else if (errno != EEXIST) {
      fail("cannot write", name_);
    }
  }
  struct stat status;
  if (::stat(path_.c_str(), &status) == 0) {
    static_cast<void>(::fchmod(descriptor, status.st_mode & 07777));  // As good as it gets.
  }
  const bool isWritten = writeAll(descriptor, text);
  const int error = errno;
  // Some file systems tell only now that there was no room.
  if (::close(descriptor) != 0 || !isWritten) {
    errno = isWritten ? errno : error;
    fail("cannot write", name_);
  }
}

void WholeFile::commit() {
  if (!isOrdinary_) {
    const int descriptor = ::open(path_.c_str(), O_WRONLY | O_CLOEXEC);
    const bool isWritten = descriptor != -1 && writeAll(descriptor, waiting_);
    if (!isWritten) {
      fail("cannot write", name_);
    }
    ::close(descriptor);
  } else if (!part_.empty()) {
    if (::rename(part_.c_str(), path_.c_str()) != 0) {
      fail("cannot write", name_);
    }
    forgetPart(part_.c_str());
    part_.clear();
  }
}

void WholeFile::remove() noexcept {
  if (isOrdinary_) {
    ::unlink(path_.c_str());
  }
}

void WholeFile::removeParts() noexcept {
  for (const auto& slot : partNames) {
    if (const char* const name = slot.load()) {
      ::unlink(name);
    }
  }
}

}  // namespace qnpp::build
