// The token source over stored tokens.
#include "lexer/CppTokenScanner.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "lexer/NormalizedTokens.h"
#include "macros/CppMacro.h"
#include "tests/unit/support/Spellings.h"

namespace qnpp {
namespace {

struct CppTokenScannerTest : testing::Test {
  // What is left of the source, each token with its hide set.
  std::string dumpRest() {
    std::string tokens;
    for (CppTokenKind kind = scanner.get(); kind != TK_END; kind = scanner.get()) {
      tokens += (tokens.empty() ? "" : " ") + dumpToken(kind, scanner.text());
      tokens += scanner.hideSet().empty() ? "" : "{" + setting.lettersOf(scanner.hideSet()) + "}";
    }
    return tokens;
  }

  void read(std::initializer_list<std::string_view> texts, const HideSet& hideSet = {}) {
    TokenList list = setting.listOf(texts, hideSet);
    scanner.reset();
    scanner.read(list);
  }

  // Elements "a", "+b", "" and "c", each with a set of its own.
  TokenList fourElements() {
    TokenList list;
    list.append(setting.spell("a"), setting.hideSetOf("A"));
    list.append(setting.spell("+b"), setting.hideSetOf("B"));
    list.append(setting.spell(""), setting.hideSetOf("C"));
    list.append(setting.spell("c"), setting.hideSetOf("AD"));
    return list;
  }

