// Files of tests.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace qnpp {

/// The bytes of a file; none when it cannot be read.
inline std::string readFile(const std::string& name) {
  std::ifstream stream(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace qnpp
