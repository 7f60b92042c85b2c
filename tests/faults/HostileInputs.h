// Inputs that ask for more than anybody would write, with what they mean.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace qnpp::faults {

struct HostileInput {
  std::string source;    // "input.c"
  std::string output;    // what is to be written, behind the opening line directive
  std::string messages;  // and what is to be reported
  std::string status = "0";
};

// Printed by its name.
struct NamedInput {
  std::string name;
  std::function<HostileInput()> make;  // Some are tens of megabytes, so they are made one at a time.
};

inline void PrintTo(const NamedInput& input, std::ostream* stream) { *stream << input.name; }

const std::vector<NamedInput>& hostileInputs();

}  // namespace qnpp::faults
