// A persistent treap: a binary search tree by name id that is a heap by priority at the same time. The shape of a tree
// is determined by its set of names; that is what makes joining cheap, because equal parts of two sets have equal
// shapes and usually are the same nodes.
//
// Nodes are counted by the trees and sets that point at them. Every operation recurses as deep as the trees are. A set
// of n names is as deep as a search tree into which they came in random order, some 50 levels for a million: the
// priorities are random numbers that the name table draws anew in each run, so a source that chose names with falling
// priorities, whose tree would be a list, would have to guess them.
//
// Lines. In a chain of macros, each the replacement of the one before, every set is the one before and one more name,
// and hardly any is ever joined with one that has others. From a certain size on such sets are the links of a line: a
// link points at the one before it, and the first of them adds to a tree, the base of the line. A line has no branches.
// So a name is in the set of a link if it is in the base, or if it came into this very line with this link or one
// before; and each name knows the one link that it has come with, if there is any (Name::link).
//
// A line does not go on with a name that has come with another link, nor where it goes on already. The set is made a
// tree then, as it is to be joined with others (`treeOf`). So what a set is kept as shows in nothing but time.
#include "lexer/HideSet.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "lexer/NameTable.h"
#include "lexer/Shortcuts.h"

namespace qnpp {
namespace {

// Smaller sets are trees: the same ones are made over and over, and HideSetCache finds them.
constexpr std::uint32_t kSmallestBase = 16;
// A link that is made a tree leaves trees at the links before it, one at each multiple of this. So the next one of the
// same line has not far to go.
constexpr std::uint32_t kLinksBetweenTrees = 16;

}  // namespace

struct HideSet::Node : Part {
  std::uint32_t priority;  // That of the name.
  const Name* name;
  Node* left;
  Node* right;
};

struct HideSet::Link : Part {
  std::uint32_t depth;  // How many links of the line there are up to this one.
  const Name* name;
  Link* before;  // Owned together with the sets that point at it; null for the first.
  Link* next;    // Borrowed; null for the last.
  Line* line;
  HideSet tree;  // The same set, once it has been asked for.
};

struct HideSet::Line {
  HideSet base;
  std::size_t linkCount = 0;
};

// Every function borrows the parts it is given and returns sets that own what they hold.
struct HideSet::Operations {
  static HideSet share(Part* part) {
    retain(part);
    return HideSet(part);
  }

  // ---- Trees ----

  static Node* rootOf(const HideSet& tree) { return static_cast<Node*>(tree.root_); }
  static std::uint32_t sizeOf(const HideSet& tree) { return tree.root_ == nullptr ? 0 : tree.root_->size; }

  static HideSet make(const Name& name, HideSet left, HideSet right) {
    auto node = std::make_unique<Node>(
        Node{{1, sizeOf(left) + sizeOf(right) + 1}, name.priority, &name, rootOf(left), rootOf(right)});
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
    HideSet left = join(a->left, rootOf(below));
    HideSet right = join(a->right, rootOf(above));
    // Where nothing was added the old node serves on: sets that contain one another keep sharing.
    if (left.root_ == a->left && right.root_ == a->right) {
      return share(a);
    }
    if (b->name == a->name && left.root_ == b->left && right.root_ == b->right) {
      return share(b);
    }
    return make(*a->name, std::move(left), std::move(right));
  }

  static HideSet withInTree(const HideSet& tree, const Name& name) {
    return join(rootOf(tree), rootOf(make(name, {}, {})));
  }

  static bool isInTree(const HideSet& tree, const Name& name) {
    const Node* node = rootOf(tree);
    while (node != nullptr && node->name != &name) {
      node = name.id < node->name->id ? node->left : node->right;
    }
    return node != nullptr;
  }

  static std::size_t depthOf(const Node* node) {
    return node == nullptr ? 0 : 1 + std::max(depthOf(node->left), depthOf(node->right));
  }

  static void destroyTree(Node& node) {
    const std::unique_ptr<Node> owned(&node);
    release(owned->left);
    release(owned->right);
  }

  // ---- Lines ----

  static Link* linkOf(const HideSet& set) { return set.isLink() ? static_cast<Link*>(set.root_) : nullptr; }

