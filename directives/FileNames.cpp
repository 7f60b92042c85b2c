#include "directives/FileNames.h"

#include <cstddef>

namespace qnpp {

bool isAbsoluteName(std::string_view name) {
  if (name.size() < 2) {
    return false;
  }
  const bool isLetter = (name[0] >= 'A' && name[0] <= 'Z') || (name[0] >= 'a' && name[0] <= 'z');
  return name[0] == '/' || (isLetter && name[1] == ':');
}

std::string directoryOf(std::string_view path) {
  constexpr std::string_view kSeparators = "/\\";
  if (path.size() > 1 && kSeparators.find(path.back()) != std::string_view::npos) {
    path.remove_suffix(1);
  }
  const std::size_t last = path.find_last_of(kSeparators);
  if (last == std::string_view::npos) {
    return ".";
  }
  return std::string(path.substr(0, last == 0 ? 1 : last));
}

}  // namespace qnpp