  SpellingSetting setting;
  HideSetCache hideSets;
  CppTokenScanner scanner{setting.pool, setting.context, hideSets};
};

struct ListRow {
  std::vector<std::string_view> elements;
  const char* tokens;
};

// Texts of stored tokens are lexed one by one: what would merge in one text stays apart, what was joined falls apart.
TEST_F(CppTokenScannerTest, LexesEachElementOnItsOwn) {
  const ListRow rows[] = {
      {{"a", "+b"}, "IDENTIFIER:a + IDENTIFIER:b"},
      {{"a", "b"}, "IDENTIFIER:a IDENTIFIER:b"},
      {{"+", "+"}, "+ +"},
      {{"<", "<="}, "< LE"},
      {{"#", "#"}, "# #"},
      {{"##"}, "PASTE"},
      {{"0", "x1"}, "OCT_INT:0 IDENTIFIER:x1"},
      {{"0x1"}, "HEX_INT:0x1"},
      {{"\"", "a\""}, "OTHER:\" IDENTIFIER:a OTHER:\""},
      {{"\"a\""}, "STRING:\"a\""},
      {{"/", "*", "/"}, "/ * /"},
      {{"if", "def"}, "IF IDENTIFIER:def"},
      {{"ifdef", "defined", "_Pragma"}, "IFDEF DEFINED PRAGMA_OP"},
      {{"+-"}, "+ -"},
      {{"1.5e"}, "DEC_INT:1 OTHER:. DEC_INT:5 IDENTIFIER:e"},
      {{"a b"}, "IDENTIFIER:a SPACE IDENTIFIER:b"},
      {{" ", "\t", "\n", "\\\n"}, "SPACE SPACE:<TAB> NEWLINE CONTINUATION"},
      {{"a\r\nb"}, "IDENTIFIER:a NEWLINE IDENTIFIER:b"},
      {{"", "a", "", "", "b", ""}, "IDENTIFIER:a IDENTIFIER:b"},
      {{""}, ""},
  };
  for (const ListRow& row : rows) {
    TokenList list;
    for (const std::string_view element : row.elements) {
      list.append(setting.spell(element), HideSet());
    }
    TokenList again = list;
    scanner.read(list);
    EXPECT_EQ(dumpRest(), row.tokens);
    EXPECT_EQ(scanner.get(), TK_END);
    EXPECT_EQ(scanner.peek(), TK_END);
    scanner.reset();

    // The same with a look at each token before it is taken.
    scanner.read(again);
    std::string tokens;
    for (CppTokenKind kind = scanner.peek(); kind != TK_END; kind = scanner.peek()) {
      EXPECT_EQ(scanner.peek(), kind);
      EXPECT_EQ(scanner.get(), kind);
      tokens += (tokens.empty() ? "" : " ") + dumpToken(kind, scanner.text());
    }
    EXPECT_EQ(tokens, row.tokens);
    scanner.reset();
  }
  EXPECT_EQ(setting.diagnostics.str(), "");
}

TEST_F(CppTokenScannerTest, CommentsAreReadEachTime) {
  struct CommentRow {
    std::string_view element;
    const char* tokens;
    const char* output;
    const char* message;
  };
  const CommentRow rows[] = {
      {"/* c */", "SPACE IDENTIFIER:x", "", ""},
      {"a/**/b", "IDENTIFIER:a SPACE IDENTIFIER:b IDENTIFIER:x", "", ""},
      {"/*\n\n*/+", "SPACE + IDENTIFIER:x", "\n\n", ""},
      {"// c", "SPACE IDENTIFIER:x", "", ""},
      {"/*", "SPACE IDENTIFIER:x", "", "1: unterminated comment.\n"},
      {"\"/*\"'//'", "STRING:\"/*\" CHAR:'//' IDENTIFIER:x", "", ""},
  };
  for (const CommentRow& row : rows) {
    std::string output;
    std::string messages;
    for (int time = 1; time <= 2; ++time) {
      read({row.element, "x"});
      EXPECT_EQ(dumpRest(), row.tokens);
      output += row.output;
      messages += row.message;
      EXPECT_EQ(setting.written(), output) << row.element;
      EXPECT_EQ(setting.diagnostics.str(), messages) << row.element;
    }
    setting.sink.clear();
    setting.diagnostics.clear();
  }
}

TEST_F(CppTokenScannerTest, EachTokenHasTheHideSetOfItsElement) {
  TokenList list = fourElements();
  scanner.read(list);
  EXPECT_EQ(setting.lettersOf(scanner.hideSet()), "A");
  EXPECT_EQ(dumpRest(), "IDENTIFIER:a{A} +{B} IDENTIFIER:b{B} IDENTIFIER:c{AD}");
  EXPECT_EQ(setting.lettersOf(scanner.hideSet()), "AD");
}

TEST_F(CppTokenScannerTest, AtTheEndTheHideSetIsThatOfTheLastElement) {
  TokenList list;
  list.append(setting.spell("a"), setting.hideSetOf("A"));
  list.append(setting.spell(""), setting.hideSetOf("B"));
  scanner.read(list);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(setting.lettersOf(scanner.hideSet()), "A");
  EXPECT_EQ(scanner.get(), TK_END);
  EXPECT_EQ(setting.lettersOf(scanner.hideSet()), "B");
  EXPECT_EQ(scanner.get(), TK_END);
  EXPECT_EQ(setting.lettersOf(scanner.hideSet()), "B");
}

TEST_F(CppTokenScannerTest, ReadsABorrowedRangeWithOneHideSet) {
  const TokenList list = fourElements();
  scanner.read({list.spellings(), setting.hideSetOf("XY")}, nullptr);
  EXPECT_EQ(dumpRest(), "IDENTIFIER:a{XY} +{XY} IDENTIFIER:b{XY} IDENTIFIER:c{XY}");
  EXPECT_EQ(list.size(), 4U);
  scanner.reset();
  scanner.read(TokenRange{list.spellings().first(0)}, nullptr);
  EXPECT_EQ(scanner.get(), TK_END);
}

TEST_F(CppTokenScannerTest, KeepsWhatItsTokensAreAPartOf) {
  const TokenList list = fourElements();
  NormalizedTokens surroundings;
  EXPECT_EQ(scanner.surroundings(), nullptr);
  scanner.read(list.all(), &surroundings);
  EXPECT_EQ(scanner.surroundings(), &surroundings);
  scanner.reset();
  EXPECT_EQ(scanner.surroundings(), nullptr);
}

TEST_F(CppTokenScannerTest, TakesTheListItReads) {
  TokenList list = fourElements();
  scanner.read(list);
  EXPECT_TRUE(list.empty());
  EXPECT_TRUE(list.runs().empty());
}

TEST_F(CppTokenScannerTest, CanBeUsedAgain) {
  read({"a+b", "/*c*/ d", "e"});
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);  // In the middle of an element ...
  read({"x"});
  EXPECT_EQ(dumpRest(), "IDENTIFIER:x");
  read({"/*c*/ d"});
  EXPECT_EQ(scanner.get(), TK_SPACE);  // ... of one with a comment ...
  read({"y"}, setting.hideSetOf("Y"));
  EXPECT_EQ(dumpRest(), "IDENTIFIER:y{Y}");
  read({"a", "b"});
  EXPECT_EQ(scanner.peek(), TK_IDENTIFIER);  // ... and with a token that has been looked at.
  read({"z"});
  EXPECT_EQ(dumpRest(), "IDENTIFIER:z");
}

TEST_F(CppTokenScannerTest, IsNoFile) {
  EXPECT_FALSE(scanner.isFile());
  EXPECT_TRUE(scanner.isTokenList());
}

TEST_F(CppTokenScannerTest, SpellingsKnowTheirNames) {
  Name& known = setting.name("known");
  read({"known", "unknown", "x+known"});
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.spelling()->name, &known);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.spelling()->name, nullptr);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.get(), '+');
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.spelling()->name, &known);
}

