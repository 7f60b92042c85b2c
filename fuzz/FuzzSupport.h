// What the fuzz targets share: streams with a limit, inputs in pieces, and a run of the preprocessor in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <istream>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

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

/// A stream over bytes in memory that delivers at most `piece` of them at a time, as a pipe or a terminal may. Each
/// border between two pieces is a place where the scanner has to refill its buffer in the middle of something.
class PiecewiseInput : public std::istream {
 public:
  PiecewiseInput(std::string_view text, std::size_t piece) : std::istream(nullptr), buffer_(text, piece) {
    rdbuf(&buffer_);
  }

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer(std::string_view text, std::size_t piece) : text_(text), piece_(piece) {}

   protected:
    std::streamsize xsgetn(char* to, std::streamsize size) override {
      const std::size_t count = text_.substr(0, piece_).copy(to, static_cast<std::size_t>(size));
      text_.remove_prefix(count);
      return static_cast<std::streamsize>(count);
    }

   private:
    std::string_view text_;
    std::size_t piece_;
  };

  Buffer buffer_;
};

/// While one lives, the sum of all allocations by `operator new` is limited; std::bad_alloc is thrown beyond, so that
/// an input that stands for an expansion without end comes to one.
class AllocationBudget {
 public:
  explicit AllocationBudget(std::size_t bytes);
  AllocationBudget(const AllocationBudget&) = delete;
  AllocationBudget& operator=(const AllocationBudget&) = delete;
  ~AllocationBudget();
};

/// What a run has left behind.
struct RunResult {
  std::string output;
  std::string diagnostics;
  bool hasError = false;
  bool dividesByZero = false;  ///< This ended the run, as it must; output and messages are those up to there.
  bool isComplete = false;     ///< False when one of the limits ended the run.

  bool operator==(const RunResult&) const = default;
};

/// Preprocesses `source` as standard input, delivered in pieces of at most `piece` bytes, without any options.
RunResult preprocess(std::string_view source, std::size_t piece);

/// Sizes of pieces: everything at once; and single bytes, unless the input is so large that matching a long token again
/// after each of them would take its time.
constexpr std::size_t kWhole = SIZE_MAX;
constexpr std::size_t smallPiece(std::size_t size) { return 1 + size / 4096; }

constexpr std::size_t kMostOutput = std::size_t{1} << 20;
constexpr std::size_t kMostAllocated = std::size_t{256} << 20;

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
