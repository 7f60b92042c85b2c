// A persistent treap: a binary search tree by name id that is a heap by priority at the same time. The shape of a tree
// is determined by its set of names; that is what makes joining cheap, because equal parts of two sets have equal
// shapes and usually are the same nodes.
//
// Nodes are counted by the trees and sets that point at them. Every operation recurses as deep as the trees are. A set
// of n names is as deep as a search tree into which they came in random order, some 50 levels for a million: the
// priorities are random numbers that the name table draws anew in each run, so a source that chose names with falling
// priorities, whose tree would be a list, would have to guess them.
#include "lexer/HideSet.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "lexer/NameTable.h"

namespace qnpp {
// Every function borrows the nodes it is given and returns sets that own what they hold.
struct HideSet::Operations {
  static HideSet share(Node* node) {
    retain(node);
    return HideSet(node);
  }

  static HideSet make(const Name& name, HideSet left, HideSet right) {
    auto node = std::make_unique<Node>(Node{&name, left.root_, right.root_, name.priority, 1});
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
      return {make(*tree->name, share(tree->left), std::move(middle)), std::move(above)};
    }
    auto [below, middle] = split(tree->left, pivot);
    return {std::move(below), make(*tree->name, std::move(middle), share(tree->right))};
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
    return make(*a->name, std::move(left), std::move(right));
  }
};

void HideSet::destroy(Node& node) {
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

std::size_t HideSet::depthOf(const Node* node) {
  return node == nullptr ? 0 : 1 + std::max(depthOf(node->left), depthOf(node->right));
}

HideSet HideSet::with(const Name& name) const {
  if (contains(name)) {
    return *this;
  }
  return joined(Operations::make(name, {}, {}));
}

HideSet HideSet::joined(const HideSet& other) const { return Operations::join(root_, other.root_); }

}  // namespace qnpp
