// Makes inputs for the fuzz targets from the golden cases:
//
//   qnpp_fuzz_seeds <folder of the golden cases> <folder to be made>
//
// Each target gets a folder of its own: whole sources for the lexer, sources with their headers and options for the
// preprocessor, and what stands behind #if and #elif for the evaluator. The macro target reads no text.

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::string readFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void writeFile(const fs::path& file, std::string_view bytes) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary);
  stream << bytes;
  if (!stream.flush()) {
    throw std::runtime_error("cannot write " + file.string());
  }
}

// The words of the command line that are options, each as a line of its own behind "@".
std::string optionLines(const fs::path& golden) {
  std::ifstream words(golden / "args");
  std::string lines;
  for (std::string word; std::getline(words, word);) {
    if (word.starts_with('-')) {
      lines += '@' + word + '\n';
    }
  }
  return lines;
}

bool isSource(const fs::path& file) {
  const std::string name = file.filename().string();
  constexpr std::string_view kOthers[] = {"args", "stdout", "stderr", "status", "why"};
  return std::none_of(std::begin(kOthers), std::end(kOthers), [&](std::string_view other) { return name == other; });
}

std::vector<std::string> conditionsOf(const std::string& source) {
  std::vector<std::string> conditions;
  for (const std::string_view word : {"if ", "elif "}) {
    for (std::size_t at = source.find(word); at != std::string::npos; at = source.find(word, at + 1)) {
      const std::size_t begin = at + word.size();
      conditions.push_back(source.substr(begin, source.find('\n', begin) - begin));
    }
  }
  return conditions;
}

void addCase(const fs::path& golden, const fs::path& seeds) {
  const std::string name = golden.parent_path().filename().string() + '.' + golden.filename().string();
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(golden)) {
    if (entry.is_regular_file() && isSource(entry.path()) && entry.path().parent_path().filename() != "expect") {
      files.push_back(entry.path());
    }
  }
  // The main source, which comes first, is the standard input or bears the customary name.
  std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
    const auto rank = [](const fs::path& file) {
      const std::string fileName = file.filename().string();
      return fileName == "input.c" ? 0 : fileName == "stdin" ? 1 : 2;
    };
    return rank(a) != rank(b) ? rank(a) < rank(b) : a < b;
  });

  std::string whole = optionLines(golden);
  std::size_t conditionCount = 0;
  for (const fs::path& file : files) {
    const std::string source = readFile(file);
    whole += file == files.front() ? source : "\n@@\n" + source;
    for (const std::string& condition : conditionsOf(source)) {
      writeFile(seeds / "expression" / (name + '.' + std::to_string(conditionCount++)), condition);
    }
    writeFile(seeds / "lexer" / (name + '.' + file.filename().string()), source);
  }
  writeFile(seeds / "preprocessor" / name, whole);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: qnpp_fuzz_seeds <folder of the golden cases> <folder to be made>\n";
    return 2;
  }
  try {
    fs::remove_all(argv[2]);
    for (const fs::directory_entry& area : fs::directory_iterator(argv[1])) {
      for (const fs::directory_entry& golden : fs::directory_iterator(area.path())) {
        addCase(golden.path(), argv[2]);
      }
    }
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
  return 0;
}
