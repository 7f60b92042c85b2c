// What the public header promises.
#include "qnpp/preprocessor.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/Text.h"
#include "tests/unit/support/Memory.h"

namespace qnpp {
namespace {

using Files = std::map<std::string, std::string, std::less<>>;

// Finds names as they are.
Resolver resolverOf(const Files& files) {
  return [&files](const IncludeRequest& request) -> std::optional<Include> {
    const auto found = files.find(request.name);
    if (found == files.end()) {
      return std::nullopt;
    }
    return Include{found->first, Source::borrowing(found->second)};
  };
}

Result run(std::string_view source, const Files& files = {}) {
  Preprocessor preprocessor;
  preprocessor.setResolver(resolverOf(files));
  return preprocessor.run(Source::borrowing(source), "main");
}

// ---- Sources ----

TEST(SourceTest, BytesComeFromWhereverTheyAre) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a.c", "x\n");
  int calls = 0;
  const auto read = [&calls](char* to, std::size_t) -> std::ptrdiff_t {
    *to = "x\n"[calls];
    return calls++ < 2 ? 1 : 0;
  };
  const std::string expected = "#line 1 \"name\"\nx\n";
  EXPECT_EQ(Preprocessor().run(Source::ofText("x\n"), "name").output, expected);
  EXPECT_EQ(Preprocessor().run(Source::borrowing("x\n"), "name").output, expected);
  EXPECT_EQ(Preprocessor().run(Source::ofFile(path), "name").output, expected);
  EXPECT_EQ(Preprocessor().run(Source::ofReader(read), "name").output, expected);
  EXPECT_EQ(calls, 3);
}

TEST(SourceTest, WithoutANameItIsCalledByItsPathOrSource) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a.c", "");
  EXPECT_EQ(Preprocessor().run(Source::ofFile(path)).output, "#line 1 \"" + path + "\"\n");
  EXPECT_EQ(Preprocessor().run(Source::ofText("")).output, "#line 1 \"source\"\n");
}

TEST(SourceTest, AFileThatCannotBeOpenedIsAnError) {
  const TemporaryFolder folder;
  for (const std::string& path : {folder.path("none"), folder.path()}) {
    std::string text;
    Preprocessor preprocessor;
    preprocessor.setDiagnosticSink([&text](const Diagnostic& diagnostic) {
      text = diagnostic.text;
      EXPECT_EQ(diagnostic.severity, Severity::FatalError);
      EXPECT_EQ(diagnostic.identifier, "missing-source");
      EXPECT_EQ(diagnostic.place.file, "");
      EXPECT_EQ(diagnostic.place.line, 0);
    });
    const Result result = preprocessor.run(Source::ofFile(path));
    EXPECT_EQ(result.status, Status::Errors);
    EXPECT_TRUE(result.hasErrors);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(text, "FATAL ERROR: cannot open " + path + ".\n");
  }
}

TEST(SourceTest, AReaderMayFail) {
  std::string text;
  int calls = 0;
  Preprocessor preprocessor;
  preprocessor.setDiagnosticSink([&text](const Diagnostic& diagnostic) {
    text = diagnostic.text;
    EXPECT_EQ(diagnostic.identifier, "scanner-failed");
    EXPECT_EQ(diagnostic.severity, Severity::FatalError);
    EXPECT_EQ(diagnostic.place.file, "");
    EXPECT_EQ(diagnostic.message, "input in flex scanner failed");
  });
  const Result result = preprocessor.run(Source::ofReader([&calls](char* to, std::size_t) -> std::ptrdiff_t {
    to[0] = '\n';
    to[1] = ' ';
    return calls++ == 0 ? 2 : -1;
  }));
  EXPECT_EQ(result.status, Status::ScannerFailed);
  EXPECT_TRUE(result.hasErrors);
  EXPECT_EQ(result.output, "#line 1 \"source\"\n\n");
  EXPECT_EQ(text, "input in flex scanner failed\n");
}

TEST(SourceTest, AReaderThatIsNoneIsAFaultOfTheCaller) {
  EXPECT_EQ(Preprocessor().run(Source::ofReader(nullptr)).status, Status::CallbackFailed);
}

TEST(SourceTest, AFileIsOpenedWhenTheRunGetsToIt) {
  const TemporaryFolder folder;
  Source source = Source::ofFile(folder.path("a.c"));
  folder.write("a.c", "x\n");
  EXPECT_EQ(Preprocessor().run(std::move(source), "name").output, "#line 1 \"name\"\nx\n");
}

// ---- What the guide shows ----

// "b.idl" in "folder/a.idl" is "folder/b.idl"; <b.idl> is "b.idl". `files` maps paths to texts.
std::optional<Include> findFile(const Files& files, const IncludeRequest& request) {
  const std::filesystem::path folder = std::filesystem::path(request.includerPath).parent_path();
  const auto path = request.isQuoted ? folder / request.name : std::filesystem::path(request.name);
  const auto found = files.find(path.lexically_normal().generic_string());
  return found == files.end() ? std::nullopt : std::optional(Include{found->first, Source::borrowing(found->second)});
}

// When a block cannot be written, the run ends as Status::CallbackFailed.
void writeTo(std::ostream& stream, Preprocessor& preprocessor) {
  preprocessor.setOutputSink([&stream](std::string_view block) {
    if (!stream.write(block.data(), static_cast<std::streamsize>(block.size()))) {
      throw std::runtime_error("the output cannot be written");
    }
  });
}

