// Inputs that arrive in small pieces.
#pragma once

#include <algorithm>
#include <cstddef>
#include <istream>
#include <streambuf>
#include <string_view>

namespace qnpp {

/// A stream over borrowed bytes that delivers at most `piece` of them at a time, as a pipe or a terminal may. Each
/// border between two pieces is a place where the scanner has to refill its buffer in the middle of something.
class PiecewiseInput : public std::istream {
 public:
  PiecewiseInput(std::string_view text, std::size_t piece) : std::istream(nullptr), buffer_(text, piece) {
    rdbuf(&buffer_);
  }

  /// The most it was asked for at once: the room that the reader had, so it tells how much the reader holds on to.
  std::size_t mostAskedFor() const { return buffer_.mostAskedFor; }
  std::size_t timesAsked() const { return buffer_.timesAsked; }

 private:
  struct Buffer : std::streambuf {
    Buffer(std::string_view text, std::size_t bytesAtATime) : left(text), piece(bytesAtATime) {}
    std::streamsize xsgetn(char* to, std::streamsize size) override {
      const auto asked = static_cast<std::size_t>(size);
      mostAskedFor = std::max(mostAskedFor, asked);
      ++timesAsked;
      const std::size_t count = left.copy(to, std::min(asked, piece));
      left.remove_prefix(count);
      return static_cast<std::streamsize>(count);
    }
    std::string_view left;
    std::size_t piece;
    std::size_t mostAskedFor = 0;
    std::size_t timesAsked = 0;
  };
  Buffer buffer_;
};

}  // namespace qnpp
