// Included files of which everything stands in `#ifndef G` ... `#endif`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "directives/KnownFiles.h"
#include "lexer/Budget.h"
#include "lexer/CppFileScanner.h"
#include "lexer/CppTokenKind.h"
#include "lexer/GroupSkipper.h"
#include "lexer/InputFile.h"
#include "lexer/NameTable.h"

namespace qnpp {

/// Finds the included files for which nothing but line ends are written when their guard is defined: as many each time.
///
/// How many line ends these are is not worked out but seen: the reading of a file is followed, and it is guarded if it
/// consisted of lines with nothing on them, one `#ifndef` with its group, and the `#endif`. A group that was not
/// skipped is skipped once more when it ends, if it is still in the buffer, as the next reading of the file would skip
/// it. Whatever else happens is a doubt, and a file in doubt is read each time.
class GuardedFiles {
 public:
  /// What is found is told to `files`. All are borrowed and outlive the object.
  GuardedFiles(KnownFiles& files, const NameTable& names, Budget& budget)
      : files_(files), names_(names), budget_(budget) {}

  /// What the reading of a file may be noticed by.
  struct Traces {
    std::uint64_t outputSize = 0;
    std::uint64_t messages = 0;
  };

  // What is seen before any file has been entered is of no account.

  /// The current file has been entered.
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
  void leave(const std::string& path, const std::optional<FileStamp>& stamp, const Traces& traces);

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

  bool endGroup(const Traces& traces, CppFileScanner* file);

  KnownFiles& files_;
  const NameTable& names_;
  Budget& budget_;
  Reading now_;
  std::vector<Reading> enclosing_;         // Those of the files around the current one.
  std::unique_ptr<GroupSkipper> skipper_;  // Made when it is needed.
};

}  // namespace qnpp
