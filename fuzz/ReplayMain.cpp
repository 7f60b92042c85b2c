// Stands in for libFuzzer where a fuzz target is only to run over inputs that exist:
//
//   qnpp_fuzz_lexer FILE|FOLDER...
//
// A target ends the process at the first input that violates one of its rules; the name of that input is then the last
// line on standard error. QNPP_FUZZ_SHOW=1 in the environment shows the source that each input stands for.

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzSupport.h"
#include "lexer/Sanitizer.h"
#include "tests/support/Files.h"

#if defined(QNPP_ADDRESS_SANITIZER)
extern "C" void __sanitizer_set_death_callback(void (*callback)());
#endif

namespace {

namespace fs = std::filesystem;

std::string currentInput;

// Only calls that are allowed in a signal handler.
void nameInput() {
  constexpr std::string_view kTitle = "the input was ";
  for (const std::string_view text : {kTitle, std::string_view(currentInput), std::string_view("\n")}) {
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
  }
}

void nameInputAndEnd(int signal) {
  nameInput();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

// The sanitizers have handlers of their own for most faults, and report before they end the process.
void watchForTheEnd() {
  std::signal(SIGABRT, nameInputAndEnd);
  std::signal(SIGFPE, nameInputAndEnd);
#if defined(QNPP_ADDRESS_SANITIZER)
  __sanitizer_set_death_callback(nameInput);
#else
  std::signal(SIGSEGV, nameInputAndEnd);
#endif
}

std::vector<fs::path> inputsOf(const fs::path& place) {
  if (!fs::is_directory(place)) {
    return {place};
  }
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(place)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

void replay(const fs::path& file) {
  currentInput = file.string();
  qnpp::fuzz::require(fs::is_regular_file(file), "the input is a file");
  const std::string bytes = qnpp::readFile(currentInput);
  // A copy of the exact size, so that a sanitizer sees a read behind its end.
  std::vector<std::uint8_t> data(bytes.size());
  std::transform(bytes.begin(), bytes.end(), data.begin(), [](char byte) { return static_cast<std::uint8_t>(byte); });
  LLVMFuzzerTestOneInput(data.data(), data.size());
}

}  // namespace

int main(int argc, char** argv) {
  watchForTheEnd();
  std::size_t count = 0;
  for (int word = 1; word < argc; ++word) {
    for (const fs::path& file : inputsOf(argv[word])) {
      replay(file);
      ++count;
    }
  }
  std::cout << count << " inputs\n";
  if (count == 0) {
    std::cerr << "nothing to replay\n";
    return 1;
  }
  return 0;
}
