#include "Program.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "Process.h"

namespace qnpp::faults {

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
  std::string pattern = (fs::temp_directory_path() / "qnpp-faults-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot make the folder " + pattern);
  }
  path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

fs::path ScratchFolder::write(const std::string& name, std::string_view bytes) const {
  const fs::path file = path_ / name;
  std::ofstream stream(file, std::ios::binary);
  stream << bytes;
  if (!stream.flush()) {
    throw std::runtime_error("cannot write " + file.string());
  }
  return file;
}

std::string ScratchFolder::read(const std::string& name) const {
  std::ifstream stream(path_ / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

Outcome run(const ScratchFolder& folder, const Invocation& invocation) {
  ProcessRequest request;
  request.command = {"/bin/sh", "-c", "exec >the.output\n" + invocation.preparation + "\nexec \"$@\"", "sh",
                     QNPP_PROGRAM};
  request.command.insert(request.command.end(), invocation.words.begin(), invocation.words.end());
  request.workingFolder = folder.path();
  // Sanitizers make everything several times slower.
  request.timeLimit = invocation.timeLimit * (isSanitized() ? 10 : 1);
  const ProcessResult result = runProcess(request);
  return {result.status, result.killedBy, folder.read("the.output"), result.standardError};
}

std::string repeat(std::size_t count, std::string_view text) {
  std::string result;
  result.reserve(count * text.size());
  for (std::size_t index = 0; index < count; ++index) {
    result += text;
  }
  return result;
}

std::string shortened(const std::string& text) {
  constexpr std::size_t kMost = 400;
  return text.substr(0, kMost) + (text.size() > kMost ? "..." : "") + " (" + std::to_string(text.size()) + " bytes)";
}

}  // namespace qnpp::faults
