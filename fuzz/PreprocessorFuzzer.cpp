// The whole preprocessor: options, a source and headers, any bytes.
//
// An input is text. Lines at its beginning that start with "@" are words of the command line, in which "\n" stands for
// a line end. The rest is cut at each "\n@@\n": the first part is the source, the others are the headers "a.h", "b.h"
// and "c.h", which lie in an include directory.
//
// What must hold: no fault, and the same result whether the source arrives whole or in small pieces, and whether or not
// the shortcuts are taken.

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "FuzzSupport.h"
#include "driver/Driver.h"
#include "driver/OptionParser.h"
#include "lexer/Shortcuts.h"
#include "tests/support/Files.h"

namespace {

namespace fs = std::filesystem;
using qnpp::fuzz::RunResult;

constexpr std::array<std::string_view, 3> kHeaderNames = {"a.h", "b.h", "c.h"};

struct Input {
  std::vector<std::string> words;
  std::string source;
  std::vector<std::string> headers;
};

std::string withLineEnds(std::string_view word) {
  std::string result(word);
  for (std::size_t at = result.find("\\n"); at != std::string::npos; at = result.find("\\n", at)) {
    result.replace(at, 2, "\n");
  }
  return result.substr(0, result.find('\0'));
}

// With "%" for a "/" that can be no part of the beginning or the end of a comment: a name in an #include would lead to
// the devices of the machine.
std::string withoutPaths(std::string_view text) {
  std::string result(text);
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isBeside = (at > 0 && (text[at - 1] == '/' || text[at - 1] == '*')) ||
                          (at + 1 < text.size() && (text[at + 1] == '/' || text[at + 1] == '*'));
    if (text[at] == '/' && !isBeside) {
      result[at] = '%';
    }
  }
  return result;
}

Input parse(std::string_view text) {
  constexpr std::string_view kCut = "\n@@\n";
  Input input;
  while (text.starts_with('@') && text.find('\n') != std::string_view::npos) {
    input.words.push_back(withLineEnds(text.substr(1, text.find('\n') - 1)));
    text.remove_prefix(text.find('\n') + 1);
  }
  std::vector<std::string> parts;
  for (std::size_t cut = text.find(kCut); cut != std::string_view::npos; cut = text.find(kCut)) {
    parts.push_back(withoutPaths(text.substr(0, cut + 1)));
    text.remove_prefix(cut + kCut.size());
  }
  parts.push_back(withoutPaths(text));
  input.source = std::move(parts.front());
  for (std::size_t part = 1; part < parts.size() && part <= kHeaderNames.size(); ++part) {
    input.headers.push_back(std::move(parts[part]));
  }
  return input;
}

// The words that may reach the driver: none may name a file to be written or read, and no "/" may make a directory of
// the machine an include directory.
std::vector<std::string> harmless(const std::vector<std::string>& words) {
  std::vector<std::string> result;
  bool isName = false;
  for (std::string word : words) {
    for (char& byte : word) {
      byte = byte == '/' ? '_' : byte;
    }
    const bool isOption = word.starts_with('-');
    const bool opensFile = word == "-o" || word == "-I" || word.find("..") != std::string::npos;
    if (!opensFile && (isOption || isName)) {
      result.push_back(word);
    }
    isName = word == "-s";
  }
  return result;
}

// The include directory: in memory where the system has such a place.
class HeaderFolder {
 public:
  const std::string& path() const { return folder_.path(); }

  void fill(const std::vector<std::string>& headers) {
    for (std::size_t index = 0; index < kHeaderNames.size(); ++index) {
      const bool isWanted = index < headers.size();
      const std::string name(kHeaderNames.at(index));
      if (isWanted && (!exists_.at(index) || contents_.at(index) != headers[index])) {
        folder_.write(name, headers[index]);
        contents_.at(index) = headers[index];
      } else if (!isWanted && exists_.at(index)) {
        fs::remove(folder_.path(name));
      }
      exists_.at(index) = isWanted;
    }
  }

