#include "driver/Driver.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <ctime>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <optional>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "driver/DescriptorStream.h"
#include "qnpp/version.h"
#include "tests/support/Files.h"
#include "tests/support/Text.h"

namespace qnpp {
namespace {

constexpr const char* kHelp =
    "Usage: qnpp [options] [source_file]\n"
    "\n"
    "  -I<dir>        : add a directory for searching include files.\n"
    "  -D<name>       : define preprocessor symbol.\n"
    "  -o <name>      : output file. If not specified, writes to standard out.\n"
    "  -s <name>      : source name. Overrides source file name in messages. Useful when reading from standard in.\n"
    "  -v, --version  : show version number.\n"
    "  -h, --help     : show this help text.\n"
    "\n"
    "The order you specify options and source file does not matter.\n"
    "If no source file is specified, qnpp reads from standard in.\n"
    "\n";

std::string versionText() {
  return std::string("qnpp version ") + QnGetVersionString() + "\n" + QnGetCopyrightString() + "\n";
}

// Carries something out before it takes a block.
class ActingBuffer : public std::streambuf {
 public:
  explicit ActingBuffer(std::function<void()> act) : act_(std::move(act)) {}
  const std::string& written() const { return written_; }

 protected:
  std::streamsize xsputn(const char* from, std::streamsize size) override {
    act_();
    written_.append(from, static_cast<std::size_t>(size));
    return size;
  }

 private:
  std::function<void()> act_;
  std::string written_;
};

// Runs whole command lines, with the streams of the process replaced and a scratch folder for files.
class DriverTest : public testing::Test {
 protected:
  // The full name of a file in the scratch folder.
  std::string path(const std::string& name) const { return folder_.path(name); }

  std::string write(const std::string& name, const std::string& content) const { return folder_.write(name, content); }

  std::string makeFolder(const std::string& name) const {
    std::filesystem::create_directory(path(name));
    return path(name);
  }

  std::string read(const std::string& name) const {
    return std::filesystem::exists(path(name)) ? folder_.read(name) : "(no such file)";
  }

  // Carries out a command line, as the program does.
  void run(const std::vector<std::string>& words, const std::string& standardInput = "") {
    std::vector<const char*> argv{"qnpp"};
    for (const std::string& word : words) argv.push_back(word.c_str());
    std::istringstream input(standardInput);
    std::ostringstream output;
    std::ostringstream messages;
    const auto read = [&input](char* to, std::size_t size) {
      return input.rdbuf()->sgetn(to, static_cast<std::streamsize>(size));
    };
    status_ = Driver(output, messages, read).run(static_cast<int>(argv.size()), argv.data());
    output_ = output.str();
    messages_ = messages.str();
  }

  // A command line that ends before anything is read.
  void expectStop(const std::vector<std::string>& words, const std::string& output, const std::string& messages) {
    run(words, "never read\n");
    EXPECT_EQ(status_, std::nullopt);
    EXPECT_EQ(output_, output);
    EXPECT_EQ(messages_, messages);
  }

  // A command line that runs without an error, over "X" in line 1 of standard input.
  void expectRun(const std::vector<std::string>& words, const std::string& output, const std::string& messages = "") {
    run(words, "X\n");
    EXPECT_EQ(status_, Status::Clean);
    EXPECT_EQ(output_, output);
    EXPECT_EQ(messages_, messages);
  }

  std::optional<Status> status_;
  std::string output_;
  std::string messages_;

