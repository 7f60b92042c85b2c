// Golden cases as they lie on the disk.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qnpp::golden {

// Where a golden case lies and what it is called. Finding a case reads nothing but folder names; a case that is
// malformed inside is found all the same and fails when it is run, with a message of its own.
struct CaseLocation {
  std::filesystem::path folder;
  std::string area;  // the name of the folder that holds the case's folder
  std::string name;

  // "area/name", as a developer types it.
  std::string path() const;
};

// The contents of one case: what to run and what must come out of it.
struct GoldenCase {
  std::string why;                              // never empty in a well-formed case
  std::vector<std::string> words;               // the command line behind the program's name
  std::string standardOutput;                   // expected bytes
  std::string standardError;                    // expected bytes
  std::string status;                           // expected exit status in decimal, or a signal's name
  std::map<std::string, std::string> expected;  // file name in the working folder -> expected bytes
};

// The file names of a case folder that the runner keeps for itself.
inline constexpr std::string_view kWordsFile = "args";
inline constexpr std::string_view kStandardInputFile = "stdin";
inline constexpr std::string_view kStandardOutputFile = "stdout";
inline constexpr std::string_view kStandardErrorFile = "stderr";
inline constexpr std::string_view kStatusFile = "status";
inline constexpr std::string_view kExpectedFolder = "expect";
inline constexpr std::string_view kReasonFile = "why";

// True for the names above. They count at the top of a case folder only: a case may hold `sub/stdout` as input.
bool isReservedName(std::string_view name);

// All cases of `root`, sorted by area and name. Throws std::runtime_error if there is no such folder.
std::vector<CaseLocation> findCases(const std::filesystem::path& root);

// Reads a case. Throws std::runtime_error with a message for the developer if the case is malformed.
GoldenCase readCase(const CaseLocation& location);

// Takes the text of an `args` file apart: a word a line, with the escapes \n \t \r \\ and \xHH. An empty text has no
// words, an empty line is an empty word. Throws std::runtime_error at any other escape.
std::vector<std::string> parseWords(std::string_view text);

// "endif-words-become-text" -> "EndifWordsBecomeText". A test's name holds no "-", because a "-" in a GoogleTest
// filter starts the list of the tests to leave out.
std::string testNameOf(std::string_view folderName);

// The bytes of a file. Throws std::runtime_error if it cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace qnpp::golden
