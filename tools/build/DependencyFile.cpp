#include "tools/build/DependencyFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/Companion.h"

namespace qnpp::build {
namespace {

constexpr std::string_view kPlainForBoth = "+,-./_@!{}~";
// In a list of names make takes these as they are. "(" would name a member of an archive, "=" set a variable, and
// "*", "?" and "[" ask for files.
constexpr std::string_view kPlainForMake = "\"'&<>^`";
constexpr std::string_view kPlainForNinja = "()=[]";  // And for CMake.
// It reads their escapes, and writes these without.
constexpr std::string_view kLostByCMake = "$#:";

bool isPlain(char c, DependencyFormat format) {
  const auto byte = static_cast<unsigned char>(c);
  if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || byte >= 0x80) {
    return true;
  }
  const std::string_view others = format == DependencyFormat::Make ? kPlainForMake : kPlainForNinja;
  return kPlainForBoth.find(c) != std::string_view::npos || others.find(c) != std::string_view::npos;
}

// What make would not take for the name of a file: a home folder, and targets that change what it does, as ".IGNORE".
// With a "&" at the end, "&:" would begin a rule for several targets at once.
bool isSpecialToMake(std::string_view name) {
  return name.starts_with('~') || name.ends_with('&') ||
         (name.size() > 1 && name[0] == '.' && name[1] >= 'A' && name[1] <= 'Z');
}

std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
  }
  return hash;
}

std::string absolute(const std::string& path) {
  if (path.starts_with('/')) {
    return path;
  }
  std::array<char, PATH_MAX> folder;
  if (::getcwd(folder.data(), folder.size()) == nullptr) {
    throw Failure(std::string("cannot tell the working directory: ") + std::strerror(errno));
  }
  return std::string(folder.data()) + '/' + path;
}

}  // namespace

std::optional<std::string> spellName(std::string_view name, DependencyFormat format, bool isTarget) {
  if (name.empty() || (format == DependencyFormat::Make && isSpecialToMake(name))) {
    return std::nullopt;
  }
  std::string text;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const char c = name[i];
    const bool isLast = i + 1 == name.size();
    if (isPlain(c, format)) {
      text += c;
    } else if (format == DependencyFormat::CMake && kLostByCMake.find(c) != std::string_view::npos) {
      return std::nullopt;
    } else if (c == '$') {
      text += "$$";
    } else if (c == ' ' && isLast && !isTarget && format != DependencyFormat::Ninja) {
      return std::nullopt;  // Make takes it from the end of a line, escaped or not.
    } else if (c == ' ' || c == '#') {
      text += '\\';
      text += c;
    } else if (c == ':' && !isLast) {
      text += "\\:";  // At the end of a name, Ninja takes it for the end of the targets.
    } else if (c == '\\' && !isLast && isPlain(name[i + 1], format)) {
      text += c;  // Special only before what is special.
    } else if (c == '%') {
      // A target with a "%" would be the pattern of a rule. On the other side it means nothing.
      text += format == DependencyFormat::Make && isTarget ? "\\%" : "%";
    } else {
      return std::nullopt;
    }
  }
  return text;
}

void DependencyFile::addTarget(const std::string& name) {
  const auto text = spellName(name, format_, true);
  if (!text) {
    const char* const tool = format_ == DependencyFormat::Make    ? "make"
                             : format_ == DependencyFormat::Ninja ? "Ninja"
                                                                  : "CMake";
    throw Failure("a dependency file for " + std::string(tool) + " cannot name the result '" + name + "'");
  }
  targets_.push_back(*text);
}

void DependencyFile::addSource(const std::string& path) { sources_.push_back(nameFor(path)); }

void DependencyFile::addIncluded(const std::string& path) { included_.push_back(nameFor(path)); }

std::string DependencyFile::nameFor(const std::string& path) const {
  return spellName(path, format_, false) && spellName(path, format_, true) ? path : makeLink(path);
}

std::string DependencyFile::makeLink(const std::string& path) const {
  const std::string file = absolute(path);
  std::array<char, 17> name;
  static_cast<void>(std::snprintf(name.data(), name.size(), "%016llx", static_cast<unsigned long long>(hashOf(file))));
  std::string link = links_ + '/' + name.data();
  if (!spellName(link, format_, true)) {
    throw Failure("a dependency file cannot name '" + path + "', nor the link '" + link + "'");
  }
  static_cast<void>(::mkdir(links_.c_str(), 0777));  // Mostly it is there; what is wrong otherwise shows below.
  if (::symlink(file.c_str(), link.c_str()) != 0 && errno != EEXIST) {
    throw Failure("cannot make the link '" + link + "': " + std::strerror(errno));
  }
  return link;
}

std::string DependencyFile::text(bool hasEmptyRules) const {
  std::string text;
  for (const std::string& target : targets_) {
    text += (text.empty() ? "" : " ") + target;
  }
  text += ':';
  for (const auto* const names : {&sources_, &included_}) {
    for (const std::string& name : *names) {
      text += " \\\n  " + *spellName(name, format_, false);
    }
  }
  text += '\n';
  for (std::size_t i = 0; hasEmptyRules && i < included_.size(); ++i) {
    text += *spellName(included_[i], format_, true) + ":\n";
  }
  return text;
}

}  // namespace qnpp::build
