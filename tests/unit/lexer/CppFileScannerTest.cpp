// The token source over a file.
#include "lexer/CppFileScanner.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <sstream>
#include <string>

#include "macros/CppMacro.h"
#include "tests/support/Files.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

// A scanner over a text as standard input.
struct FileReading {
  explicit FileReading(const std::string& text)
      : scanner("stdin", std::make_unique<std::istringstream>(text), setting.context) {}

  std::string get() {
    const CppTokenKind kind = scanner.get();
    return dumpToken(kind, kind == TK_END ? "" : scanner.text());
  }
  std::string getAll() {
    std::string tokens = get();
    while (tokens.find("END", tokens.size() - 3) == std::string::npos) {
      tokens += " " + get();
    }
    return tokens;
  }

  LexerSetting setting;
  CppFileScanner scanner;
};

struct FileRow {
  const char* text;
  const char* tokens;
};

TEST(CppFileScannerTest, EveryFileEndsInOneLineEnd) {
  const FileRow rows[] = {
      {"", "END"},
      {"\n", "NEWLINE END"},
      {"\n\n", "NEWLINE NEWLINE END"},
      {"a", "IDENTIFIER:a NEWLINE END"},
      {"a\n", "IDENTIFIER:a NEWLINE END"},
      {"a\r", "IDENTIFIER:a NEWLINE END"},
      {" ", "SPACE NEWLINE END"},
      {"a\\\n", "IDENTIFIER:a CONTINUATION NEWLINE END"},
      {"a\n/* */", "IDENTIFIER:a NEWLINE SPACE NEWLINE END"},
      {"// a", "SPACE NEWLINE END"},
      {"/* a", "SPACE NEWLINE END"},
  };
  for (const FileRow& row : rows) {
    EXPECT_EQ(FileReading(row.text).getAll(), row.tokens) << visible(row.text);
    // Looking ahead before each token changes nothing.
    FileReading peeked(row.text);
    std::string tokens;
    for (CppTokenKind kind = peeked.scanner.peek(); kind != TK_END; kind = peeked.scanner.peek()) {
      EXPECT_EQ(peeked.scanner.peek(), kind);
      EXPECT_EQ(peeked.scanner.get(), kind);
      tokens += dumpToken(kind, peeked.scanner.text()) + " ";
    }
    EXPECT_EQ(tokens + "END", row.tokens) << visible(row.text);
  }
}

TEST(CppFileScannerTest, ATextIsReadLikeAFileAndKept) {
  FileReading reading("a");
  const auto text = std::make_shared<FileText>("b // c\n");
  for (int round = 0; round < 3; ++round) {
    reading.scanner.open("b.h", text);
    EXPECT_TRUE(reading.scanner.isInMemory());
    EXPECT_EQ(reading.scanner.fileName(), "b.h");
    EXPECT_EQ(reading.scanner.line(), 1);
    EXPECT_EQ(reading.getAll(), "IDENTIFIER:b SPACE SPACE NEWLINE END");
    reading.scanner.reset();
  }
  EXPECT_EQ(text.use_count(), 1);
  reading.scanner.open("c.h", std::make_unique<std::istringstream>("c"));
  EXPECT_FALSE(reading.scanner.isInMemory());
  EXPECT_EQ(reading.getAll(), "IDENTIFIER:c NEWLINE END");
}

TEST(CppFileScannerTest, AFileIsReadAndClosed) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a.h", "a // b\n");
  FileReading reading("");
  for (int round = 0; round < 3; ++round) {
    reading.scanner.open(path, std::make_unique<FileBuffer>(path));
    EXPECT_FALSE(reading.scanner.isInMemory());
    EXPECT_FALSE(reading.scanner.openFailed());
    EXPECT_EQ(reading.scanner.fileName(), path);
    EXPECT_EQ(reading.getAll(), "IDENTIFIER:a SPACE SPACE NEWLINE END");
    reading.scanner.reset();
    EXPECT_TRUE(reading.scanner.openFailed());
  }
}

