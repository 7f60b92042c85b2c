// The way out: the preprocessed text on its way to the output stream.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lexer/LineNumber.h"
#include "lexer/Observer.h"
#include "lexer/ShortCopy.h"

namespace qnpp {

/// Where texts go, piece by piece.
class TextSink {
 public:
  /// `text` is valid during the call. What this throws goes through the caller.
  virtual void write(std::string_view text) = 0;

 protected:
  ~TextSink() = default;
};

/// Collects the output in blocks and hands them to a sink, which is borrowed and must outlive the buffer.
///
/// The lexer writes here too: a comment's line ends go straight to the output, so that output and input stay in step
/// without line-end tokens. What has been written reaches the sink by `flush` at the latest.
class OutputBuffer {
 public:
  OutputBuffer() = default;
  OutputBuffer(const OutputBuffer&) = delete;
  OutputBuffer& operator=(const OutputBuffer&) = delete;

  void attach(TextSink& sink) { sink_ = &sink; }

  /// Who is told of what is written here, and of anything else in the run.
  ObserverLink& observer() { return observer_; }
  template <typename Tell>
  ToldOf<Tell> observe(Tell tell) const {
    return observer_(tell);
  }

  void write(const char* text, std::size_t size, [[maybe_unused]] Origin origin = {}) {
    observe([&](Observer& observer) { observer.written({text, size}, origin); });
    if (size > kCapacity - used_) {
      writeBlock(text, size);
      return;
    }
    char* const to = bytes_.data() + used_;
    used_ += size;
    copyShort(to, text, size);
  }
  void write(std::string_view text, Origin origin = {}) { write(text.data(), text.size(), origin); }
  void write(char character) {
    observe([&](Observer& observer) { observer.written({&character, 1}, {}); });
    if (used_ == kCapacity) {
      flush();
    }
    bytes_[used_++] = character;
  }
  void writeNumber(std::int32_t number);

  /// Hands everything to the sink.
  void flush();

  /// How many bytes have been written.
  std::uint64_t position() const { return delivered_ + used_; }

  /// The line of the source that the next line written stands for; meaningful while a file is being read.
  std::int32_t line() const { return line_; }
  void setLine(std::int32_t line) { line_ = line; }

  /// Writes line ends.
  void writeLineEnds(std::size_t count);

  /// Ends a line of the output that stands for one line of the source.
  void endLine() {
    write('\n');
    line_ = addLines(line_, 1);
  }
  void endLines(std::size_t count) {
    writeLineEnds(count);
    line_ = addLines(line_, static_cast<std::int32_t>(count));
  }

 private:
  static constexpr std::size_t kCapacity = std::size_t{64} * 1024;

  void writeBlock(const char* text, std::size_t size);
  void deliver(const char* text, std::size_t size);

  TextSink* sink_ = nullptr;
  [[no_unique_address]] ObserverLink observer_;
  std::size_t used_ = 0;
  std::uint64_t delivered_ = 0;
  std::int32_t line_ = 1;
  std::array<char, kCapacity> bytes_;
};

}  // namespace qnpp
