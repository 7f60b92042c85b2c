// The ways past text that hand out no tokens, against the way that hands out each: generated texts have to give the
// same output, the same line numbers and the same tokens behind.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "lexer/CppFileScanner.h"
#include "macros/CppMacro.h"
#include "tests/support/PiecewiseInput.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

// What a text may be made of. `MACRO` has a definition, `other` is a known name without one.
constexpr std::string_view kPieces[] = {
    "a",          "MACRO",    "other", "if",      "_Pragma",  "defined",   "12",         "0x",       "0x1uL",
    "'c'",        "'",        "''",    "\"s\"",   "\"",       "\"\\\"",    "'\\''",      "'\\x'",    "\\",
    "\\\"",       "/",        "*",     "/* c */", "/*\n",     "*/",        "/*\r\n\n*/", "/*\0*/"sv, "// l",
    "// l\0 m"sv, "//\\\n",   "\\\n",  "\\\r",    "\\\r\n",   "\n",        "\n",         "\r",       "\r\n",
    "\n#",        "\n  # if", "\n\t",  "\n/**/#", "\n#endif", "\n # else", "\n#ifdef",   "\n#elif",  "\n\\\n#",
    "\0"sv,       "\n\0"sv,   " ",     "\t",      "\v\f",     "##",        "#",          "<<=",      "(",
    ",",          "\xC3\xA9", "x y z", ";",       "1.5e+3",   "/*it's*/",  "// it's\n",  "/*/",
};

std::string makeText(std::mt19937& random) {
  std::string text;
  for (std::size_t left = random() % 24; left > 0; --left) {
    text += kPieces[random() % std::size(kPieces)];
    if (random() % 8 == 0) {
      const std::string filler(random() % 150, random() % 2 == 0 ? 'x' : ' ');  // Blocks in which nothing matters.
      text += random() % 2 == 0 ? filler : "/*" + filler + "*/";
    }
  }
  return text;
}

// A scanner over a text that arrives in pieces, and what it works with.
struct Reading {
  Reading(std::string_view text, std::size_t step)
      : scanner("a.c", std::make_unique<PiecewiseInput>(text, step), setting.context) {
    Name& name = *setting.names.intern("MACRO");
    name.macro = &macro;
    setting.names.noteMacro(name);
    setting.names.intern("other");
  }

  // Everything that can be seen from outside.
  std::string state() {
    return setting.written() + "| line " + std::to_string(scanner.line()) + ", output line " +
           std::to_string(setting.output.line()) + ", effects " + std::to_string(setting.effectCount) + ", messages " +
           setting.diagnostics.str();
  }

  // The tokens that are left.
  std::string rest() {
    std::string tokens;
    for (CppTokenKind kind = scanner.get(); kind != TK_END; kind = scanner.get()) {
      tokens += dumpToken(kind, scanner.text()) + "@" + std::to_string(scanner.line()) + " ";
    }
    return tokens + dumpToken(scanner.get(), "");
  }

  LexerSetting setting;
  CppMacro macro;
  CppFileScanner scanner;
};

// Writes a text as the run loop does, but for the macros, which are written in brackets. `take` hands out the tokens in
// the middle of a line; it may write some itself.
template <typename Take>
std::string writeText(Reading& reading, Take take) {
  CppFileScanner& scanner = reading.scanner;
  OutputBuffer& output = reading.setting.output;
  for (;;) {
    std::string leading;
    CppTokenKind kind = scanner.get();
    for (; isBlank(kind); kind = scanner.get()) {
      leading += scanner.text();
    }
    if (kind == TK_END) {
      return reading.state();
    }
    if (kind == TK_NEWLINE) {
      output.endLine();
      continue;
    }
    if (output.line() != scanner.line()) {
      output.write("@" + std::to_string(scanner.line()) + ":");
      output.setLine(scanner.line());
    }
    output.write(leading);
    for (; kind != TK_NEWLINE; kind = take(scanner)) {
      const Name* const name = isName(kind) ? reading.setting.names.find(scanner.text()) : nullptr;
      const bool isSpecial = kind == TK_PRAGMA_OP || (name != nullptr && name->macro != nullptr);
      output.write(isSpecial ? "[" + std::string(scanner.text()) + "]" : std::string(scanner.text()));
    }
    output.endLine();
  }
}