TEST_F(CppTokenScannerTest, IsExhaustedWhenNothingIsLeft) {
  read({"a", "b+c"});
  EXPECT_FALSE(scanner.isExhausted());
  scanner.get();
  EXPECT_FALSE(scanner.isExhausted());
  scanner.get();  // "b"
  EXPECT_FALSE(scanner.isExhausted());
  scanner.get();
  EXPECT_FALSE(scanner.isExhausted());
  scanner.peek();
  EXPECT_FALSE(scanner.isExhausted());
  scanner.get();
  EXPECT_TRUE(scanner.isExhausted());
  read({"/**/"});
  scanner.get();
  EXPECT_FALSE(scanner.isExhausted());  // What is behind the comment has not been lexed.
  EXPECT_EQ(scanner.get(), TK_END);
  EXPECT_TRUE(scanner.isExhausted());
}

struct ListCopyRow {
  std::vector<std::string_view> elements;
  const char* output;  // What is handed out stands in brackets, tokens that are written as they stand left out.
};

TEST_F(CppTokenScannerTest, CopyingHandsOutWhatTheEngineHasToSee) {
  CppMacro macro;
  setting.name("MACRO").macro = &macro;
  setting.name("known");
  const ListCopyRow rows[] = {
      {{"a", " ", "known", "+", "\"MACRO\"", "1"}, "a known+\"MACRO\"1"},
      {{"a", "MACRO", "b"}, "a[MACRO]b"},
      {{"a", "\n", "b"}, "a[\n]b"},
      {{"_Pragma", "(", ")"}, "[_Pragma]()"},
      {{"if", "defined"}, "ifdefined"},
      {{"a+b", "c"}, "a+bc"},
      {{"a+MACRO", "c"}, "a+[MACRO]c"},
      {{"a\nb", "c"}, "a[\n]bc"},
      {{"a /* MACRO */ b"}, "a   b"},
      {{"", "a", ""}, "a"},
  };
  for (const ListCopyRow& row : rows) {
    for (const bool lookAhead : {false, true}) {
      TokenList list;
      for (const std::string_view element : row.elements) {
        list.append(setting.spell(element), HideSet());
      }
      scanner.reset();
      scanner.read(list);
      setting.written();
      setting.sink.clear();
      for (;;) {
        if (lookAhead) {
          scanner.peek();
        }
        const CppTokenKind kind = scanner.copyText();
        if (kind == TK_END) {
          break;
        }
        const Name* const name = scanner.spelling()->name;
        const bool isSpecial =
            kind == TK_NEWLINE || kind == TK_PRAGMA_OP || (name != nullptr && name->macro != nullptr);
        setting.output.write(isSpecial ? "[" + std::string(scanner.text()) + "]" : std::string(scanner.text()));
      }
      EXPECT_EQ(setting.written(), row.output);
    }
  }
}

