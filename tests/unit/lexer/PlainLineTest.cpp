// Lines read right in the buffer, against the same read token by token.
#include "lexer/PlainLine.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "lexer/ByteSet.h"
#include "lexer/CppLexer.h"
#include "macros/CppMacro.h"
#include "macros/FinalText.h"
#include "tests/support/PiecewiseInput.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

// Macros, each text in memory of its own, so that reading behind it is noticed.
struct Macros final : PlainLine::Macros {
  struct Row {
    std::string_view name;
    std::string_view text;
    bool functionLike = false;
  };

  Macros(NameTable& names, std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
      Name& name = *names.intern(row.name);
      // Nothing but the NUL is behind the text.
      char* const text = texts.emplace_back(std::make_unique<char[]>(row.text.size() + 1)).get();
      std::copy(row.text.begin(), row.text.end(), text);
      macros.push_back(
          std::make_unique<CppMacro>(CppMacro{{text, row.text.size()}, ParameterNames(), row.functionLike}));
      name.macro = macros.back().get();
      names.noteMacro(name);
    }
  }

  std::optional<std::string_view> textOf(const Name& macro) override { return findTextInPlace(macro); }
  // Function-like ones with arguments come to their text.
  std::optional<std::string_view> expand(Name& macro, const char*& at) override {
    const std::string_view rest(at);
    const std::size_t end = rest.find(')');
    if (!rest.starts_with("(") || end == std::string_view::npos) {
      return std::nullopt;
    }
    at += end + 1;
    return macro.macro->text;
  }

  std::vector<std::unique_ptr<char[]>> texts;
  std::vector<std::unique_ptr<CppMacro>> macros;
};

struct Read {
  bool isRead = false;
  std::string tokens;  // Kinds and texts.
  std::string rest;    // What the lexer hands out behind that.
};

// What is behind the "x" that the input begins with.
Read readPlain(std::istream& input, LexerSetting& setting, PlainLine::Macros& macros) {
  CppLexer lexer(input, setting.context);
  EXPECT_EQ(lexer.next(), TK_IDENTIFIER);
  Read read;
  read.isRead = lexer.passAhead([&](const BytesAhead& bytes) {
    PlainLine line(bytes.begin(), setting.names, macros);
    for (CppTokenKind kind = line.next(false); kind != TK_END; kind = line.next(false)) {
      read.tokens += dumpToken(kind, line.text()) + " ";
    }
    EXPECT_EQ(line.next(false), TK_END);
    return line.end();
  });
  EXPECT_EQ(lexer.passPlainLineEnd(), read.isRead);
  read.rest = dumpRest(lexer);
  return read;
}

Read readByTokens(std::istream& input) {
  LexerSetting setting;
  CppLexer lexer(input, setting.context);
  static_cast<void>(lexer.next());
  Read read;
  CppTokenKind kind = lexer.next();
  for (; kind != TK_NEWLINE && kind != TK_END; kind = lexer.next()) {
    read.tokens += isBlank(kind) ? "" : dumpToken(kind, lexer.text()) + " ";
  }
  read.isRead = kind == TK_NEWLINE;
  read.rest = dumpRest(lexer);
  return read;
}

// With these macros: what "x `line`" gives, "given up" for one that is not read.
std::string tokensOf(std::string_view line, std::initializer_list<Macros::Row> rows) {
  LexerSetting setting;
  Macros macros(setting.names, rows);
  std::istringstream input("x " + std::string(line) + "\nnext\n");
  const Read read = readPlain(input, setting, macros);
  const Read whole = [&line] {
    std::istringstream again("x " + std::string(line) + "\nnext\n");
    return readByTokens(again);
  }();
  EXPECT_TRUE(read.isRead ? read.rest == whole.rest : read.rest.ends_with(whole.rest)) << line;
  return read.isRead ? read.tokens : "given up";
}

