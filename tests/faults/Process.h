// Running a process to its end.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace qnpp::faults {

// What to start and in which surroundings. Standard input is at its end at once.
struct ProcessRequest {
  std::vector<std::string> command;     // the program and its words; never empty
  std::filesystem::path workingFolder;  // the program's working directory
  std::chrono::milliseconds timeLimit{0};
};

// How a process ended and what it wrote.
struct ProcessResult {
  std::string standardOutput;
  std::string standardError;
  std::string status;    // the exit status in decimal, or the name of the signal that ended the process
  std::string killedBy;  // why it was killed ("it ran for more than 20 s"), empty if it did not
};

// Runs a process to its end, or kills it, with everything it started, when its time is up or it writes without end.
// The process gets a small fixed environment, so that a developer's own settings cannot change a result. Throws
// std::runtime_error if the program cannot be started at all.
ProcessResult runProcess(const ProcessRequest& request);

}  // namespace qnpp::faults