constexpr auto kTakeToken = [](CppFileScanner& scanner) { return scanner.get(); };
constexpr auto kCopyText = [](CppFileScanner& scanner) { return scanner.copyText(); };

TEST(SkippingTest, CopiedTextIsTheTextOfItsTokens) {
  std::mt19937 random(4711);
  for (int round = 0; round < 10000; ++round) {
    const std::string text = makeText(random);
    Reading byTokens(text, text.size() + 1);
    Reading copied(text, 1 + random() % 40);
    const std::string expected = writeText(byTokens, kTakeToken);
    ASSERT_EQ(writeText(copied, kCopyText), expected) << visible(text);
  }
}

// Of a long word that goes on behind the buffer not all is kept. What is left has to hold the same names, and no
// others.
TEST(SkippingTest, LongWordsAreCopiedAsTheirTokensWhereverTheInputIsCut) {
  constexpr std::string_view kBeginnings[] = {"x", "M1", "7", "07", "00", "0x1", "1u"};
  constexpr std::string_view kParts[] = {"MACRO", "_Pragma", "0", "00", "1", "7",   "89", "0x",
                                         "1f",    "u",       "L", "M",  "A", "CRO", "_",  "x"};
  std::mt19937 random(5813);
  std::vector<std::string> ends = {"_Pragma", "1_Pragma", "MACRO", "0MACRO", "00x1MACRO", "70x1fMACRO", "08MACRO"};
  for (int count = 0; count < 100; ++count) {
    std::string& end = ends.emplace_back();
    for (std::size_t left = 1 + random() % 5; left > 0; --left) {
      end += kParts[random() % std::size(kParts)];
    }
  }
  for (const std::string_view beginning : kBeginnings) {
    const std::string begun = "x " + std::string(beginning) + std::string(kReadSize / 2, beginning.back());
    for (const std::string& end : ends) {
      const std::string text = begun + end + " MACRO";
      Reading byTokens(text, text.size());
      const std::string expected = writeText(byTokens, kTakeToken);
      for (std::size_t cut = begun.size(); cut <= text.size(); ++cut) {
        Reading copied(text, cut);
        ASSERT_EQ(writeText(copied, kCopyText), expected)
            << beginning << " to " << visible(text.substr(begun.size(), cut - begun.size())) << "|"
            << visible(text.substr(cut));
      }
    }
  }
}

TEST(SkippingTest, LongNamesOfMacrosAreFoundWhereTheInputIsCut) {
  for (const std::size_t size : {kReadSize / 2, kReadSize / 2 + 1, kReadSize - 3, kReadSize, 2 * kReadSize - 2}) {
    const std::string name(size, 'm');
    for (const std::string& text : {"x " + name + " y", "x m" + name + " y", "x 1" + name, "x " + name,
                                    "x " + name + name + name, "x " + std::string(2 * size + 8, 'n') + name}) {
      for (std::size_t cut = size - 3; cut <= size + 3; ++cut) {
        const auto readIn = [&](std::size_t piece, auto take) {
          Reading reading(text, piece);
          Name& macro = *reading.setting.names.intern(name);
          macro.macro = &reading.macro;
          reading.setting.names.noteMacro(macro);
          return writeText(reading, take);
        };
        const std::string expected = readIn(text.size(), kTakeToken);
        ASSERT_TRUE(readIn(cut, kCopyText) == expected) << size << ", " << cut;
      }
    }
  }
}

