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

std::string_view directoryOf(std::string_view path) {
  const auto isSeparator = [](char byte) { return byte == '/' || byte == '\\'; };
  if (path.size() > 1 && isSeparator(path.back())) {
    path.remove_suffix(1);
  }
  std::size_t size = path.size();
  while (size > 0 && !isSeparator(path[size - 1])) {
    --size;
  }
  if (size == 0) {
    return ".";
  }
  return path.substr(0, size == 1 ? 1 : size - 1);
}

}  // namespace qnpp
