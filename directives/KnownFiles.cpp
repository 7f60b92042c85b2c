#include "directives/KnownFiles.h"

#include "lexer/CppLexer.h"

namespace qnpp {

const KnownFiles::File* KnownFiles::find(const std::string& path, std::uint64_t moment) {
  const auto found = files_.find(path);
  if (found == files_.end()) {
    return nullptr;
  }
  File& file = found->second;
  if (!file.isPassedBy() && !file.hasText()) {
    return nullptr;
  }
  if (moment == 0 || file.lookedAt != moment) {
    if (stampOf(path) != file.stamp) {
      return nullptr;
    }
    file.lookedAt = moment;
  }
  return &file;
}

std::shared_ptr<FileText> KnownFiles::opened(const std::string& path, const FileStamp& stamp, std::uint64_t moment) {
  const auto [at, isNew] = files_.try_emplace(path);
  File& file = at->second;
  const bool isSame = !isNew && file.stamp == stamp;
  if (!isSame) {
    textSize_ -= file.text != nullptr ? file.stamp.size : 0;
    file = {};
    file.stamp = stamp;
  }
  file.lookedAt = moment;
  if (!isSame || file.text != nullptr || stamp.size >= kReadSize || textSize_ + stamp.size > kMostText) {
    return nullptr;
  }
  file.text = std::make_shared<FileText>();
  textSize_ += stamp.size;
  return file.text;
}

void KnownFiles::setGuard(const std::string& path, const FileStamp& stamp, const Name& guard, std::uint64_t lineEnds) {
  const auto found = files_.find(path);
  if (found != files_.end() && found->second.stamp == stamp) {
    found->second.guard = &guard;
    found->second.lineEnds = lineEnds;
  }
}

}  // namespace qnpp