TEST(GuideTest, FindsFilesBesideTheirIncluder) {
  const Files files = {{"a/b.idl", "#include \"../c.idl\"\n#include \"d/e.idl\"\n"},
                       {"c.idl", "c\n"},
                       {"a/d/e.idl", "#include <c.idl>\n#include \"c.idl\"\n"}};
  std::string messages;
  Preprocessor preprocessor;
  preprocessor.setLineDirectives(false);
  preprocessor.setResolver([&files](const IncludeRequest& request) { return findFile(files, request); });
  preprocessor.setDiagnosticSink([&messages](const Diagnostic& diagnostic) { messages += diagnostic.text; });
  EXPECT_EQ(preprocessor.run(Source::ofText("#include \"a/b.idl\"\n"), "main.idl").output, "c\nc\n");
  EXPECT_EQ(messages, "a/d/e.idl:2: Cannot open file: c.idl.\n");
}

TEST(GuideTest, WritesToAStreamUntilItFails) {
  std::ostringstream stream;
  Preprocessor preprocessor;
  writeTo(stream, preprocessor);
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n"), "a").status, Status::Clean);
  EXPECT_EQ(stream.str(), "#line 1 \"a\"\nx\n");
  stream.setstate(std::ios::badbit);
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n"), "a").status, Status::CallbackFailed);
}

// ---- The object ----

TEST(PreprocessorTest, LetsNoExceptionOut) {
  using P = Preprocessor;
  static_assert(std::is_nothrow_default_constructible_v<P>);
  static_assert(std::is_nothrow_move_constructible_v<P>);
  static_assert(std::is_nothrow_move_assignable_v<P>);
  static_assert(noexcept(std::declval<P>().define({})));
  static_assert(noexcept(std::declval<P>().addIncludeDirectory({})));
  static_assert(noexcept(std::declval<P>().setResolver(std::declval<Resolver>())));
  static_assert(noexcept(std::declval<P>().setDiagnosticSink(std::declval<DiagnosticSink>())));
  static_assert(noexcept(std::declval<P>().setOutputSink(std::declval<OutputSink>())));
  static_assert(noexcept(std::declval<P>().setLimits(std::declval<Limits>())));
  static_assert(noexcept(std::declval<P>().setLineDirectives(true)));
  static_assert(noexcept(std::declval<P>().setDependencies(true)));
  static_assert(noexcept(std::declval<P>().setLineMap(true)));
  static_assert(noexcept(std::declval<P>().run(std::declval<Source>())));
  static_assert(noexcept(std::declval<P>().cancel()));
}

TEST(PreprocessorTest, MovesWithItsSettings) {
  Preprocessor first;
  first.define("A=kept");
  Preprocessor second(std::move(first));
  EXPECT_EQ(second.run(Source::ofText("A\n"), "a").output, "#line 1 \"a\"\nkept\n");
  Preprocessor third;
  third.define("A=lost");
  third = std::move(second);
  EXPECT_EQ(third.run(Source::ofText("A\n"), "a").output, "#line 1 \"a\"\nkept\n");
  second = Preprocessor();
  EXPECT_EQ(second.run(Source::ofText("A\n"), "a").output, "#line 1 \"a\"\nA\n");
}

TEST(PreprocessorTest, CopiesTheTextsThatItIsGiven) {
  const TemporaryFolder folder;
  folder.write("a.h", "found\n");
  std::string definition = "A=1";
  std::string directory = folder.path();
  Preprocessor preprocessor;
  preprocessor.define(definition);
  preprocessor.addIncludeDirectory(directory);
  definition.assign("B=2");
  std::fill(directory.begin(), directory.end(), 'x');
  EXPECT_EQ(preprocessor.run(Source::ofText("A\n#include <a.h>\n"), "a").output,
            "#line 1 \"a\"\n1\n#line 1 \"" + folder.path("a.h") + "\"\nfound\n#line 3 \"a\"\n");
}

TEST(PreprocessorTest, DeliversBlocksToAnOutputSink) {
  const std::string text = repeat(50'000, "text\n");
  std::string collected;
  int blocks = 0;
  Preprocessor preprocessor;
  preprocessor.setOutputSink([&](std::string_view block) {
    collected += block;
    ++blocks;
  });
  EXPECT_EQ(preprocessor.run(Source::borrowing(text), "a").output, "");
  EXPECT_TRUE(collected == "#line 1 \"a\"\n" + text);
  EXPECT_GT(blocks, 1);
}

// ---- Definitions and includes ----

TEST(PreprocessorTest, DefinitionsAreThoseOfTheProgram) {
  Preprocessor preprocessor;
  preprocessor.define("A");
  preprocessor.define("B=x=y");
  preprocessor.define("C=");
  preprocessor.define("A=2");
  EXPECT_EQ(preprocessor.run(Source::ofText("A B[C]\n"), "a").output, "#line 1 \"a\"\n1 x=y[]\n");
}

// It is put in the place of the name as it is, and what stands at the beginning of a line there is read as such.
TEST(PreprocessorTest, DefinitionsMayHaveLineEnds) {
  for (const char* definition : {"A=1\n#define B 2\nx", "A=1\r#define B 2\rx"}) {
    Preprocessor preprocessor;
    preprocessor.define(definition);
    EXPECT_EQ(preprocessor.run(Source::ofText("B\nA\nB\n"), "a").output, "#line 1 \"a\"\nB\n1\n#line 2 \"a\"\nx\n2\n");
  }
}

TEST(PreprocessorTest, DefinitionsOfWhatIsNoNameAreNeverUsed) {
  Preprocessor preprocessor;
  for (const char* definition : {"1A=2", "F(x)=x", "", "=3", "A B=4"}) {
    preprocessor.define(definition);
  }
  const Result result = preprocessor.run(Source::ofText("1A F(x) A B\n"), "a");
  EXPECT_EQ(result.status, Status::Clean);
  EXPECT_EQ(result.output, "#line 1 \"a\"\n1A F(x) A B\n");
}

TEST(PreprocessorTest, DefinitionsOfASourceEndWithItsRun) {
  Preprocessor preprocessor;
  preprocessor.define("A=kept");
  EXPECT_EQ(preprocessor.run(Source::ofText("#define B 1\n#undef A\nA B\n"), "a").output,
            "#line 1 \"a\"\n#line 3 \"a\"\nA 1\n");
  EXPECT_EQ(preprocessor.run(Source::ofText("A B\n"), "a").output, "#line 1 \"a\"\nkept B\n");
}

TEST(PreprocessorTest, FilesAreFoundAsTheProgramFindsThem) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a.c", "#include \"b.h\"\n#include <c.h>\n");
  const std::string beside = folder.write("b.h", "b\n");
  const std::string inDirectory = folder.write("dir/c.h", "c\n");
  Preprocessor preprocessor;
  preprocessor.addIncludeDirectory(folder.path("none"));
  preprocessor.addIncludeDirectory(folder.path("dir"));
  const Result result = preprocessor.run(Source::ofFile(path));
  EXPECT_EQ(result.status, Status::Clean);
  ASSERT_EQ(result.dependencies.size(), 2U);
  EXPECT_EQ(result.dependencies[0].path, beside);
  EXPECT_EQ(result.dependencies[0].name, "b.h");
  EXPECT_TRUE(result.dependencies[0].isQuoted);
  EXPECT_EQ(result.dependencies[0].found, Dependency::Found::BesideIncluder);
  EXPECT_EQ(result.dependencies[0].includer, path);
  EXPECT_EQ(result.dependencies[0].line, 1);
  EXPECT_EQ(result.dependencies[1].path, inDirectory);
  EXPECT_FALSE(result.dependencies[1].isQuoted);
  EXPECT_EQ(result.dependencies[1].found, Dependency::Found::InIncludeDirectory);
  EXPECT_EQ(result.dependencies[1].line, 2);
}

