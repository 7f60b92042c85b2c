#include "CaseRun.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "Process.h"
#include "TextDifference.h"

namespace qnpp::golden {

namespace fs = std::filesystem;

namespace {

// A fresh folder that is removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "qnpp-golden-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make the folder " + pattern);
    path_ = pattern;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  TemporaryFolder(TemporaryFolder&&) = delete;
  TemporaryFolder& operator=(TemporaryFolder&&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }

  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

void copyInputs(const fs::path& from, const fs::path& to) {
  for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
    const fs::path name = entry.path().filename();
    if (!isReservedName(name.string())) fs::copy(entry.path(), to / name, fs::copy_options::recursive);
  }
}

std::map<std::string, std::string> readAllFiles(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) files[entry.path().lexically_relative(folder).string()] = readFile(entry.path());
  }
  return files;
}

// Leaves the files that say something about the run: an input that is as it was, and of which the case says nothing,
// does not.
void keepTellingFiles(std::map<std::string, std::string>& files, const std::map<std::string, std::string>& before,
                      const std::map<std::string, std::string>& expected) {
  std::erase_if(files, [&](const auto& file) {
    const auto old = before.find(file.first);
    return !expected.contains(file.first) && old != before.end() && old->second == file.second;
  });
}

void compareText(std::string& report, const std::string& what, std::string_view expected, std::string_view actual) {
  if (expected != actual) report += what + " differs\n" + describeDifference(expected, actual);
}

void writeFile(const fs::path& path, std::string_view bytes) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!stream.flush()) throw std::runtime_error("cannot write " + path.string());
}

void writeOrRemove(const fs::path& path, std::string_view bytes) {
  if (bytes.empty()) {
    fs::remove(path);
  } else {
    writeFile(path, bytes);
  }
}

}  // namespace

CaseOutcome runCase(const CaseLocation& location, const GoldenCase& golden, const RunSettings& settings) {
  const TemporaryFolder folder;
  copyInputs(location.folder, folder.path());
  const std::map<std::string, std::string> before = readAllFiles(folder.path());

  ProcessRequest request;
  request.command = settings.wrapper;
  request.command.push_back(settings.program.string());
  request.command.insert(request.command.end(), golden.words.begin(), golden.words.end());
  request.workingFolder = folder.path();
  const fs::path input = fs::absolute(location.folder / kStandardInputFile);
  if (fs::exists(input)) request.standardInputFile = input;
  request.timeLimit = settings.timeLimit;
  ProcessResult result = runProcess(request);

  CaseOutcome outcome;
  outcome.standardOutput = std::move(result.standardOutput);
  outcome.standardError = std::move(result.standardError);
  outcome.status = std::move(result.status);
  outcome.killedBy = std::move(result.killedBy);
  outcome.files = readAllFiles(folder.path());
  keepTellingFiles(outcome.files, before, golden.expected);
  return outcome;
}

std::string compare(const GoldenCase& golden, const CaseOutcome& outcome) {
  std::string report;
  if (!outcome.killedBy.empty()) {
    report += "the program was killed: " + outcome.killedBy + "\n";
  } else if (golden.status != outcome.status) {
    report += "the exit status is " + outcome.status + ", expected " + golden.status + "\n";
  }
  compareText(report, "standard error", golden.standardError, outcome.standardError);
  compareText(report, "standard output", golden.standardOutput, outcome.standardOutput);
  for (const auto& [name, bytes] : golden.expected) {
    const auto found = outcome.files.find(name);
    if (found == outcome.files.end()) {
      report += "the file " + name + " was expected and is not there\n";
    } else {
      compareText(report, "the file " + name, bytes, found->second);
    }
  }
  return report;
}

void rewriteExpectations(const CaseLocation& location, const CaseOutcome& outcome) {
  const fs::path& folder = location.folder;
  writeOrRemove(folder / kStandardOutputFile, outcome.standardOutput);
  writeOrRemove(folder / kStandardErrorFile, outcome.standardError);
  writeOrRemove(folder / kStatusFile, outcome.status == "0" ? "" : outcome.status + "\n");
  fs::remove_all(folder / kExpectedFolder);
  for (const auto& [name, bytes] : outcome.files) {
    const fs::path path = folder / kExpectedFolder / name;
    fs::create_directories(path.parent_path());
    writeFile(path, bytes);
  }
}

}  // namespace qnpp::golden
