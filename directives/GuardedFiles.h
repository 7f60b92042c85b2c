// Included files of which everything stands in `#ifndef G` ... `#endif`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "lexer/CppTokenKind.h"
#include "lexer/InputFile.h"
#include "lexer/NameTable.h"

namespace qnpp {

/// Remembers included files that came while their guard was defined: nothing but line ends were written for them then,
/// and as many come out whenever the guard is defined. So they need not be opened again.
///
/// How many line ends these are is not worked out but seen: the reading of a file is followed, and it is remembered if
/// it consisted of lines with nothing on them, one `#ifndef` with its skipped group, and the `#endif`. Whatever else
/// happens is a doubt, and a file in doubt is read each time.
class GuardedFiles {
 public:
  /// What the reading of a file may be noticed by.
  struct Traces {
    std::uint64_t outputSize = 0;
    std::uint64_t messages = 0;
    std::uint64_t effects = 0;  ///< Of comments, see LexerContext.
  };

  /// How many line ends the file of this path stands for, if it is remembered, its guard is defined and it has not been
  /// changed. `depth` counts the files that would be open: a file that has been opened at no such depth might fail to
  /// open now for want of descriptors.
  std::optional<std::uint64_t> find(const std::string& path, std::size_t depth) const;

  // ---- Following the current file ----

  /// It has been entered.
  void enter(const Traces& traces);
  /// A line that is neither empty nor skipped nor a directive comes.
  void seeText() { stage_ = Stage::Doubt; }
  /// The word of a directive has been taken, in a group that is skipped or not, with `conditionals` open in this file
  /// and as many effects of comments so far.
  void seeDirective(CppTokenKind kind, bool isSkipped, std::size_t conditionals, std::uint64_t effects);
  /// That was an `#ifndef` of this name, and its group is skipped.
  void seeGuard(const Name& guard) { guard_ = &guard; }
  /// It has ended, and all of its content had this stamp.
  void leave(const std::string& path, const std::optional<FileStamp>& stamp, std::size_t depth, const Traces& traces);

 private:
  enum class Stage : std::uint8_t { Doubt, BeforeGuard, InGroup, BehindGroup };

  struct File {
    FileStamp stamp;
    const Name* guard = nullptr;
    std::uint64_t lineEnds = 0;
    std::size_t depth = 0;
  };

  std::unordered_map<std::string, File> files_;
  Stage stage_ = Stage::Doubt;
  const Name* guard_ = nullptr;
  Traces entered_;
  std::uint64_t effectsAtEnd_ = 0;  // At the `#endif`.
};

}  // namespace qnpp
