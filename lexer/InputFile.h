// Byte streams that the lexer reads from.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <ios>
#include <istream>
#include <memory>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>

namespace qnpp {

/// A time of the clock that the system dates changes of files by, which stands still for some milliseconds at a time.
struct FileTime {
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;
  auto operator<=>(const FileTime&) const = default;
};

/// What that clock shows; zero where it cannot be read.
FileTime fileClock();

/// Whether a file that has been changed at that time may be changed once more now and be dated the same. Times may have
/// been cut down: some file systems date by hundredths of a second, by seconds or by two of them.
bool mayBeDatedTheSame(const FileTime& changedAt, const FileTime& now);

/// What tells a file and its content from others.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  std::uint64_t size = 0;
  FileTime changedAt;
  bool operator==(const FileStamp&) const = default;
  bool isOfSameFile(const FileStamp& other) const { return device == other.device && number == other.number; }
};

/// The stamp of the file of this path; none if that is no regular file, or nothing that can be looked at.
std::optional<FileStamp> stampOf(const std::string& path);

/// The same for the file of a descriptor.
std::optional<FileStamp> stampOfOpen(int descriptor);

/// The text of a file, once it has been read and was small enough.
using FileText = std::optional<std::string>;

/// Reads a file of the system. Blocks go straight into the reader's own buffer, so nothing is copied twice and an open
/// file costs no buffer here.
class FileBuffer : public std::streambuf {
 public:
  /// Opens `path` for reading. A directory counts as a file that cannot be opened.
  explicit FileBuffer(const std::string& path);
  FileBuffer(const FileBuffer&) = delete;
  FileBuffer& operator=(const FileBuffer&) = delete;
  ~FileBuffer() override;

  bool isOpen() const { return descriptor_ >= 0; }
  /// How many more descriptors there are, up to `most`.
  std::size_t descriptorsLeft(std::size_t most) const;
  /// The stamp that the file had when it was opened; none if it is no regular file, or one that may come to hold
  /// something else without another stamp: changed very recently, or made by the system when it is read.
  const std::optional<FileStamp>& stamp() const { return stamp_; }

  /// To be called before anything is read: the text is to be copied to `copy` if one read gets all of it.
  void copyTo(std::shared_ptr<FileText> copy) { copy_ = std::move(copy); }

 protected:
  /// Reads until `size` bytes are there or the file ends. Throws std::ios_base::failure when the system reports an
  /// error, which the stream above turns into its bad state.
  std::streamsize xsgetn(char* to, std::streamsize size) override;

 private:
  void open(const std::string& path);

  int descriptor_ = -1;
  bool hasEnded_ = false;
  std::optional<FileStamp> stamp_;
  std::shared_ptr<FileText> copy_;
};

/// A stream over a file; in the failed state when the file could not be opened.
class InputFile : public std::istream {
 public:
  explicit InputFile(const std::string& path) : std::istream(nullptr), buffer_(path) {
    rdbuf(&buffer_);
    if (!buffer_.isOpen()) {
      setstate(std::ios_base::failbit);
    }
  }

  const std::optional<FileStamp>& stamp() const { return buffer_.stamp(); }

 private:
  FileBuffer buffer_;
};

/// Reads bytes in memory, which are borrowed and must stay as they are while they are read.
class TextBuffer : public std::streambuf {
 public:
  /// Starts over with other bytes.
  void reset(std::string_view text) {
    // A streambuf's get area is not const, but nothing here writes to it.
    char* const begin = const_cast<char*>(text.data());
    setg(begin, begin, begin + text.size());
  }
};

/// A stream over bytes in memory.
class InputText : public std::istream {
 public:
  InputText() : std::istream(nullptr) { rdbuf(&buffer_); }

  /// Starts over with other bytes.
  void reset(std::string_view text) {
    buffer_.reset(text);
    clear();
  }

 private:
  TextBuffer buffer_;
};

}  // namespace qnpp