 private:
  static fs::path parent() {
    const fs::path memory = "/dev/shm";
    std::error_code none;
    return fs::is_directory(memory, none) ? memory : fs::temp_directory_path();
  }

  qnpp::TemporaryFolder folder_{parent()};
  std::array<bool, kHeaderNames.size()> exists_{};
  std::array<std::string, kHeaderNames.size()> contents_;
};

// While one lives, only a few more files can be opened: a header that includes itself recurses until that fails, and
// two such lines in it would double the work with every level.
class FileLimit {
 public:
  FileLimit() {
    constexpr rlim_t kMostFiles = 6;
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(next);
    ::getrlimit(RLIMIT_NOFILE, &before_);
    rlimit limit = before_;
    limit.rlim_cur = static_cast<rlim_t>(next) + kMostFiles;
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;
  ~FileLimit() { ::setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

std::vector<const char*> pointersTo(const std::vector<std::string>& words) {
  std::vector<const char*> pointers;
  pointers.reserve(words.size());
  for (const std::string& word : words) {
    pointers.push_back(word.c_str());
  }
  return pointers;
}

RunResult run(const Input& input, const std::vector<std::string>& words, std::size_t piece) {
  const auto runDriver = [&words](const qnpp::Reader& source, std::ostream& output, std::ostream& messages) {
    const FileLimit fileLimit;
    const std::vector<const char*> pointers = pointersTo(words);
    return qnpp::Driver(output, messages, source).run(static_cast<int>(pointers.size()), pointers.data());
  };
  // Both runs of an input may stand on either side of a second.
  return qnpp::fuzz::runWithLimits("#undef __DATE__\n#undef __TIME__\n" + input.source, piece, runDriver);
}

// Words as they are: the parser opens nothing.
void parseWords(const std::vector<std::string>& words) {
  static constexpr std::array<qnpp::OptionEntry, 4> kTable{{
      {"I ", 1, "no %d"},
      {"D_", 1, "no %d"},
      {"o", 1, "none"},
      {"-help", qnpp::OptionEntry::kTakesNoValue, ""},
  }};
  qnpp::fuzz::LimitedSink messages(SIZE_MAX);
  const std::vector<const char*> pointers = pointersTo(words);
  const qnpp::OptionParser parser(static_cast<int>(pointers.size()), pointers.data(), kTable,
                                  "qnpp: ", qnpp::PlainArguments::Anywhere, messages);
  parser.reportUnknownOptions();
  parser.warnAboutRepeatedOptions();
  parser.warnAboutIgnoredWords();
  static_cast<void>(parser.letterValues("I"));
  static_cast<void>(parser.letterValues("D"));
  if (parser.isPresent("o")) {
    static_cast<void>(parser.value("o"));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static HeaderFolder folder;
  const Input input = parse(qnpp::fuzz::textOf(data, size));
  qnpp::fuzz::show(input.source);

  std::vector<std::string> words = {"qnpp"};
  words.insert(words.end(), input.words.begin(), input.words.end());
  parseWords(words);
  words = {"qnpp", "-I" + folder.path()};
  const std::vector<std::string> options = harmless(input.words);
  words.insert(words.end(), options.begin(), options.end());

  folder.fill(input.headers);
  const RunResult whole = run(input, words, qnpp::fuzz::kWhole);
  if (whole.isComplete) {
    qnpp::fuzz::requireEqual(whole, run(input, words, qnpp::fuzz::smallPiece(size) + size % 5),
                             "a source gives the same result in any pieces");
#if defined(QNPP_SWITCHABLE_SHORTCUTS)
    qnpp::kShortcuts = false;
    const RunResult plain = run(input, words, qnpp::fuzz::kWhole);
    qnpp::kShortcuts = true;
    if (plain.isComplete) {  // Token by token, the limits are reached earlier.
      qnpp::fuzz::requireEqual(whole, plain, "a source gives the same result without the shortcuts");
    }
#endif
  }
  return 0;
}