// The white space behind the name comes out before it. Where an invocation may begin, the name is handed out.
TEST(SkippingTest, TheNameOfAFunctionIsCopiedWhereNoParenthesisFollows) {
  const auto copy = [](std::string_view text) {
    Reading reading(text, text.size() + 1);
    reading.setting.names.find("MACRO")->wantsParenthesis = true;
    EXPECT_EQ(reading.scanner.get(), TK_IDENTIFIER);
    const CppTokenKind kind = reading.scanner.copyText();
    return reading.setting.written() + (kind == TK_IDENTIFIER ? "[" + std::string(reading.scanner.text()) + "]" : "");
  };
  EXPECT_EQ(copy("x MACRO a\tMACRO \t b MACRO, 1MACRO\"\"\n"), "  MACROa\t \t MACROb MACRO, 1MACRO\"\"");
  EXPECT_EQ(copy("x MACRO MACRO\xC3\n"), "  MACROMACRO\xC3");
  const std::string far(100, ' ');
  EXPECT_EQ(copy("x MACRO" + far + "MACRO" + far + "b\n"), " " + far + "MACRO" + far + "MACROb");
  for (const std::string_view behind : {"("sv, " ("sv, "\n"sv, " \n"sv, "/"sv, " /"sv, "\\"sv, "\r"sv, "\0"sv, ""sv}) {
    EXPECT_EQ(copy("x MACRO" + std::string(behind)), " [MACRO]") << visible(behind);
  }
}

// What stands behind them goes on in the line of the name, so that nothing there is a directive, and the next line end
// is shown: the output is behind.
TEST(SkippingTest, LineEndsBehindTheNameOfAFunctionAreCopied) {
  const auto copy = [](std::string_view text) {
    Reading reading(text, text.size() + 1);
    reading.setting.names.find("MACRO")->wantsParenthesis = true;
    EXPECT_EQ(reading.scanner.get(), TK_IDENTIFIER);
    const CppTokenKind kind = reading.scanner.copyText();
    return reading.setting.written() + "[" + dumpToken(kind, reading.scanner.text()) + " in line " +
           std::to_string(reading.scanner.line()) + "]";
  };
  EXPECT_EQ(copy("x MACRO \n\n\t; y\nz"), "  \n\n\tMACRO; y[NEWLINE in line 4]");
  EXPECT_EQ(copy("x MACRO\n# MACRO + MACRO(\n"), " \nMACRO#  MACRO+ [IDENTIFIER:MACRO in line 2]");
  EXPECT_EQ(copy("x MACRO\nMACRO\n\n1\n"), " \nMACRO\n\nMACRO1[NEWLINE in line 5]");
  const std::string far(100, ' ');
  EXPECT_EQ(copy("x" + far + "MACRO\n" + far + "'\n'\n"), far + "\n" + far + "MACRO'[NEWLINE in line 3]");
  for (const std::string_view behind : {"(", "/* c */y", "\\\ny", "\r\ny"}) {
    EXPECT_EQ(copy("x MACRO\n" + std::string(behind)), " [IDENTIFIER:MACRO in line 1]") << visible(behind);
  }
}

// Looking ahead, taking and copying in any order.
TEST(SkippingTest, CopyingMayBeginAnywhere) {
  std::mt19937 random(4712);
  for (int round = 0; round < 5000; ++round) {
    const std::string text = makeText(random);
    Reading byTokens(text, text.size() + 1);
    Reading copied(text, 1 + random() % 40);
    const std::string expected = writeText(byTokens, kTakeToken);
    const std::string actual = writeText(copied, [&random](CppFileScanner& scanner) {
      if (random() % 3 == 0) {
        scanner.peek();
      }
      return random() % 2 == 0 ? scanner.get() : scanner.copyText();
    });
    ASSERT_EQ(actual, expected) << visible(text);
  }
}

