// Included files that need not be opened again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "lexer/InputFile.h"
#include "lexer/NameTable.h"

namespace qnpp {

/// Remembers included files by their path and stamp: of one that is guarded how many line ends it stands for, and of
/// others that are small the text.
///
/// Most files are included once, so a text is kept from the second reading on. Whoever reads it shares it.
class KnownFiles {
 public:
  struct File {
    FileStamp stamp;
    const Name* guard = nullptr;  ///< If the file is known to be guarded.
    std::uint64_t lineEnds = 0;   ///< That it stands for while its guard is defined.
    std::shared_ptr<FileText> text;
    std::uint64_t lookedAt = 0;  ///< The moment.

    bool isPassedBy() const { return guard != nullptr && guard->macro != nullptr; }
    bool hasText() const { return text != nullptr && *text && (*text)->size() == stamp.size; }
  };

  /// The file of this path if it is passed by or has a text, and has not been changed; null otherwise. Valid until the
  /// next call. `moment` is that of the FileOpener: whether a file has been changed is asked once in it.
  const File* find(const std::string& path, std::uint64_t moment);

  /// The file has been opened in this moment. Returns where its text is to be copied, null if it is not to be kept.
  std::shared_ptr<FileText> opened(const std::string& path, const FileStamp& stamp, std::uint64_t moment);

  /// The file that was opened with this stamp is guarded.
  void setGuard(const std::string& path, const FileStamp& stamp, const Name& guard, std::uint64_t lineEnds);

 private:
  // In bytes. No text is larger than what is read at once.
  static constexpr std::uint64_t kMostText = std::uint64_t{1} << 20U;

  std::unordered_map<std::string, File> files_;
  std::uint64_t textSize_ = 0;
};

}  // namespace qnpp
