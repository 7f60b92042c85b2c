// A file that appears whole or not at all.
#pragma once

#include <string>
#include <string_view>

namespace qnpp::build {

/// Replaces a file by a new text in one step: whoever looks sees the old file or the new one, never a half of it.
///
/// `prepare` does all that can fail for want of room; `commit` only gives the new text its name, so that several files
/// change together as nearly as a file system allows. A symbolic link stays, and what it points at is replaced. What
/// is no regular file, such as /dev/null or a pipe, is written to as it is.
class WholeFile {
 public:
  explicit WholeFile(std::string name);
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;
  /// Without `commit`, nothing of `prepare` is left.
  ~WholeFile();

  const std::string& name() const { return name_; }

  /// Whether this is the file of the other name, by whatever path.
  bool isSameFileAs(const std::string& other) const;

  /// Lays the text down beside the file. With `keepsUnchanged`, a file that holds this very text keeps its time stamp.
  /// Throws Failure. `text` is borrowed until `commit`.
  void prepare(std::string_view text, bool keepsUnchanged);

  /// Throws Failure.
  void commit();

  /// Removes the file, if there is one: what it held is out of date.
  void remove() noexcept;

  /// Removes the parts that are laid down at this moment. For a signal handler; takes no memory.
  static void removeParts() noexcept;

 private:
  bool holds(std::string_view text) const;
  void writePart(std::string_view text);

  std::string name_;
  std::string path_;          // The file itself, behind symbolic links.
  bool isOrdinary_ = true;    // A regular file, or none yet.
  std::string part_;          // What has been laid down; empty if nothing was.
  std::string_view waiting_;  // For a file that is not ordinary: what `commit` writes.
};

/// Writes all of it. Returns false, with errno set, where that is not possible.
bool writeAll(int descriptor, std::string_view text);

}  // namespace qnpp::build
