// Running one golden case.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "GoldenCase.h"

namespace qnpp::golden {

// How the program under test is started. Every case is run the same way.
struct RunSettings {
  std::filesystem::path program;     // absolute, for the case runs in a folder of its own
  std::vector<std::string> wrapper;  // words in front of the program, `valgrind -q` say
  std::chrono::milliseconds timeLimit{20'000};
};

// What one run of a case produced, in the terms in which a case states what it expects.
struct CaseOutcome {
  std::string standardOutput;
  std::string standardError;
  std::string status;
  std::string killedBy;                      // why the runner had to kill the program; empty if it ended by itself
  std::map<std::string, std::string> files;  // the files of the working folder after the run that are new, were
                                             // changed, or that the case expects; name -> bytes
};

// Copies the inputs of a case to a temporary folder, runs the program there and removes the folder again. Throws
// std::runtime_error if that cannot be done.
CaseOutcome runCase(const CaseLocation& location, const GoldenCase& golden, const RunSettings& settings);

// Every difference between what a case expects and what came out, for the developer to read. Empty: the case holds.
std::string compare(const GoldenCase& golden, const CaseOutcome& outcome);

// Makes the outcome the expectation of the case on disk. A file that would state the default (no output, status 0)
// is removed, as if a developer had written the case by hand.
void rewriteExpectations(const CaseLocation& location, const CaseOutcome& outcome);

}  // namespace qnpp::golden
