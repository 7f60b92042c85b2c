// Sets of macro names that must not be expanded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace qnpp {

struct Name;

/// The macro names that must not be expanded at a token: the guard against endless recursion. A value: copying, adding
/// a name and joining two sets leave the operands as they were.
///
/// Copies of one set per token would turn a chain of n macros into n * n names. The sets share their structure instead:
/// each is a search tree of immutable nodes (a treap whose shape follows from its names alone), so adding a name makes
/// about log n nodes, and joining two sets that have most of their nodes in common touches only where they differ.
/// Where a chain makes each set out of the one before and one name, a set is that one and the name: see HideSet.cpp.
class HideSet {
 public:
  struct Link;

  HideSet() = default;
  HideSet(const HideSet& other) noexcept : root_(other.root_) { retain(root_); }
  HideSet(HideSet&& other) noexcept : root_(std::exchange(other.root_, nullptr)) {}
  // Retaining comes first, so that assigning a set to itself does no harm.
  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp)
  HideSet& operator=(const HideSet& other) noexcept {
    retain(other.root_);
    release(std::exchange(root_, other.root_));
    return *this;
  }
  HideSet& operator=(HideSet&& other) noexcept {
    if (this != &other) {
      release(std::exchange(root_, std::exchange(other.root_, nullptr)));
    }
    return *this;
  }
  ~HideSet() { release(root_); }

  bool empty() const { return root_ == nullptr; }
  /// Whether it is kept as another set and a name, to which adding one more takes no time.
  bool isLink() const;
  bool contains(const Name& name) const { return root_ != nullptr && find(name); }

  /// This set and `name`; `name` must outlive the result.
  HideSet with(const Name& name) const;

  /// All names of this set and of `other`.
  HideSet joined(const HideSet& other) const;

  /// True when both are the same object in memory; equal sets may differ here, so this only ever saves work.
  bool isSameObject(const HideSet& other) const { return root_ == other.root_; }

  /// How many nodes lie on the longest way down: how deep the operations above may recurse.
  std::size_t depth() const;

  /// A number for tables of sets, the same for the same object in memory.
  std::size_t identity() const { return reinterpret_cast<std::uintptr_t>(root_) / sizeof(void*); }

 private:
  struct Part;
  struct Node;
  struct Line;
  struct Operations;

  explicit HideSet(Part* root) : root_(root) {}

  static void retain(Part* part) {
    if (part != nullptr) {
      addReference(*part);
    }
  }
  static void release(Part* part) {
    if (part != nullptr) {
      dropReference(*part);
    }
  }
  static void addReference(Part& part);
  static void dropReference(Part& part);
  static void destroy(Part& part);
  bool find(const Name& name) const;

  Part* root_ = nullptr;
};

/// The root of a tree, or a link.
struct HideSet::Part {
  std::uint32_t references;
  std::uint32_t size;  // How many names the tree has; 0 for a link.
};

inline bool HideSet::isLink() const { return root_ != nullptr && root_->size == 0; }

inline void HideSet::addReference(Part& part) { ++part.references; }

inline void HideSet::dropReference(Part& part) {
  if (--part.references == 0) {
    destroy(part);
  }
}

}  // namespace qnpp
