// What the fuzz targets share: a run of the preprocessor with limits, and rules to be held.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

#include "qnpp/preprocessor.h"

namespace qnpp::fuzz {

/// Thrown by a LimitedSink. A few bytes of macros can stand for an output without end (each of thirty macros is the one
/// before it, twice); that is what the input means and no fault, but nothing to wait for.
class OutputLimitReached : public std::exception {
 public:
  const char* what() const noexcept override { return "the output limit is reached"; }
};

/// Keeps what is written to it, and throws OutputLimitReached, through the engine, when that is too much.
class LimitedSink : public std::ostream {
 public:
  explicit LimitedSink(std::size_t limit) : std::ostream(nullptr), buffer_(limit) {
    rdbuf(&buffer_);
    exceptions(std::ios_base::badbit);
  }
  const std::string& text() const { return buffer_.text(); }

 private:
  class Buffer : public std::streambuf {
   public:
    explicit Buffer(std::size_t limit) : limit_(limit) {}
    const std::string& text() const { return text_; }

   protected:
    std::streamsize xsputn(const char* from, std::streamsize size) override {
      if (text_.size() + static_cast<std::size_t>(size) > limit_) {
        throw OutputLimitReached();
      }
      text_.append(from, static_cast<std::size_t>(size));
      return size;
    }
    int_type overflow(int_type byte) override {
      const char character = traits_type::to_char_type(byte);
      xsputn(&character, 1);
      return traits_type::not_eof(byte);
    }

   private:
    std::size_t limit_;
    std::string text_;
  };

  Buffer buffer_;
};

/// What a run has left behind.
struct RunResult {
  std::optional<Status> status;  ///< None: the command line ended the run before it began.
  std::string output;
  std::string messages;
  bool isComplete = false;  ///< False when one of the limits ended the run.

  bool operator==(const RunResult&) const = default;
};

/// Calls `run(input, output, messages)`, which returns how it ended, with `source` as the input, delivered in pieces of
/// at most `piece` bytes. The sum of its allocations is limited too, so that an input that stands for an expansion
/// without end comes to one.
using Run = std::function<std::optional<Status>(Reader, std::ostream&, std::ostream&)>;
RunResult runWithLimits(std::string_view source, std::size_t piece, const Run& run);

/// Preprocesses `source` as standard input, delivered in pieces of at most `piece` bytes, without any options.
RunResult preprocess(std::string_view source, std::size_t piece);

/// Sizes of pieces: everything at once; and single bytes, unless the input is so large that matching a long token again
/// after each of them would take its time.
constexpr std::size_t kWhole = SIZE_MAX;
constexpr std::size_t smallPiece(std::size_t size) { return 1 + size / 4096; }

/// Ends the process, which is how a fuzz target reports a finding, unless `holds`.
void require(bool holds, std::string_view rule);
/// The same for two values that have to be equal; they are shown when they are not.
void requireEqual(const RunResult& a, const RunResult& b, std::string_view rule);

/// The bytes of the fuzzer as text.
inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Shows the source that an input of the fuzzer stands for, if the environment variable QNPP_FUZZ_SHOW is set.
void show(std::string_view source);

}  // namespace qnpp::fuzz

/// A fuzz target defines this; libFuzzer, or ReplayMain, calls it once per input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