// ---- Files that a function of the caller's changes while the run lasts ----

struct ChangedFilesTest : testing::Test {
  ChangedFilesTest() {
    preprocessor.addIncludeDirectory(folder.path("one"));
    preprocessor.addIncludeDirectory(folder.path("two"));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // Then the files are old enough to be remembered.
  }

  void change() const {
    folder.write("two/b.h", "int changed;\n");
    folder.write("two/c.h", "int other;\n");
    folder.write("one/a.h", "int added;\n");
  }

  const TemporaryFolder folder;
  const std::string guarded = folder.write("two/b.h", "#ifndef B\n#define B\nint b;\n#endif\n");
  const std::string unguarded = folder.write("two/a.h", "int a;\n");
  const std::string plain = folder.write("two/c.h", "int plain;\n");
  const std::string once = "#include \"" + guarded + "\"\n#include <a.h>\n#include <c.h>\n";
  const std::string includes = once + once + once;  // From the third time on no file is opened.
  Preprocessor preprocessor;
};

// Of each file the first inclusions, and those behind the change.
void expectChange(const Result& result) {
  EXPECT_NE(result.output.find("int b;"), std::string::npos);
  EXPECT_NE(result.output.find("int a;"), std::string::npos);
  EXPECT_NE(result.output.find("int changed;"), std::string::npos);
  EXPECT_NE(result.output.find("int added;"), std::string::npos);
  const std::size_t last = result.output.rfind("int plain;");
  EXPECT_NE(last, std::string::npos);
  EXPECT_GT(result.output.find("int other;"), last);
  EXPECT_NE(result.output.find("int other;"), std::string::npos);
}

TEST_F(ChangedFilesTest, AreReadAgainBetweenTwoLinesOfAReader) {
  int calls = 0;
  expectChange(preprocessor.run(Source::ofReader([&](char* to, std::size_t) -> std::ptrdiff_t {
    if (++calls == 2) {
      change();
    }
    return calls > 2 ? 0 : static_cast<std::ptrdiff_t>(includes.copy(to, includes.size()));
  })));
}

TEST_F(ChangedFilesTest, AreReadAgainAfterAMessage) {
  preprocessor.setDiagnosticSink([&](const Diagnostic&) { change(); });
  expectChange(preprocessor.run(Source::ofText(includes + "#error now\n" + includes)));
}

TEST_F(ChangedFilesTest, AreReadAgainAfterABlockOfOutput) {
  Result whole;
  preprocessor.setOutputSink([&](std::string_view block) {
    whole.output += block;
    change();
  });
  const std::string block(std::size_t{128} * 1024, 'x');
  preprocessor.run(Source::ofText(includes + block + "\n" + includes));
  expectChange(whole);
}

TEST(ResolverTest, NoFileIsTouched) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a.h", "on disk\n");
  const WorkingDirectory here(folder);
  Preprocessor preprocessor;
  preprocessor.addIncludeDirectory(folder.path());
  preprocessor.setResolver([](const IncludeRequest&) { return std::nullopt; });
  std::string messages;
  preprocessor.setDiagnosticSink([&messages](const Diagnostic& diagnostic) { messages += diagnostic.text; });
  preprocessor.run(Source::ofText("#include \"a.h\"\n#include <a.h>\n#include \"" + path + "\"\n"), "m");
  EXPECT_EQ(messages,
            "m:1: Cannot open file: a.h.\nm:2: Cannot open file: a.h.\nm:3: Cannot open file: " + path + ".\n");
}

TEST(PreprocessorTest, AnAbsolutePathIsFoundAsSuch) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a.h", "");
  const Result result = Preprocessor().run(Source::ofText("#include \"" + path + "\"\n"), "main");
  ASSERT_EQ(result.dependencies.size(), 1U);
  EXPECT_EQ(result.dependencies[0].found, Dependency::Found::Absolute);
  EXPECT_EQ(result.dependencies[0].path, path);
  EXPECT_EQ(result.dependencies[0].name, path);
}

