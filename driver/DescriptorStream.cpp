#include "driver/DescriptorStream.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace qnpp {

DescriptorStream::Buffer::~Buffer() {
  if (ownership_ == Ownership::Owned) {
    ::close(descriptor_);
  }
}

bool DescriptorStream::Buffer::hasReader() const {
  struct stat status {};
  const bool isKnown = ::fstat(descriptor_, &status) == 0;
  return isKnown && !S_ISREG(status.st_mode) && !(S_ISCHR(status.st_mode) && ::isatty(descriptor_) == 0);
}

std::streamsize DescriptorStream::Buffer::xsputn(const char* from, std::streamsize size) {
  std::streamsize written = 0;
  while (written < size) {
    const ssize_t count = ::write(descriptor_, from + written, atOnce(static_cast<std::size_t>(size - written)));
    if (count >= 0) {
      written += count;
    } else if (errno != EINTR) {
      break;
    }
  }
  return written;
}

DescriptorStream::Buffer::int_type DescriptorStream::Buffer::overflow(int_type byte) {
  const char character = traits_type::to_char_type(byte);
  return xsputn(&character, 1) == 1 ? traits_type::not_eof(byte) : traits_type::eof();
}

}  // namespace qnpp
