#include "engine/Diagnostics.h"

#include <cstddef>
#include <cstdint>
#include <new>

namespace qnpp {
namespace {

constexpr std::string_view leadOf(Grade grade) {
  switch (grade) {
    case Grade::Warning:
      return "Warning: ";
    case Grade::FatalError:
      return "FATAL ERROR: ";
    default:
      return "";
  }
}

}  // namespace

Diagnostics::Diagnostics(Host& host, const TokenStream& stream) : host_(host), stream_(stream) {
  constexpr std::size_t kLongName = 4096;
  constexpr std::size_t kDeepInclude = 32;
  text_.reserve(kLongName);
  printed_.reserve(kLongName);
  includeChain_.reserve(kDeepInclude);
}

// Each line goes out in one piece, so that those of programs running side by side do not mix.
void Diagnostics::deliver(Message message, std::string_view detail) {
  const MessageEntry& entry = entryOf(message);
  text_.clear();
  appendText(message, detail, text_);
  printed_.clear();
  if (entry.grade == Grade::Failure) {
    printed_.append(text_).append("\n");
    host_.report({entry, {}, text_, printed_, {}});
    return;
  }
  findPlace(message == Message::OutOfMemory ? includeChain_.capacity() : SIZE_MAX);
  if (entry.grade == Grade::Remark) {
    printed_.append(detail).append(": ");
  } else if (stream_.file() != nullptr) {
    printed_.append(place_.file).append(":").append(std::to_string(place_.line)).append(": ");
  }
  printed_.append(leadOf(entry.grade)).append(text_).append(".\n");
  host_.report({entry, place_, text_, printed_, includeChain_});
}

// Finds where the reading stands, and which lines led there, the innermost of them first.
void Diagnostics::findPlace(std::size_t mostIncludes) {
  place_ = {};
  includeChain_.clear();
  const auto& files = stream_.files();
  if (files.empty()) {
    return;
  }
  place_ = {files.back()->fileName(), files.back()->line()};
  for (std::size_t depth = files.size() - 1; depth > 0 && includeChain_.size() < mostIncludes; --depth) {
    const CppFileScanner& includer = *files[depth - 1];
    includeChain_.push_back({includer.fileName(), includer.includeLine()});
  }
}

std::span<const FilePlace> Diagnostics::findIncludeChain() {
  findPlace(SIZE_MAX);
  return includeChain_;
}

void Diagnostics::reportOutOfMemory() {
  try {
    deliver(Message::OutOfMemory, {});
  } catch (const std::bad_alloc&) {
    const MessageEntry& entry = entryOf(Message::OutOfMemory);
    host_.report({entry, place_, entry.text, "FATAL ERROR: out of memory.\n", includeChain_});
  }
}

}  // namespace qnpp