TEST(PlainLineTest, TokensAreThoseOfTheRules) {
  constexpr std::string_view kLines[] = {
      "",
      "defined A && defined(B)",
      "1 0 07 0x1F 1u 1L 1uL 1Lu 0xffu 00",
      "a_1 __ B9",
      "||&&==!=<=>=<<>>",
      "| & ! < > ( ) ? : ^ + - * / % ~",
      "<<<>>>|||&&&!=<= ==",
      "1+2-3/4",
      R"('a' 'ab' '\n' '\'' '\\' '\0' '\x41' '\377' '"' '/*' '//')",
      "/* why */ 1 /**/ + /*/ */ 2 // and so",
      "\t\v\f1 \t2",
      "defined _Pragma_ Xdefined definedX",
  };
  for (const std::string_view line : kLines) {
    std::istringstream input("x " + std::string(line) + "\nnext\n");
    const Read expected = readByTokens(input);
    EXPECT_EQ(tokensOf(line, {}), expected.tokens) << line;
  }
}

TEST(PlainLineTest, WhatIsUnusualIsGivenUp) {
  constexpr std::string_view kLines[] = {"1 \\\n 2", "1\r", "1 \0"sv, "/* a\nb */ 1", "/* open", "\"s\"",   "1 = 2",
                                         "a,b",      "# 1", "x ## y", "08",           "1a",      "0x",      "0xg",
                                         "1ll",      "1.5", "'a",     "''",           R"('\q')", R"('\x')", "'a\rb'",
                                         "\x80",     "{",   "// a\r", "/* a\r */ 1"};
  for (const std::string_view line : kLines) {
    EXPECT_EQ(tokensOf(line, {}), "given up") << visible(line);
  }
}

TEST(PlainLineTest, MacrosAreReadInThePlaceOfTheirNames) {
  const auto is = [](std::string_view line, std::string_view same, std::initializer_list<Macros::Row> rows) {
    EXPECT_EQ(tokensOf(line, rows), tokensOf(same, {})) << line;
  };
  is("A + A", "1 + 1", {{"A", "1"}});
  is("A 2", "2", {{"A", ""}});
  is("A", "(3 + 1)", {{"A", "(B + C)"}, {"B", "3"}, {"C", "1"}});
  is("A B", "A + 1 B * A + 1", {{"A", "A + 1"}, {"B", "B * A"}});  // In B its A is expanded, and in A its own is not.
  is("if", "7", {{"if", "7"}});
  is("A(1)", "B(1)", {{"A", "B"}});
  EXPECT_EQ(tokensOf("A| 1", {{"A", "|"}}), "| | DEC_INT:1 ");
  EXPECT_EQ(tokensOf("A1", {{"A", "1"}}), "IDENTIFIER:A1 ");
}

TEST(PlainLineTest, NamesInWhatAMacroHasComeToStay) {
  const auto is = [](std::string_view line, std::string_view tokens) {
    EXPECT_EQ(tokensOf(line, {{"F", "A + F", true}, {"G", "defined A", true}, {"A", "1"}, {"B", "F(2)"}}), tokens)
        << line;
  };
  is("F(2) A", "IDENTIFIER:A + IDENTIFIER:F DEC_INT:1 ");
  is("F(1)F(2)", "IDENTIFIER:A + IDENTIFIER:F IDENTIFIER:A + IDENTIFIER:F ");
  is("A F", "given up");
  is("G(1)", "given up");
  is("B", "given up");  // The arguments would be in the text of B.
}

TEST(PlainLineTest, MacrosThatAreMoreThanTheirTextAreGivenUp) {
  constexpr std::string_view kTexts[] = {"defined", "defined B", "F",      "\"s\"", "1\n",
                                         "# 1",     "1 /* c */", "1 // c", "1\0"sv};
  for (const std::string_view text : kTexts) {
    EXPECT_EQ(tokensOf("A", {{"A", text}, {"F", "x", true}}), "given up") << visible(text);
  }
}

