// The library under load, for the sanitizers to watch:
//
//   qnpp_library_stress threads    eight objects on eight threads, cancelled from outside
//   qnpp_library_stress runs N     one object, N runs that end in every way; tells the memory at the beginning and the
//   end
//
// Ends with status 1 where a run does not end as it has to.
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "qnpp/preprocessor.h"

namespace {

using qnpp::Include;
using qnpp::IncludeRequest;
using qnpp::Limits;
using qnpp::Preprocessor;
using qnpp::Result;
using qnpp::Source;
using qnpp::Status;

void require(bool holds, std::string_view rule) {
  if (!holds) {
    std::cerr << "VIOLATED: " << rule << std::endl;
    std::_Exit(1);
  }
}

// A bit of everything.
constexpr std::string_view kSource =
    "#define CALL(x, y) x [ y ] #x x##y NAME __LINE__\n"
    "#if defined(NAME) && ('a' < 100) || 1\n"
    "CALL(CALL(a, b), (c, d)) /* comment\n"
    "over lines */ \"text\"\n"
    "#endif\n"
    "#include <header>\n"
    "GUARDED GUARDED\n"
    "#include <header>\n"
    "#wrong\n";
constexpr std::string_view kHeader = "#ifndef GUARDED\n#define GUARDED guarded\ntext __FILE__\n#endif\n";

std::optional<Include> resolve(const IncludeRequest& request) {
  if (request.name == "missing") {
    return std::nullopt;
  }
  if (request.name == "throwing") {
    throw std::runtime_error("no such file");
  }
  return Include{std::string(request.name),
                 Source::borrowing(request.name == "itself" ? "#include <itself>\n" : kHeader)};
}

std::ptrdiff_t readEndlessly(char* to, std::size_t size) {
  for (std::size_t at = 0; at < size; ++at) {
    to[at] = at % 5 == 4 ? '\n' : 'x';
  }
  return static_cast<std::ptrdiff_t>(size);
}

// ---- Threads ----

// Runs one object. The last run has no end but that it is cancelled.
void use(Preprocessor& preprocessor, std::size_t number, std::atomic<bool>& isEndless) {
  constexpr int kRuns = 40;
  const std::string name = "name" + std::to_string(number);
  std::size_t messages = 0;
  preprocessor.define("NAME=" + name);
  preprocessor.setResolver(resolve);
  preprocessor.setLineMap(true);
  preprocessor.setDiagnosticSink(
      [&messages](const qnpp::Diagnostic& diagnostic) { messages += diagnostic.text.size(); });
  const std::string expected = preprocessor.run(Source::borrowing(kSource), name).output;
  require(expected.find(name + " 3") != std::string::npos, "an object has its own definitions");
  for (int run = 0; run < kRuns; ++run) {
    const Result result = preprocessor.run(Source::borrowing(kSource), name);
    require(result.status == Status::Errors && result.output == expected, "objects share nothing");
  }
  preprocessor.setOutputSink([](std::string_view) {});
  isEndless = true;
  require(preprocessor.run(Source::ofReader(readEndlessly), name).status == Status::Cancelled,
          "a run can be cancelled");
  require(messages > 0, "each run has messages");
}

void useThreads() {
  constexpr std::size_t kObjects = 8;
  std::array<Preprocessor, kObjects> objects;
  std::array<std::atomic<bool>, kObjects> areEndless{};
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < kObjects; ++number) {
    threads.emplace_back([&, number] { use(objects[number], number, areEndless[number]); });
  }
  for (std::size_t number = 0; number < kObjects; ++number) {
    while (!areEndless[number]) {
      std::this_thread::yield();
    }
    objects[number].cancel();
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// ---- Many runs ----

struct Row {
  std::string_view source;
  Limits limits;
  Status status;
};

const std::array<Row, 10> kRows = {{
    {"#define A x\nA\n", {}, Status::Clean},
    {kSource, {}, Status::Errors},
    {"#include <missing>\n", {}, Status::Errors},
    {"x\n#if 1 % 0\n", {}, Status::DivisionByZero},
    {"#define f(x) x x\nf(f(f(f(f(f(a))))))\n", {0, 20, 0, {}}, Status::LimitReached},
    {"a longer text\nof lines\n", {0, 0, 20, {}}, Status::LimitReached},
    {"#include <itself>\n", {5, 0, 0, {}}, Status::LimitReached},
    {"x\n#include <throwing>\n", {}, Status::CallbackFailed},
    {"x\n", {}, Status::Cancelled},
    {"", {}, Status::ScannerFailed},
}};

Source sourceOf(const Row& row) {
  if (row.status == Status::ScannerFailed) {
    return Source::ofReader([](char*, std::size_t) { return std::ptrdiff_t{-1}; });
  }
  return Source::borrowing(row.source);
}

// Of this process, in KiB.
std::size_t residentMemory() {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) / 1024;
}

void runOften(std::uint64_t count) {
  constexpr std::uint64_t kUntilItIsSettled = 1000;
  Preprocessor preprocessor;
  preprocessor.setResolver(resolve);
  preprocessor.setLineMap(true);
  preprocessor.setDiagnosticSink([](const qnpp::Diagnostic&) {});
  for (std::uint64_t run = 0; run < count; ++run) {
    const Row& row = kRows[run % kRows.size()];
    preprocessor.setLimits(row.limits);
    if (row.status == Status::Cancelled) {
      preprocessor.cancel();
    }
    require(preprocessor.run(sourceOf(row)).status == row.status, row.source);
    if (run == kUntilItIsSettled) {
      std::cout << "resident after " << run << " runs: " << residentMemory() << " KiB\n";
    }
  }
  std::cout << "resident after " << count << " runs: " << residentMemory() << " KiB\n";
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view what = argc > 1 ? argv[1] : "";
  if (what == "threads") {
    useThreads();
  } else if (what == "runs" && argc > 2) {
    runOften(std::strtoull(argv[2], nullptr, 10));
  } else {
    std::cerr << "qnpp_library_stress threads | runs N\n";
    return 1;
  }
  return 0;
}
