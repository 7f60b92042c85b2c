// The conditionals that are open.
#include "directives/ConditionalStack.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <string_view>

namespace qnpp {
namespace {

CppTokenKind kindOf(std::string_view word) {
  if (word.starts_with("if")) {
    return TK_IF;
  }
  if (word.starts_with("elif")) {
    return TK_ELIF;
  }
  return word == "else" ? TK_ELSE : TK_ENDIF;
}

// Carries out words: "if1" and "elif0" with the value of their conditions, "else", "endif", and "{" and "}" for the
// beginning and the end of a file. Shows for each whether the text behind it is taken, "+", or skipped, "-"; before
// that
// "?" where a condition was asked for, "!" where a conditional was open at the end of a file, and messages. `isShort`
// says that words in a skipped group are first tried as those of a conditional within it.
std::string carryOut(const std::string& words, bool isShort) {
  ConditionalStack stack;
  std::string shown;
  std::istringstream stream(words);
  for (std::string word; stream >> word;) {
    std::optional<Message> message;
    shown += shown.empty() ? "" : " ";
    const bool isTrue = word.back() == '1';
    const bool isOfFile = word == "{" || word == "}";
    if (isShort && stack.isSkipping() && !isOfFile && stack.carryOutNested(kindOf(word))) {
      // Nothing is left to do.
    } else if (word.starts_with("if")) {
      if (stack.open()) {
        shown += "?";
        stack.setGroup(isTrue);
      }
    } else if (word.starts_with("elif")) {
      if (stack.takeElif(message) == ConditionalStack::Elif::Evaluate) {
        shown += "?";
        stack.setGroup(isTrue);
      }
    } else if (word == "else") {
      message = stack.takeElse();
    } else if (word == "endif") {
      message = stack.close();
    } else if (word == "{") {
      stack.enterFile();
    } else {
      shown += stack.leaveFile() ? "!" : "";
    }
    shown += message ? std::string(entryOf(*message).identifier) + ":" : "";
    shown += stack.isSkipping() ? "-" : "+";
  }
  return shown;
}

// What is not of a conditional within the skipped group, or wants a message, is left alone.
TEST(ConditionalStackTest, OnlyWhatIsWithinASkippedGroupIsCarriedOutAsNested) {
  ConditionalStack stack;
  stack.open();
  stack.setGroup(false);
  EXPECT_FALSE(stack.carryOutNested(TK_ELIF));
  EXPECT_FALSE(stack.carryOutNested(TK_ELSE));
  EXPECT_FALSE(stack.carryOutNested(TK_ENDIF));
  EXPECT_TRUE(stack.carryOutNested(TK_IFNDEF));
  EXPECT_EQ(stack.depth(), 2U);
  EXPECT_TRUE(stack.carryOutNested(TK_ELIF));
  EXPECT_TRUE(stack.carryOutNested(TK_ELSE));
  EXPECT_FALSE(stack.carryOutNested(TK_ELSE));
  EXPECT_FALSE(stack.carryOutNested(TK_ELIF));
  EXPECT_TRUE(stack.carryOutNested(TK_ENDIF));
  EXPECT_EQ(stack.depth(), 1U);
  EXPECT_FALSE(stack.carryOutNested(TK_ENDIF));
}

struct StackRow {
  const char* words;
  const char* shown;
};

TEST(ConditionalStackTest, EachWordBeginsAGroup) {
  const StackRow rows[] = {
      {"if1 endif", "?+ +"},
      {"if0 endif", "?- +"},
      {"if1 else endif", "?+ - +"},
      {"if0 else endif", "?- + +"},
      {"if0 elif1 else endif", "?- ?+ - +"},
      {"if0 elif0 else endif", "?- ?- + +"},
      {"if0 elif1 elif1 elif0 endif", "?- ?+ - - +"},
      {"if1 elif1 else endif", "?+ - - +"},
      {"if1 if0 endif else if1 endif endif", "?+ ?- + - - - +"},
      {"if0 if1 elif1 else endif else endif", "?- - - - - + +"},
      {"if1 if1 if1 endif endif endif", "?+ ?+ ?+ + + +"},
      {"if0 if1 if1 endif endif endif", "?- - - - - +"},
  };
  for (const StackRow& row : rows) {
    EXPECT_EQ(carryOut(row.words, false), row.shown) << row.words;
    EXPECT_EQ(carryOut(row.words, true), row.shown) << row.words;
  }
}

TEST(ConditionalStackTest, AWordWithoutItsIfChangesNothing) {
  const StackRow rows[] = {
      {"endif", "endif-without-if:+"},
      {"else", "else-without-if:+"},
      {"elif1", "elif-without-if:+"},
      {"if0 endif endif", "?- + endif-without-if:+"},
      {"if0 else else endif", "?- + else-after-else:+ +"},
      {"if1 else else endif", "?+ - else-after-else:- +"},
      {"if1 else elif1 endif", "?+ - elif-after-else:- +"},
      {"if0 else elif0 endif", "?- + elif-after-else:+ +"},
      {"if0 if1 else else elif1 endif endif", "?- - - else-after-else:- elif-after-else:- - +"},
  };
  for (const StackRow& row : rows) {
    EXPECT_EQ(carryOut(row.words, false), row.shown) << row.words;
    EXPECT_EQ(carryOut(row.words, true), row.shown) << row.words;
  }
}

TEST(ConditionalStackTest, ConditionalsBelongToTheirFile) {
  const StackRow rows[] = {
      {"{ if1 endif }", "+ ?+ + +"},
      {"{ if1 }", "+ ?+ !+"},
      {"{ if0 }", "+ ?- !+"},
      {"{ if1 if0 if1 }", "+ ?+ ?- - !+"},
      {"if1 { endif else elif1 } endif", "?+ + endif-without-if:+ else-without-if:+ elif-without-if:+ + +"},
      {"if1 { if0 } else endif", "?+ + ?- !+ - +"},
      {"if0 elif1 { { if1 } if0 else } elif1 endif", "?- ?+ + + ?+ !+ ?- + !+ - +"},
      // The end of the main source, which was not entered.
      {"if0 }", "?- !+"},
      {"}", "+"},
  };
  for (const StackRow& row : rows) {
    EXPECT_EQ(carryOut(row.words, false), row.shown) << row.words;
    EXPECT_EQ(carryOut(row.words, true), row.shown) << row.words;
  }
}

}  // namespace
}  // namespace qnpp
