// The file that tells a build tool what a result was made from: rules for make, which Ninja reads too.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qnpp::build {

/// All read the rules that compilers write, but each has a spelling of its own for some characters, and none for
/// others. CMake reads such a file to write another one for make or Ninja.
enum class DependencyFormat { Make, Ninja, CMake };

/// The name as such a file spells it; none when the tool has no spelling for it. `isTarget` says on which side of the
/// colon it stands.
std::optional<std::string> spellName(std::string_view name, DependencyFormat format, bool isTarget);

/// Writes the rules for one result.
///
/// A prerequisite whose name has no spelling is depended on by way of a symbolic link with a harmless one. Such links
/// lie in a folder beside the dependency file, `links`, which is made when the first is needed.
class DependencyFile {
 public:
  DependencyFile(DependencyFormat format, std::string links) : format_(format), links_(std::move(links)) {}

  /// A name as it is to stand in the file.
  void addSpelledTarget(std::string text) { targets_.push_back(std::move(text)); }
  /// Throws Failure when the name has no spelling.
  void addTarget(const std::string& name);
  /// These may make a link. They throw Failure when they cannot.
  void addSource(const std::string& path);
  void addIncluded(const std::string& path);

  /// The text of the file. With `hasEmptyRules` each included file gets a rule without prerequisites: make takes a
  /// file that is gone for one that has changed then, instead of giving up.
  std::string text(bool hasEmptyRules) const;

 private:
  std::string nameFor(const std::string& path) const;
  std::string makeLink(const std::string& path) const;

  DependencyFormat format_;
  std::string links_;
  std::vector<std::string> targets_;  // Spelled.
  // Names that have a spelling.
  std::vector<std::string> sources_;
  std::vector<std::string> included_;
};

}  // namespace qnpp::build
