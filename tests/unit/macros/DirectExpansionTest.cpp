// Invocations that are replaced without tokens, and those that are not: what is given up here has to be given up, since
// the result would be another one, or would not be all.
#include "macros/DirectExpansion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "lexer/Budget.h"
#include "lexer/CppFileScanner.h"
#include "tests/support/PiecewiseInput.h"
#include "tests/support/Text.h"
#include "tests/unit/support/Definitions.h"

namespace qnpp {
namespace {

struct DirectSetting : DefinitionSetting {
  using DefinitionSetting::DefinitionSetting;

  // What the name at the beginning of `text` and its arguments come to, "|" and the rest of the text; or "no".
  std::string expand(std::string_view text) {
    return expandBehindName(text, [this](Name& name, const char* at) {
      BytesAhead bytes(at);
      return direct.expand(name, bytes);
    });
  }
  std::string expandInCondition(std::string_view text) {
    return expandBehindName(text, [this](Name& name, const char* at) { return direct.expandInCondition(name, at); });
  }

  Budget budget;
  PredefinedMacros predefined{table, streams.names};
  DirectExpansion direct{table, streams.names, predefined, streams.stream, budget};

 private:
  template <typename Expand>
  std::string expandBehindName(std::string_view text, Expand expand) {
    const TokenStream::Hold hold(streams.stream);
    const std::string line = std::string(text) + std::string(8, '\0');
    const std::size_t end = std::min(text.find_first_of(" (\n"), text.size());
    Name* const name = streams.names.find(text.substr(0, end));
    const char* const behind = expand(*name, line.data() + end);
    return behind == nullptr ? "no" : std::string(direct.text()) + "|" + behind;
  }
};

struct DirectRow {
  std::vector<std::string> definitions;
  const char* text;
  const char* expanded;
};

void expectDirect(const std::vector<DirectRow>& rows) {
  for (const DirectRow& row : rows) {
    DirectSetting setting(row.definitions);
    EXPECT_EQ(setting.expand(row.text), row.expanded) << row.text;
    EXPECT_EQ(setting.messages.identifiers, "") << row.text;
    for (const char* const name : {"F", "G", "A"}) {
      const Name* const known = setting.streams.names.find(name);
      EXPECT_FALSE(known != nullptr && known->isBeingReplaced) << name << " in " << row.text;
    }
  }
}

TEST(DirectExpansionTest, ArgumentsStandForParameters) {
  expectDirect({
      {{"F(x) x"}, "F(a)b", "a|b"},
      {{"F(x) x"}, "F (a)", "a|"},
      {{"F(x) [x]"}, "F( a\t+  b ) c", "[a + b]| c"},
      {{"F() f"}, "F()", "f|"},
      {{"F() f"}, "F( )", "f|"},
      {{"F()"}, "F()", "|"},
      {{"F(x,y) y x"}, "F(a,b)", "b a|"},
      {{"F(x,y) y x"}, "F((a,b),c)", "c (a,b)|"},
      {{"F(x,y) <y x>"}, "F(,b)", "<b >|"},
      {{"F(x) <x>"}, "F(a,)", "<a>|"},
      {{"F(x,x) x"}, "F(a,b)", "b|"},
      {{"F(x) x x"}, "F(\" ) \"',')", "\" ) \"',' \" ) \"','|"},
      {{"F(x) x"}, "F(1.5e3 0x1g)", "1.5e3 0x1g|"},
      {{"F(x) a//x"}, "F(b)", "a|"},
  });
}

TEST(DirectExpansionTest, ArgumentsAreExpandedFirst) {
  expectDirect({
      {{"F(x) (x)", "A 1"}, "F(A + A)", "(1 + 1)|"},
      {{"F(x) (x)"}, "F(F(F(1)) )", "(((1)))|"},
      {{"F(x) (x)", "G(x,y) x-y"}, "F(a G (1, F( 2)) b)", "(a 1-(2) b)|"},
      {{"F(x) x x", "A B", "B 2"}, "F(A)", "2 2|"},
      {{"F(x) <x>", "A a,b"}, "F(A)", "<a,b>|"},
  });
}

TEST(DirectExpansionTest, TheTextOfAnArgumentIsNotExpanded) {
  expectDirect({
      {{"F(x) #x", "A 1"}, "F( A  +\tA )", "\"A + A\"|"},
      {{"F(x) #x x", "A 1"}, "F(A)", "\"A\" 1|"},
      {{"F(x) #x x", "A 1"}, "F(\"a  b\" ' ' A)", "\"\\\"a  b\\\" ' ' A\" \"a  b\" ' ' 1|"},
      {{"F(x) #x"}, "F(,)", "\"\"|"},
      {{"F(x,y) x##y##_t y", "A 1"}, "F(a,A)", "aA_t 1|"},
      {{"F(x) #x"}, "F(F)", "\"F\"|"},
      {{"F(x) G(\"\\\\\")", "G(x) #x"}, "F(1)", "\"\\\"\\\\\\\\\\\"\"|"},
      {{"F(x) #x"}, "F(F(F))", "\"F(F)\"|"},
      {{"F(x) G(x, A)", "G(x,y) #x y##1 x", "A 2"}, "F(A + 1)", "\"2 + 1\" A1 2 + 1|"},
      {{"F(x) G(A(x) )", "G(x) #x x", "A(x) [x]"}, "F(1)", "\"A(1)\" [1]|"},
  });
}

TEST(DirectExpansionTest, InvocationsInReplacementListsAreReplaced) {
  expectDirect({
      {{"F(x) G(x,A)+1", "G(x,y) x*y", "A 2"}, "F(7)", "7*2+1|"},
      {{"F(x) G ( x , (A, 3) )", "G(x,y) y:x", "A 2"}, "F(7)", "(2, 3):7|"},
      {{"F(x) A A", "A G(1)G(2)", "G(x) <x>"}, "F(0)", "<1><2> <1><2>|"},
      {{"F(x) f(x, y) G(x)", "G(x) g x"}, "F(1)", "f(1, y) g 1|"},
      {{"F(x) G(f(x, y))", "G(x) g x"}, "F(1)", "g f(1, y)|"},
      {{"F(x) A(x)", "A a"}, "F(1)", "a(1)|"},
  });
}

TEST(DirectExpansionTest, AnArgumentMayBeTheNameOfAMacro) {
  expectDirect({
      {{"F(X) X(a, 1) X (b, 2)", "G(x,y) x=y;"}, "F(G)", "a=1; b=2;|"},
      {{"F(X) A(X) A(X)", "A(X) X(1)", "G(x) <x>"}, "F( G )", "<1> <1>|"},
      {{"F(X) X(X)", "G(x) #x"}, "F(G)", "\"G\"|"},
      {{"F(X) X##1 #X", "G(x) x"}, "F(G)", "G1 \"G\"|"},
      {{"F(X) X", "G(x) x"}, "F(G)", "no"},
      {{"F(X) X 1", "G(x) x"}, "F(G)", "no"},
      {{"F(X) X(1)", "G(x) x"}, "F(G 2)", "no"},
      {{"F(X) X(1)", "G(x) x"}, "F(2 G)", "no"},
      {{"F(X) A(X 1)", "A(X) X(1)", "G(x) <x>"}, "F(G)", "no"},
      {{"F(X) A(1 X)", "A(X) X(1)", "G(x) <x>"}, "F(G)", "no"},
  });
}

TEST(DirectExpansionTest, NamesThatMayStayAreGivenUp) {
  expectDirect({
      {{"F(x) x G", "G(x) x"}, "F(1)", "no"},
      {{"F(x) G x", "G(x) x"}, "F((1))", "no"},
      {{"F(x) G(x", "G(x) x"}, "F(1)", "no"},
      {{"F(x) x##G", "aG(x) x"}, "F(a)", "no"},
      {{"F(x,y) x##y", "b 1"}, "F(1,b)", "no"},
      {{"A F", "F(x) x"}, "A(1)", "no"},
  });
}

TEST(DirectExpansionTest, NamesStayInTheirOwnExpansion) {
  expectDirect({
      {{"F(x) F"}, "F(1)", "F|"},
      {{"F(x) F(x)"}, "F(1)", "F(1)|"},
      {{"F(x) F(x)"}, "F(F(1))", "F(F(1))|"},
      {{"F(x) x(1)"}, "F(F)", "F(1)|"},
      {{"F(x) x A", "A A+1"}, "F(1)", "1 A+1|"},
      {{"F(x) x", "A A+1"}, "F(A)", "A+1|"},
      {{"F(x) G(x)", "G(x) F(x)"}, "F(1)", "F(1)|"},
      {{"F(x) G(F)", "G(x) x(1) #x"}, "F(1)", "F(1) \"F\"|"},
      {{"F(x) G(F)+G(x)", "G(x) <x>"}, "F(F(2))", "<F>+<<F>+<2>>|"},
  });
}

TEST(DirectExpansionTest, WhatIsJoinedIsExpandedUnlessItIsHidden) {
  expectDirect({
      {{"F(x) x##G", "aG 1"}, "F(a)", "1|"},
      {{"F(x) x##1", "G(x) x"}, "F(G)", "G1|"},
      {{"F(x,y) x##y", "ab 1"}, "F(a,b)", "1|"},
      {{"F(x,y) x##y(1)", "ab(x) [x]"}, "F(a,b)", "[1]|"},
      {{"F(x,y) x##y"}, "F(,F)", "F|"},
      {{"F(x,y) G(x##y)", "G(x) #x", "ab 1"}, "F(a,b)", "\"ab\"|"},
      {{"F(x,y) G(x##y)", "G(x) x", "ab 1"}, "F(a,b)", "1|"},
      {{"F(x,y) <x##y>"}, "F(a b,c d)", "<a bc d>|"},
      {{"F(x,y) x##y"}, "F(+,=)", "+=|"},
      {{"F(x,y) x##y", "b 1"}, "F(a b,c)", "a bc|"},
      {{"F(x,y) x##y", "b 1"}, "F(a,c b)", "no"},
      {{"F(x,y) x##y"}, "F(/,/)", "no"},
      {{"F(x,y) x##y"}, "F((a),b)", "no"},
      {{"F(x,y) x##y"}, "F(\"a\",b)", "no"},
      {{"F(x,y) x##y"}, "F(_Pra,gma)", "no"},
  });
}

TEST(DirectExpansionTest, ObjectLikeMacrosAreReplacedWhereTheyStand) {
  expectDirect({
      {{"A F(1)+", "F(x) [x]"}, "A(2)", "[1]+|(2)"},
      {{"A A B", "B A"}, "A", "A A|"},
      {{"A B", "B"}, "A\n", "|\n"},
  });
}

TEST(DirectExpansionTest, TheEndOfAListMayBeReplaced) {
  DirectSetting setting({"A 1+B 2 B", "B b"});
  const TokenStream::Hold hold(setting.streams.stream);
  BytesAhead bytes("");
  EXPECT_NE(setting.direct.expand(*setting.streams.names.find("A"), bytes, 2), nullptr);
  EXPECT_EQ(setting.direct.text(), "b 2 b");
}

TEST(DirectExpansionTest, WhatIsReportedIsGivenUp) {
  expectDirect({
      {{"F(x) x"}, "F()", "no"},
      {{"F(x) x"}, "F(,,)", "no"},
      {{"F(x) x"}, "F(a,b)", "no"},
      {{"F(x,y) x"}, "F(a)", "no"},
      {{"F(x,y) x"}, "F(a,)", "no"},
      {{"F() x"}, "F(a)", "no"},
      {{"F(x) G(x)", "G(x) x"}, "F(,)", "no"},
      {{"F(x) #y"}, "F(a)", "no"},
      {{"F(x) ##x"}, "F(a)", "no"},
      {{"F(x) x##"}, "F(a)", "no"},
      {{"F(x) x"}, "F(a", "no"},
      {{"F(x) x"}, "F", "no"},
      {{"F(x) x"}, "F a", "no"},
  });
}

TEST(DirectExpansionTest, OtherBytesAreGivenUp) {
  expectDirect({
      {{"F(x) x"}, "F(a\r)", "no"},
      {{"F(x) x"}, "F(a\\b)", "no"},
      {{"F(x) x"}, "F(a/b)", "a/b|"},
      {{"F(x) x"}, "F(a/*\n*/)", "no"},
      {{"F(x) x"}, "F(a/*\r*/)", "no"},
      {{"F(x) x"}, "F(a/*)", "no"},
      {{"F(x) x"}, "F(a/*/)", "no"},
      {{"F(x) x"}, "F(a//)", "no"},
      {{"F(x) x"}, "F(a//\r\n)", "no"},
      {{"F(x) x"}, "F(don't)", "no"},
      {{"F(x) x"}, "F('')", "no"},
      {{"F(x) x"}, "F(\"\")", "\"\"|"},
      {{"F(x) x"}, "F(\"a\n\")", "no"},
      {{"F(x) x"}, "F(\"\\\"\")", "no"},
      {{"F(x) x\\y"}, "F(a)", "no"},
      {{"F(x) x'"}, "F(a)", "no"},
      {{"F(x) x 'a\\''"}, "F(a)", "a 'a\\''|"},
      {{"F(x) x"}, "F(_Pragma)", "no"},
      {{"F(x) #x"}, "F(_Pragma)", "\"_Pragma\"|"},
      {{"F(x) x _Pragma"}, "F(a)", "no"},
      {{"F(x) x##agma"}, "F(_Pr)", "no"},
  });
}

TEST(DirectExpansionTest, TextsThatMayBecomeOneTokenAreGivenUp) {
  expectDirect({
      {{"F(x) 1x"}, "F(2)", "no"},
      {{"F(x) -x"}, "F(-1)", "--1|"},
      {{"F(x) x/x"}, "F(/)", "no"},
      {{"F(x) x/x"}, "F(*)", "no"},
      {{"F(x) x*"}, "F(/)", "no"},
      {{"F(x) /x*"}, "F(,)", "no"},
      {{"F(x) x", "G() a"}, "F(G()b)", "no"},
      {{"F(x) x", "G() a"}, "F(1G())", "no"},
      {{"F(x) x", "G() +"}, "F(a G()b)", "a +b|"},
  });
}

TEST(DirectExpansionTest, LineEndsAndCommentsAreWhiteSpace) {
  expectDirect({
      {{"F(x) <x>"}, "F\n( a\n\n +b\n)\n", "<a +b>|\n"},
      {{"F(x,y) #x y"}, "F(a/**/b, // c )\n c/***/ )", "\"a b\" c|"},
      {{"F(x) <x>"}, "F /*(*/(/*)*/)", "no"},
      {{"F(x) x(1)", "G(x) [x]"}, "F(G\n)", "[1]|"},
      {{"F(x) x", "G(x) [x]"}, "F(G // (\n (a / b))", "[a / b]|"},
  });
}

// The number of lines that an invocation goes over is told; what is read twice counts once.
TEST(DirectExpansionTest, LinesAreCounted) {
  DirectSetting setting({"F(x) #x x", "A 1"});
  const TokenStream::Hold hold(setting.streams.stream);
  const std::string text = "(\nA\n+// c\nA)" + std::string(8, '\0');
  BytesAhead bytes(text.data());
  EXPECT_NE(setting.direct.expand(*setting.streams.names.find("F"), bytes), nullptr);
  EXPECT_EQ(setting.direct.text(), "\"A + A\" 1 + 1");
  EXPECT_EQ(bytes.lines(), 3U);
}

// What ends anywhere in the scanner's buffer goes on behind it; and nothing is taken where the input ends too early.
TEST(DirectExpansionTest, InvocationsInPiecesAreReadWholeOrNotAtAll) {
  const std::string text = "F (aa A, /* , */ bb // )\n 'c)' A/A , G( \"d,\")+ F(1, 2 ,3 ) , ) end";
  const std::string expanded = "aa 1 bb 'c)' 1/1 <\"d,\">+ 1 2 3 \"3\" \"<\\\"d,\\\">+ 1 2 3 \\\"3\\\"\"";
  for (std::size_t piece = 1; piece < 20; ++piece) {
    for (const std::size_t size : {text.size(), text.find(") end"), text.find("d,")}) {
      const std::string source = text.substr(0, size);
      DirectSetting setting({"F(x,y,z) x y z P(z)", "P(x) #x", "G(x) <x>", "A 1"});
      TokenStream& stream = setting.streams.stream;
      stream.pushFile(std::make_unique<CppFileScanner>("b.c", std::make_unique<PiecewiseInput>(source, piece),
                                                       setting.streams.context));
      const TokenStream::Hold hold(stream);
      Name& name = *setting.streams.names.find("F");
      EXPECT_EQ(stream.get(), TK_IDENTIFIER);
      const bool isExpanded = stream.passAhead([&](BytesAhead& bytes) { return setting.direct.expand(name, bytes); });
      EXPECT_EQ(isExpanded, size == text.size()) << piece;
      EXPECT_EQ(stream.file()->line(), isExpanded ? 2 : 1) << piece;
      EXPECT_EQ(stream.get(), TK_SPACE);
      EXPECT_EQ(stream.get(), isExpanded ? CppTokenKind{TK_IDENTIFIER} : '(') << piece;
      EXPECT_TRUE(!isExpanded || setting.direct.text() == expanded) << piece << setting.direct.text();
    }
  }
}

// There the value counts: operators must not become one, and neither the line's end nor `defined` is passed by.
TEST(DirectExpansionTest, InAConditionMoreIsGivenUp) {
  DirectSetting setting({"F(x) x=x", "G(x) (x)", "L(x) __LINE__"});
  EXPECT_EQ(setting.expand("F(=)"), "===|");
  EXPECT_EQ(setting.expandInCondition("F(=)"), "no");
  EXPECT_EQ(setting.expandInCondition("F(1) > 2"), "1=1| > 2");
  EXPECT_EQ(setting.expandInCondition("G( /* a */ G(-1) )"), "((-1))|");
  EXPECT_EQ(setting.expandInCondition("G(1\n)"), "no");
  EXPECT_EQ(setting.expandInCondition("G(1 // )\n)"), "no");
  EXPECT_EQ(setting.expandInCondition("G\n(1)"), "no");
  EXPECT_EQ(setting.expandInCondition("L(1)"), "no");
}

// In a condition `defined` keeps the name behind it from being expanded, even where another word is made of it then.
TEST(DirectExpansionTest, ExpandedNamesMustNotBeOperandsOfDefined) {
  DirectSetting setting({"A +1", "F(x) G(x)", "G(x) a##x##1", "H(x) F(def##x A)"});
  EXPECT_EQ(setting.expandInCondition("F(b A)"), "ab +11|");
  EXPECT_EQ(setting.expandInCondition("F(defined b)"), "adefined b1|");
  EXPECT_EQ(setting.expandInCondition("F(defined A)"), "no");
  EXPECT_EQ(setting.expandInCondition("H(ined)"), "no");
  EXPECT_EQ(setting.expand("F(defined A)"), "adefined +11|");
}

// White space in an argument is single blanks between its tokens; in a result it is as it comes.
TEST(DirectExpansionTest, ArgumentsThatWouldHaveToBeNormalizedAreGivenUp) {
  expectDirect({
      {{"F(x) [ x ]"}, "F(,)", "[  ]|"},
      {{"F(x) G([ x ])", "G(x) x"}, "F(,)", "no"},
      {{"F(x) G([ x ])", "G(x) x"}, "F(a)", "[ a ]|"},
      {{"F(x) G(x)", "G(x) <x>", "A(x) x a"}, "F(A(,))", "no"},
      {{"F(x) <x>", "A(x) x a"}, "F(A(,))", "no"},
      {{"F(x) A(x) + A(x)", "A(x) x a"}, "F(,)", "no"},
      {{"F(x) A + A", "A"}, "F(1)", " + |"},
      {{"F(x) G(x)", "G(x) x", "A a,b"}, "F(A)", "no"},
      {{"F(x) G((x))", "G(x) x", "A a,b"}, "F(A)", "(a,b)|"},
      {{"F(x) x", "A ("}, "F(A)", "no"},
      {{"F(x) x", "A )("}, "F(A)", "no"},
      {{"F(x) x)"}, "F(1)", "no"},
  });
}

TEST(DirectExpansionTest, TextsOfTheCommandLineAreTakenAsTheyAre) {
  DirectSetting setting({"F(x) <x>"});
  setting.table.defineFromCommandLine("tab", "a\tb");
  setting.table.defineFromCommandLine("two", "a  b");
  setting.table.defineFromCommandLine("end", "a ");
  setting.table.defineFromCommandLine("line", "a\nb");
  setting.table.defineFromCommandLine("comment", "a/**/b");
  setting.table.defineFromCommandLine("defined", "1");
  EXPECT_EQ(setting.expand("F(tab)"), "no");
  EXPECT_EQ(setting.expand("F(two)"), "no");
  EXPECT_EQ(setting.expand("F(end)"), "no");
  EXPECT_EQ(setting.expand("F(line)"), "no");
  EXPECT_EQ(setting.expand("F(comment)"), "no");
  EXPECT_EQ(setting.expand("F(defined)"), "no");
}

// With an apostrophe in a string of the argument the rule for backslashes goes wrong, and what comes out is no string:
// the "n" stands alone in it.
TEST(DirectExpansionTest, ABrokenStringIsGivenUp) {
  expectDirect({
      {{"F(x) G(\"'\" '\\n')", "G(x) #x", "n 5"}, "F(1)", "no"},
      {{"F(x) G('\\n')", "G(x) #x", "n 5"}, "F(1)", "\"'\\\\n'\"|"},
  });
}

TEST(DirectExpansionTest, WhatAnotherInvocationHasLeftIsNoPartOfAWord) {
  DirectSetting setting({"F(a,b) a##b", "x y"});
  EXPECT_EQ(setting.expand("F(0,x11111111)"), "0x11111111|");
  EXPECT_EQ(setting.expand("F(0,x)"), "no");  // A number, and behind it the name of a macro.
}

// Its text stays stored where it was used, and nowhere else.
TEST(DirectExpansionTest, WhatChangesAtEachUseIsThatOfTheLine) {
  DirectSetting setting({"F(x) x #x", "G(x) x __LINE__", "A __LINE__ __FILE__", "B(x)"});
  CppFileScanner& file = *setting.streams.stream.file();
  file.setFileName("dir/a b.c");
  file.setLine(12);
  EXPECT_EQ(setting.expand("B(__LINE__)"), "|");
  EXPECT_EQ(setting.expand("F(__LINE__ B)"), "no");
  EXPECT_EQ(setting.expand("F(\n__LINE__)"), "no");
  EXPECT_EQ(setting.streams.names.find("__LINE__")->macro->text, "");
  EXPECT_EQ(setting.expand("F(__LINE__)"), "12 \"__LINE__\"|");
  EXPECT_EQ(setting.streams.names.find("__LINE__")->macro->text, "12");
  EXPECT_EQ(setting.expand("__FILE__"), "\"dir/a b.c\"|");
  EXPECT_EQ(setting.expand("A"), "12 \"dir/a b.c\"|");
  file.setLine(13);
  EXPECT_EQ(setting.expand("G(1)"), "1 13|");
  EXPECT_EQ(setting.expand("G(1) __LINE__"), "1 13| __LINE__");
  for (const char* const name : {"a\"b", "a\\b", "a\nb"}) {
    file.setFileName(name);
    EXPECT_EQ(setting.expand("__FILE__"), "no");
  }
  EXPECT_EQ(setting.streams.names.find("__FILE__")->macro->text, "\"dir/a b.c\"");
}

// Functions that call each other nest as deep as invocations; and doubled thirty times a word would fill the memory.
TEST(DirectExpansionTest, DepthAndSizeAreLimited) {
  DirectSetting setting({"F(x) (x)", "A0(x) x", "B0(x) x"});
  EXPECT_EQ(setting.expand(repeat(39, "F(") + "1" + repeat(39, ")")), repeat(39, "(") + "1" + repeat(39, ")") + "|");
  EXPECT_EQ(setting.expand(repeat(5000, "F(") + "1" + repeat(5000, ")")), "no");
  for (int level = 1; level < 30; ++level) {
    const std::string below = std::to_string(level - 1);
    setting.define("A" + std::to_string(level) + "(x) A" + below + "(x) A" + below + "(x)");
    setting.define("B" + std::to_string(level) + "(x) B" + below + "(x x)");
  }
  EXPECT_EQ(setting.expand("A3(a)"), "a a a a a a a a|");
  EXPECT_EQ(setting.expand("A29(a)"), "no");
  EXPECT_EQ(setting.expand("B2(a)"), "a a a a|");
  EXPECT_EQ(setting.expand("B29(a)"), "no");
  const std::string argument(std::size_t{5} << 20, 'a');
  EXPECT_TRUE(setting.expand("F(" + argument + "\n b) c") == "(" + argument + " b)| c");
}

// A source that has much work given up has little done in vain: only what is of use lets more be done.
TEST(DirectExpansionTest, WorkThatIsGivenUpHasToBeEarned) {
  DirectSetting setting({"A0(x) x"});
  for (int level = 1; level < 30; ++level) {
    const std::string below = std::to_string(level - 1);
    setting.define("A" + std::to_string(level) + "(x) A" + below + "(x) A" + below + "(x)");
  }
  EXPECT_NE(setting.expand("A9(a)"), "no");
  EXPECT_EQ(setting.expand("A29(a)"), "no");
  EXPECT_EQ(setting.expand("A9(a)"), "no");
  for (int use = 0; use < 400; ++use) {
    EXPECT_EQ(setting.expand("A2(a)"), "a a a a|");
  }
  EXPECT_NE(setting.expand("A9(a)"), "no");
}

}  // namespace
}  // namespace qnpp