TEST(CppFileScannerTest, AnotherScannerReadsTheSameText) {
  const auto text = std::make_shared<FileText>("a b");
  FileReading first("");
  FileReading second("");
  first.scanner.open("a.h", text);
  second.scanner.open("a.h", text);
  EXPECT_EQ(first.get(), "IDENTIFIER:a");
  EXPECT_EQ(second.getAll(), "IDENTIFIER:a SPACE IDENTIFIER:b NEWLINE END");
  EXPECT_EQ(first.getAll(), "SPACE IDENTIFIER:b NEWLINE END");
}

TEST(CppFileScannerTest, TheEndComesAgainAndAgain) {
  FileReading reading("a");
  EXPECT_EQ(reading.getAll(), "IDENTIFIER:a NEWLINE END");
  EXPECT_EQ(reading.scanner.get(), TK_END);
  EXPECT_EQ(reading.scanner.peek(), TK_END);
  EXPECT_EQ(reading.scanner.get(), TK_END);
}

TEST(CppFileScannerTest, TheSuppliedLineEndIsNotCounted) {
  FileReading reading("a\nb");
  EXPECT_EQ(reading.getAll(), "IDENTIFIER:a NEWLINE IDENTIFIER:b NEWLINE END");
  EXPECT_EQ(reading.scanner.line(), 2);
}

// The line is that of the reading position: what has been looked at counts when it is taken.
TEST(CppFileScannerTest, ALineEndThatIsLookedAtDoesNotCountYet) {
  FileReading reading("a\n/*\n\n*/b\\\nc\n");
  CppFileScanner& scanner = reading.scanner;
  EXPECT_EQ(scanner.line(), 1);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.peek(), TK_NEWLINE);
  EXPECT_EQ(scanner.line(), 1);
  EXPECT_EQ(scanner.get(), TK_NEWLINE);
  EXPECT_EQ(scanner.line(), 2);
  EXPECT_EQ(scanner.peek(), TK_SPACE);
  EXPECT_EQ(reading.setting.written(), "\n\n");  // The comment's line ends are written when it is lexed.
  EXPECT_EQ(scanner.line(), 2);
  EXPECT_EQ(scanner.get(), TK_SPACE);
  EXPECT_EQ(scanner.line(), 4);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.peek(), TK_CONTINUATION);
  EXPECT_EQ(scanner.line(), 4);
  EXPECT_EQ(scanner.get(), TK_CONTINUATION);
  EXPECT_EQ(scanner.line(), 5);
  EXPECT_EQ(reading.getAll(), "IDENTIFIER:c NEWLINE END");
  EXPECT_EQ(scanner.line(), 6);
}

TEST(CppFileScannerTest, ANewLineNumberIsThatOfTheReadingPosition) {
  FileReading reading("a\nb\n");
  CppFileScanner& scanner = reading.scanner;
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.peek(), TK_NEWLINE);
  scanner.setLine(10);
  EXPECT_EQ(scanner.line(), 10);
  EXPECT_EQ(scanner.get(), TK_NEWLINE);
  EXPECT_EQ(scanner.line(), 11);
  scanner.setLine(20);
  EXPECT_EQ(scanner.line(), 20);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.get(), TK_NEWLINE);
  EXPECT_EQ(scanner.line(), 21);
}

TEST(CppFileScannerTest, LineNumbersWrapBehindALookAheadToo) {
  constexpr std::int32_t kLast = std::numeric_limits<std::int32_t>::max();
  FileReading reading("a\nb\n");
  CppFileScanner& scanner = reading.scanner;
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.peek(), TK_NEWLINE);
  scanner.setLine(kLast);
  EXPECT_EQ(scanner.line(), kLast);
  EXPECT_EQ(scanner.get(), TK_NEWLINE);
  EXPECT_EQ(scanner.line(), std::numeric_limits<std::int32_t>::min());
}

TEST(CppFileScannerTest, AnEmptyNameMeansStandardInput) {
  FileReading reading("x");
  EXPECT_FALSE(reading.scanner.openFailed());
  EXPECT_EQ(reading.scanner.fileName(), "stdin");
  reading.scanner.setFileName("other");
  EXPECT_EQ(reading.scanner.fileName(), "other");
}