  static bool isInLink(const Link& link, const Name& name) {
    if (name.link != nullptr && name.link->line == link.line) {
      return name.link->depth <= link.depth;
    }
    return isInTree(link.line->base, name);
  }

  static HideSet beginLine(const HideSet& base, const Name& name) {
    auto line = std::make_unique<Line>(Line{base});
    HideSet first = makeLink(*line, nullptr, name);
    static_cast<void>(line.release());  // Its links own it.
    return first;
  }

  static HideSet makeLink(Line& line, Link* before, const Name& name) {
    auto* const made = new Link{{1, 0}, before == nullptr ? 1 : before->depth + 1, &name, before, nullptr, &line, {}};
    ++line.linkCount;
    name.link = made;
    if (before != nullptr) {
      addReference(*before);
      before->next = made;
    }
    return HideSet(made);
  }

  // The set of the link and `name`, which is not in it.
  static HideSet withInLine(Link& link, const Name& name) {
    if (link.next != nullptr && link.next->name == &name) {
      return share(link.next);
    }
    if (link.next != nullptr || name.link != nullptr) {
      return withInTree(treeOf(link), name);
    }
    return makeLink(*link.line, &link, name);
  }

  static const HideSet& treeOf(Link& link) {
    std::vector<Link*> added;
    Link* before = &link;
    for (; before != nullptr && before->tree.empty(); before = before->before) {
      added.push_back(before);
    }
    HideSet tree = before == nullptr ? link.line->base : before->tree;
    for (auto at = added.rbegin(); at != added.rend(); ++at) {
      tree = withInTree(tree, *(*at)->name);
      if ((*at)->depth % kLinksBetweenTrees == 0) {
        (*at)->tree = tree;
      }
    }
    return link.tree = tree;
  }
  static HideSet treeOf(const HideSet& set) {
    Link* const link = linkOf(set);
    return link == nullptr ? set : treeOf(*link);
  }

  // A line is freed without recursion, as long as it may be.
  static void destroyLinks(Link* link) {
    do {
      const std::unique_ptr<Link> owned(link);
      owned->name->link = nullptr;
      if (--owned->line->linkCount == 0) {
        delete owned->line;
      }
      link = owned->before;
      if (link != nullptr) {
        link->next = nullptr;
      }
    } while (link != nullptr && --link->references == 0);
  }
};

void HideSet::destroy(Part& part) {
  if (part.size == 0) {
    Operations::destroyLinks(static_cast<Link*>(&part));
  } else {
    Operations::destroyTree(static_cast<Node&>(part));
  }
}

bool HideSet::find(const Name& name) const {
  const Link* const link = Operations::linkOf(*this);
  return link == nullptr ? Operations::isInTree(*this, name) : Operations::isInLink(*link, name);
}

std::size_t HideSet::depth() const { return Operations::depthOf(Operations::rootOf(Operations::treeOf(*this))); }

HideSet HideSet::with(const Name& name) const {
  if (contains(name)) {
    return *this;
  }
  if (Link* const link = Operations::linkOf(*this)) {
    return Operations::withInLine(*link, name);
  }
  if (kShortcuts && Operations::sizeOf(*this) >= kSmallestBase && name.link == nullptr) {
    return Operations::beginLine(*this, name);
  }
  return Operations::withInTree(*this, name);
}

HideSet HideSet::joined(const HideSet& other) const {
  const Link* const link = Operations::linkOf(*this);
  const Link* const otherLink = Operations::linkOf(other);
  if (link != nullptr && otherLink != nullptr && link->line == otherLink->line) {
    return link->depth < otherLink->depth ? other : *this;
  }
  if (link != nullptr && link->line->base.isSameObject(other)) {
    return *this;
  }
  if (otherLink != nullptr && otherLink->line->base.isSameObject(*this)) {
    return other;
  }
  const HideSet tree = Operations::treeOf(*this);
  const HideSet otherTree = Operations::treeOf(other);
  HideSet all = Operations::join(Operations::rootOf(tree), Operations::rootOf(otherTree));
  // One that holds the other stays the same object.
  if (all.isSameObject(tree)) {
    return *this;
  }
  return all.isSameObject(otherTree) ? other : all;
}

}  // namespace qnpp
