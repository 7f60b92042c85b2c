#include "directives/GuardedFiles.h"

#include "directives/ConditionalStack.h"

namespace qnpp {

void GuardedFiles::enter(const Traces& traces) {
  enclosing_.push_back(now_);
  now_ = {};
  now_.stage = Stage::BeforeGuard;
  now_.entered = traces;
}

void GuardedFiles::seeDirective(CppTokenKind kind, bool isSkipped, std::size_t conditionals, const Traces& traces,
                                CppFileScanner* file) {
  if (now_.stage == Stage::BeforeGuard && !isSkipped && kind == TK_IFNDEF) {
    now_.stage = Stage::AtGuard;
  } else if (now_.stage == Stage::InGroup && conditionals > 1) {
    // Of a conditional within the group, or no directive that counts here.
  } else if (now_.stage == Stage::InGroup && kind == TK_ENDIF) {
    now_.stage = isSkipped == now_.isSkipped && endGroup(traces, file) ? Stage::BehindGroup : Stage::Doubt;
  } else if (now_.stage != Stage::InGroup || kind == TK_ELIF || kind == TK_ELSE) {
    now_.stage = Stage::Doubt;
  }
}

void GuardedFiles::seeGuard(const Name& guard, bool isSkipped, const Traces& traces, const CppFileScanner* file) {
  now_.stage = file != nullptr ? Stage::InGroup : Stage::Doubt;
  now_.guard = &guard;
  now_.isSkipped = isSkipped;
  now_.groupBegin = file != nullptr ? file->offset() : 0;
  now_.outputAtGroup = traces.outputSize;
}

// At the `#endif`: finds out how many line ends the group stands for.
bool GuardedFiles::endGroup(const Traces& traces, CppFileScanner* file) {
  now_.outputBehind = traces.outputSize;
  if (now_.isSkipped) {
    now_.lineEndsInGroup = traces.outputSize - now_.outputAtGroup;
    return true;
  }
  if (file == nullptr || !file->hasStamp() || now_.groupBegin == 0) {
    return false;
  }
  if (skipper_ == nullptr) {
    skipper_ = std::make_unique<GroupSkipper>(names_, budget_);
  }
  ConditionalStack conditionals;
  conditionals.open();
  conditionals.setGroup(false);
  const auto count = file->withTextFrom(now_.groupBegin - 1, [this, &conditionals](std::string_view text) {
    return skipper_->countLineEnds(text, conditionals);
  });
  now_.lineEndsInGroup = count.value_or(0);
  return count.has_value();
}

void GuardedFiles::leave(const std::string& path, const std::optional<FileStamp>& stamp, const Traces& traces) {
  // What is told of a comment behind the group that was open at the end of the file is told each time.
  const bool isSure = now_.stage == Stage::BehindGroup && stamp && traces.messages == now_.entered.messages;
  if (isSure) {
    const std::uint64_t besideGroup =
        (now_.outputAtGroup - now_.entered.outputSize) + (traces.outputSize - now_.outputBehind);
    files_.setGuard(path, *stamp, *now_.guard, besideGroup + now_.lineEndsInGroup);
  }
  now_ = enclosing_.back();
  enclosing_.pop_back();
}

}  // namespace qnpp
