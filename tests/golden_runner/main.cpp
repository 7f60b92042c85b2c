// The golden runner: turns every case folder it finds into a GoogleTest test and runs the chosen ones.

#include <gtest/gtest.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "CaseRun.h"
#include "GoldenCase.h"
#include "Options.h"
#include "TextDifference.h"

namespace qnpp::golden {
namespace {

// A word as a POSIX shell takes it.
std::string shellQuoted(const std::string& word) {
  static constexpr const char* kHarmless = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./=,+:@%";
  if (!word.empty() && word.find_first_not_of(kHarmless) == std::string::npos) return word;
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string commandShown(const GoldenCase& golden) {
  std::string line = "qnpp";
  for (const std::string& word : golden.words) line += " " + shellQuoted(escaped(word));
  return line;
}

// One golden case as a test. `runner` is the name under which this program was started.
class GoldenTest : public testing::Test {
 public:
  GoldenTest(CaseLocation location, const Options& options, std::string runner)
      : location_(std::move(location)), options_(options), runner_(std::move(runner)) {}

  void TestBody() override {
    try {
      runAndCheck();
    } catch (const std::exception& problem) {
      FAIL() << location_.path() << ": " << problem.what() << "\nrerun:   " << rerunCommand() << "\n";
    }
  }

 private:
  void runAndCheck() {
    const GoldenCase golden = readCase(location_);
    const CaseOutcome outcome = runCase(location_, golden, options_.settings);
    const std::string report = compare(golden, outcome);
    // A killed program says nothing about what is right, so it never becomes an expectation.
    if (options_.update && outcome.killedBy.empty()) {
      if (report.empty() && outcome.files == golden.expected) return;
      rewriteExpectations(location_, outcome);
      std::printf("rewritten: %s\n", location_.folder.c_str());
      return;
    }
    if (report.empty()) return;
    FAIL() << location_.path() << "\nwhy:     " << golden.why << "\ncommand: " << commandShown(golden) << "\n\n"
           << report << "\nfolder:  " << location_.folder.string() << "\nrerun:   " << rerunCommand() << "\n";
  }

  std::string rerunCommand() const {
    std::string command = shellQuoted(runner_) + " --program " + shellQuoted(options_.settings.program.string()) +
                          " --cases " + shellQuoted(std::filesystem::absolute(options_.cases).string());
    if (!options_.settings.wrapper.empty()) {
      std::string words;
      for (const std::string& word : options_.settings.wrapper) words += (words.empty() ? "" : " ") + word;
      command += " --wrapper " + shellQuoted(words);
    }
    return command + " --gtest_filter=" + testNameOf(location_.area) + "." + testNameOf(location_.name);
  }

  CaseLocation location_;
  const Options& options_;  // lives in main
  std::string runner_;
};

void registerCase(const CaseLocation& location, const Options& options, const std::string& runner) {
  const std::string file = (location.folder / kReasonFile).string();
  testing::RegisterTest(testNameOf(location.area).c_str(), testNameOf(location.name).c_str(), nullptr, nullptr,
                        file.c_str(), 1, [=, &options]() -> testing::Test* {
                          // GoogleTest takes the test over and deletes it.
                          return std::make_unique<GoldenTest>(location, options, runner).release();
                        });
}

bool isChosen(const CaseLocation& location, const Options& options) {
  return (options.area.empty() || location.area == options.area) &&
         location.path().find(options.filter) != std::string::npos;
}

// Registers the chosen cases. To choose none is a mistake (a wrong folder, a typing error), not a success.
void registerCases(const Options& options, const std::string& runner) {
  std::set<std::string> names;
  for (const CaseLocation& location : findCases(options.cases)) {
    if (!isChosen(location, options)) continue;
    const std::string name = testNameOf(location.area) + "." + testNameOf(location.name);
    if (!names.insert(name).second) throw std::runtime_error("two cases are called " + name);
    registerCase(location, options, runner);
  }
  if (names.empty()) throw std::runtime_error("no case of " + options.cases.string() + " is chosen");
}

}  // namespace
}  // namespace qnpp::golden

int main(int argc, char** argv) {
  using qnpp::golden::Options;
  testing::InitGoogleTest(&argc, argv);
  try {
    const Options options = qnpp::golden::parseOptions(argc, argv);
    if (options.help) {
      std::fputs(qnpp::golden::kHelpText, stdout);
      return 0;
    }
    qnpp::golden::registerCases(options, argv[0]);
    return RUN_ALL_TESTS();
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "qnpp_golden_runner: %s ('--help' for help)\n", problem.what());
    return 2;
  }
}
