// Objects that are used again.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "lexer/Sanitizer.h"

namespace qnpp {

/// Finished objects, which keep their memory for the next need. `reset` of such an object gives back all that it holds
/// on to; so does its destructor, for those that are too many to be kept.
template <typename T>
class Spares {
 public:
  Spares() { objects_.reserve(kMost); }

  /// A finished object, or a new one made of `arguments`.
  template <typename... Arguments>
  std::unique_ptr<T> take(Arguments&... arguments) {
    if (objects_.empty()) {
      return std::make_unique<T>(arguments...);
    }
    std::unique_ptr<T> object = std::move(objects_.back());
    objects_.pop_back();
    return object;
  }

  /// The object is finished.
  void give(std::unique_ptr<T> object) {
    if (objects_.size() < kMost) {
      object->reset();
      objects_.push_back(std::move(object));
    }
  }

 private:
  static constexpr std::size_t kMost = kKeepsSpares ? 64 : 0;

  std::vector<std::unique_ptr<T>> objects_;
};

}  // namespace qnpp