TEST(SkippingTest, TheFirstLineMayBeSkippedBeforeAnythingIsRead) {
  Reading reading("a \"b\" /* c\n*/ d\ne\n", 100);
  EXPECT_TRUE(reading.scanner.skipLine());
  EXPECT_EQ(reading.scanner.line(), 3);
  EXPECT_EQ(reading.scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(reading.scanner.text(), "e");
}

// Reading such a comment has met the end of the input: nothing is left to skip, and nothing comes behind it.
TEST(SkippingTest, BehindACommentThatTheInputEndsInNothingIsLeftOfTheLine) {
  for (const std::string_view text : {"x // c", "x /* c */", "x /* c"}) {
    InputText input;
    input.reset(text);
    LexerSetting setting;
    CppLexer lexer(input, setting.context);
    EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
    EXPECT_EQ(lexer.next(), TK_SPACE);
    EXPECT_EQ(lexer.next(), TK_SPACE);
    EXPECT_FALSE(lexer.skipLine()) << text;
    EXPECT_EQ(lexer.next(), TK_END) << text;
  }
}

// At the start of a line and behind a look ahead the tokens are handed out one by one.
TEST(SkippingTest, BlanksArePassedOverInTheMiddleOfALine) {
  Reading reading("  a \t b \n  c\n", 100);
  CppFileScanner& scanner = reading.scanner;
  const auto nextWord = [&scanner] {
    while (scanner.get() == TK_SPACE) {
    }
    return scanner.text();
  };
  EXPECT_FALSE(scanner.passBlanks());
  EXPECT_EQ(nextWord(), "a");
  EXPECT_TRUE(scanner.passBlanks());
  EXPECT_EQ(nextWord(), "b");
  EXPECT_EQ(scanner.peek(), TK_SPACE);
  EXPECT_FALSE(scanner.passBlanks());
  EXPECT_EQ(nextWord(), "\n");
  EXPECT_FALSE(scanner.passBlanks());
  EXPECT_EQ(scanner.get(), TK_SPACE);
  EXPECT_TRUE(scanner.passBlanks());
  EXPECT_EQ(nextWord(), "c");
  EXPECT_FALSE(scanner.passBlanks());  // There are none.
  EXPECT_EQ(nextWord(), "\n");
}

TEST(SkippingTest, ASkippedLineIsGoneWithItsTokens) {
  std::mt19937 random(4713);
  for (int round = 0; round < 10000; ++round) {
    const std::string text = makeText(random);
    Reading byTokens(text, text.size() + 1);
    Reading skipped(text, 1 + random() % 40);
    for (int lines = 0; lines < 3; ++lines) {
      for (std::size_t tokens = random() % 4; tokens > 0; --tokens) {
        byTokens.scanner.get();
        skipped.scanner.get();
      }
      if (random() % 4 == 0) {
        byTokens.scanner.peek();
        skipped.scanner.peek();
      }
      CppTokenKind kind = byTokens.scanner.get();
      while (kind != TK_NEWLINE && kind != TK_END) {
        kind = byTokens.scanner.get();
      }
      ASSERT_EQ(skipped.scanner.skipLine(), kind == TK_NEWLINE) << visible(text);
      ASSERT_EQ(skipped.state(), byTokens.state()) << visible(text);
    }
    ASSERT_EQ(skipped.rest(), byTokens.rest()) << visible(text);
    ASSERT_EQ(skipped.state(), byTokens.state()) << visible(text);
  }
}

// Conditionals within the group, or none of them, as if all belonged to the group itself.
class Conditionals final : public NestedConditionals {
 public:
  explicit Conditionals(bool areNested) : areNested_(areNested) {}
  bool carryOutNested(CppTokenKind /*kind*/) override { return areNested_; }

 private:
  bool areNested_;
};

// Goes through a skipped group. The line of a conditional within the group leaves nothing, but what is behind `#else`
// and `#endif` is a line of its own; one of the group's own is shown; any other line leaves an empty line.
template <typename PassPlainLines>
std::string skipGroup(Reading& reading, bool areNested, PassPlainLines passPlainLines) {
  CppFileScanner& scanner = reading.scanner;
  OutputBuffer& output = reading.setting.output;
  for (;;) {
    CppTokenKind kind = passPlainLines(scanner);
    bool isDirective = isConditional(kind);
    if (!isDirective) {
      do {
        kind = scanner.get();
      } while (isBlank(kind));
    }
    if (kind == TK_END) {
      return reading.state();
    }
    if (kind == '#') {
      do {
        kind = scanner.get();
      } while (isBlank(kind));
      isDirective = isConditional(kind);
    }
    if (isDirective && areNested && (kind == TK_ELSE || kind == TK_ENDIF)) {
      continue;
    }
    const bool isShown = isDirective && !areNested;
    while (kind != TK_NEWLINE) {
      if (isShown) {
        output.write((isConditional(kind) ? "word" : dumpToken(kind, scanner.text())) + " ");
      }
      kind = scanner.get();
    }
    if (!isDirective || !areNested) {
      output.endLine();
    }
  }
}

TEST(SkippingTest, WholeLinesLeaveEmptyLines) {
  std::mt19937 random(4714);
  for (int round = 0; round < 20000; ++round) {
    const std::string text = makeText(random);
    const bool areNested = round % 2 == 0;
    Reading byTokens(text, text.size() + 1);
    Reading skipped(text, 1 + random() % 40);
    const std::string expected = skipGroup(byTokens, areNested, [](CppFileScanner&) { return TK_END; });
    const auto skipLines = [areNested](CppFileScanner& scanner) {
      Conditionals conditionals(areNested);
      return scanner.skipWholeLines(conditionals);
    };
    ASSERT_EQ(skipGroup(skipped, areNested, skipLines), expected) << areNested << visible(text);
  }
}

// ---- The same by hand ----

struct CopyRow {
  std::string_view text;
  const char* output;
  const char* stop;
};

// From the middle of the first line, behind "x".
TEST(SkippingTest, CopyingStopsAtWhatTheEngineHasToSee) {
  const CopyRow rows[] = {
      {"x a b\n", " a b", "NEWLINE"},
      {"x a MACRO b", " a ", "IDENTIFIER:MACRO"},
      {"x MACROS", " MACROS", "END"},
      {"x other", " other", "END"},
      {"x \"MACRO\"'M'", " \"MACRO\"'M'", "END"},
      {"x 1MACRO", " 1", "IDENTIFIER:MACRO"},
      {"x _Pragma", " ", "PRAGMA_OP"},
      {"x if defined", " if defined", "END"},
      {"x /* c */ y // z", "   y  ", "END"},
      {"x \\\ny", " \\\ny", "END"},
      {"x\ny MACRO", "\ny ", "IDENTIFIER:MACRO"},
      {"x\n  \n y\n#", "\n\n y", "NEWLINE"},
      {"x\n#y", "", "NEWLINE"},
      {"x\n  #y", "", "NEWLINE"},
      {"x\n/**/y", "", "NEWLINE"},
      {"x\ry", "\ny", "END"},
      {"x /*\n*/\ny", " \n ", "NEWLINE"},
  };
  for (const CopyRow& row : rows) {
    InputText input;
    input.reset(row.text);
    LexerSetting setting;
    CppMacro macro;
    Name& name = *setting.names.intern("MACRO");
    name.macro = &macro;
    setting.names.noteMacro(name);
    setting.names.intern("other");
    CppLexer lexer(input, setting.context);
    EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
    const CppTokenKind kind = lexer.copyText();
    EXPECT_EQ(dumpToken(kind, kind == TK_END ? "" : lexer.text()), row.stop) << visible(row.text);
    EXPECT_EQ(setting.written(), row.output) << visible(row.text);
    if (kind == TK_IDENTIFIER) {
      EXPECT_EQ(lexer.name(), setting.names.find("MACRO")) << visible(row.text);
    }
  }
}

// The name is known to come to "12" until any definition changes.
TEST(SkippingTest, CopyingWritesWhatAMacroIsKnownToComeTo) {
  for (const bool isStillKnown : {true, false}) {
    InputText input;
    input.reset("x a MACRO,MACRO+b");
    LexerSetting setting;
    CppMacro macro;
    Name& name = *setting.names.intern("MACRO");
    name.macro = &macro;
    setting.names.noteMacro(name);
    name.finalText = {"12", 2, setting.names.generation()};
    if (!isStillKnown) {
      setting.names.beginGeneration();
    }
    CppLexer lexer(input, setting.context);
    EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
    EXPECT_EQ(lexer.copyText(), isStillKnown ? TK_END : TK_IDENTIFIER);
    EXPECT_EQ(setting.written(), isStillKnown ? " a 12,12+b" : " a ");
  }
}

struct SkipRow {
  std::string_view text;
  const char* output;
  const char* rest;
};

// From the start of the second line. What is left of a line whose beginning has been passed is only its rest.
TEST(SkippingTest, WholeLinesEndAtALineThatMayBeADirective) {
  const SkipRow rows[] = {
      {"\n", "", ""},
      {"\na\nb\n", "\n\n", ""},
      {"\na\nb", "\n\n", ""},
      {"\na\n#if b\nc\n", "\n", "SPACE IDENTIFIER:b NEWLINE IDENTIFIER:c NEWLINE"},
      {"\na\n  #else\n", "\n", "NEWLINE"},
      {"\n# \tendif\n", "", "NEWLINE"},
      {"\n#ifdef\n", "", "NEWLINE"},
      {"\n#ifndef a\n", "", "SPACE IDENTIFIER:a NEWLINE"},
      {"\n#elif\n", "", "NEWLINE"},
      // Any other word behind a "#" is no directive here.
      {"\na\n#b\nc\n", "\n\n\n", ""},
      {"\n  # \tdefine a \\\n#if\n#iff\n#endi\n#1\n", "\n\n\n\n", ""},
      // Without a word it is looked at: alone it takes the next line with it.
      {"\na\n# \n", "\n", "# SPACE NEWLINE"},
      {"\n#\"\n", "", "# OTHER:\" NEWLINE"},
      {"\n##if\n", "", "PASTE IF NEWLINE"},
      // Comments and continued line ends do not hide what is behind them.
      {"\n\\\n#b\n#\n", "\n", "# NEWLINE"},
      {"\n/* */#b\n#\n", "\n", "# NEWLINE"},
      {"\n /* */ \\\n /* */ #if\n", "", "NEWLINE"},
      {"\n/*\n*/ b\n#\n", "\n\n", "# NEWLINE"},
      {"\n/* */", "", ""},
      {"\na /*\n# */ b\n#\n", "\n\n", "# NEWLINE"},
      {"\na \\\n# b\n#\n", "\n", "# NEWLINE"},
      {"\n\"/*\"\n'//'\n#\n", "\n\n", "# NEWLINE"},
      {"\n\"/*\n#*/\"\n", "\n\n", ""},  // A quote that closes nothing hides no comment.
      {"\n'\\''\"'/*\\\"//'\"/*\n#*/\n#\n", "\n\n", "# NEWLINE"},
      {"\n/* it's */ // it's /*\n#\n", "\n", "# NEWLINE"},  // Nor does one inside of a comment.
      {"\n/* ' */ \"/* */\n#\n", "\n", "# NEWLINE"},
      {"\n\"\n\"/*\"\n'\n'//\n'*/'\n#\n", "\n\n\n\n\n", "# NEWLINE"},
      {"\n\"\\n/*\" \"*/\n#\n", "\n", "# NEWLINE"},  // "\n" is no escape of strings.
      {"\n\"\r#\"\r#\n", "\n", "# NEWLINE"},         // A string may hold a CR.
      {"\n\"\r\n#", "\n", "#"},
      {"\n\"\\\\\r\"\\\r#\n#", "\n", "#"},
      {"\n'\\\r\n#\n#", "\n", "#"},
      {"\n\na\n \t\n#\n", "\n\n\n", "# NEWLINE"},
  };
  for (const SkipRow& row : rows) {
    InputText input;
    input.reset(row.text);
    LexerSetting setting;
    CppLexer lexer(input, setting.context);
    EXPECT_EQ(lexer.next(), TK_NEWLINE);
    Conditionals conditionals(false);
    lexer.skipWholeLines(conditionals);
    EXPECT_EQ(setting.written(), row.output) << visible(row.text);
    EXPECT_EQ(dumpRest(lexer), row.rest) << visible(row.text);
  }
}

// At each place, and of each length, that a comment can have in the blocks.
TEST(SkippingTest, CommentsInSkippedLinesMayLieAnywhere) {
  for (std::size_t place = 0; place < 130; ++place) {
    for (std::size_t size = 0; size < 130; ++size) {
      const std::string before(place, ' ');
      const std::string comment = "/*\"\n" + std::string(size, '*') + "'*/";
      InputText input;
      const std::string text = "\n" + before + comment + "\\\n//'\n'" + comment + "\n" + comment + comment + "#if\n";
      input.reset(text);
      LexerSetting setting;
      CppLexer lexer(input, setting.context);
      EXPECT_EQ(lexer.next(), TK_NEWLINE);
      Conditionals conditionals(false);
      ASSERT_EQ(lexer.skipWholeLines(conditionals), TK_IF) << place << "+" << size;
      EXPECT_EQ(setting.written(), "\n\n\n\n\n\n") << place << "+" << size;
      EXPECT_EQ(setting.effectCount, 4U) << place << "+" << size;
      EXPECT_EQ(lexer.line(), 9) << place << "+" << size;
    }
  }
}

struct StopRow {
  std::string_view text;
  CppTokenKind inTheGroup;
  CppTokenKind withinIt;  // As what the conditionals in the text are taken.
};

// Whether a line has begun tells what is due at the end of the input.
TEST(SkippingTest, WholeLinesTellWhereTheyStop) {
  const StopRow rows[] = {
      {"\n#", TK_END, TK_END},
      {"\na\n#", TK_NEWLINE, TK_NEWLINE},
      {"\na", TK_NEWLINE, TK_NEWLINE},
      {"\na\n/* */ #", TK_SPACE, TK_SPACE},
      {"\n\\\n", TK_SPACE, TK_SPACE},
      {"\n#if a\n", TK_IF, TK_NEWLINE},
      {"\na\n#ifdef a", TK_IFDEF, TK_NEWLINE},
      {"\n#elif", TK_END, TK_END},  // The word may go on.
      {"\n#elif ", TK_ELIF, TK_NEWLINE},
      {"\n/* */ #else ", TK_ELSE, TK_SPACE},
      {"\n#endif #", TK_ENDIF, TK_SPACE},
      {"\n#endif\n#", TK_ENDIF, TK_NEWLINE},
  };
  for (const StopRow& row : rows) {
    for (const bool areNested : {false, true}) {
      InputText input;
      input.reset(row.text);
      LexerSetting setting;
      CppLexer lexer(input, setting.context);
      EXPECT_EQ(lexer.next(), TK_NEWLINE);
      Conditionals conditionals(areNested);
      EXPECT_EQ(lexer.skipWholeLines(conditionals), areNested ? row.withinIt : row.inTheGroup) << visible(row.text);
    }
  }
}

TEST(SkippingTest, WhatStandsBeforeTextAndTheBeginningOfADirectiveArePassed) {
  struct Row {
    std::string_view text;
    CppTokenKind passed;
    const char* output;
    const char* leading;
    const char* rest;
  };
  const Row rows[] = {
      {"\n", TK_END, "", "", ""},
      {"\na", TK_OTHER, "", "", "IDENTIFIER:a"},
      {"\n  a", TK_OTHER, "", "  ", "IDENTIFIER:a"},
      {"\n\n \t\n\r\v\f\r\n a", TK_OTHER, "\n\n\n\n", " ", "IDENTIFIER:a"},
      {"\n \n  # if a", TK_IF, "\n", "  ", "SPACE IDENTIFIER:a"},
      {"\n#endif\n", TK_ENDIF, "", "", "NEWLINE"},
      {"\n\n", TK_NEWLINE, "\n", "", ""},
      {"\n\t\n\t", TK_SPACE, "\n", "\t", ""},
      {"\n\r", TK_END, "", "", "NEWLINE"},  // There might be a "\n" to come.
      {"\n # b", '#', "", " ", "SPACE IDENTIFIER:b"},
      {"\n#iff\n", '#', "", "", "IDENTIFIER:iff NEWLINE"},
      {"\n#\n", TK_NEWLINE, "", "", ""},
      {"\n#\n\n # \t\n#\n  x", TK_OTHER, "\n", "  ", "IDENTIFIER:x"},
      {"\n#\n#if 1", TK_IF, "", "", "SPACE DEC_INT:1"},
      {"\n /* a */ #\n x", TK_OTHER, "", " ", "IDENTIFIER:x"},
      {"\n#\r\n", '#', "", "", "NEWLINE"},
      {"\n# ", '#', "", "", "SPACE"},
      {"\n# /* */ if\n", '#', "", "", "IF NEWLINE"},
      {"\n# /* a\n */ // b\n#if 1", TK_IF, "\n", "", "SPACE DEC_INT:1"},
      {"\n#/**/\n x", TK_OTHER, "", " ", "IDENTIFIER:x"},
      {"\n#//\r\n", '#', "", "", "NEWLINE"},
      {"\n#/* a", '#', "", "", ""},
      {"\n##if\n", TK_END, "", "", "PASTE IF NEWLINE"},
      {"\n#", TK_END, "", "", "#"},
      {"\n// a\n\t//\r\n//b\0c\n"sv, TK_OTHER, "\n\n\n", "", "IDENTIFIER:c NEWLINE"},
      {"\n// a", TK_SPACE, "", " ", ""},
      {"\n /* a */\t/**/b", TK_OTHER, "", "  \t ", "IDENTIFIER:b"},
      {"\n /* a */ // b\n c", TK_OTHER, "\n", " ", "IDENTIFIER:c"},
      {"\n /*\n*/\n/*\r\n\r*/\tb", TK_OTHER, "\n\n\n\n", " \t", "IDENTIFIER:b"},
      {"\n /* a */ # /* */ if", '#', "", "   ", "IF"},
      {"\n /*\n*/#if", '#', "\n", "  ", "IF"},
      {"\n/", TK_END, "", "", "/"},
      {"\n /a", TK_SPACE, "", " ", "/ IDENTIFIER:a"},
      {"\n \\\n a", TK_SPACE, "", " ", "CONTINUATION SPACE IDENTIFIER:a"},
  };
  for (const bool isFirstLine : {false, true}) {
    for (const Row& row : rows) {
      InputText input;
      input.reset(isFirstLine ? row.text.substr(1) : row.text);
      LexerSetting setting;
      CppLexer lexer(input, setting.context);
      if (!isFirstLine) {
        EXPECT_EQ(lexer.next(), TK_NEWLINE);
      }
      std::string leading;
      EXPECT_EQ(lexer.passLineStart(leading), row.passed) << visible(row.text);
      EXPECT_EQ(setting.written(), row.output) << visible(row.text);
      EXPECT_EQ(leading, row.leading) << visible(row.text);
      EXPECT_EQ(dumpRest(lexer), row.rest) << visible(row.text);
    }
  }
}

}  // namespace
}  // namespace qnpp
