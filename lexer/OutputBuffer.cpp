#include "lexer/OutputBuffer.h"

#include <algorithm>
#include <charconv>

namespace qnpp {

void OutputBuffer::writeNumber(std::int32_t number) {
  constexpr std::size_t kLongest = 11;  // "-2147483648"
  if (kCapacity - used_ < kLongest) {
    flush();
  }
  char* const to = bytes_.data() + used_;
  const auto size = static_cast<std::size_t>(std::to_chars(to, to + kLongest, number).ptr - to);
  used_ += size;
  observe([&](Observer& observer) { observer.written({to, size}, {}); });
}

void OutputBuffer::writeLineEnds(std::size_t count) {
  while (count > 0) {
    if (used_ == kCapacity) {
      flush();
    }
    const std::size_t fitting = std::min(count, kCapacity - used_);
    std::memset(bytes_.data() + used_, '\n', fitting);
    observe([&](Observer& observer) { observer.written({bytes_.data() + used_, fitting}, {}); });
    used_ += fitting;
    count -= fitting;
  }
}

void OutputBuffer::writeBlock(const char* text, std::size_t size) {
  flush();
  if (size < kCapacity) {
    std::memcpy(bytes_.data(), text, size);
    used_ = size;
  } else {
    deliver(text, size);
  }
}

void OutputBuffer::flush() {
  const std::size_t size = used_;
  used_ = 0;
  if (size > 0) {
    deliver(bytes_.data(), size);
  }
}

void OutputBuffer::deliver(const char* text, std::size_t size) {
  delivered_ += size;
  if (sink_ != nullptr) {
    sink_->write({text, size});
  }
}

}  // namespace qnpp
