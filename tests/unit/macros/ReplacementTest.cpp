// Replacement lists and the steps they are made of.
#include "macros/Replacement.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/unit/support/Spellings.h"

namespace qnpp {
namespace {

std::string textOf(const Replacement& replacement, std::uint32_t begin, std::uint32_t end) {
  std::string text;
  for (const Spelling* const token : replacement.tokens().subspan(begin, end - begin)) {
    text += token->text();
  }
  return text;
}

std::string dumpOperand(const Replacement& replacement, const Replacement::Item& item) {
  switch (item.kind) {
    case Replacement::Item::Kind::Token:
      return textOf(replacement, item.index, item.index + 1);
    case Replacement::Item::Kind::Parameter:
      return "$" + std::to_string(item.index);
    case Replacement::Item::Kind::Literal:
      return "#" + std::to_string(item.index);
  }
  return "?";
}

// The steps in one line: tokens that are appended as they stand in brackets, `expand $0`, `string #0`, the operands of
// a join in braces, and a message in quotes.
std::string dumpSteps(const Replacement& replacement) {
  std::string steps;
  for (const Replacement::Step& step : replacement.steps()) {
    steps += steps.empty() ? "" : " ";
    switch (step.kind) {
      case Replacement::Step::Kind::Tokens:
        steps += "[" + textOf(replacement, step.begin, step.end) + "]";
        break;
      case Replacement::Step::Kind::Expand:
        steps += "expand $" + std::to_string(step.begin);
        break;
      case Replacement::Step::Kind::Stringize:
        steps += "string #" + std::to_string(step.begin);
        break;
      case Replacement::Step::Kind::Join: {
        std::string operands;
        for (std::uint32_t index = step.begin; index < step.end; ++index) {
          operands += (operands.empty() ? "" : "|") + dumpOperand(replacement, replacement.operands()[index]);
        }
        steps += "{" + operands + "}";
        break;
      }
      case Replacement::Step::Kind::Misuse:
        steps += "\"" + textOf(Replacement::misuse(step), "") + "\"";
        break;
    }
  }
  return steps;
}

constexpr const char* kNoParameter = "\"Macro variable expected after '#' operator\"";
constexpr const char* kAtBeginning = "\"'##' operator cannot be at the beginning of the replacement list\"";
constexpr const char* kAtEnd = "\"'##' operator cannot be at the end of the replacement list\"";

struct ReplacementTest : testing::Test {
  // The steps of a list for the parameters a, b, and c.
  std::string steps(std::string_view text, const std::vector<std::string>& parameters = {"a", "b", "c"}) {
    return dumpSteps(make(text, parameters));
  }

  // The text is copied: of what it consists of, nothing may be needed afterwards.
  const Replacement& make(std::string_view text, const std::vector<std::string>& parameters) {
    std::string list;
    for (const std::string& parameter : parameters) {
      list += parameter + ",";
    }
    return maker.make(std::string(text), {list, static_cast<std::uint32_t>(parameters.size())});
  }
  const Replacement& make(std::string_view text) { return maker.make(std::string(text)); }

