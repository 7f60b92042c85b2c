// A folder of a test's own.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace qnpp {

/// A new folder with nothing in it; removed with all its contents at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    path_ = std::filesystem::temp_directory_path() /
            (std::string("qnpp-") + test->test_suite_name() + "-" + test->name() + "-" + std::to_string(getpid()));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string path() const { return path_.string(); }
  /// The full name of a file in the folder.
  std::string path(const std::string& name) const { return (path_ / name).string(); }

  /// Writes a file, making the folders on the way to it, and returns its full name.
  std::string write(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }

 private:
  std::filesystem::path path_;
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