TEST(ResolverTest, MayNameFiles) {
  const TemporaryFolder folder;
  const std::string path = folder.write("on-disk", "x __FILE__\n");
  std::string messages;
  Preprocessor preprocessor;
  preprocessor.setDiagnosticSink([&messages](const Diagnostic& diagnostic) { messages += diagnostic.text; });
  preprocessor.setResolver([&](const IncludeRequest& request) -> std::optional<Include> {
    return Include{"named", Source::ofFile(request.name == "a" ? path : folder.path())};
  });
  EXPECT_EQ(preprocessor.run(Source::ofText("#include <a>\n#include <b>\n"), "main").output,
            "#line 1 \"main\"\n#line 1 \"named\"\nx \"named\"\n#line 2 \"main\"\n");
  EXPECT_EQ(messages, "main:2: Cannot open file: b.\n");
}

TEST(ResolverTest, IsAskedWithAllThatIsKnown) {
  struct Asked {
    std::string name;
    bool isQuoted;
    std::string file;
    std::int32_t line;
    std::string path;
  };
  std::vector<Asked> asked;
  Preprocessor preprocessor;
  preprocessor.setResolver([&asked](const IncludeRequest& request) -> std::optional<Include> {
    asked.push_back({std::string(request.name), request.isQuoted, std::string(request.place.file), request.place.line,
                     std::string(request.includerPath)});
    return Include{"/real/" + std::string(request.name),
                   Source::ofText(asked.size() == 1 ? "\n#line 70 \"other\"\n#include \"b\"\n" : "")};
  });
  const Result result = preprocessor.run(Source::ofText("\n#include <a>\n"), "main");
  ASSERT_EQ(asked.size(), 2U);
  EXPECT_EQ(asked[0].name, "a");
  EXPECT_FALSE(asked[0].isQuoted);
  EXPECT_EQ(asked[0].file, "main");
  EXPECT_EQ(asked[0].line, 2);
  EXPECT_EQ(asked[0].path, "main");
  EXPECT_EQ(asked[1].name, "b");
  EXPECT_TRUE(asked[1].isQuoted);
  EXPECT_EQ(asked[1].file, "other");
  EXPECT_EQ(asked[1].line, 71);
  EXPECT_EQ(asked[1].path, "/real/a");
  ASSERT_EQ(result.dependencies.size(), 2U);
  EXPECT_EQ(result.dependencies[1].path, "/real/b");
  EXPECT_EQ(result.dependencies[1].found, Dependency::Found::ByResolver);
  EXPECT_EQ(result.dependencies[1].includer, "other");
  EXPECT_EQ(result.dependencies[1].line, 71);
}

TEST(ResolverTest, EachFileIsADependencyOnce) {
  const Files files = {{"a", ""}, {"b", "#include <a>\n#include <c>\n"}, {"c", ""}};
  const std::string source = "#include <b>\n#include \"a\"\n#include <c>\n";
  const Result result = run(source, files);
  ASSERT_EQ(result.dependencies.size(), 3U);
  EXPECT_EQ(result.dependencies[0].path, "b");
  EXPECT_EQ(result.dependencies[1].path, "a");
  EXPECT_EQ(result.dependencies[1].includer, "b");
  EXPECT_EQ(result.dependencies[2].path, "c");
  Preprocessor preprocessor;
  preprocessor.setResolver(resolverOf(files));
  preprocessor.setDependencies(false);
  const Result without = preprocessor.run(Source::borrowing(source), "main");
  EXPECT_TRUE(without.dependencies.empty());
  EXPECT_EQ(without.output, result.output);
}

// ---- Messages ----

TEST(DiagnosticTest, ShowsHowTheFileWasReached) {
  const Files files = {{"a", "\n#include <b>"}, {"b", "\n\n#wrong\n"}};
  std::string seen;
  Preprocessor preprocessor;
  preprocessor.setResolver(resolverOf(files));
  preprocessor.setDiagnosticSink([&seen](const Diagnostic& diagnostic) {
    seen.append(diagnostic.identifier).append(" ").append(diagnostic.text);
    EXPECT_EQ(diagnostic.severity, Severity::Error);
    EXPECT_EQ(diagnostic.place.file, "b");
    EXPECT_EQ(diagnostic.place.line, 3);
    EXPECT_EQ(diagnostic.message, "the indicated directive is not a recognized preprocessing directive");
    for (std::size_t at = 0; at < diagnostic.includeChainSize; ++at) {
      const Place& place = diagnostic.includeChain[at];
      seen.append(place.file).append(":").append(std::to_string(place.line)).append(" ");
    }
  });
  preprocessor.run(Source::ofText("#include <a>\n"), "main");
  EXPECT_EQ(seen,
            "unknown-directive b:3: the indicated directive is not a recognized preprocessing directive.\na:2 main:1 ");
}

TEST(DiagnosticTest, WarningsMakeNoErrors) {
  int warnings = 0;
  Preprocessor preprocessor;
  preprocessor.setDiagnosticSink([&warnings](const Diagnostic& diagnostic) {
    EXPECT_EQ(diagnostic.severity, Severity::Warning);
    EXPECT_EQ(diagnostic.place.file, "main");
    EXPECT_EQ(diagnostic.place.line, 2 + warnings);
    ++warnings;
  });
  const Result result = preprocessor.run(Source::ofText("#define A 1\n#define A 2\n/*"), "main");
  EXPECT_EQ(warnings, 2);
  EXPECT_EQ(result.status, Status::Clean);
  EXPECT_FALSE(result.hasErrors);
}

TEST(DiagnosticTest, NumbersOfLinesWrap) {
  std::int32_t line = 0;
  Preprocessor preprocessor;
  preprocessor.setDiagnosticSink([&line](const Diagnostic& diagnostic) { line = diagnostic.place.line; });
  preprocessor.run(Source::ofText("#line 2147483647\n#wrong\n"), "main");
  EXPECT_EQ(line, INT32_MIN);
}

