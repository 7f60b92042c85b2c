// The program in surroundings that lack something: memory, stack, descriptors, a way out.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace qnpp::faults {

// A fresh folder that is removed with everything in it.
class ScratchFolder {
 public:
  ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path write(const std::string& name, std::string_view bytes) const;
  std::string read(const std::string& name) const;

 private:
  std::filesystem::path path_;
};

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
Outcome run(const ScratchFolder& folder, const Invocation& invocation);

// `text`, `count` times.
std::string repeat(std::size_t count, std::string_view text);

// For messages of a test: the beginning of a text that may be very long, and its length.
std::string shortened(const std::string& text);

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
