// Invocations that are replaced without tokens, and those that are not: what is given up here has to be given up, since
// the result would be another one, or would not be all.
#include "macros/DirectExpansion.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "lexer/Budget.h"
#include "tests/support/Text.h"
#include "tests/unit/support/Definitions.h"

namespace qnpp {
namespace {

struct DirectSetting : DefinitionSetting {
  using DefinitionSetting::DefinitionSetting;

  // What the name at the beginning of `text` and its arguments come to, "|" and the rest of the text; or "no".
  std::string expand(std::string_view text) {
    const TokenStream::Hold hold(streams.stream);
    const std::string line = std::string(text) + std::string(8, '\0');
    const std::size_t end = text.find_first_of(" (\n");
    Name* const name = streams.names.find(text.substr(0, end));
    const char* const behind = direct.expand(*name, line.data() + end);
    return behind == nullptr ? "no" : std::string(direct.text()) + "|" + behind;
  }

  Budget budget;
  DirectExpansion direct{table, streams.names, budget};
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

TEST(DirectExpansionTest, NamesThatStayAreGivenUp) {
  expectDirect({
      {{"F(x) F"}, "F(1)", "no"},
      {{"F(x) F(x)"}, "F(1)", "no"},
      {{"F(x) x(1)"}, "F(F)", "no"},
      {{"F(x) x A", "A A+1"}, "F(1)", "no"},
      {{"F(x) x", "A A+1"}, "F(A)", "no"},
      {{"F(x) G(x)", "G(x) F(x)"}, "F(1)", "no"},
      {{"F(x) x G", "G(x) x"}, "F(1)", "no"},
      {{"F(x) G x", "G(x) x"}, "F((1))", "no"},
      {{"F(x) G(x", "G(x) x"}, "F(1)", "no"},
      {{"F(x) x##G", "aG 1"}, "F(a)", "no"},
      {{"F(x) x##1", "G(x) x"}, "F(G)", "G1|"},
      {{"F(x,y) x##y", "ab 1"}, "F(a,b)", "no"},
      {{"F(x,y) x##y", "b 1"}, "F(1,b)", "no"},
  });
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
      {{"F(x) x"}, "F(a\n)", "no"},
      {{"F(x) x"}, "F(a\r)", "no"},
      {{"F(x) x"}, "F(a\\b)", "no"},
      {{"F(x) x"}, "F(a/b)", "a/b|"},
      {{"F(x) x"}, "F(a/**/)", "no"},
      {{"F(x) x"}, "F(a//)", "no"},
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

TEST(DirectExpansionTest, WhatChangesAtEachUseIsGivenUp) {
  expectDirect({
      {{"F(x) x __LINE__"}, "F(a)", "a __LINE__|"},  // Here nobody has defined it.
  });
  DirectSetting setting({"F(x) x", "G(x) x __LINE__", "__LINE__ 1"});
  setting.streams.names.find("__LINE__")->isRefreshed = true;
  EXPECT_EQ(setting.expand("F(__LINE__)"), "no");
  EXPECT_EQ(setting.expand("G(1)"), "no");
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