TEST(CppFileScannerTest, AFailedInputCannotBeOpened) {
  auto input = std::make_unique<std::istringstream>("x");
  input->setstate(std::ios_base::failbit);
  LexerSetting setting;
  EXPECT_TRUE(CppFileScanner("a.c", std::move(input), setting.context).openFailed());
}

TEST(CppFileScannerTest, ThePathIsTheFirstOfItsNames) {
  FileReading reading("x");
  EXPECT_EQ(reading.scanner.path(), "stdin");
  reading.scanner.setFileName("");
  EXPECT_EQ(reading.scanner.path(), "stdin");
  reading.scanner.setFileName("other");
  EXPECT_EQ(reading.scanner.path(), "stdin");
}

TEST(CppFileScannerTest, ReadsAFileByItsName) {
  const TemporaryFolder folder;
  const std::string name = folder.write("a.c", "one\ntwo");
  LexerSetting setting;
  CppFileScanner scanner(name, std::make_unique<InputFile>(name), setting.context);
  ASSERT_FALSE(scanner.openFailed());
  EXPECT_EQ(scanner.fileName(), name);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.text(), "one");
}

TEST(CppFileScannerTest, WhatCannotBeOpenedSaysSo) {
  const TemporaryFolder folder;
  const std::string name = folder.write("a.c", "x");
  LexerSetting setting;
  for (const std::string& wrong : {folder.path("none.c"), folder.path(), name + "/", name + std::string("\0.c", 3)}) {
    EXPECT_TRUE(CppFileScanner(wrong, std::make_unique<InputFile>(wrong), setting.context).openFailed()) << wrong;
  }
  EXPECT_EQ(setting.diagnostics.str(), "");
}

// To the next file it is as good as new, and reads it into the same buffer.
TEST(CppFileScannerTest, IsUsedForAnotherFile) {
  FileReading reading("a b\n");
  EXPECT_EQ(reading.get(), "IDENTIFIER:a");
  const char* const buffer = reading.scanner.text().data();
  EXPECT_EQ(reading.getAll(), "SPACE IDENTIFIER:b NEWLINE END");
  reading.scanner.setFileName("other");
  reading.scanner.reset();
  reading.scanner.open("next", std::make_unique<std::istringstream>("c"));
  EXPECT_EQ(reading.scanner.fileName(), "next");
  EXPECT_EQ(reading.scanner.path(), "next");
  EXPECT_EQ(reading.scanner.line(), 1);
  EXPECT_EQ(reading.get(), "IDENTIFIER:c");
  EXPECT_EQ(reading.scanner.text().data(), buffer);
  EXPECT_EQ(reading.getAll(), "NEWLINE END");
}

TEST(CppFileScannerTest, IsAFileWithAnEmptyHideSet) {
  FileReading reading("x");
  EXPECT_TRUE(reading.scanner.isFile());
  EXPECT_FALSE(reading.scanner.isTokenList());
  EXPECT_TRUE(reading.scanner.hideSet().empty());
  reading.scanner.get();
  EXPECT_TRUE(reading.scanner.hideSet().empty());
}

TEST(CppFileScannerTest, CopyingHandsOutMacrosWithTheirEntries) {
  FileReading reading("a MACRO b\n");
  CppMacro macro;
  Name* const entry = reading.setting.names.intern("MACRO");
  entry->macro = &macro;
  reading.setting.names.noteMacro(*entry);
  EXPECT_EQ(reading.scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(reading.scanner.name(), nullptr);
  EXPECT_EQ(reading.scanner.copyText(), TK_IDENTIFIER);
  EXPECT_EQ(reading.scanner.text(), "MACRO");
  EXPECT_EQ(reading.scanner.name(), entry);
  EXPECT_EQ(reading.scanner.copyText(), TK_NEWLINE);
  EXPECT_EQ(reading.setting.written(), "  b");
  EXPECT_EQ(reading.scanner.get(), TK_END);
  EXPECT_EQ(reading.scanner.name(), nullptr);
}

}  // namespace
}  // namespace qnpp
