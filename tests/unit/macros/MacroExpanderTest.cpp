// Expansion of token lists, without a preprocessor around it. Macros have one letter, so that hide sets can be shown.
#include "macros/MacroExpander.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/unit/support/Definitions.h"

namespace qnpp {
namespace {

struct ExpanderSetting : DefinitionSetting {
  using DefinitionSetting::DefinitionSetting;

  // What `text`, lexed, is expanded to: each text with its hide set, as in "a{A}+1".
  std::string expand(std::string_view text, bool isCondition = false) {
    const TokenStream::Hold hold(streams.stream);
    TokenList tokens;
    streams.stream.storedTextLexer().lex(text, [this, &tokens](CppTokenKind kind, std::string_view token) {
      tokens.append(streams.stream.spell(kind, token), HideSet());
    });
    expander.expandTokenList(tokens, isCondition);
    return streams.dumpRange(tokens.all(), "");
  }

  MacroExpander expander{streams.context, streams.names, streams.stream, table, messages};
};

struct ListExpansionRow {
  std::vector<std::string> definitions;
  const char* list;
  const char* expanded;
  const char* messages = "";
};

void expectListExpansions(const std::vector<ListExpansionRow>& rows, bool isCondition = false) {
  for (const ListExpansionRow& row : rows) {
    ExpanderSetting setting(row.definitions);
    EXPECT_EQ(setting.expand(row.list, isCondition), row.expanded) << row.list;
    EXPECT_EQ(setting.messages.identifiers, row.messages) << row.list;
    EXPECT_TRUE(setting.streams.stream.isInFile()) << row.list;
  }
}

TEST(MacroExpanderTest, TokensOfAResultCarryTheSetOfTheInvocation) {
  expectListExpansions({
      {{}, "", ""},
      {{}, "a + 1", "a + 1"},
      {{"A 1"}, "A a A", "1{A} a 1{A}"},
      {{"A"}, "[A]", "[]"},
      {{"A A+1"}, "A", "A{A}+{A}1{A}"},
      {{"A B", "B A C"}, "A", "A{AB} {AB}C{AB}"},
      {{"F(x) x+#x##y"}, "F(a)", "a{F}+{F}\"a\"{F}y{F}"},
      {{"F(x) (x)", "A 1"}, "F(A)", "({F}1{AF}){F}"},
      // A name keeps what it has, and gets the sets of the invocations that it goes through.
      {{"A A+1", "G(x) x", "F(x) G(x)"}, "F(A)", "A{AFG}+{AFG}1{AFG}"},
      {{"F(a) a*G", "G(a) F(a)"}, "F(2)(9)", "2{F}*{F}F{FG}({FG}9{FG}){FG}"},
      {{"F(x) x"}, "F(F)(1)", "F{F}(1)"},
      {{"F(x) x"}, "F(F(1))", "1{F}"},
      // The name's set counts, not that of the parenthesis behind it.
      {{"F(x) x", "A F("}, "A 1)", "1{AF}"},
      // Tokens of an argument get the set of the token behind it: ")" came out of R.
      {{"F(x) x", "G(x) x", "L (", "R )"}, "G(F L 1 R)", "1{FGR}"},
      {{"F(x) [x F]", "A F(1"}, "A)", "[{AF}1{AF} {AF}F{AF}]{AF}"},
  });
}

TEST(MacroExpanderTest, AListIsClosedAtItsEnd) {
  expectListExpansions({
      {{"F(x) x"}, "F", "F"},
      {{"F(x) x"}, "a F  ", "a F  "},
      {{"F(x) x"}, "F +", "F +"},
      {{"F(x) x"}, "F(", "F", "unterminated-invocation"},
      {{"F(x) x"}, "F (1", "F", "unterminated-invocation"},
      {{"F(x) x", "A F"}, "A", "F{A}"},
      {{"F(x) x", "A F"}, "A (1)", "1{AF}"},
      {{"F(x) x x"}, "F(F)(1)", "F{F} {F}F{F}(1)"},
      {{"F(x,y) x"}, "F(1)+", "F+", "too-few-arguments"},
      {{"F(x) x"}, "F(1,2)+", "F+", "too-many-arguments"},
      {{"F(x) x"}, "F(1,2,3)+", "F3)+", "too-many-arguments"},
      {{"F(x) x##"}, "F(1)", "1{F}", "paste-at-end"},
  });
}

TEST(MacroExpanderTest, OutsideOfAConditionDefinedIsAWordLikeAnyOther) {
  expectListExpansions({
      {{"A 1"}, "defined A", "defined 1{A}"},
      {{"A 1"}, "defined(A)", "defined(1{A})"},
  });
}

TEST(MacroExpanderTest, InAConditionTheOperandOfDefinedIsNotExpanded) {
  expectListExpansions(
      {
          {{"A 1"}, "A", "1{A}"},
          {{"A 1"}, "defined A A", "defined A 1{A}"},
          {{"A 1"}, "defined(A)A", "defined(A)1{A}"},
          {{"A 1"}, "defined  ( A ) A", "defined  ( A ) 1{A}"},
          {{"A 1"}, "defined ((A))", "defined ((1{A}))"},
          {{"A 1"}, "defined +A", "defined +1{A}"},
          {{"A 1"}, "defined defined A", "defined defined A"},
          {{"A 1", "F(x) x"}, "defined F(A)", "defined F(1{A})"},
          {{"A 1", "D defined A"}, "D", "defined{D} {D}A{D}"},
          {{"A 1", "D defined"}, "D A D(A)", "defined{D} A defined{D}(A)"},
          {{"A 1", "D defined("}, "D A)", "defined{D}({D} A)"},
          {{"A 1", "F(x) x"}, "F(defined A)", "defined{F} {F}A{F}"},
          {{"A 1", "F(x) defined x"}, "F(A)", "defined{F} {F}1{AF}"},
      },
      true);
}

TEST(MacroExpanderTest, AConditionEndsWithItsList) {
  ExpanderSetting setting({"A 1"});
  EXPECT_EQ(setting.expand("defined A", true), "defined A");
  EXPECT_EQ(setting.expand("defined A", false), "defined 1{A}");
}

TEST(MacroExpanderTest, PredefinedMacrosAreThoseOfTheInnermostFile) {
  ExpanderSetting setting;  // Their names have more than a letter, so the sets show empty braces.
  EXPECT_EQ(setting.expand("__LINE__ __FILE__"), "1{} \"a.c\"{}");
  setting.streams.pushText("\n\nx", "h.h");
  EXPECT_EQ(setting.streams.take() + setting.streams.take(), "<LF><LF>");
  EXPECT_EQ(setting.expand("__LINE__ __FILE__"), "3{} \"h.h\"{}");
}

// An argument is expanded for each place of its parameter, and so is what happens meanwhile.
TEST(MacroExpanderTest, MessagesOfAnArgumentAreRepeated) {
  expectListExpansions({
      {{"F(x) x;x;", "G(y) y"}, "F(G())", "G{F};{F}G{F};{F}", "too-few-arguments too-few-arguments"},
      {{"F(x) x;#x;x", "G(y) #"}, "F(G(1))", ";{F}\"G(1)\"{F};{F}", "hash-without-parameter hash-without-parameter"},
      {{"F(x) #x", "G(y) y"}, "F(G())", "\"G()\"{F}"},
      {{"F(x)", "G(y) y"}, "F(G())", ""},
      {{"F(x) x;x", "A 1"}, "F(A)", "1{AF};{F}1{AF}"},
  });
}

struct CommentRow {
  const char* definition;  // Of C, as on a command line.
  const char* expanded;
  const char* output;
  const char* diagnostics;
};

TEST(MacroExpanderTest, WhatCommentsOfAnArgumentDoIsRepeated) {
  const CommentRow rows[] = {
      {"1/**/", "1{CF} {CF};{F}1{CF} {CF}", "", ""},
      {"1/*\n*/", "1{CF} {CF};{F}1{CF} {CF}", "\n\n", ""},
      {"1/*", "1{CF} {CF};{F}1{CF} {CF}", "", "1: unterminated comment.\n1: unterminated comment.\n"},
  };
  for (const CommentRow& row : rows) {
    ExpanderSetting setting({"F(x) x;x"});
    setting.table.defineFromCommandLine("C", row.definition);
    EXPECT_EQ(setting.expand("F(C)"), row.expanded) << row.definition;
    EXPECT_EQ(setting.streams.written(), row.output) << row.definition;
    EXPECT_EQ(setting.streams.diagnostics.str(), row.diagnostics) << row.definition;
  }
}

// A definition may be replaced while an expansion reads it; what is being read stays as it was.
TEST(MacroExpanderTest, AnInvocationReadsOnInAReplacedDefinition) {
  ExpanderSetting setting({"A [ B ]", "B() 1"});
  setting.streams.pushText("A\n");
  setting.streams.stream.get();
  setting.expander.expandInText();
  EXPECT_EQ(setting.streams.written(), "[ ");
  setting.table.define("A", CppMacro{"other", {}, false, nullptr});
  setting.table.undefine("B");
  EXPECT_EQ(setting.streams.take(), "B{A}");
  EXPECT_EQ(setting.streams.takeAll(), " {A}|]{A}|<LF>");
}

}  // namespace
}  // namespace qnpp