TEST_F(CppTokenScannerTest, TakesSettledTokensWithTheirHideSets) {
  CppMacro macro;
  setting.name("MACRO").macro = &macro;
  TokenList list;
  list.append(setting.spell("a"), setting.hideSetOf("A"));
  list.append(setting.spell(" "), setting.hideSetOf("B"));
  list.append(setting.spell("\n"), setting.hideSetOf("B"));
  list.append(setting.spell("MACRO"), setting.hideSetOf("C"));
  list.append(setting.spell("b"), setting.hideSetOf("D"));
  list.append(setting.spell("c+d"), setting.hideSetOf("D"));
  list.append(setting.spell("e"), setting.hideSetOf("D"));
  list.append(setting.spell("defined"), setting.hideSetOf("D"));
  list.append(setting.spell("if"), setting.hideSetOf("E"));
  scanner.read(list);

  TokenList taken;
  scanner.takeSettled(taken);
  EXPECT_EQ(setting.dumpList(taken), "a{A}  {B} <LF>{B}");
  scanner.takeSettled(taken);
  EXPECT_EQ(taken.size(), 3U);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.text(), "MACRO");
  EXPECT_EQ(setting.lettersOf(scanner.hideSet()), "C");

  taken.clear();
  scanner.takeSettled(taken);
  EXPECT_EQ(setting.dumpList(taken), "b{D}");
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.text(), "c");
  EXPECT_EQ(setting.lettersOf(scanner.hideSet()), "D");
  scanner.takeSettled(taken);  // Inside of an element nothing is taken.
  EXPECT_EQ(setting.dumpList(taken), "b{D}");
  EXPECT_EQ(scanner.get(), '+');
  EXPECT_EQ(scanner.peek(), TK_IDENTIFIER);
  scanner.takeSettled(taken);  // Nor behind a look-ahead.
  EXPECT_EQ(setting.dumpList(taken), "b{D}");
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);

  taken.clear();
  scanner.takeSettled(taken);
  EXPECT_EQ(setting.dumpList(taken), "e{D}");
  EXPECT_EQ(scanner.get(), TK_DEFINED);
  scanner.takeSettled(taken);
  EXPECT_EQ(setting.dumpList(taken), "e{D} if{E}");
  EXPECT_EQ(scanner.get(), TK_END);
}

TEST_F(CppTokenScannerTest, TakesSettledTokensOfABorrowedRange) {
  const TokenList list = setting.listOf({"a", "b"});
  scanner.read({list.spellings(), setting.hideSetOf("X")}, nullptr);
  TokenList taken;
  scanner.takeSettled(taken);
  EXPECT_EQ(setting.dumpList(taken), "a{X} b{X}");
  EXPECT_TRUE(scanner.isExhausted());
}

TEST_F(CppTokenScannerTest, TheRestBeginsAtTheNextElement) {
  read({"a", "b", "c+d", "e"});
  EXPECT_EQ(scanner.rest().size(), 4U);
  EXPECT_EQ(scanner.peek(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.rest().size(), 4U);  // A token that has been looked at is the first of them.
  EXPECT_EQ(scanner.rest()[0]->text(), "a");
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.rest().size(), 3U);
  EXPECT_EQ(scanner.rest()[0]->text(), "b");
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);  // "c", inside of an element.
  EXPECT_EQ(scanner.rest().size(), 0U);
  EXPECT_EQ(scanner.get(), '+');
  EXPECT_EQ(scanner.peek(), TK_IDENTIFIER);  // "d": no element by itself.
  EXPECT_EQ(scanner.rest().size(), 0U);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.rest().size(), 1U);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_EQ(scanner.rest().size(), 0U);
}

TEST_F(CppTokenScannerTest, TakingElementsMakesTheLastOneCurrent) {
  for (const bool lookAhead : {false, true}) {
    TokenList list;
    list.append(setting.spell("a"), setting.hideSetOf("A"));
    list.append(setting.spell(","), setting.hideSetOf("B"));
    list.append(setting.spell("c"), setting.hideSetOf("C"));
    scanner.reset();
    scanner.read(list);
    if (lookAhead) {
      scanner.peek();
    }
    const TokenRange taken = scanner.take(0, 1, 2);
    EXPECT_EQ(setting.dumpRange(taken), "a{AB}");  // What is taken last adds its set.
    EXPECT_EQ(scanner.text(), ",");
    EXPECT_EQ(scanner.spelling(), characterSpelling(','));
    EXPECT_EQ(setting.lettersOf(scanner.hideSet()), "B");
    EXPECT_EQ(dumpRest(), "IDENTIFIER:c{C}");
  }
}

// ---- A set for each token ----

