#include "lexer/TextArena.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qnpp {

std::string_view TextArena::copy(std::string_view text) {
  if (text.empty()) {
    return {};
  }
  char* const made = static_cast<char*>(allocate(text.size()));
  std::memcpy(made, text.data(), text.size());
  return {made, text.size()};
}

std::size_t TextArena::sizeOfChunk(std::size_t index) {
  const std::size_t doublings = index == 0 ? 0 : index - 1;
  return doublings > kMostDoublings ? kLargestChunkSize : kChunkSize << doublings;
}

void* TextArena::allocateInNewChunk(std::size_t size) {
  const std::size_t next = base_ == nullptr ? 0 : current_ + 1;
  if (next == chunks_.size() || chunks_[next].size < size) {
    // A released chunk that is too small stays behind the new one and is used later.
    const std::size_t chunkSize = std::max(size, sizeOfChunk(next));
    Chunk made{makeLargeBytes(chunkSize), chunkSize};
    forbidUse(made.bytes.get(), chunkSize);
    chunks_.insert(chunks_.begin() + static_cast<std::ptrdiff_t>(next), std::move(made));
  }
  current_ = next;
  base_ = chunks_[next].bytes.get();
  room_ = chunks_[next].size;
  used_ = size;
  allowUse(base_, size);
  return base_;
}

void TextArena::release(Mark mark) {
  if (base_ == nullptr) {
    return;
  }
  if (mark.chunk != current_) {
    current_ = mark.chunk;
    base_ = chunks_[current_].bytes.get();
    room_ = chunks_[current_].size;
    // One chunk is kept for the next need; what a large expansion took goes back to the system.
    const bool keepsNext = kKeepsSpares && chunks_[current_ + 1].size == kChunkSize;
    chunks_.resize(current_ + (keepsNext ? 2U : 1U));
  }
  used_ = mark.used;
  forbidUse(base_ + used_, room_ - used_);
}

}  // namespace qnpp
