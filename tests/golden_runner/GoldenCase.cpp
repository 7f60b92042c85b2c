#include "GoldenCase.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <tuple>

namespace qnpp::golden {

namespace fs = std::filesystem;

namespace {

constexpr std::array<std::string_view, 7> kReservedNames = {
    kWordsFile, kStandardInputFile, kStandardOutputFile, kStandardErrorFile, kStatusFile, kExpectedFolder, kReasonFile};

bool isBlankText(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

std::string trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1));
}

// An absent file stands for `fallback`: most cases write no diagnostics and end with status 0.
std::string readFileOr(const fs::path& path, std::string fallback) {
  return fs::exists(path) ? readFile(path) : std::move(fallback);
}

int hexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Decodes the escape that begins with the backslash at `position` and moves `position` behind it.
char parseEscape(std::string_view line, std::size_t& position) {
  const std::size_t start = position;
  const auto malformed = [&] {
    return std::runtime_error("malformed escape in args at \"" + std::string(line.substr(start)) +
                              "\"; known are \\n, \\t, \\r, \\\\ and \\xHH");
  };
  if (start + 1 >= line.size()) throw malformed();
  position = start + 2;
  switch (line[start + 1]) {
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case 'r':
      return '\r';
    case '\\':
      return '\\';
    case 'x': {
      if (start + 3 >= line.size()) throw malformed();
      const int high = hexDigitValue(line[start + 2]);
      const int low = hexDigitValue(line[start + 3]);
      if (high < 0 || low < 0) throw malformed();
      position = start + 4;
      return static_cast<char>(high * 16 + low);
    }
    default:
      throw malformed();
  }
}

std::string parseWord(std::string_view line) {
  std::string word;
  std::size_t position = 0;
  while (position < line.size()) {
    if (line[position] == '\\') {
      word += parseEscape(line, position);
    } else {
      word += line[position++];
    }
  }
  // The system ends a word at its first NUL byte, so the program would get another word than the case says.
  if (word.find('\0') != std::string::npos) throw std::runtime_error("a word in args cannot hold a NUL byte");
  return word;
}

std::string readStatus(const fs::path& path) {
  std::string status = trimmed(readFileOr(path, "0"));
  const bool isNumber = !status.empty() &&
                        std::all_of(status.begin(), status.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
  if (!isNumber && !status.starts_with("SIG")) {
    throw std::runtime_error("status holds \"" + status + "\", which is neither a number nor a signal's name");
  }
  return status;
}

std::map<std::string, std::string> readExpectedFiles(const fs::path& folder) {
  std::map<std::string, std::string> files;
  if (!fs::exists(folder)) return files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_directory()) files[entry.path().lexically_relative(folder).string()] = readFile(entry.path());
  }
  return files;
}

}  // namespace

std::string CaseLocation::path() const { return area + "/" + name; }

bool isReservedName(std::string_view name) {
  return std::find(kReservedNames.begin(), kReservedNames.end(), name) != kReservedNames.end();
}

std::vector<CaseLocation> findCases(const fs::path& root) {
  if (!fs::is_directory(root)) throw std::runtime_error("no folder of golden cases at " + root.string());
  std::vector<CaseLocation> cases;
  for (const fs::directory_entry& area : fs::directory_iterator(root)) {
    if (!area.is_directory()) continue;
    for (const fs::directory_entry& entry : fs::directory_iterator(area)) {
      if (!entry.is_directory()) continue;
      cases.push_back({entry.path(), area.path().filename().string(), entry.path().filename().string()});
    }
  }
  std::sort(cases.begin(), cases.end(), [](const CaseLocation& left, const CaseLocation& right) {
    return std::tie(left.area, left.name) < std::tie(right.area, right.name);
  });
  return cases;
}

GoldenCase readCase(const CaseLocation& location) {
  const fs::path& folder = location.folder;
  GoldenCase result;
  result.why = trimmed(readFileOr(folder / kReasonFile, ""));
  if (isBlankText(result.why)) {
    throw std::runtime_error("the file `why` is missing or empty; say which rule the case holds fast, and its reason");
  }
  if (fs::exists(folder / kWordsFile)) {
    result.words = parseWords(readFile(folder / kWordsFile));
  } else if (fs::exists(folder / "input.c")) {
    result.words = {"input.c"};
  }
  result.standardOutput = readFileOr(folder / kStandardOutputFile, "");
  result.standardError = readFileOr(folder / kStandardErrorFile, "");
  result.status = readStatus(folder / kStatusFile);
  result.expected = readExpectedFiles(folder / kExpectedFolder);
  return result;
}

std::vector<std::string> parseWords(std::string_view text) {
  std::vector<std::string> words;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    words.push_back(parseWord(text.substr(0, end)));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return words;
}

std::string testNameOf(std::string_view folderName) {
  std::string name;
  bool atWordStart = true;
  for (const char c : folderName) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) == 0) {
      atWordStart = true;
      continue;
    }
    name += atWordStart ? static_cast<char>(std::toupper(byte)) : c;
    atWordStart = false;
  }
  return name;
}

std::string readFile(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream || fs::is_directory(path)) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace qnpp::golden