TEST(DiagnosticTest, WithoutASinkErrorsStillCount) {
  EXPECT_EQ(run("#wrong\n").status, Status::Errors);
  EXPECT_TRUE(run("#wrong\n").hasErrors);
}

// ---- How runs end ----

TEST(StatusTest, NothingStopsAtAnError) {
  const Result result = run("#wrong\nx\n");
  EXPECT_TRUE(result.endIncludes.empty());
  EXPECT_EQ(result.status, Status::Errors);
  EXPECT_EQ(result.output, "#line 1 \"main\"\n#line 2 \"main\"\nx\n");
  EXPECT_EQ(result.endFile, "");
  EXPECT_EQ(result.endLine, 0);
  EXPECT_EQ(result.exception, nullptr);
}

TEST(StatusTest, ErrorsAreToldHoweverTheRunEnds) {
  const Result result = run("#wrong\n#if 1/0\n");
  EXPECT_EQ(result.status, Status::DivisionByZero);
  EXPECT_TRUE(result.hasErrors);
}

TEST(StatusTest, ADivisionByZeroIsAStatus) {
  const Result result = run("x\n#include <a>\ny\n", {{"a", "z\n#if 1/0\n#endif\n"}});
  EXPECT_EQ(result.status, Status::DivisionByZero);
  EXPECT_FALSE(result.hasErrors);
  EXPECT_EQ(result.output, "#line 1 \"main\"\nx\n#line 1 \"a\"\nz\n");
  EXPECT_EQ(result.endFile, "a");
  EXPECT_EQ(result.endLine, 2);
  EXPECT_EQ(result.endIncludes, (std::vector<std::pair<std::string, std::int32_t>>{{"main", 2}}));
}

TEST(StatusTest, ACallersExceptionComesBack) {
  const auto messageOf = [](const Result& result) -> std::string {
    EXPECT_EQ(result.status, Status::CallbackFailed);
    try {
      std::rethrow_exception(result.exception);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  };
  Preprocessor preprocessor;
  preprocessor.setResolver(
      [](const IncludeRequest&) -> std::optional<Include> { throw std::runtime_error("resolver"); });
  Result result = preprocessor.run(Source::ofText("x\n#include <a>\n"), "main");
  EXPECT_EQ(messageOf(result), "resolver");
  EXPECT_EQ(result.output, "#line 1 \"main\"\nx\n");
  EXPECT_EQ(result.endLine, 2);
  result = preprocessor.run(
      Source::ofReader([](char*, std::size_t) -> std::ptrdiff_t { throw std::runtime_error("reader"); }));
  EXPECT_EQ(messageOf(result), "reader");
  preprocessor.setDiagnosticSink([](const Diagnostic&) { throw std::runtime_error("diagnostics"); });
  result = preprocessor.run(Source::ofText("x\n#wrong\n"), "main");
  EXPECT_EQ(messageOf(result), "diagnostics");
  EXPECT_EQ(result.output, "#line 1 \"main\"\nx\n");
  preprocessor.setOutputSink([](std::string_view) { throw std::runtime_error("output"); });
  EXPECT_EQ(messageOf(preprocessor.run(Source::ofText("x\n"), "main")), "output");
  // And the object is as good as new.
  preprocessor.setOutputSink(nullptr);
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n"), "main").output, "#line 1 \"main\"\nx\n");
}

TEST(StatusTest, TheFirstExceptionIsTheOneThatComesBack) {
  Preprocessor preprocessor;
  preprocessor.setDiagnosticSink([](const Diagnostic&) { throw std::runtime_error("first"); });
  preprocessor.setOutputSink([](std::string_view) { throw std::runtime_error("while the rest is delivered"); });
  const Result result = preprocessor.run(Source::ofText("x\n#wrong\n"), "main");
  ASSERT_EQ(result.status, Status::CallbackFailed);
  try {
    std::rethrow_exception(result.exception);
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "first");
  }
}

// ---- Memory ----

// A source of so many bytes at least: the first line, and then lines in which each `$` is the number of the line.
Reader endlessLines(std::string first, std::string line, std::size_t size) {
  return [pending = std::move(first), line = std::move(line), left = size, number = 0](char* to,
                                                                                       std::size_t room) mutable {
    room = std::min<std::size_t>(room, 4096);  // So that what is pending here takes no memory worth counting.
    while (pending.size() < room && left > 0) {
      const std::size_t before = pending.size();
      const std::string digits = std::to_string(++number);
      for (const char c : line) {
        pending += c == '$' ? digits : std::string(1, c);
      }
      left -= std::min(left, pending.size() - before);
    }
    const std::size_t count = std::min(room, pending.size());
    pending.copy(to, count);
    pending.erase(0, count);
    return static_cast<std::ptrdiff_t>(count);
  };
}

TEST(MemoryTest, DoesNotFollowTheSizeOfTheSource) {
  constexpr std::size_t kMegabyte = 1'000'000;
  const Files files = {{"h", "#ifndef ONE\nheader __FILE__\n#endif\n"}};
  Preprocessor preprocessor;
  preprocessor.setResolver(resolverOf(files));
  preprocessor.setOutputSink([](std::string_view) {});
  preprocessor.define("ONE");
  const auto runOver = [&preprocessor](std::size_t megabytes) {
    const Result result = preprocessor.run(
        Source::ofReader(endlessLines("#define CALL(x, y) x y #x x##y\n",
                                      "CALL(CALL(a$, b$), c$) text$ /* $ */ \"$\" '\n#if $ > 3 && defined(n$)\nyes$\n"
                                      "#else\nno$\n#endif\n#include \"h\"\n#line $ \"file$\"\n",
                                      megabytes * kMegabyte)));
    EXPECT_EQ(result.status, Status::Clean);
  };
  runOver(1);
  const double before = mostMemory();
  runOver(4);
  if (kCountsMemory) {
    EXPECT_LT(mostMemory() - before, 0.5);
  }
}