TEST_F(CppTokenScannerTest, ABorrowedPartHasItsOwnSetsAndThatOfTheRange) {
  const TokenList list = fourElements();
  TokenRange part = list.all().part(1, 3);
  part.hideSet = setting.hideSetOf("X");
  scanner.read(part, nullptr);
  EXPECT_EQ(setting.lettersOf(scanner.hideSet()), "BX");  // Before the first token, that of the first element.
  EXPECT_TRUE(scanner.isHidden(setting.name("B")));
  EXPECT_EQ(dumpRest(), "+{BX} IDENTIFIER:b{BX} IDENTIFIER:c{ADX}");
  EXPECT_TRUE(scanner.isHidden(setting.name("X")));
  EXPECT_TRUE(scanner.isHidden(setting.name("D")));
  EXPECT_FALSE(scanner.isHidden(setting.name("B")));
}

TEST_F(CppTokenScannerTest, CurrentTokensAreAppendedWithTheirSets) {
  TokenList list = fourElements();
  TokenRange range = list.all();
  range.hideSet = setting.hideSetOf("X");
  scanner.read(range, nullptr);
  TokenList copied;
  while (scanner.get() != TK_END) {
    scanner.appendCurrent(copied);
  }
  EXPECT_EQ(setting.dumpList(copied), "a{AX} +{BX} b{BX} c{ADX}");
  scanner.reset();
  scanner.read({range.tokens, setting.hideSetOf("Y")}, nullptr);
  TokenList plain;
  while (scanner.get() != TK_END) {
    scanner.appendCurrent(plain, true);
  }
  EXPECT_EQ(setting.dumpList(plain), "a{Y} +{Y} b{Y} c{Y}");
}

TEST_F(CppTokenScannerTest, SetsOfNestedRunsAreFound) {
  TokenList elements;
  for (const char letter : std::string("ABCDEF")) {
    const TokenList one = setting.listOf({"x", "y"}, setting.hideSetOf({&letter, 1}));
    elements.appendSettled(one.all(), setting.names.generation(), hideSets);
  }
  TokenList nested;
  nested.append(elements.all(), setting.hideSetOf("X"), hideSets);
  ASSERT_EQ(nested.runs().size(), 1U);
  scanner.read(nested.all().part(3, 4), nullptr);
  EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
  EXPECT_TRUE(scanner.isHidden(setting.name("B")));
  EXPECT_FALSE(scanner.isHidden(setting.name("C")));
  EXPECT_EQ(dumpRest(), "IDENTIFIER:x{CX} IDENTIFIER:y{CX} IDENTIFIER:x{DX}");
}

// A name with a definition that is hidden is settled: it is passed over with those around it, which a plain list would
// stop at. Any change of a definition ends that.
TEST_F(CppTokenScannerTest, MarksOfAnOlderGenerationAreNotTrusted) {
  CppMacro macro;
  setting.name("MACRO").macro = &macro;
  const HideSet hidden = HideSet().with(setting.name("MACRO")).joined(setting.hideSetOf("H"));
  TokenList list = setting.listOf({"a"});
  list.appendSettled(setting.listOf({"MACRO", "b"}, hidden).all(), setting.names.generation(), hideSets);
  list.append(setting.spell("c"), HideSet());
  list.append(setting.spell("MACRO"), setting.hideSetOf("M"));
  for (const bool isSameGeneration : {true, false}) {
    scanner.reset();
    scanner.read(list.all(), nullptr);
    TokenList taken;
    scanner.takeSettled(taken);
    EXPECT_EQ(setting.dumpList(taken), isSameGeneration ? "a MACRO{H} b{H} c" : "a");
    EXPECT_EQ(scanner.get(), TK_IDENTIFIER);
    EXPECT_EQ(scanner.text(), "MACRO");
    EXPECT_EQ(setting.lettersOf(scanner.hideSet()), isSameGeneration ? "M" : "H");
    setting.names.beginGeneration();
  }
}

TEST_F(CppTokenScannerTest, OneOldMarkMakesAllOfAListOld) {
  CppMacro macro;
  setting.name("MACRO").macro = &macro;
  const HideSet hidden = HideSet().with(setting.name("MACRO"));
  TokenList list;
  list.appendSettled(setting.listOf({"MACRO"}, hidden).all(), setting.names.generation(), hideSets);
  setting.names.beginGeneration();
  list.appendSettled(setting.listOf({"MACRO"}, hidden).all(), setting.names.generation(), hideSets);
  scanner.read(list.all(), nullptr);
  TokenList taken;
  scanner.takeSettled(taken);
  EXPECT_TRUE(taken.empty());
}

}  // namespace
}  // namespace qnpp
