// A persistent treap: a binary search tree by name id that is a heap by priority at the same time. The priority is a
// scrambled id, so the shape of a tree is determined by its set of names; that is what makes joining cheap, because
// equal parts of two sets have equal shapes and usually are the same nodes.
//
// Nodes are counted by the trees and sets that point at them. Depth is logarithmic for any names a source can choose
// (ids follow the order of appearance, and the scrambling leaves no long monotone runs), so plain recursion will do.
#include "lexer/HideSet.h"

#include <memory>
#include <utility>

#include "lexer/NameTable.h"

namespace qnpp {
namespace {

std::uint32_t priorityOf(const Name& name) {
  std::uint32_t bits = name.id + 0x9E3779B9U;
  bits = (bits ^ (bits >> 16)) * 0x85EBCA6BU;
  bits = (bits ^ (bits >> 13)) * 0xC2B2AE35U;
  return bits ^ (bits >> 16);
}

}  // namespace

// Every function borrows the nodes it is given and returns sets that own what they hold.
struct HideSet::Operations {
  static HideSet share(Node* node) {
    retain(node);
    return HideSet(node);
  }

  static HideSet make(const Name& name, std::uint32_t priority, HideSet left, HideSet right) {
    auto node = std::make_unique<Node>(Node{&name, left.root_, right.root_, priority, 1});
    left.root_ = right.root_ = nullptr;  // The node has taken over both references.
    return HideSet(node.release());
  }

  static bool isAbove(const Node& a, const Node& b) {
    return a.priority != b.priority ? a.priority > b.priority : a.name->id < b.name->id;
  }

  // The names of `tree` below and above `pivot`; `pivot` itself is left out.
  static std::pair<HideSet, HideSet> split(Node* tree, const Name& pivot) {
    if (tree == nullptr) {
      return {};
    }
    if (tree->name == &pivot) {
      return {share(tree->left), share(tree->right)};
    }
    if (tree->name->id < pivot.id) {
      auto [middle, above] = split(tree->right, pivot);
      return {make(*tree->name, tree->priority, share(tree->left), std::move(middle)), std::move(above)};
    }
    auto [below, middle] = split(tree->left, pivot);
    return {std::move(below), make(*tree->name, tree->priority, std::move(middle), share(tree->right))};
  }

  static HideSet join(Node* a, Node* b) {
    if (a == b || b == nullptr) {
      return share(a);
    }
    if (a == nullptr) {
      return share(b);
    }
    if (isAbove(*b, *a)) {
      std::swap(a, b);
    }
    const auto [below, above] = split(b, *a->name);
    HideSet left = join(a->left, below.root_);
    HideSet right = join(a->right, above.root_);
    // Where nothing was added the old node serves on: sets that contain one another keep sharing.
    if (left.root_ == a->left && right.root_ == a->right) {
      return share(a);
    }
    if (b->name == a->name && left.root_ == b->left && right.root_ == b->right) {
      return share(b);
    }
    return make(*a->name, a->priority, std::move(left), std::move(right));
  }
};

void HideSet::dropReference(Node& node) {
  if (--node.references > 0) {
    return;
  }
  const std::unique_ptr<Node> owned(&node);
  release(owned->left);
  release(owned->right);
}

bool HideSet::find(const Name& name) const {
  const Node* node = root_;
  while (node != nullptr && node->name != &name) {
    node = name.id < node->name->id ? node->left : node->right;
  }
  return node != nullptr;
}

HideSet HideSet::with(const Name& name) const {
  if (contains(name)) {
    return *this;
  }
  return joined(Operations::make(name, priorityOf(name), {}, {}));
}

HideSet HideSet::joined(const HideSet& other) const { return Operations::join(root_, other.root_); }

}  // namespace qnpp