TEST(MemoryTest, DoesNotGrowFromRunToRun) {
  constexpr std::size_t kSize = 200'000;
  Preprocessor preprocessor;
  const auto runOnce = [&preprocessor] {
    const Source source = Source::ofReader(endlessLines("", "#define f$(x) x + $\nf$(f$(a))\n", kSize));
    EXPECT_EQ(preprocessor.run(source).status, Status::Clean);
  };
  runOnce();
  runOnce();
  const double before = mostMemory();
  for (int i = 0; i < 5; ++i) {
    runOnce();
  }
  if (kCountsMemory) {
    EXPECT_LT(mostMemory() - before, 0.5);
  }
}

// A condition is kept as the tokens of its line, an argument as those of its text, and macros in them are expanded.
TEST(MemoryTest, FollowsTheLongestConditionAndArgument) {
  constexpr std::size_t kSize = 2'000'000;
  struct Row {
    const char* first;
    const char* unit;
    double most;  // bytes for each byte
  };
  // What one row gave back is not to be in the way of the next: large pieces go back to the system.
  ::mallopt(M_MMAP_THRESHOLD, 256 * 1024);
  const double before = mostMemory();
  // What is held most only grows, so the rows come in the order of what they take.
  for (const Row& row : {Row{"#if 1", "+1", 40}, Row{"#define F(x)\nF(", "a ", 40},
                         Row{"#define a 1\n#if a", "+a", 200}, Row{"#define a b\n#define F(x) x\nF(", "a ", 200}}) {
    Preprocessor preprocessor;
    preprocessor.setOutputSink([](std::string_view) {});
    preprocessor.run(Source::ofReader(endlessLines(row.first, row.unit, kSize)));
    if (kCountsMemory) {
      EXPECT_LT(mostMemory() - before, row.most * kSize / 1e6) << row.first;
    }
  }
}

TEST(LimitsTest, IncludeDepth) {
  const Files files = {{"a", "a\n#include <a>\n"}};
  Preprocessor preprocessor;
  preprocessor.setResolver(resolverOf(files));
  preprocessor.setLimits({2, 0, 0, {}});
  const Result result = preprocessor.run(Source::ofText("#include <a>\n"), "main");
  EXPECT_EQ(result.status, Status::LimitReached);
  EXPECT_EQ(result.limit, Limit::IncludeDepth);
  EXPECT_EQ(result.output, "#line 1 \"main\"\n#line 1 \"a\"\na\n#line 1 \"a\"\na\n");
  EXPECT_EQ(result.endFile, "a");
  EXPECT_EQ(result.endLine, 2);
}

TEST(LimitsTest, IncludeDepthCountsFilesAround) {
  const Files files = {{"a", "a\n"}, {"b", "#include <a>\n"}};
  Preprocessor preprocessor;
  preprocessor.setResolver(resolverOf(files));
  preprocessor.setLimits({1, 0, 0, {}});
  EXPECT_EQ(preprocessor.run(Source::ofText("#include <a>\n#include <a>\n")).status, Status::Clean);
  EXPECT_EQ(preprocessor.run(Source::ofText("#include <b>\n")).limit, Limit::IncludeDepth);
}

// The status of a run that may do so much work.
Status statusWithin(std::uint64_t work, std::string_view source) {
  Preprocessor preprocessor;
  preprocessor.setLimits({0, work, 0, {}});
  return preprocessor.run(Source::borrowing(source)).status;
}

TEST(LimitsTest, ExpansionWorkIsCounted) {
  // The macro, and the one token that it is replaced by.
  EXPECT_EQ(statusWithin(2, "#define A x\nA\n"), Status::Clean);
  EXPECT_EQ(statusWithin(1, "#define A x\nA\n"), Status::LimitReached);
  EXPECT_EQ(statusWithin(1, "#define A x\nB\n"), Status::Clean);
  // The macro, a literal, and its 1602 bytes.
  const std::string literal = "#define text(a) #a\ntext(" + repeat(1600, "x") + ")\n";
  EXPECT_EQ(statusWithin(200, literal), Status::Clean);
  EXPECT_EQ(statusWithin(99, literal), Status::LimitReached);
  const std::string joined = "#define join(a, b) a##b\njoin(x, " + repeat(1600, "x") + ")\n";
  EXPECT_EQ(statusWithin(200, joined), Status::Clean);
  EXPECT_EQ(statusWithin(99, joined), Status::LimitReached);
}

TEST(LimitsTest, ExpansionWork) {
  Preprocessor preprocessor;
  preprocessor.setLimits({0, 1'000'000, 0, {}});
  const Result result =
      preprocessor.run(Source::ofText("#define f(x) x x\ny\n" + repeat(40, "f(") + "a" + repeat(40, ")")), "main");
  EXPECT_EQ(result.status, Status::LimitReached);
  EXPECT_EQ(result.limit, Limit::ExpansionWork);
  EXPECT_EQ(result.output, "#line 1 \"main\"\n#line 2 \"main\"\ny\n");
}