 private:
  TemporaryFolder folder_;
};

TEST_F(DriverTest, ReadsStandardInputWithoutASourceFile) { expectRun({}, "#line 1 \"stdin\"\nX\n"); }

TEST_F(DriverTest, AnEmptyWordMeansStandardInput) { expectRun({""}, "#line 1 \"stdin\"\nX\n"); }

TEST_F(DriverTest, ReadsTheSourceFileWhereverItStands) {
  const std::string file = write("a.c", "Y\n");
  const std::string expected = "#line 1 \"" + file + "\"\n2\n";
  expectRun({file, "-DY=2"}, expected);
  expectRun({"-DY=2", file}, expected);
}

TEST_F(DriverTest, AMissingSourceFileIsFatal) {
  run({path("none.c")});
  EXPECT_EQ(status_, Status::Errors);
  EXPECT_EQ(output_, "");
  EXPECT_EQ(messages_, "FATAL ERROR: cannot open " + path("none.c") + ".\n");
}

TEST_F(DriverTest, TwoSourceFilesAreTooMany) {
  expectStop({"a.c", "b.c"}, "", "qnpp: cannot provide more than one source file\n");
  expectStop({"", ""}, "", "qnpp: cannot provide more than one source file\n");
}

TEST_F(DriverTest, UnknownOptionsStopEverything) {
  expectStop({"-x", "a.c"}, "", "qnpp: unknown option '-x' ('-h' for help)\n");
  expectStop({"-h", "-x", "-y"}, "",
             "qnpp: unknown option '-x' ('-h' for help)\nqnpp: unknown option '-y' ('-h' for help)\n");
  expectStop({"-"}, "", "qnpp: unknown option '-' ('-h' for help)\n");
  // Before the repetition is looked at.
  expectStop({"-s", "a", "-s", "b", "-q"}, "", "qnpp: unknown option '-q' ('-h' for help)\n");
}

TEST_F(DriverTest, HelpEndsTheProgram) {
  expectStop({"-h"}, kHelp, "");
  expectStop({"--help"}, kHelp, "");
}

TEST_F(DriverTest, VersionEndsTheProgram) {
  expectStop({"-v"}, versionText(), "");
  expectStop({"--version"}, versionText(), "");
}

TEST_F(DriverTest, HelpGoesBeforeVersion) {
  expectStop({"-v", "--help"}, kHelp,
             "qnpp: argument(s) '--help' is(are) ignored\nqnpp: argument(s) '-v ' is(are) ignored\n");
}

TEST_F(DriverTest, HelpAndVersionSayWhatTheyIgnore) {
  expectStop({"a.c", "-h"}, kHelp, "qnpp: argument(s) 'a.c ' is(are) ignored\n");
  expectStop({"-v", "a.c", "-DA"}, versionText(), "qnpp: argument(s) 'a.c -DA' is(are) ignored\n");
  // The words are ignored, missing values and the second source included.
  expectStop({"-D", "-o", "-h", "a", "b"}, kHelp, "qnpp: argument(s) '-D -o a b' is(are) ignored\n");
}

TEST_F(DriverTest, AnIgnoredOutputFileIsNotMade) {
  expectStop({"-o", path("out"), "-v"}, versionText(), "qnpp: argument(s) '-o " + path("out") + " ' is(are) ignored\n");
  EXPECT_EQ(read("out"), "(no such file)");
}

TEST_F(DriverTest, ARepeatedOptionIsWarnedAboutAndTheLastOneWins) {
  expectRun({"-s", "a", "-s", "b"}, "#line 1 \"b\"\nX\n",
            "qnpp: '-s' option appears more than once\n\tonly the last one will be considered\n");
  run({"-o", path("a"), "-o", path("b")}, "X\n");
  EXPECT_EQ(messages_, "qnpp: '-o' option appears more than once\n\tonly the last one will be considered\n");
  EXPECT_EQ(read("a"), "(no such file)");
  EXPECT_EQ(read("b"), "#line 1 \"stdin\"\nX\n");
}

TEST_F(DriverTest, RepetitionIsWarnedAboutBeforeHelp) {
  expectStop({"-s", "a", "-s", "b", "-h"}, kHelp,
             "qnpp: '-s' option appears more than once\n\tonly the last one will be considered\n"
             "qnpp: argument(s) '-s a -s b ' is(are) ignored\n");
}

TEST_F(DriverTest, ADefinitionIsSplitAtItsFirstEqualsSign) {
  expectRun({"-DX"}, "#line 1 \"stdin\"\n1\n");
  expectRun({"-DX=5"}, "#line 1 \"stdin\"\n5\n");
  expectRun({"-DX="}, "#line 1 \"stdin\"\n\n");
  expectRun({"-DX=a=b"}, "#line 1 \"stdin\"\na=b\n");
}

TEST_F(DriverTest, TheFirstDefinitionOfANameWins) { expectRun({"-DX=1", "-DX=2"}, "#line 1 \"stdin\"\n1\n"); }

TEST_F(DriverTest, ADefinitionMustBeAttached) {
  expectStop({"-D"}, "", "qnpp: missing macro for '-D' option number 1\n");
  expectStop({"-D", "NAME"}, "", "qnpp: missing macro for '-D' option number 1\n");
  expectStop({"-DA", "-D"}, "", "qnpp: missing macro for '-D' option number 2\n");
}

// With the same header in each, the directory that comes first on the command line has it.
TEST_F(DriverTest, IncludeDirectoriesAreSearchedInTheirOrder) {
  const std::string one = makeFolder("one");
  const std::string two = makeFolder("two");
  write("one/h.h", "1\n");
  write("two/h.h", "2\n");
  const auto outputFor = [](const std::string& directory, const std::string& text) {
    return "#line 1 \"stdin\"\n#line 1 \"" + directory + "/h.h\"\n" + text + "\n#line 2 \"stdin\"\n";
  };
  run({"-I" + one, "-I", two}, "#include <h.h>\n");
  EXPECT_EQ(output_, outputFor(one, "1"));
  run({"-I", two, "-I" + one}, "#include <h.h>\n");
  EXPECT_EQ(output_, outputFor(two, "2"));
  run({"-I" + path("none"), "-I" + two}, "#include <h.h>\n");
  EXPECT_EQ(output_, outputFor(two, "2"));
}

TEST_F(DriverTest, AnIncludeDirectoryNeedsAName) {
  expectStop({"-I"}, "", "qnpp: missing path name for '-I' option number 1\n");
  expectStop({"-Ia", "-I", "b", "-I"}, "", "qnpp: missing path name for '-I' option number 3\n");
  expectStop({"-I", "-v"}, versionText(), "qnpp: argument(s) '-I ' is(are) ignored\n");
}

TEST_F(DriverTest, TheOutputFileIsWrittenInsteadOfStandardOutput) {
  write("out", "a longer text that was there before\n");
  expectRun({"-o", path("out")}, "");
  EXPECT_EQ(read("out"), "#line 1 \"stdin\"\nX\n");
}

TEST_F(DriverTest, AnOutputFileNeedsAName) {
  expectStop({"-o"}, "", "qnpp: missing output file name for '-o' option\n");
  expectStop({"-o", "-DX"}, "", "qnpp: missing output file name for '-o' option\n");
}

TEST_F(DriverTest, AnOutputFileThatCannotBeOpenedStopsTheProgram) {
  expectStop({"-o", path("no/such/folder")}, "", "qnpp: cannot open output file '" + path("no/such/folder") + "'\n");
  expectStop({"-o", path("")}, "", "qnpp: cannot open output file '" + path("") + "'\n");
  expectStop({"-o", ""}, "", "qnpp: cannot open output file ''\n");
}

TEST_F(DriverTest, TheOutputFileIsMadeBeforeTheRestIsLookedAt) {
  expectStop({"-o", path("1"), "-s"}, "", "qnpp: no source name provided to '-s' option\n");
  EXPECT_EQ(read("1"), "");
  expectStop({"-o", path("2"), "a", "b"}, "", "qnpp: cannot provide more than one source file\n");
  EXPECT_EQ(read("2"), "");
  run({"-o", path("3"), path("none.c")});
  EXPECT_EQ(status_, Status::Errors);
  EXPECT_EQ(messages_, "FATAL ERROR: cannot open " + path("none.c") + ".\n");
  EXPECT_EQ(read("3"), "");
}

TEST_F(DriverTest, MistakesAreFoundInTheOrderOfTheSteps) {
  expectStop({"a", "b", "-s", "-o", "-I", "-D"}, "", "qnpp: missing macro for '-D' option number 1\n");
  expectStop({"a", "b", "-s", "-o", "-I"}, "", "qnpp: missing path name for '-I' option number 1\n");
  expectStop({"a", "b", "-s", "-o"}, "", "qnpp: missing output file name for '-o' option\n");
  expectStop({"a", "b", "-s"}, "", "qnpp: no source name provided to '-s' option\n");
}

TEST_F(DriverTest, TheSourceNameReplacesThatOfTheInput) {
  expectRun({"-s", "name"}, "#line 1 \"name\"\nX\n");
  const std::string file = write("a.c", "Y\n");
  expectRun({"-s", "name", file}, "#line 1 \"name\"\nY\n");
}

TEST_F(DriverTest, AnEmptySourceNameReplacesNothing) { expectRun({"-s", ""}, "#line 1 \"stdin\"\nX\n"); }

TEST_F(DriverTest, ASourceNameThatIsNoOptionMayBeginWithADash) { expectRun({"-s", "-"}, "#line 1 \"-\"\nX\n"); }

TEST_F(DriverTest, AnErrorOfTheRunIsNoneOfTheCommandLine) {
  run({}, "#nonsense\n");
  EXPECT_EQ(status_, Status::Errors);
  EXPECT_EQ(messages_, "stdin:1: the indicated directive is not a recognized preprocessing directive.\n");
}

// While the run waits for its reader. This happens within a few milliseconds of the inclusion before.
TEST_F(DriverTest, WhoReadsTheOutputMayChangeAHeader) {
  const std::string text = repeat(2000, std::string(99, 'x') + "\n");
  const std::string source = write("a.c", "#include \"g.h\"\n#include \"g.h\"\n" + text + "#include \"g.h\"\n");
  write("g.h", "#ifndef G\n#define G\n#endif\n");
  write("new.h", "NEW\n");
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // Files that have just been changed are read again.
  ActingBuffer buffer([this] {
    if (std::filesystem::exists(path("new.h"))) {
      std::filesystem::rename(path("new.h"), path("g.h"));
    }
  });
  std::ostream output(&buffer);
  const char* const argv[] = {"qnpp", source.c_str()};
  EXPECT_EQ(Driver(output, output, nullptr).run(2, argv), Status::Clean);
  EXPECT_NE(buffer.written().find("\nNEW\n"), std::string::npos);
}

#ifdef F_SETLEASE
// The holder of a lease, whom a run waits for that opens the file.
class LeaseHolder {
 public:
  // To be made before there are other threads. `act` is called when somebody wants to open the file.
  LeaseHolder(const std::string& path, std::function<void()> act) : descriptor_(::open(path.c_str(), O_RDWR)) {
    sigset_t broken;
    sigemptyset(&broken);
    sigaddset(&broken, SIGIO);
    pthread_sigmask(SIG_BLOCK, &broken, &before_);
    hasLease_ = ::fcntl(descriptor_, F_SETLEASE, F_WRLCK) == 0;
    if (hasLease_) {
      thread_ = std::thread([this, broken, act = std::move(act)] {
        const timespec most = {10, 0};
        if (sigtimedwait(&broken, nullptr, &most) == SIGIO) {
          act();
        }
        ::fcntl(descriptor_, F_SETLEASE, F_UNLCK);
      });
    }
  }
  LeaseHolder(const LeaseHolder&) = delete;
  LeaseHolder& operator=(const LeaseHolder&) = delete;
  ~LeaseHolder() {
    if (hasLease_) {
      thread_.join();
    }
    ::close(descriptor_);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

  bool hasLease() const { return hasLease_; }

 private:
  int descriptor_;
  sigset_t before_{};  // The signals that were blocked.
  bool hasLease_ = false;
  std::thread thread_;
};

// All of it happens within a few milliseconds, mostly.
TEST_F(DriverTest, WhoHasALeaseOnAHeaderMayChangeAnother) {
  const std::string source =
      write("a.c", "#include \"h.h\"\n#include \"h.h\"\n#include \"leased.h\"\n#include \"h.h\"\n");
  const std::string leased = write("leased.h", "\n");
  for (int round = 0; round < 5; ++round) {
    write("h.h", "OLD\n");
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // Files that have just been changed are read again.
    const LeaseHolder holder(leased, [this] { write("h.h", "NEW\n"); });
    if (!holder.hasLease()) {
      GTEST_SKIP() << "there are no leases here";
    }
    std::ostringstream output;
    const char* const argv[] = {"qnpp", source.c_str()};
    EXPECT_EQ(Driver(output, output, nullptr).run(2, argv), Status::Clean);
    EXPECT_NE(output.str().find("\nNEW\n"), std::string::npos) << output.str();
  }
}
#endif

// As far as it has been written then, which is but for the last 64 KB: lines that come to nothing the second time.
TEST_F(DriverTest, TheOutputMayBeIncluded) {
  const std::string word(99, 'y');
  const std::string source = write("a.c", "#include \"out.h\"\n#include \"out.h\"\n" + repeat(2000, word + "\n") +
                                              "#define " + word + "\n#include \"out.h\"\n");
  write("out.h", "\n");
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // Files that have just been changed are read again.
  DescriptorStream output(::open(path("out.h").c_str(), O_WRONLY), DescriptorStream::Ownership::Owned);
  std::ostringstream messages;
  const char* const argv[] = {"qnpp", source.c_str()};
  EXPECT_EQ(Driver(output, messages, nullptr).run(2, argv), Status::Clean);
  const std::string text = read("out.h");
  EXPECT_GT(std::count(text.begin(), text.end(), '\n'), 3000);
}

}  // namespace
}  // namespace qnpp
