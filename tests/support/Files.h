// Files and folders of tests.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace qnpp {

/// The bytes of a file; none when it cannot be read.
inline std::string readFile(const std::string& name) {
  std::ostringstream bytes;
  bytes << std::ifstream(name, std::ios::binary).rdbuf();
  return std::move(bytes).str();
}

/// A new folder with nothing in it; removed with all its contents at the end.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
      : path_((parent / "qnpp-test-XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) {
      throw std::runtime_error("cannot make the folder " + path_);
    }
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::string& path() const { return path_; }
  /// The full name of a file in the folder.
  std::string path(const std::string& name) const { return path_ + '/' + name; }

  /// Writes a file, making the folders on the way to it, and returns its full name.
  std::string write(const std::string& name, std::string_view bytes) const {
    const std::filesystem::path file = path(name);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream << bytes;
    if (!stream.flush()) {
      throw std::runtime_error("cannot write " + file.string());
    }
    return file.string();
  }
  std::string read(const std::string& name) const { return readFile(path(name)); }

 private:
  std::string path_;
};

/// Makes `folder` the working directory while it lives.
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const TemporaryFolder& folder) : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder.path());
  }
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;
  ~WorkingDirectory() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }

 private:
  std::filesystem::path before_;
};

}  // namespace qnpp