TEST(PlainLineTest, NestingAndWorkAreLimited) {
  for (const int levels : {3, 15, 16, 17, 40}) {
    LexerSetting setting;
    std::vector<std::unique_ptr<Macros>> macros;
    for (int level = 0; level < levels; ++level) {
      const std::string name = "M" + std::to_string(level);
      const std::string next = level + 1 == levels ? "5" : "M" + std::to_string(level + 1);
      macros.push_back(std::make_unique<Macros>(setting.names, std::initializer_list<Macros::Row>{{name, next}}));
    }
    std::istringstream input("x M0\n");
    EXPECT_EQ(readPlain(input, setting, *macros.front()).isRead, levels <= 16) << levels;
  }
  EXPECT_EQ(tokensOf("A", {{"A", "B B B B B B B B B B B B B B B B"},
                           {"B", "C C C C C C C C C C C C C C C C"},
                           {"C", "D D D D D D D D D D D D D D D D"},
                           {"D", "1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"}}),
            "given up");
}

TEST(PlainLineTest, AProtectedNameIsAskedForOnly) {
  LexerSetting setting;
  Macros macros(setting.names, {{"A", "1"}, {"if", "1"}, {"F", "x", true}});
  std::istringstream input("x A B if else F A\n");
  CppLexer lexer(input, setting.context);
  static_cast<void>(lexer.next());
  const bool isRead = lexer.passAhead([&](const BytesAhead& bytes) {
    PlainLine line(bytes.begin(), setting.names, macros);
    const auto expect = [&line](CppTokenKind kind, bool isMacro) {
      EXPECT_EQ(line.next(true), kind);
      EXPECT_EQ(line.isMacro(), isMacro);
    };
    expect(TK_IDENTIFIER, true);
    expect(TK_IDENTIFIER, false);
    expect(TK_IF, true);
    expect(TK_ELSE, false);
    expect(TK_IDENTIFIER, true);
    EXPECT_EQ(line.next(false), TK_DEC_INT);
    EXPECT_EQ(line.expansionWork(), 2U);
    EXPECT_EQ(line.next(false), TK_END);
    return line.end();
  });
  EXPECT_TRUE(isRead);
  EXPECT_EQ(dumpRest(lexer), "NEWLINE");
}

// Any line, in pieces of any size: it is read as the rules read it, or nothing of it is taken.
TEST(PlainLineTest, LinesInPiecesAreReadWholeOrNotAtAll) {
  constexpr std::string_view kParts[] = {"1",       "A",      "defined", "(",    ")",    "0x1F", "||", "|",  "/",
                                         "/* c */", "'a'",    " ",       " ",    "\t",   "//",   "\\", "\n", "\\\n",
                                         "\r",      "\r\n",   "\"",      "'",    "\0"sv, "=",    "==", "<",  "08",
                                         "name",    "/*\n*/", "#",       "\x80", "1u",   "?:"};
  std::mt19937 random(20240301);
  int readCount = 0;
  for (int round = 0; round < 8000; ++round) {
    std::string text = "x";
    for (std::size_t part = random() % 12; part > 0; --part) {
      text += random() % 3 == 0 ? " " : "";
      text += kParts[random() % (random() % 2 == 0 ? 12 : std::size(kParts))];
    }
    text += random() % 4 == 0 ? "" : "\nnext";
    if (isWordByte((text + " ")[1])) {
      continue;
    }
    PiecewiseInput input(text, random() % 2 == 0 ? text.size() + 1 : 1 + random() % 9);
    PiecewiseInput again(text, text.size() + 1);
    LexerSetting setting;
    Macros macros(setting.names, {});
    const Read read = readPlain(input, setting, macros);
    const Read expected = readByTokens(again);
    if (read.isRead) {
      ++readCount;
      EXPECT_TRUE(expected.isRead) << visible(text);
      EXPECT_EQ(read.tokens, expected.tokens) << visible(text);
      EXPECT_EQ(read.rest, expected.rest) << visible(text);
    } else {
      const std::string behind = text.substr(1);
      PiecewiseInput whole(behind, 1);
      EXPECT_EQ(read.rest, lexFully(whole).tokens) << visible(text);
    }
  }
  EXPECT_GT(readCount, 200);
}

}  // namespace
}  // namespace qnpp
