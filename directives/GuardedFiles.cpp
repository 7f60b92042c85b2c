#include "directives/GuardedFiles.h"

namespace qnpp {

std::optional<std::uint64_t> GuardedFiles::find(const std::string& path, std::size_t depth) const {
  const auto found = files_.find(path);
  if (found == files_.end()) {
    return std::nullopt;
  }
  const File& file = found->second;
  const bool isKnown = file.guard->macro != nullptr && depth <= file.depth && stampOf(path) == file.stamp;
  return isKnown ? std::optional(file.lineEnds) : std::nullopt;
}

void GuardedFiles::enter(const Traces& traces) {
  stage_ = Stage::BeforeGuard;
  guard_ = nullptr;
  entered_ = traces;
}

void GuardedFiles::seeDirective(CppTokenKind kind, bool isSkipped, std::size_t conditionals, std::uint64_t effects) {
  if (stage_ == Stage::BeforeGuard && !isSkipped && kind == TK_IFNDEF) {
    stage_ = Stage::InGroup;
  } else if (stage_ == Stage::InGroup && isSkipped && conditionals > 1) {
    // Of a conditional within the group, or no directive that counts there.
  } else if (stage_ == Stage::InGroup && isSkipped && kind == TK_ENDIF) {
    stage_ = Stage::BehindGroup;
    effectsAtEnd_ = effects;
  } else if (stage_ != Stage::InGroup || !isSkipped || kind == TK_ELIF || kind == TK_ELSE) {
    stage_ = Stage::Doubt;
  }
}

void GuardedFiles::leave(const std::string& path, const std::optional<FileStamp>& stamp, std::size_t depth,
                         const Traces& traces) {
  // A comment behind the group may have been open at the end of the file, which is told each time.
  const bool isSure = stage_ == Stage::BehindGroup && guard_ != nullptr && stamp &&
                      traces.messages == entered_.messages && traces.effects == effectsAtEnd_;
  if (isSure) {
    files_[path] = {*stamp, guard_, traces.outputSize - entered_.outputSize, depth};
  }
  stage_ = Stage::Doubt;
}

}  // namespace qnpp
