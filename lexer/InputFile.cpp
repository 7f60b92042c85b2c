#include "lexer/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#if __has_include(<sys/sysmacros.h>)
#include <sys/sysmacros.h>
#endif
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <ctime>
#include <vector>

namespace qnpp {

#ifdef _WIN32

// To look at a file takes as long as to open it, so a stamp would save nothing.
std::optional<FileStamp> stampOf(const std::string&) { return std::nullopt; }
std::optional<FileStamp> stampOfOpen(int) { return std::nullopt; }
FileTime fileClock() { return {}; }

// A directory cannot be opened.
void FileBuffer::open(const std::string& path) {
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_BINARY | O_NOINHERIT);
}

// Nobody asks: without a stamp no text is kept.
std::size_t FileBuffer::descriptorsLeft(std::size_t) const { return 0; }

#else

namespace {

std::optional<FileStamp> stampOf(const struct stat& status) {
  if (!S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return FileStamp{status.st_dev,
                   status.st_ino,
                   static_cast<std::uint64_t>(status.st_size),
                   {status.st_ctim.tv_sec, status.st_ctim.tv_nsec}};
}

}  // namespace

FileTime fileClock() {
  struct timespec now {};
  return ::clock_gettime(CLOCK_REALTIME_COARSE, &now) == 0 ? FileTime{now.tv_sec, now.tv_nsec} : FileTime();
}

std::optional<FileStamp> stampOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? stampOf(status) : std::nullopt;
}

std::optional<FileStamp> stampOfOpen(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 ? stampOf(status) : std::nullopt;
}

void FileBuffer::open(const std::string& path) {
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  // Opening a directory for reading succeeds; only reading from it fails.
  struct stat status {};
  if (descriptor_ >= 0 && (::fstat(descriptor_, &status) != 0 || S_ISDIR(status.st_mode))) {
    ::close(descriptor_);
    descriptor_ = -1;
  }
  if (descriptor_ >= 0) {
    stamp_ = stampOf(status);
    // On file systems without a device, what is empty by its size may not be so when it is read, as in /proc.
    const bool mayBeMade = status.st_size == 0 && major(status.st_dev) == 0;
    if (stamp_ && (mayBeMade || mayBeDatedTheSame(stamp_->changedAt, fileClock()))) {
      stamp_.reset();
    }
  }
}

std::size_t FileBuffer::descriptorsLeft(std::size_t most) const {
  std::vector<int> taken;
  taken.reserve(most);
  while (taken.size() < most) {
    const int next = ::fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
    if (next < 0) {
      break;
    }
    taken.push_back(next);
  }
  for (const int each : taken) {
    ::close(each);
  }
  return taken.size();
}

#endif

bool mayBeDatedTheSame(const FileTime& changedAt, const FileTime& now) {
  constexpr std::int64_t kHundredth = 10'000'000;
  constexpr std::int64_t kSecond = 1'000'000'000;
  if (changedAt.nanoseconds % kHundredth == 0) {
    return changedAt.seconds + 2 >= now.seconds;
  }
  const std::int64_t later = changedAt.nanoseconds + kHundredth;
  return FileTime{changedAt.seconds + later / kSecond, later % kSecond} >= now;
}

FileBuffer::FileBuffer(const std::string& path) {
  // The system would open the file named by what stands before a NUL.
  if (path.find('\0') == std::string::npos) {
    open(path);
  }
}

FileBuffer::~FileBuffer() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

std::streamsize FileBuffer::xsgetn(char* to, std::streamsize size) {
  std::streamsize got = 0;
  while (got < size && !hasEnded_) {
    // The scanner asks for no more than an int can count.
    const ssize_t count = ::read(descriptor_, to + got, static_cast<unsigned>(size - got));
    if (count > 0) {
      got += count;
    } else if (count == 0) {
      hasEnded_ = true;  // To be asked again would take another call of the system.
    } else if (errno != EINTR && got > 0) {
      break;  // What came before an error is delivered; the error comes back with the next call.
    } else if (errno != EINTR) {
      throw std::ios_base::failure("read error");
    }
  }
  if (const std::shared_ptr<FileText> copy = std::move(copy_); copy != nullptr && hasEnded_) {
    copy->emplace(to, static_cast<std::size_t>(got));
  }
  return got;
}

}  // namespace qnpp
