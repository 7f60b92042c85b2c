// Preloaded into the program: makes reading go wrong.
//
//   QNPP_READ_FAULT=error:N    after N bytes of a descriptor, reading from it is an input/output error
//   QNPP_READ_FAULT=end:N      after N bytes of a descriptor it is at its end, as if the file had shrunk
//   QNPP_READ_FAULT=slow:N     at most N bytes come at a time, and every second call is interrupted

#include <dlfcn.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

using Read = ssize_t (*)(int, void*, std::size_t);

enum class Fault { kNone, kError, kEnd, kSlow };

struct Setting {
  Fault fault = Fault::kNone;
  std::size_t count = 0;
};

Setting readSetting() {
  const char* const text = std::getenv("QNPP_READ_FAULT");
  const char* const colon = text == nullptr ? nullptr : std::strchr(text, ':');
  if (colon == nullptr) {
    return {};
  }
  const Fault fault = *text == 's' ? Fault::kSlow : text[1] == 'n' ? Fault::kEnd : Fault::kError;
  return {fault, std::strtoul(colon + 1, nullptr, 10)};
}

ssize_t fail(int reason) {
  errno = reason;
  return -1;
}

}  // namespace

extern "C" [[gnu::visibility("default")]] ssize_t read(int descriptor, void* to, std::size_t size) {
  static const auto systemRead = reinterpret_cast<Read>(::dlsym(RTLD_NEXT, "read"));
  static const Setting setting = readSetting();
  static std::array<std::size_t, 64> delivered{};
  static bool interrupted = false;
  std::size_t wanted = size;
  if (setting.fault == Fault::kSlow) {
    interrupted = !interrupted;
    if (interrupted) {
      return fail(EINTR);
    }
    wanted = size < setting.count ? size : setting.count;
  } else if (setting.fault != Fault::kNone) {
    const std::size_t left = setting.count - delivered.at(static_cast<std::size_t>(descriptor));
    if (left == 0) {
      return setting.fault == Fault::kEnd ? 0 : fail(EIO);
    }
    wanted = size < left ? size : left;
  }
  const ssize_t count = systemRead(descriptor, to, wanted);
  if (count > 0) {
    delivered.at(static_cast<std::size_t>(descriptor)) += static_cast<std::size_t>(count);
  }
  return count;
}
