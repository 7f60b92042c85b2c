// Streams over what the process has open.
#pragma once

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <streambuf>

namespace qnpp {

/// How many of `size` bytes are read or written at once: Windows counts them with fewer bits than other systems.
inline unsigned atOnce(std::size_t size) { return static_cast<unsigned>(std::min(size, std::size_t{1} << 30)); }

/// Writes to a descriptor, without a buffer: what comes here comes in blocks and lines. The stream goes bad when
/// writing fails, and nothing is written then any more.
///
/// The standard library's own streams would be made before `main` begins, all eight of them, used or not.
class DescriptorStream : public std::ostream {
 public:
  enum class Ownership { Borrowed, Owned };

  explicit DescriptorStream(int descriptor, Ownership ownership = Ownership::Borrowed)
      : std::ostream(nullptr), buffer_(descriptor, ownership) {
    rdbuf(&buffer_);
  }

  /// Whether somebody reads what is written, and a call may wait for that: false for files and devices such as
  /// /dev/null.
  bool hasReader() const { return buffer_.hasReader(); }
  int descriptor() const { return buffer_.descriptor(); }

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer(int descriptor, Ownership ownership) : descriptor_(descriptor), ownership_(ownership) {}
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() override;
    bool hasReader() const;
    int descriptor() const { return descriptor_; }

   protected:
    std::streamsize xsputn(const char* from, std::streamsize size) override;
    int_type overflow(int_type byte) override;

   private:
    int descriptor_;
    Ownership ownership_;
  };

  Buffer buffer_;
};

}  // namespace qnpp
