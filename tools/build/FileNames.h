// The names under which files show in a result, where these are not the names under which they were opened.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qnpp/preprocessor.h"

namespace qnpp::build {

/// Beginnings of names, and what is written instead.
class PrefixMap {
 public:
  void add(std::string from, std::string to) { rules_.emplace_back(std::move(from), std::move(to)); }
  bool isEmpty() const { return rules_.empty(); }

  /// The last rule that fits wins, as it does in compilers.
  std::string apply(const std::string& name) const;

 private:
  std::vector<std::pair<std::string, std::string>> rules_;
};

/// Searches included files as qnpp does, by their own names, and lets them show under others.
class RenamingSearch {
 public:
  /// Both are borrowed and outlive the object.
  RenamingSearch(const PrefixMap& prefixes, const std::vector<std::string>& directories)
      : prefixes_(prefixes), directories_(directories) {}

  /// The source of the run: its path and the name that stands for it. Returns the name under which it shows.
  std::string addSource(const std::string& path, const std::string& name);

  /// For Preprocessor::setResolver. Throws Failure when two files would show under one name.
  std::optional<Include> find(const IncludeRequest& request);

  /// The path of a file that shows under this name; the name itself if there is none.
  std::string pathOf(std::string_view shown) const;

  /// The name of a file that shows under this one, without the prefix map: one that its reader can open.
  std::string nameOf(std::string_view shown) const;

  /// The text of a message with the place that its reader can open.
  std::string textOf(const Diagnostic& diagnostic) const;

 private:
  struct File {
    std::string path;
    std::string name;  // Without the prefix map.
  };

  std::string add(const std::string& path, const std::string& name);

  const PrefixMap& prefixes_;
  const std::vector<std::string>& directories_;
  std::map<std::string, File, std::less<>> files_;  // By the name under which they show.
};

}  // namespace qnpp::build
