#include "tools/build/FileNames.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "directives/FileNames.h"
#include "tools/Companion.h"

namespace qnpp::build {
namespace {

bool canBeOpened(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode) && ::access(path.c_str(), R_OK) == 0;
}

}  // namespace

std::string PrefixMap::apply(const std::string& name) const {
  const auto rule = std::find_if(rules_.rbegin(), rules_.rend(),
                                 [&name](const auto& candidate) { return name.starts_with(candidate.first); });
  return rule == rules_.rend() ? name : rule->second + name.substr(rule->first.size());
}

std::string RenamingSearch::add(const std::string& path, const std::string& name) {
  std::string shown = prefixes_.apply(name);
  const auto [file, isNew] = files_.try_emplace(shown, File{path, name});
  // Who reads the name, this search among them, could not tell the one from the other.
  std::error_code none;
  if (!isNew && file->second.path != path && !std::filesystem::equivalent(file->second.path, path, none)) {
    throw Failure('\'' + file->second.path + "' and '" + path + "' would both show as '" + shown + '\'');
  }
  return shown;
}

std::string RenamingSearch::addSource(const std::string& path, const std::string& name) { return add(path, name); }

std::optional<Include> RenamingSearch::find(const IncludeRequest& request) {
  const std::string name(request.name);
  std::vector<std::string> candidates;
  if (isAbsoluteName(name)) {
    candidates.push_back(name);
  } else if (request.isQuoted) {
    // Beside the includer as it was opened, or as `#line` has named it.
    const std::string directory(directoryOf(pathOf(request.place.file)));
    candidates.push_back(directory == "." ? name : directory + '/' + name);
  }
  for (const std::string& directory : directories_) {
    candidates.emplace_back(directory).append("/").append(name);
  }
  const auto found = std::find_if(candidates.begin(), candidates.end(), canBeOpened);
  if (found == candidates.end()) {
    return std::nullopt;
  }
  return Include{add(*found, *found), Source::ofFile(*found)};
}

std::string RenamingSearch::pathOf(std::string_view shown) const {
  const auto file = files_.find(shown);
  return file == files_.end() ? std::string(shown) : file->second.path;
}

std::string RenamingSearch::nameOf(std::string_view shown) const {
  const auto file = files_.find(shown);
  return file == files_.end() ? std::string(shown) : file->second.name;
}

std::string RenamingSearch::textOf(const Diagnostic& diagnostic) const {
  const std::string_view shown = diagnostic.place.file;
  if (!diagnostic.text.starts_with(shown)) {
    return std::string(diagnostic.text);  // One without a place.
  }
  return nameOf(shown) + std::string(diagnostic.text.substr(shown.size()));
}

}  // namespace qnpp::build
