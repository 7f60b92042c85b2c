// The interface for C: what the examples of the library leave out.

#include "qnpp/preprocessor-c.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Files.h"

namespace {

using Owner = std::unique_ptr<QnPreprocessor, decltype(&QnFreePreprocessor)>;

Owner make() { return {QnNewPreprocessor(), QnFreePreprocessor}; }

int run(const Owner& preprocessor, std::string_view text) {
  return QnRunText(preprocessor.get(), text.data(), text.size(), "s");
}

int refuse(void*, const QnIncludeRequest*, QnInclude*) { return 1; }
int refuse(void*, const QnDiagnostic*) { return 1; }
int refuse(void*, const char*, size_t) { return 1; }

TEST(PreprocessorC, AFunctionEndsTheRunByAnythingButZero) {
  const Owner preprocessor = make();
  QnSetResolver(preprocessor.get(), refuse, nullptr);
  EXPECT_EQ(run(preprocessor, "a\n#include \"x\"\n"), QnCallbackFailed);
  EXPECT_EQ(QnGetEnd(preprocessor.get()).line, 2);
  EXPECT_STREQ(QnGetEnd(preprocessor.get()).file, "s");
  QnSetResolver(preprocessor.get(), nullptr, nullptr);

  QnSetDiagnosticSink(preprocessor.get(), refuse, nullptr);
  EXPECT_EQ(run(preprocessor, "#error\n"), QnCallbackFailed);
  QnSetDiagnosticSink(preprocessor.get(), nullptr, nullptr);

  QnSetOutputSink(preprocessor.get(), refuse, nullptr);
  EXPECT_EQ(run(preprocessor, "a\n"), QnCallbackFailed);
  QnSetOutputSink(preprocessor.get(), nullptr, nullptr);

  EXPECT_EQ(run(preprocessor, "a\n"), QnClean);
  EXPECT_STREQ(QnGetOutput(preprocessor.get(), nullptr), "#line 1 \"s\"\na\n");
}

TEST(PreprocessorC, FunctionsGetTheirContextAndWhatTheyAreAskedFor) {
  const Owner preprocessor = make();
  std::string output;
  QnSetOutputSink(
      preprocessor.get(),
      [](void* context, const char* block, size_t size) {
        static_cast<std::string*>(context)->append(block, size);
        return 0;
      },
      &output);
  std::vector<std::string> asked;
  QnSetResolver(
      preprocessor.get(),
      [](void* context, const QnIncludeRequest* request, QnInclude* include) {
        static_cast<std::vector<std::string>*>(context)->push_back(
            std::string(request->isQuoted != 0 ? "quoted " : "angled ") + request->name + " " + request->place.file +
            ":" + std::to_string(request->place.line) + " " + request->includerPath);
        const std::string text(1, '\0');  // Copied at once, its NUL included.
        QnIncludeText(include, "path of x", text.data(), text.size());
        return 0;
      },
      &asked);
  QnSetLineDirectives(preprocessor.get(), 0);
  EXPECT_EQ(run(preprocessor, "#line 4 \"t\"\n#include <x>\n"), QnClean);
  EXPECT_EQ(asked, (std::vector<std::string>{"angled x t:5 s"}));
  EXPECT_EQ(output.substr(0, 1), std::string(1, '\0'));
  size_t size = 1;
  EXPECT_STREQ(QnGetOutput(preprocessor.get(), &size), "");
  EXPECT_EQ(size, 0U);
  ASSERT_EQ(QnCountDependencies(preprocessor.get()), 1U);
  EXPECT_STREQ(QnGetDependency(preprocessor.get(), 0), "path of x");
  EXPECT_EQ(QnGetDependency(preprocessor.get(), 1), nullptr);
  QnSetDependencies(preprocessor.get(), 0);
  EXPECT_EQ(run(preprocessor, "#include <x>\n"), QnClean);
  EXPECT_EQ(QnCountDependencies(preprocessor.get()), 0U);
}

TEST(PreprocessorC, FilesAreReadFromTheDisk) {
  const qnpp::TemporaryFolder folder;
  const std::string source = folder.write("a.c", "#include <x>\n#include <y>\n");
  static_cast<void>(folder.write("x", "A\n"));
  const Owner preprocessor = make();
  QnDefine(preprocessor.get(), "A=b");
  QnAddIncludeDirectory(preprocessor.get(), folder.path().c_str());
  QnSetLineDirectives(preprocessor.get(), 0);
  EXPECT_EQ(QnRunFile(preprocessor.get(), source.c_str(), "s"), QnErrors);
  EXPECT_EQ(std::string(QnGetOutput(preprocessor.get(), nullptr)).substr(0, 2), "b\n");
}

TEST(PreprocessorC, TheLinesOfAFileFromTheResolverAreFound) {
  const qnpp::TemporaryFolder folder;
  std::string path = folder.write("x", "one\ntwo\n");
  const Owner preprocessor = make();
  QnSetResolver(
      preprocessor.get(),
      [](void* context, const QnIncludeRequest*, QnInclude* include) {
        QnIncludeFile(include, static_cast<const std::string*>(context)->c_str());
        return 0;
      },
      &path);
  QnSetLineDirectives(preprocessor.get(), 0);
  QnSetLineMap(preprocessor.get(), 1);
  EXPECT_EQ(run(preprocessor, "\n#include <y>\nthree\n"), QnClean);
  EXPECT_STREQ(QnGetOutput(preprocessor.get(), nullptr), "\none\ntwo\nthree\n");
  EXPECT_EQ(QnFindLine(preprocessor.get(), 3).file, path);
  EXPECT_EQ(QnFindLine(preprocessor.get(), 3).line, 2);
  EXPECT_STREQ(QnFindLine(preprocessor.get(), 4).file, "s");
  EXPECT_EQ(QnFindLine(preprocessor.get(), 4).line, 3);
}

TEST(PreprocessorC, MessagesSayWhatTheyAreAndHowTheirPlaceWasReached) {
  const Owner preprocessor = make();
  QnSetResolver(
      preprocessor.get(),
      [](void*, const QnIncludeRequest* request, QnInclude* include) {
        if (std::string_view(request->name) == "x") QnIncludeText(include, "x", "\n#include \"y\"\n", 14);
        return 0;
      },
      nullptr);
  std::string told;
  QnSetDiagnosticSink(
      preprocessor.get(),
      [](void* context, const QnDiagnostic* diagnostic) {
        EXPECT_EQ(diagnostic->severity, QnError);
        EXPECT_STREQ(diagnostic->message, "Cannot open file: y");
        EXPECT_STREQ(diagnostic->text, "x:2: Cannot open file: y.\n");
        EXPECT_EQ(diagnostic->includeChainSize, 1U);
        EXPECT_STREQ(diagnostic->includeChain[0].file, "s");
        EXPECT_EQ(diagnostic->includeChain[0].line, 3);
        *static_cast<std::string*>(context) = diagnostic->identifier;
        return 0;
      },
      &told);
  EXPECT_EQ(run(preprocessor, "\n\n#include \"x\"\n"), QnErrors);
  EXPECT_EQ(told, "missing-file");
  EXPECT_EQ(QnHasErrors(preprocessor.get()), 1);
}

TEST(PreprocessorC, TheEndOfARunSaysHowItWasReached) {
  const Owner preprocessor = make();
  QnSetResolver(
      preprocessor.get(),
      [](void*, const QnIncludeRequest* request, QnInclude* include) {
        const std::string_view text = request->name == std::string_view("x") ? "\n#include <y>\n" : "#if 1/0\n";
        QnIncludeText(include, request->name, text.data(), text.size());
        return 0;
      },
      nullptr);
  EXPECT_EQ(run(preprocessor, "#include <x>\n"), QnDivisionByZero);
  EXPECT_STREQ(QnGetEnd(preprocessor.get()).file, "y");
  EXPECT_STREQ(QnGetEndInclude(preprocessor.get(), 0).file, "x");
  EXPECT_EQ(QnGetEndInclude(preprocessor.get(), 0).line, 2);
  EXPECT_STREQ(QnGetEndInclude(preprocessor.get(), 1).file, "s");
  EXPECT_EQ(QnGetEndInclude(preprocessor.get(), 1).line, 1);
  EXPECT_STREQ(QnGetEndInclude(preprocessor.get(), 2).file, "");
  EXPECT_EQ(QnGetEndInclude(preprocessor.get(), 2).line, 0);
}

TEST(PreprocessorC, LimitsEndARunAndTheLargestNumbersAreNone) {
  const Owner preprocessor = make();
  QnLimits limits = {0, 0, 3, 0};
  QnSetLimits(preprocessor.get(), &limits);
  QnSetLineDirectives(preprocessor.get(), 0);
  EXPECT_EQ(run(preprocessor, "abcdef\n"), QnLimitReached);
  EXPECT_EQ(QnGetLimit(preprocessor.get()), QnOutputBytes);
  EXPECT_STREQ(QnGetOutput(preprocessor.get(), nullptr), "abc");
  limits = {UINT64_MAX, UINT64_MAX, UINT64_MAX, UINT64_MAX};
  QnSetLimits(preprocessor.get(), &limits);
  EXPECT_EQ(run(preprocessor, "abcdef\n"), QnClean);
  EXPECT_EQ(QnGetLimit(preprocessor.get()), QnNoLimit);
  QnCancel(preprocessor.get());
  EXPECT_EQ(run(preprocessor, "abcdef\n"), QnCancelled);
}

TEST(PreprocessorC, WithoutAnObjectEveryRunLacksMemory) {
  QnDefine(nullptr, "A");
  QnAddIncludeDirectory(nullptr, ".");
  QnSetResolver(nullptr, nullptr, nullptr);
  QnSetDiagnosticSink(nullptr, nullptr, nullptr);
  QnSetOutputSink(nullptr, nullptr, nullptr);
  QnSetLimits(nullptr, nullptr);
  QnSetLineDirectives(nullptr, 1);
  QnSetDependencies(nullptr, 1);
  QnSetLineMap(nullptr, 1);
  QnCancel(nullptr);
  EXPECT_EQ(QnRunText(nullptr, "", 0, nullptr), QnOutOfMemory);
  EXPECT_EQ(QnRunFile(nullptr, "", nullptr), QnOutOfMemory);
  EXPECT_STREQ(QnGetOutput(nullptr, nullptr), "");
  EXPECT_EQ(QnHasErrors(nullptr), 1);
  EXPECT_EQ(QnGetLimit(nullptr), QnNoLimit);
  EXPECT_EQ(QnGetEnd(nullptr).line, 0);
  EXPECT_EQ(QnGetEndInclude(nullptr, 0).line, 0);
  EXPECT_EQ(QnCountDependencies(nullptr), 0U);
  EXPECT_EQ(QnFindLine(nullptr, 1).line, 0);
  QnFreePreprocessor(nullptr);
}

}  // namespace