TEST(LimitsTest, OutputBytes) {
  for (const std::uint64_t limit : {1U, 20U, 70'000U, 200'000U}) {
    Preprocessor preprocessor;
    preprocessor.setLimits({0, 0, limit, {}});
    const std::string source = repeat(100'000, "text\n");
    const Result result = preprocessor.run(Source::borrowing(source), "main");
    EXPECT_EQ(result.status, Status::LimitReached);
    EXPECT_EQ(result.limit, Limit::OutputBytes);
    EXPECT_TRUE(result.output == ("#line 1 \"main\"\n" + source).substr(0, limit));
  }
  Preprocessor preprocessor;
  preprocessor.setLimits({0, 0, 17, {}});
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n"), "main").status, Status::Clean);
}

TEST(LimitsTest, Time) {
  Preprocessor preprocessor;
  preprocessor.setLimits({0, 0, 0, std::chrono::milliseconds(20)});
  const auto blanks = [](char* to, std::size_t size) {
    std::fill_n(to, size, ' ');
    return static_cast<std::ptrdiff_t>(size);
  };
  EXPECT_EQ(preprocessor.run(Source::ofReader(blanks)).limit, Limit::Time);
  const std::string source = "#define f(x) x x\n" + repeat(40, "f(") + "a" + repeat(40, ")");
  EXPECT_EQ(preprocessor.run(Source::borrowing(source)).limit, Limit::Time);
}

TEST(LimitsTest, ATimeBelowZeroIsOver) {
  using std::chrono::milliseconds;
  for (const milliseconds time : {milliseconds(-1), milliseconds::min()}) {
    int messages = 0;
    Preprocessor preprocessor;
    preprocessor.setLimits({0, 0, 0, time});
    preprocessor.setDiagnosticSink([&messages](const Diagnostic&) { ++messages; });
    const Result result = preprocessor.run(Source::ofFile("/none/at/all"), "main");
    EXPECT_EQ(result.limit, Limit::Time);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.endLine, 0);
    EXPECT_EQ(messages, 0);
  }
  Preprocessor preprocessor;
  preprocessor.setLimits({0, 0, 0, milliseconds(0)});
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n")).status, Status::Clean);
  preprocessor.setLimits({0, 0, 0, milliseconds::max()});
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n")).status, Status::Clean);
}

TEST(CancelTest, BeforeARunItDeliversNothing) {
  int calls = 0;
  Preprocessor preprocessor;
  preprocessor.setOutputSink([&calls](std::string_view) { ++calls; });
  preprocessor.cancel();
  preprocessor.cancel();
  const Result result = preprocessor.run(Source::ofText("x\n"), "main");
  EXPECT_EQ(result.status, Status::Cancelled);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(result.endFile, "");
  // However many there were, they are used up.
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n"), "main").status, Status::Clean);
  EXPECT_EQ(calls, 1);
}

// What follows the last call is over in no time, yet the caller has asked for the end in time.
TEST(CancelTest, IsHeardInTheLastCall) {
  Preprocessor preprocessor;
  preprocessor.setOutputSink([&preprocessor](std::string_view) { preprocessor.cancel(); });
  const Result result = preprocessor.run(Source::ofText("x\n"), "main");
  EXPECT_EQ(result.status, Status::Cancelled);
  EXPECT_EQ(result.endFile, "main");
  EXPECT_EQ(result.endLine, 2);
  // In a run that has failed too, and of no later run.
  EXPECT_EQ(preprocessor.run(Source::ofText("#if 1/0\n"), "main").status, Status::DivisionByZero);
  preprocessor.setOutputSink(nullptr);
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n"), "main").status, Status::Clean);

  const Result read = preprocessor.run(Source::ofReader([&preprocessor](char*, std::size_t) -> std::ptrdiff_t {
                                         preprocessor.cancel();
                                         return 0;
                                       }),
                                       "main");
  EXPECT_EQ(read.status, Status::Cancelled);
  EXPECT_EQ(read.output, "#line 1 \"main\"\n");
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n"), "main").status, Status::Clean);

  preprocessor.setDiagnosticSink([&preprocessor](const Diagnostic&) { preprocessor.cancel(); });
  const Result wrong = preprocessor.run(Source::ofText("#wrong"), "main");
  EXPECT_EQ(wrong.status, Status::Cancelled);
  EXPECT_TRUE(wrong.hasErrors);
}

// Calls from another thread come at any moment of a run, or between two. None is lost, and none counts twice.
TEST(CancelTest, EachCallEndsOneRun) {
  constexpr int kCalls = 500;
  Preprocessor preprocessor;
  std::atomic<int> asked{0};
  std::atomic<int> heard{0};
  std::thread other([&] {
    for (int call = 0; call < kCalls; ++call) {
      while (heard != call) {
        std::this_thread::yield();
      }
      ++asked;
      preprocessor.cancel();
    }
  });
  int cancelled = 0;
  while (heard < kCalls) {
    if (preprocessor.run(Source::ofText("x\n")).status == Status::Cancelled) {
      ++cancelled;
      ++heard;
    }
  }
  other.join();
  EXPECT_EQ(cancelled, asked);
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n")).status, Status::Clean);
}

TEST(CancelTest, EndsTheRunUnderWayOrTheNext) {
  Preprocessor preprocessor;
  preprocessor.cancel();
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n"), "main").status, Status::Cancelled);
  EXPECT_EQ(preprocessor.run(Source::ofText("x\n"), "main").status, Status::Clean);
  std::thread other;
  const auto endless = [&](char* to, std::size_t size) {
    if (!other.joinable()) {
      other = std::thread([&preprocessor] { preprocessor.cancel(); });
    }
    std::fill_n(to, size, '\n');
    return static_cast<std::ptrdiff_t>(size);
  };
  preprocessor.setOutputSink([](std::string_view) {});
  EXPECT_EQ(preprocessor.run(Source::ofReader(endless)).status, Status::Cancelled);
  other.join();
}

TEST(CancelTest, EndsTheRunFromAFunctionThatItCalls) {
  Preprocessor preprocessor;
  preprocessor.setResolver([&preprocessor](const IncludeRequest&) {
    preprocessor.cancel();
    return Include{"endless", Source::ofReader([](char* to, std::size_t size) {
                     std::fill_n(to, size, '\n');
                     return static_cast<std::ptrdiff_t>(size);
                   })};
  });
  const Result result = preprocessor.run(Source::ofText("x\n#include <a>\n"), "main");
  EXPECT_EQ(result.status, Status::Cancelled);
  EXPECT_TRUE(result.output.starts_with("#line 1 \"main\"\nx\n"));
  EXPECT_EQ(result.endFile, "endless");
}

