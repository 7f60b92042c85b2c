// The program in surroundings that lack something: memory, stack, descriptors, a way out.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tests/support/Files.h"

namespace qnpp::faults {

// One run of the program.
struct Invocation {
  std::vector<std::string> words = {"input.c"};
  // Lines for the shell that becomes the program: limits, variables, "exec <&-". They see the folder as their own.
  std::string preparation;
  std::chrono::seconds timeLimit{20};
};

struct Outcome {
  std::string status;    // in decimal, or the name of a signal
  std::string killedBy;  // why it had to be killed; empty if it ended by itself
  std::string output;
  std::string messages;
};

// Runs the program in `folder`. Its output goes to a file there, "the.output", unless the preparation sends it
// elsewhere.
Outcome run(const TemporaryFolder& folder, const Invocation& invocation);

// Whether the program is built with sanitizers. They want an address space and stack frames of their own, so limits on
// these say nothing there, and their allocation functions cannot be replaced.
constexpr bool isSanitized() {
#if defined(QNPP_SANITIZED)
  return true;
#else
  return false;
#endif
}

}  // namespace qnpp::faults