  SpellingSetting setting;
  BlockStore store;
  ReplacementMaker maker{setting.names, setting.lexer, store};
};

struct ReplacementRow {
  const char* text;
  const char* steps;
};

TEST_F(ReplacementTest, ParametersStandBetweenTokens) {
  const ReplacementRow rows[] = {
      {"", ""},
      {"x", "[x]"},
      {"a", "expand $0"},
      {"b c", "expand $1 [ ] expand $2"},
      {"x + y", "[x + y]"},
      {"(a)*(b)", "[(] expand $0 [)*(] expand $1 [)]"},
      {"ab a_ a1", "[ab a_ a1]"},
      {"\"a\" 'a' 1a", "[\"a\" 'a' 1] expand $0"},
      {"a a", "expand $0 [ ] expand $0"},
      {"x a y", "[x ] expand $0 [ y]"},
      {"if defined _Pragma", "[if defined _Pragma]"},
      {"F(a, x)", "[F(] expand $0 [, x)]"},
  };
  for (const ReplacementRow& row : rows) {
    EXPECT_EQ(steps(row.text), row.steps) << row.text;
  }
}

TEST_F(ReplacementTest, AHashMakesAStringOfItsParameter) {
  const ReplacementRow rows[] = {
      {"#a", "string #0"},
      {"# b", "string #1"},
      {"x #a y", "[x ] string #0 [ y]"},
      {"#a#b", "string #0 string #1"},
      {"#a a", "string #0 [ ] expand $0"},
      {"(#a)", "[(] string #0 [)]"},
  };
  for (const ReplacementRow& row : rows) {
    EXPECT_EQ(steps(row.text), row.steps) << row.text;
  }
}

TEST_F(ReplacementTest, AHashNeedsAParameter) {
  const std::string message = kNoParameter;
  const std::pair<const char*, std::string> rows[] = {
      {"#", message},
      {"#x", message},
      {"# 1", message},
      {"#\"a\"", message},
      {"# #a", message},
      {"#defined", message},
      {"x #", "[x] " + message},
      {"x y # z a", "[x y] " + message},
      {"a #", "expand $0 " + message},
      {"#a #x #b", "string #0 " + message},
      {"a ## b #x", "{$0|$1} " + message},
      {"a ## #x", "{$0} " + message},
      {"x ## #", "{x} " + message},
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(steps(text), expected) << text;
  }
}

TEST_F(ReplacementTest, ItemsAreJoinedWithoutTheWhiteSpaceAround) {
  const ReplacementRow rows[] = {
      {"a##b", "{$0|$1}"},
      {"a ## b", "{$0|$1}"},
      {"x##a", "{x|$0}"},
      {"x ## y", "{x|y}"},
      {"x y ## z w", "[x ] {y|z} [ w]"},
      {"x##y##z", "{x|y|z}"},
      {"a ## b ## c", "{$0|$1|$2}"},
      {"x ## ## y", "{x|y}"},
      {"a####b", "{$0|$1}"},
      {"#a ## b", "{#0|$1}"},
      {"L ## #a", "{L|#0}"},
      {"L###a", "{L|#0}"},
      {"#a ## #b", "{#0|#1}"},
      {"a ## b a", "{$0|$1} [ ] expand $0"},
      {"a b ## c", "expand $0 [ ] {$1|$2}"},
      {"a ## b + b ## a", "{$0|$1} [ + ] {$1|$0}"},
      {"x ## (", "{x|(}"},
      {"a##b##c x", "{$0|$1|$2} [ x]"},
  };
  for (const ReplacementRow& row : rows) {
    EXPECT_EQ(steps(row.text), row.steps) << row.text;
  }
}

TEST_F(ReplacementTest, AJoinNeedsItsOperands) {
  const std::string begin = kAtBeginning;
  const std::string end = kAtEnd;
  const std::pair<const char*, std::string> rows[] = {
      {"##", begin},
      {"## a", begin},
      {"####", begin},
      {"###a", begin},
      {"a ##", "{$0} " + end},
      {"x ##", "{x} " + end},
      {"a ## ##", "{$0} " + end},
      {"x a ##", "[x ] {$0} " + end},
      {"a x ##", "expand $0 [ ] {x} " + end},
      {"#a ##", "{#0} " + end},
      {"a ## b ##", "{$0|$1} " + end},
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(steps(text), expected) << text;
  }
}

TEST_F(ReplacementTest, DirectiveWordsMayBeParameters) {
  EXPECT_EQ(steps("if #line", {"if", "line"}), "expand $0 [ ] string #1");
}

TEST_F(ReplacementTest, AParameterGivenTwiceStandsForItsLastArgument) {
  EXPECT_EQ(steps("a #a a##x", {"a", "b", "a"}), "expand $2 [ ] string #2 [ ] {$2|x}");
}

TEST_F(ReplacementTest, FindsEachOfManyParameters) {
  std::vector<std::string> parameters;
  std::string text;
  std::string expected;
  for (int index = 0; index < 1000; ++index) {
    const std::string name = "p" + std::to_string(index * 7 % 1000);
    parameters.push_back(name);
    text += "#" + name + " " + name + "_ p ";
    expected += (index == 0 ? "string #" : " string #") + std::to_string(index) + " [ " + name + "_ p" +
                (index == 999 ? "]" : " ]");
  }
  EXPECT_EQ(steps(text, parameters), expected);
}

TEST_F(ReplacementTest, WithoutParametersAHashIsMisusedToo) {
  EXPECT_EQ(steps("x #y", {}), std::string("[x] ") + kNoParameter);
  EXPECT_EQ(steps("x ## y", {}), "{x|y}");
}

TEST_F(ReplacementTest, AnObjectLikeListIsItsTokens) {
  const ReplacementRow rows[] = {
      {"", ""},
      {"a ## b", "IDENTIFIER:a SPACE PASTE SPACE IDENTIFIER:b"},
      {"#x", "# IDENTIFIER:x"},
      {"1.5 \"s\"", "DEC_INT:1 OTHER:. DEC_INT:5 SPACE STRING:\"s\""},
      {"12 'c' 0x1 << 12", "DEC_INT:12 SPACE CHAR:'c' SPACE HEX_INT:0x1 SPACE SHL SPACE DEC_INT:12"},
      {"  a\t\n", "SPACE SPACE IDENTIFIER:a SPACE:<TAB> NEWLINE"},
      {"+ 1 7", "+ SPACE DEC_INT:1 SPACE DEC_INT:7"},
  };
  for (const ReplacementRow& row : rows) {
    const Replacement& replacement = make(row.text);
    std::string tokens;
    for (const Spelling* const token : replacement.tokens()) {
      tokens += (tokens.empty() ? "" : " ") + dumpToken(token->kind, token->text());
    }
    EXPECT_EQ(tokens, row.steps) << row.text;
    EXPECT_TRUE(replacement.steps().empty()) << row.text;
  }
}

TEST_F(ReplacementTest, ParametersNeedNotBecomeKnown) {
  make("parameter #parameter parameter##x", {"parameter"});
  EXPECT_EQ(setting.names.find("parameter"), nullptr);
  EXPECT_NE(setting.names.find("x"), nullptr);
}

TEST_F(ReplacementTest, NamesOfTheListBecomeKnown) {
  EXPECT_EQ(setting.names.find("fresh"), nullptr);
  const Replacement& replacement = make("fresh+if");
  ASSERT_NE(setting.names.find("fresh"), nullptr);
  EXPECT_EQ(replacement.tokens()[0], &setting.names.find("fresh")->spelling);
  EXPECT_EQ(replacement.tokens()[1], characterSpelling('+'));
  EXPECT_EQ(replacement.tokens()[2], &setting.names.find("if")->spelling);
}

struct AgainRow {
  const char* text;
  std::vector<bool> isWantedAgain;  // For each step that expands an argument.
};

TEST_F(ReplacementTest, KnowsWhichArgumentsAreExpandedAgain) {
  const AgainRow rows[] = {
      {"a", {false}},         {"a a", {true, false}},     {"a b a b a", {true, true, true, false, false}},
      {"a #a a##b", {false}}, {"#a a b", {false, false}}, {"a a #", {true, false}},
      {"a ## a a", {false}},
  };
  for (const AgainRow& row : rows) {
    const Replacement& replacement = make(row.text, {"a", "b"});
    std::vector<bool> isWantedAgain;
    for (const Replacement::Step& step : replacement.steps()) {
      if (step.kind == Replacement::Step::Kind::Expand) {
        isWantedAgain.push_back(step.isWantedAgain);
      }
    }
    EXPECT_EQ(isWantedAgain, row.isWantedAgain) << row.text;
  }
}

struct PropertyRow {
  const char* text;
  bool hasEffects;
  bool isFixedText;
};

TEST_F(ReplacementTest, KnowsWhatItsTextDoesWhenItIsRead) {
  const PropertyRow rows[] = {
      {"", false, true},         {"1 + 2", false, true}, {"\"s\" 'c' ;", false, true}, {"# ##", false, true},
      {"\"//\"", false, true},   {"x", false, false},    {"1 if", false, false},       {"defined", false, false},
      {"_Pragma", false, false}, {"1\n", false, false},  {"/**/", false, false},       {"1 // x", false, false},
      {"1 /*\n*/", true, false}, {"/* x", true, false},  {"\\\r\n", false, true},      {"\r\n", false, false},
  };
  for (const PropertyRow& row : rows) {
    const Replacement& replacement = make(row.text);
    EXPECT_EQ(replacement.hasEffects(), row.hasEffects) << row.text;
    EXPECT_EQ(replacement.isFixedText(), row.isFixedText) << row.text;
  }
}

}  // namespace
}  // namespace qnpp
