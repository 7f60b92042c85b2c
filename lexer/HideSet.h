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
class HideSet {
 public:
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
  bool contains(const Name& name) const { return root_ != nullptr && find(name); }

  /// This set and `name`; `name` must outlive the result.
  HideSet with(const Name& name) const;

  /// All names of this set and of `other`.
  HideSet joined(const HideSet& other) const;

  /// True when both are the same object in memory; equal sets may differ here, so this only ever saves work.
  bool isSameObject(const HideSet& other) const { return root_ == other.root_; }

  /// How many nodes lie on the longest way down: how deep the operations above may recurse.
  std::size_t depth() const { return depthOf(root_); }

  /// A number for tables of sets, the same for the same object in memory.
  std::size_t identity() const { return reinterpret_cast<std::uintptr_t>(root_) / sizeof(void*); }

 private:
  struct Node;
  struct Operations;

  explicit HideSet(Node* root) : root_(root) {}

  static void retain(Node* node) {
    if (node != nullptr) {
      addReference(*node);
    }
  }
  static void release(Node* node) {
    if (node != nullptr) {
      dropReference(*node);
    }
  }
  static void addReference(Node& node);
  static void dropReference(Node& node);
  static void destroy(Node& node);
  static std::size_t depthOf(const Node* node);
  bool find(const Name& name) const;

  Node* root_ = nullptr;
};

struct HideSet::Node {
  const Name* name;
  Node* left;
  Node* right;
  std::uint32_t priority;  // That of the name.
  std::uint32_t references;
};

inline void HideSet::addReference(Node& node) { ++node.references; }

inline void HideSet::dropReference(Node& node) {
  if (--node.references == 0) {
    destroy(node);
  }
}

}  // namespace qnpp
