#include "driver/MemoryBudget.h"

#ifdef _WIN32

// The system never promises more memory than it has, so asking for too much fails by itself.
void qnpp::MemoryBudget::begin() {}

#else

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <new>
#include <string_view>

namespace qnpp {
namespace {

constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;
constexpr std::uint64_t kFirstLimit = 32 * kMebibyte;
// A rise that is less than this is not worth the look at the system.
constexpr std::uint64_t kLeastRise = kMebibyte;
constexpr std::uint64_t kLeastReserve = 64 * kMebibyte;

// The sanitizers reserve terabytes for themselves.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
constexpr bool kIsSanitized =
    __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kIsSanitized = false;
#endif

// A text within the object itself, cut off where it gets too long.
class FixedText {
 public:
  std::string_view text() const { return {bytes_.data(), size_}; }
  const char* name() const { return bytes_.data(); }  // Ends in a NUL.
  std::size_t size() const { return size_; }

  FixedText& append(std::string_view text) {
    const std::size_t count = std::min(text.size(), kMostBytes - size_);
    std::copy_n(text.data(), count, bytes_.data() + size_);
    cut(size_ + count);
    return *this;
  }

  void cut(std::size_t size) {
    size_ = size;
    bytes_[size] = '\0';
  }

  // The contents of a file instead; nothing when it cannot be read.
  void read(const char* fileName) {
    cut(0);
    const int descriptor = ::open(fileName, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
      return;
    }
    ssize_t count = 0;
    do {
      count = ::read(descriptor, bytes_.data() + size_, kMostBytes - size_);
      cut(size_ + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    } while (count > 0);
    ::close(descriptor);
  }

 private:
  static constexpr std::size_t kMostBytes = 4095;

  std::array<char, kMostBytes + 1> bytes_{};
  std::size_t size_ = 0;
};

// The text behind `label` at the start of a line, up to the line's end.
std::optional<std::string_view> lineBehind(std::string_view text, std::string_view label) {
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    if (line.starts_with(label)) {
      return line.substr(label.size());
    }
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return std::nullopt;
}

std::optional<std::uint64_t> numberIn(std::optional<std::string_view> text) {
  if (!text) {
    return std::nullopt;
  }
  text->remove_prefix(std::min(text->find_first_not_of(' '), text->size()));
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

// Looks through the files of the system, with two buffers for all of them.
class Survey {
 public:
  explicit Survey(const char* root) : root_(root) {}

  // What the process has in memory of its own, as against files that are mapped.
  std::optional<std::uint64_t> taken() {
    const auto behindNumber = [](std::string_view text) {
      const std::size_t blank = text.find(' ');
      return blank == std::string_view::npos ? std::string_view() : text.substr(blank + 1);
    };
    // Pages in all, those in memory, those of them that are shared.
    const std::string_view pages = behindNumber(read("/proc/self/statm"));
    const auto resident = numberIn(pages);
    const auto shared = numberIn(behindNumber(pages));
    if (!resident || !shared || *resident < *shared) {
      return std::nullopt;
    }
    return (*resident - *shared) * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  }

  // What machine and container can still give. Swap does not count: a run that lives there is as good as dead.
  std::optional<std::uint64_t> room() {
    const std::string_view memory = read("/proc/meminfo");
    const auto total = numberIn(lineBehind(memory, "MemTotal:"));
    const auto available = numberIn(lineBehind(memory, "MemAvailable:"));
    if (!total || !available) {
      return std::nullopt;
    }
    return std::min(beyondReserve(*total * 1024, *available * 1024), roomOfGroups());
  }

 private:
  // The files of a control group that hold its limit, its use, and how much of that is cache which can be dropped.
  struct GroupFiles {
    std::string_view controller;
    std::string_view limit;
    std::string_view use;
    std::string_view cacheLabel;
  };
  static constexpr GroupFiles kVersion1{"/memory", "/memory.limit_in_bytes", "/memory.usage_in_bytes",
                                        "total_inactive_file "};
  static constexpr GroupFiles kVersion2{"", "/memory.max", "/memory.current", "inactive_file "};

  static std::uint64_t beyondReserve(std::uint64_t total, std::uint64_t available) {
    const std::uint64_t reserve = std::max(kLeastReserve, total / 16);
    return available > reserve ? available - reserve : 0;
  }

  std::string_view read(std::string_view name) {
    path_.cut(0);
    text_.read(path_.append(root_).append(name).name());
    return text_.text();
  }

  // In the folder that `path_` names.
  std::optional<std::uint64_t> numberInGroup(std::string_view fileName, std::string_view label) {
    const std::size_t folder = path_.size();
    text_.read(path_.append(fileName).name());
    path_.cut(folder);
    return numberIn(lineBehind(text_.text(), label));
  }

  // The least of the group that the process is in and of all those around it. Within a container the names may be those
  // of the outside; the walk then gets to the container's own group in the end, which is the root there.
  std::uint64_t roomOfGroups() {
    // A line is "number:controllers:name", and "0::name" in version 2. The memory has one controller.
    read("/proc/self/cgroup");
    std::string_view group;
    const GroupFiles* files = &kVersion2;
    for (std::string_view lines = text_.text(); !lines.empty();) {
      const std::string_view line = lines.substr(0, lines.find('\n'));
      lines.remove_prefix(std::min(line.size() + 1, lines.size()));
      const std::size_t name = line.find(":/");
      if (name == std::string_view::npos) {
        continue;
      }
      if (line.substr(0, name).ends_with(":memory")) {
        files = &kVersion1;
        group = line.substr(name + 1);
      } else if (line.starts_with("0::") && files == &kVersion2) {
        group = line.substr(name + 1);
      }
    }
    path_.cut(0);
    const std::size_t top = path_.append(root_).append("/sys/fs/cgroup").append(files->controller).size();
    path_.append(group == "/" ? std::string_view() : group);
    std::uint64_t room = roomOfGroup(*files);
    while (path_.size() > top) {
      path_.cut(path_.text().rfind('/'));
      room = std::min(room, roomOfGroup(*files));
    }
    return room;
  }

  // In the folder that `path_` names.
  std::uint64_t roomOfGroup(const GroupFiles& files) {
    const auto limit = numberInGroup(files.limit, "");
    const auto use = numberInGroup(files.use, "");
    if (!limit || !use) {
      return std::numeric_limits<std::uint64_t>::max();  // No group, or none with a limit.
    }
    const std::uint64_t cache = numberInGroup("/memory.stat", files.cacheLabel).value_or(0);
    const std::uint64_t kept = *use - std::min(cache, *use);
    return beyondReserve(*limit, *limit - std::min(kept, *limit));
  }

  const char* root_;
  FixedText path_;
  FixedText text_;
};

}  // namespace

void MemoryBudget::begin() {
  rlimit data{};
  rlimit addressSpace{};
  if (kIsSanitized || ::getrlimit(RLIMIT_DATA, &data) != 0 || ::getrlimit(RLIMIT_AS, &addressSpace) != 0 ||
      data.rlim_cur != RLIM_INFINITY || addressSpace.rlim_cur != RLIM_INFINITY) {
    return;
  }
  data.rlim_cur = kFirstLimit;
  if (::setrlimit(RLIMIT_DATA, &data) == 0) {
    std::set_new_handler([] { MemoryBudget().grow(); });
  }
}

void MemoryBudget::grow() const {
  rlimit data{};
  if (::getrlimit(RLIMIT_DATA, &data) != 0 || data.rlim_cur == RLIM_INFINITY) {
    throw std::bad_alloc();
  }
  // A part of the rest at a time: what others take meanwhile counts at the next look. Where the system does not tell,
  // there is no end to it, and steps that grow get to the address space's soon enough.
  const std::uint64_t current = data.rlim_cur;
  const std::uint64_t greatest = most().value_or(current * 2);
  if (greatest < current + kLeastRise) {
    throw std::bad_alloc();
  }
  data.rlim_cur = current + std::max((greatest - current) / 4, kLeastRise);
  if (::setrlimit(RLIMIT_DATA, &data) != 0) {
    throw std::bad_alloc();
  }
}

std::optional<std::uint64_t> MemoryBudget::most() const {
  Survey survey(root_);
  const auto taken = survey.taken();
  const auto room = survey.room();
  if (!taken || !room) {
    return std::nullopt;
  }
  return *taken + *room;
}

}  // namespace qnpp

#endif
