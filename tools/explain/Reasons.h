// Why things are as they are, in words.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tools/explain/Explanation.h"
#include "tools/explain/Sources.h"

namespace qnpp {

// Deeper levels of expansion are left out: nobody would find the way back.
inline constexpr std::size_t kMostLevels = 60;

/// Puts the events of a run into words and into the form of a tree, for all views.
class Reasons {
 public:
  /// A use of a macro or a name, below what it came out of.
  struct Item {
    bool isName = false;
    Id id = 0;
  };

  /// Both are borrowed.
  Reasons(const Explanation& explanation, const Sources& sources);

  /// "main.c:3"; "the command line" for none.
  std::string at(const SourcePlace& place) const;
  /// "#define F(x) text".
  static std::string headOf(const Definition& definition);
  /// Where the definition of an expansion's macro is: "main.c:3", "the command line", "predefined".
  std::string placeOf(const Expansion& expansion) const;

  /// Why the name stands as it is; empty for a word that nobody would take for a macro.
  std::string why(const KeptName& name) const;
  /// Where a name without any definition seems to have one nevertheless, and why it has none; empty if it does not.
  std::string whereUnread(const std::string& name) const;
  /// Why a line is skipped whose group was begun by this directive.
  std::string whySkipped(const Directive& directive) const;
  /// What came of a directive, a line for each thing.
  std::vector<std::string> outcomeOf(const Directive& directive) const;
  /// The directive as it might be written: "#if A > 1".
  static std::string textOf(const Directive& directive);

  /// Why macros in an argument were not expanded; empty if there are none, or they were.
  std::string whyUnexpanded(const Expansion& expansion, std::size_t argument) const;

  /// What a part of a replacement is: "argument x", "#x", "##"; empty for the body.
  std::string nameOf(const Piece& piece) const;

  // ---- The tree ----

  /// What stands in a line or in the operand of its directive, at the top.
  std::vector<Item> itemsOf(const Line& line) const;
  /// What stood in the replacement of an expansion, and what stood in an argument when that was expanded.
  const std::vector<Item>& itemsOf(const Expansion& expansion) const;
  const std::vector<Item>& itemsOfContext(Id context) const { return ofContext_[context]; }
  /// Whether a name, or the use of a macro, or anything below it is called so.
  bool involves(const Item& item, std::string_view name) const;

 private:
  std::optional<std::string> nearest(std::string_view name) const;
  void place(const Item& item, Id parent, Id context);
  void findWrittenDefinitions() const;

  const Explanation& told_;
  const Sources& sources_;
  std::unordered_map<std::string_view, std::vector<Id>> definitions_;
  std::vector<std::vector<Item>> ofExpansion_;
  std::vector<std::vector<Item>> ofContext_;
  // All files are read for it, so it is found only when it is asked for.
  mutable std::unordered_map<std::string, SourcePlace> written_;
  mutable bool isWrittenKnown_ = false;
};

}  // namespace qnpp