Preprocessor* signalled = nullptr;

TEST(CancelTest, EndsTheRunFromASignalHandler) {
  Preprocessor preprocessor;
  signalled = &preprocessor;
  auto* const before = std::signal(SIGUSR1, [](int) { signalled->cancel(); });
  preprocessor.setOutputSink([](std::string_view) {});
  const Result result = preprocessor.run(Source::ofReader([](char* to, std::size_t size) {
    std::raise(SIGUSR1);
    std::fill_n(to, size, '\n');
    return static_cast<std::ptrdiff_t>(size);
  }));
  std::signal(SIGUSR1, before);
  EXPECT_EQ(result.status, Status::Cancelled);
}

// The condition is one line, so nothing but its evaluation can notice: a message early in it cancels, and one at its
// end does not come any more.
TEST(CancelTest, EndsAConditionThatIsUnderWay) {
  const std::string terms = repeat(100'000, " + 1");
  const std::string names = repeat(100'000, " + NONE");
  for (const std::string& source : {"#if 'abcde'" + terms + " + 'abcde'\n#endif\n",
                                    "#define A\n#if 'abcde'" + terms + names + " + 'abcde' A\n#endif\n"}) {
    int messages = 0;
    Preprocessor preprocessor;
    preprocessor.setDiagnosticSink([&](const Diagnostic&) {
      ++messages;
      preprocessor.cancel();
    });
    const Result result = preprocessor.run(Source::borrowing(source), "main");
    EXPECT_EQ(result.status, Status::Cancelled);
    EXPECT_EQ(messages, 1);
    EXPECT_EQ(result.endFile, "main");
  }
}

// ---- The line map ----

TEST(LineMapTest, TellsWhatTheLineDirectivesTell) {
  const Files files = {{"a", "one\ntwo\n"}};
  for (const bool areWritten : {true, false}) {
    Preprocessor preprocessor;
    preprocessor.setResolver(resolverOf(files));
    preprocessor.setLineDirectives(areWritten);
    preprocessor.setLineMap(true);
    const Result result =
        preprocessor.run(Source::ofText("x\n#include <a>\n#define A\ny\n#line 70 \"other\"\nz\n"), "main");
    using Reason = LineMap::Reason;
    const auto directive = [areWritten](const std::string& text) { return areWritten ? "#line " + text + "\n" : ""; };
    EXPECT_EQ(result.output, directive("1 \"main\"") + "x\n" + directive("1 \"a\"") + "one\ntwo\n" +
                                 directive("3 \"main\"") + directive("4 \"main\"") + "y\n" + directive("70 \"other\"") +
                                 directive("71 \"other\"") + "z\n");
    EXPECT_EQ(result.lineMap.files, (std::vector<std::string>{"main", "a", "other"}));
    struct Row {
      Reason reason;
      std::size_t file;
      std::int32_t line;
      const char* text;
    };
    const std::vector<Row> rows = {{Reason::Start, 0, 1, "x\n"},    {Reason::Entered, 1, 1, "one\n"},
                                   {Reason::Returned, 0, 3, ""},    {Reason::Corrected, 0, 4, "y\n"},
                                   {Reason::Renumbered, 2, 70, ""}, {Reason::Corrected, 2, 71, "z\n"}};
    ASSERT_EQ(result.lineMap.entries.size(), rows.size());
    for (std::size_t at = 0; at < rows.size(); ++at) {
      const LineMap::Entry& entry = result.lineMap.entries[at];
      EXPECT_EQ(entry.reason, rows[at].reason) << at;
      EXPECT_EQ(entry.file, rows[at].file) << at;
      EXPECT_EQ(entry.line, rows[at].line) << at;
      EXPECT_TRUE(std::string_view(result.output).substr(entry.offset).starts_with(rows[at].text)) << at;
      EXPECT_EQ(entry.outputLine, 1 + static_cast<std::uint64_t>(std::count(
                                          result.output.begin(),
                                          result.output.begin() + static_cast<std::ptrdiff_t>(entry.offset), '\n')));
    }
    const Place two = result.lineMap.find(result.lineMap.entries[1].outputLine + 1);
    EXPECT_EQ(two.file, "a");
    EXPECT_EQ(two.line, 2);
  }
}

TEST(LineMapTest, FindsWhatALineStandsFor) {
  using Reason = LineMap::Reason;
  LineMap map;
  map.files = {"a", "b"};
  map.entries = {{9, 2, 0, 1, Reason::Start},
                 {30, 4, 0, 7, Reason::Corrected},
                 {35, 4, 1, 70, Reason::Renumbered},
                 {50, 9, 1, INT32_MAX, Reason::Renumbered}};
  const auto found = [&map](std::uint64_t line) {
    const Place place = map.find(line);
    return std::string(place.file) + ":" + std::to_string(place.line);
  };
  EXPECT_EQ(found(0), ":0");
  EXPECT_EQ(found(1), ":0");
  EXPECT_EQ(found(2), "a:1");
  EXPECT_EQ(found(3), "a:2");
  EXPECT_EQ(found(4), "b:70");
  EXPECT_EQ(found(6), "b:72");
  EXPECT_EQ(found(10), "b:" + std::to_string(INT32_MIN));
}

TEST(LineMapTest, IsEmptyUnlessItIsAskedFor) {
  const Result result = run("x\n");
  EXPECT_TRUE(result.lineMap.entries.empty());
  EXPECT_TRUE(result.lineMap.files.empty());
  EXPECT_EQ(result.lineMap.find(1).line, 0);
}

}  // namespace
}  // namespace qnpp
