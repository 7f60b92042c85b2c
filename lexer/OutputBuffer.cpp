#include "lexer/OutputBuffer.h"

#include <algorithm>
#include <charconv>

namespace qnpp {

void OutputBuffer::writeNumber(std::int32_t number) {
  constexpr std::size_t kLongest = 11;  // "-2147483648"
  if (kCapacity - used_ < kLongest) {
    flushBlock();
  }
  char* const to = bytes_.data() + used_;
  used_ += static_cast<std::size_t>(std::to_chars(to, to + kLongest, number).ptr - to);
}

void OutputBuffer::writeLineEnds(std::size_t count) {
  while (count > 0) {
    if (used_ == kCapacity) {
      flushBlock();
    }
    const std::size_t fitting = std::min(count, kCapacity - used_);
    std::memset(bytes_.data() + used_, '\n', fitting);
    used_ += fitting;
    count -= fitting;
  }
}

void OutputBuffer::flush() {
  flushBlock();
  if (sink_ != nullptr) {
    sink_->flush();
  }
}

void OutputBuffer::writeBlock(const char* text, std::size_t size) {
  flushBlock();
  if (size < kCapacity) {
    std::memcpy(bytes_.data(), text, size);
    used_ = size;
  } else if (sink_ != nullptr) {
    sink_->write(text, static_cast<std::streamsize>(size));
  }
}

void OutputBuffer::flushBlock() {
  if (sink_ != nullptr && used_ > 0) {
    sink_->write(bytes_.data(), static_cast<std::streamsize>(used_));
  }
  used_ = 0;
}

}  // namespace qnpp
