// Included files of which everything stands in `#ifndef G` ... `#endif`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "lexer/Budget.h"
#include "lexer/CppFileScanner.h"
#include "lexer/CppTokenKind.h"
#include "lexer/GroupSkipper.h"
#include "lexer/InputFile.h"
#include "lexer/NameTable.h"

namespace qnpp {

/// Remembers included files for which nothing but line ends are written when their guard is defined: as many each time.
/// So they need not be opened again.
///
/// How many line ends these are is not worked out but seen: the reading of a file is followed, and it is remembered if
/// it consisted of lines with nothing on them, one `#ifndef` with its group, and the `#endif`. A group that was not
/// skipped is skipped once more when it ends, if it is still in the buffer, as the next reading of the file would skip
/// it. Whatever else happens is a doubt, and a file in doubt is read each time.
class GuardedFiles {
 public:
  /// Both are borrowed and outlive the object.
  GuardedFiles(const NameTable& names, Budget& budget) : names_(names), budget_(budget) {}

  /// What the reading of a file may be noticed by.
  struct Traces {
    std::uint64_t outputSize = 0;
    std::uint64_t messages = 0;
  };

  /// How many line ends the file of this path stands for, if it is remembered, its guard is defined and it has not been
  /// changed. `depth` counts the files that would be open: a file that has been opened at no such depth might fail to
  /// open now for want of descriptors. `moment` is that of the FileOpener: whether a file has been changed is asked
  /// once in it.
  std::optional<std::uint64_t> find(const std::string& path, std::size_t depth, std::uint64_t moment);

  // ---- Following the current file. What is seen before any has been entered is of no account. ----

  /// It has been entered.
  void enter(const Traces& traces);
  /// A line that is neither empty nor skipped nor a directive comes.
  void seeText() {
    if (now_.stage != Stage::InGroup) {
      now_.stage = Stage::Doubt;
    }
  }
  /// False when nothing that is seen matters any more.
  bool isFollowing() const { return now_.stage != Stage::Doubt; }
  /// The word of a directive has been taken, in a group that is skipped or not, with `conditionals` open in this file.
  /// `file` is the file unless the word stands in a macro.
  void seeDirective(CppTokenKind kind, bool isSkipped, std::size_t conditionals, const Traces& traces,
                    CppFileScanner* file);
  /// Whether the last directive may be an `#ifndef` that guards the file.
  bool isAtGuard() const { return now_.stage == Stage::AtGuard; }
  /// It was, with this name, and its line has been taken.
  void seeGuard(const Name& guard, bool isSkipped, const Traces& traces, const CppFileScanner* file);
  /// The file has ended, and all of its content had this stamp.
  void leave(const std::string& path, const std::optional<FileStamp>& stamp, std::size_t depth, const Traces& traces);

 private:
  enum class Stage : std::uint8_t { Doubt, BeforeGuard, AtGuard, InGroup, BehindGroup };

  // How far the reading of a file has come.
  struct Reading {
    Stage stage = Stage::Doubt;
    const Name* guard = nullptr;
    bool isSkipped = false;           // The group.
    std::uint64_t groupBegin = 0;     // An offset in the file;
    std::uint64_t outputAtGroup = 0;  // and the output there.
    std::uint64_t lineEndsInGroup = 0;
    std::uint64_t outputBehind = 0;  // At the `#endif`.
    Traces entered;
  };

  struct File {
    FileStamp stamp;
    const Name* guard = nullptr;
    std::uint64_t lineEnds = 0;
    std::size_t depth = 0;
    std::uint64_t lookedAt = 0;  // The moment.
  };

  bool endGroup(const Traces& traces, CppFileScanner* file);

  const NameTable& names_;
  Budget& budget_;
  std::unordered_map<std::string, File> files_;
  Reading now_;
  std::vector<Reading> enclosing_;         // Those of the files around the current one.
  std::unique_ptr<GroupSkipper> skipper_;  // Made when it is needed.
};

}  // namespace qnpp
