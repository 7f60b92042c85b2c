// The stack of sources: what is read after what, and how long tokens live.
#include "lexer/TokenStream.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "macros/CppMacro.h"
#include "tests/unit/support/Memory.h"
#include "tests/unit/support/Streams.h"

namespace qnpp {
namespace {

// ---- Reading ----

TEST(TokenStreamTest, WhenASourceEndsTheOneBelowGoesOn) {
  StreamSetting setting("a b");
  EXPECT_EQ(setting.take(), "a");
  setting.push({"x", "+y"}, setting.hideSetOf("X"));
  EXPECT_EQ(setting.take(), "x{X}");
  setting.push({}, setting.hideSetOf("E"));
  setting.push({"v"});
  EXPECT_EQ(setting.takeAll(), "v|+{X}|y{X}| |b|<LF>");
  EXPECT_EQ(setting.take(), "END");
  EXPECT_EQ(setting.stream.peek(), TK_END);
}

TEST(TokenStreamTest, TellsWhichSourceIsCurrent) {
  StreamSetting setting("a");
  CppFileScanner* const outer = setting.stream.file();
  EXPECT_TRUE(setting.stream.isInFile());
  setting.pushText("h", "h.h");
  EXPECT_NE(setting.stream.file(), outer);
  setting.push({"x"});
  EXPECT_FALSE(setting.stream.isInFile());
  EXPECT_EQ(setting.stream.file()->fileName(), "h.h");  // The innermost file, not the source.
  EXPECT_EQ(setting.take(), "x");
  EXPECT_EQ(setting.take(), "h");
  EXPECT_TRUE(setting.stream.isInFile());
  EXPECT_EQ(setting.takeAll(), "<LF>|a|<LF>");
  EXPECT_EQ(setting.stream.file(), outer);
}

TEST(TokenStreamTest, TheListenerIsToldOfTheEndsOfFiles) {
  StreamSetting setting("a");
  setting.pushText("", "b.h");
  setting.push({"x"});
  setting.pushText("c", "c.h");
  EXPECT_EQ(setting.take(), "c");
  EXPECT_EQ(setting.take(), "<LF>");
  EXPECT_EQ(setting.events, "");
  EXPECT_EQ(setting.stream.peek(), TK_IDENTIFIER);  // A look is enough.
  EXPECT_EQ(setting.events, "end of c.h; back in b.h; ");
  EXPECT_EQ(setting.take(), "x");
  EXPECT_EQ(setting.takeAll(), "a|<LF>");
  EXPECT_EQ(setting.events, "end of c.h; back in b.h; end of b.h; back in a.c; ");  // Lists and the last end silently.
}

struct StreamSkipRow {
  const char* file;
  std::vector<std::string_view> list;  // Pushed on it.
  const char* blanks;                  // What is next behind blanks,
  const char* whiteSpace;              // behind white space,
  const char* line;                    // and in the next line.
};

TEST(TokenStreamTest, SkippingGoesOnInTheSourceBelow) {
  const StreamSkipRow rows[] = {
      {"a\nb", {}, "a", "a", "b"},         {" \t/**/\\\n a\nb", {}, "a", "a", "b"},
      {"\n \na\nb", {}, "<LF>", "a", " "}, {" a\nb", {" ", "\\\n"}, "a", "a", "b"},
      {"\na\nb", {" "}, "<LF>", "a", "a"}, {"a\nb", {" ", "\n", " ", "x"}, "<LF>", "x", " "},
      {"a\nb", {"x", "y"}, "x", "x", "b"}, {"a\nb", {" x\n y"}, "x", "x", " "},
      {"", {" "}, "END", "END", "END"},    {"\n", {" "}, "<LF>", "END", "END"},
  };
  for (const StreamSkipRow& row : rows) {
    const auto nextAfter = [&row](auto skip) {
      StreamSetting setting(row.file);
      TokenList list;
      for (const std::string_view text : row.list) {
        list.append(setting.spell(text), HideSet());
      }
      setting.stream.push(list);
      skip(setting.stream);
      return setting.take();
    };
    EXPECT_EQ(nextAfter([](TokenStream& stream) { stream.skipBlanks(); }), row.blanks) << visible(row.file);
    EXPECT_EQ(nextAfter([](TokenStream& stream) {
                const CppTokenKind first = stream.peek();
                EXPECT_EQ(stream.skipWhiteSpace(), isWhiteSpace(first));
              }),
              row.whiteSpace)
        << visible(row.file);
    EXPECT_EQ(nextAfter([](TokenStream& stream) { stream.discardLine(); }), row.line) << visible(row.file);
  }
}

TEST(TokenStreamTest, NamesAreFoundInFilesAndInLists) {
  StreamSetting setting("known unknown if");
  Name& known = setting.name("known");
  setting.push({"known", "x+known"});
  const std::vector<const Name*> expected = {&known, nullptr, &known, &known, nullptr, setting.names.find("if")};
  std::vector<const Name*> found;
  for (CppTokenKind kind = setting.stream.get(); kind != TK_END; kind = setting.stream.get()) {
    if (isName(kind)) {
      found.push_back(setting.stream.name());
    }
  }
  EXPECT_EQ(found, expected);
}

TEST(TokenStreamTest, CopyingWritesPlainTokensOfAllSources) {
  StreamSetting setting(" b MACRO");
  CppMacro macro;
  setting.name("MACRO").macro = &macro;
  setting.names.noteMacro(setting.name("MACRO"));
  EXPECT_EQ(setting.stream.get(), TK_SPACE);
  setting.push({"x", "+y", "MACRO", "z"}, setting.hideSetOf("X"));
  const auto copy = [&setting] {
    for (;;) {
      const CppTokenKind kind = setting.stream.copyText();
      if (kind == TK_END || kind == TK_NEWLINE || setting.stream.name() == setting.names.find("MACRO")) {
        return std::string(kind == TK_IDENTIFIER ? setting.stream.text() : "");
      }
      setting.output.write(setting.stream.text());
    }
  };
  EXPECT_EQ(copy(), "MACRO");
  EXPECT_EQ(setting.written(), "x+y");
  EXPECT_TRUE(setting.stream.isHidden(setting.name("X")));
  EXPECT_EQ(copy(), "MACRO");
  EXPECT_EQ(setting.written(), "x+yzb ");
  EXPECT_FALSE(setting.stream.isHidden(setting.name("X")));
}

TEST(TokenStreamTest, TheCurrentTokenIsAppendedWithItsSet) {
  StreamSetting setting("a \"s\"");
  setting.push({"x", "+y"}, setting.hideSetOf("XY"));
  TokenList list;
  for (CppTokenKind kind = setting.stream.get(); kind != TK_NEWLINE; kind = setting.stream.get()) {
    setting.stream.appendCurrent(kind, list);
  }
  EXPECT_EQ(setting.dumpList(list), "x{XY} +{XY} y{XY} a   \"s\"");
}

// ---- Closed sources ----

TEST(TokenStreamTest, TheEndOfAClosedSourceIsThatOfTheInput) {
  StreamSetting setting("a");
  setting.push({"below"});
  const TokenStream::Hold hold(setting.stream);
  {
    TokenList list = setting.listOf({"x", " ", "y", " "}, setting.hideSetOf("X"));
    const TokenStream::Closed closed(setting.stream, list);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(setting.take(), "x{X}");
    setting.push({"p"});
    EXPECT_EQ(setting.take(), "p");
    EXPECT_TRUE(setting.stream.skipWhiteSpace());
    EXPECT_EQ(setting.take(), "y{X}");
    EXPECT_TRUE(setting.stream.skipWhiteSpace());
    EXPECT_FALSE(setting.stream.skipWhiteSpace());
    EXPECT_EQ(setting.stream.peek(), TK_END);
    EXPECT_EQ(setting.take(), "END");
    setting.stream.discardLine();
    EXPECT_EQ(setting.stream.copyText(), TK_END);
    setting.push({"q"});  // On a source that is at its end.
    EXPECT_EQ(setting.takeAll(), "q");
    EXPECT_EQ(setting.stream.peek(), TK_END);
  }
  EXPECT_EQ(setting.takeAll(), "below|a|<LF>");
}

TEST(TokenStreamTest, ClosedSourcesNest) {
  StreamSetting setting("a");
  const TokenStream::Hold hold(setting.stream);
  TokenList outer = setting.listOf({"x", "y"});
  const TokenList inner = setting.listOf({"p", "q", "r"}, setting.hideSetOf("P"));
  NormalizedTokens surroundings;
  surroundings.reset(inner.spellings());
  std::optional<TokenStream::Closed> first(std::in_place, setting.stream, outer);
  EXPECT_EQ(setting.take(), "x");
  {
    TokenRange part = inner.all().part(1, 2);
    part.hideSet = setting.hideSetOf("A");
    const TokenStream::Closed second(setting.stream, part, &surroundings);
    EXPECT_EQ(setting.stream.listSource().surroundings(), &surroundings);
    TokenList none;
    {
      const TokenStream::Closed third(setting.stream, none);
      EXPECT_EQ(setting.take(), "END");
    }
    EXPECT_EQ(setting.takeAll(), "q{AP}|r{AP}");
  }
  EXPECT_EQ(setting.takeAll(), "y");
  first.reset();
  EXPECT_EQ(setting.takeAll(), "a|<LF>");
}

TEST(TokenStreamTest, WhatIsLeftOfAClosedSourceIsDropped) {
  StreamSetting setting("a");
  const TokenStream::Hold hold(setting.stream);
  {
    TokenList list = setting.listOf({"x", "y", "z"});
    const TokenStream::Closed closed(setting.stream, list);
    EXPECT_EQ(setting.take(), "x");
    setting.push({"p", "q"});
    setting.push({"r"});
    EXPECT_EQ(setting.stream.peek(), TK_IDENTIFIER);
  }
  EXPECT_EQ(setting.takeAll(), "a|<LF>");
}

// ---- How long tokens live ----

// A stream, and where it puts what is made now. Memory that has been given back is used again, so the place tells.
struct TokenLifeTest : testing::Test {
  // A spelling of the stream's own, of at most six letters: the places of longer ones differ.
  const Spelling* make(const std::string& text) { return setting.stream.spell("\"" + text + "\""); }

  // Whether `spelling`, the first thing made in the stream, has been given back.
  bool isGivenBack(const Spelling* spelling) {
    const TokenStream::Hold hold(setting.stream);  // The question leaves nothing behind.
    return make("x") == spelling;
  }

  // A list of `spelling` becomes the current source.
  void push(const Spelling* spelling) {
    TokenList list;
    list.append(spelling, HideSet());
    setting.stream.push(list);
  }

  StreamSetting setting{"a"};
};

TEST_F(TokenLifeTest, ASourceOwnsWhatWasMadeUnderItsHold) {
  const Spelling* argument = nullptr;
  {
    const TokenStream::Hold hold(setting.stream);
    argument = make("arg");
    push(make("result"));
  }
  EXPECT_FALSE(isGivenBack(argument));
  EXPECT_EQ(setting.take(), "\"result\"");
  EXPECT_FALSE(isGivenBack(argument));
  EXPECT_EQ(setting.take(), "a");
  EXPECT_TRUE(isGivenBack(argument));
}

TEST_F(TokenLifeTest, WhatASourceOwnsIsGivenBackAtItsEnd) {
  const Spelling* first = nullptr;
  for (int round = 0; round < 3; ++round) {
    {
      const TokenStream::Hold hold(setting.stream);
      const Spelling* const made = make("result");
      first = first == nullptr ? made : first;
      EXPECT_EQ(made, first);
      push(made);
    }
    EXPECT_EQ(setting.take(), "\"result\"");
    EXPECT_FALSE(isGivenBack(first));
    setting.stream.peek();
    EXPECT_TRUE(isGivenBack(first));
  }
}

TEST_F(TokenLifeTest, AHoldKeepsWhatWasMadeUntilItEnds) {
  const Spelling* made = nullptr;
  {
    const TokenStream::Hold hold(setting.stream);
    made = make("held");
    {
      const TokenStream::Hold inner(setting.stream);  // Has no effect.
      make("inner");
    }
    EXPECT_NE(make("other"), made);
    EXPECT_EQ(made->text(), "\"held\"");
  }
  EXPECT_TRUE(isGivenBack(made));
}

// An argument's tokens come from sources that may end before the invocation does.
TEST_F(TokenLifeTest, AListThatEndsUnderAHoldLeavesItsShareToIt) {
  const Spelling* made = nullptr;
  {
    const TokenStream::Hold hold(setting.stream);
    made = make("result");
    push(made);
  }
  {
    const TokenStream::Hold hold(setting.stream);
    EXPECT_EQ(setting.take(), "\"result\"");
    EXPECT_EQ(setting.take(), "a");
    EXPECT_FALSE(setting.stream.spell("\"more\"") == made);
    EXPECT_EQ(made->text(), "\"result\"");
  }
  EXPECT_TRUE(isGivenBack(made));
}

TEST_F(TokenLifeTest, ASourcePushedUnderAHoldTakesOverWhatItKept) {
  const Spelling* made = nullptr;
  {
    const TokenStream::Hold hold(setting.stream);
    made = make("arg");
    push(made);
  }
  {
    const TokenStream::Hold hold(setting.stream);
    EXPECT_EQ(setting.take(), "\"arg\"");
    EXPECT_EQ(setting.stream.peek(), TK_IDENTIFIER);  // The list has ended.
    push(made);
  }
  EXPECT_FALSE(isGivenBack(made));
  EXPECT_EQ(setting.take(), "\"arg\"");
  EXPECT_EQ(setting.take(), "a");
  EXPECT_TRUE(isGivenBack(made));
}

// In a closed source likewise: the hold around it keeps what is expanded there.
TEST_F(TokenLifeTest, AClosedSourceLeavesItsShareToTheHold) {
  const Spelling* made = nullptr;
  {
    const TokenStream::Hold hold(setting.stream);
    TokenList list = setting.listOf({"x"});
    {
      const TokenStream::Closed closed(setting.stream, list);
      made = make("inside");
      push(made);
      EXPECT_EQ(setting.takeAll(), "\"inside\"|x");
    }
    EXPECT_NE(make("other"), made);
    EXPECT_EQ(made->text(), "\"inside\"");
  }
  EXPECT_TRUE(isGivenBack(made));
}

// A text with a comment is lexed while it is read, and the token looked at may be one that has just been made.
TEST_F(TokenLifeTest, ATokenThatHasBeenLookedAtStays) {
  for (const std::size_t size : {3U, 300U, 17'000U, 100'000U}) {
    const std::string literal = '"' + std::string(size, 'L') + '"';
    setting.push({"/*c*/ " + literal + " " + literal, "end"});
    EXPECT_EQ(setting.take(), " ");
    {
      const TokenStream::Hold hold(setting.stream);
      EXPECT_EQ(setting.take(), " ");
      EXPECT_EQ(setting.stream.peek(), TK_STRING);
      make("x");
    }
    // Nothing that comes and goes meanwhile may take its place.
    for (int round = 0; round < 3; ++round) {
      {
        const TokenStream::Hold hold(setting.stream);
        push(make(std::string(size, 'M')));
      }
      EXPECT_EQ(setting.stream.get(), TK_STRING);
      {
        const TokenStream::Hold hold(setting.stream);
        TokenList list = setting.listOf({"p"});
        const TokenStream::Closed closed(setting.stream, list);
        make(std::string(size, 'N'));
        EXPECT_EQ(setting.takeAll(), "p");
      }
    }
    EXPECT_EQ(setting.stream.get(), TK_STRING);
    EXPECT_TRUE(setting.stream.text() == literal) << size;
    EXPECT_EQ(setting.take(), " ");
    EXPECT_EQ(setting.stream.peek(), TK_STRING);
    {
      const TokenStream::Hold hold(setting.stream);
      make(std::string(size, 'O'));
    }
    EXPECT_TRUE(setting.take() == literal) << size;
    EXPECT_EQ(setting.take(), "end");
  }
}

// An exhausted list is dropped when another is pushed on it; that one owns the tokens of both.
TEST_F(TokenLifeTest, TheSuccessorOfAnExhaustedListOwnsItsTokens) {
  const Spelling* made = nullptr;
  {
    const TokenStream::Hold hold(setting.stream);
    made = make("first");
    push(made);
  }
  EXPECT_EQ(setting.take(), "\"first\"");
  push(made);
  EXPECT_FALSE(isGivenBack(made));
  EXPECT_EQ(setting.take(), "\"first\"");
  EXPECT_EQ(setting.take(), "a");
  EXPECT_TRUE(isGivenBack(made));
}

TEST_F(TokenLifeTest, ExhaustedListsAreDropped) {
  const double before = mostMemory();
  for (int count = 0; count < 300'000; ++count) {
    push(characterSpelling('+'));
    ASSERT_EQ(setting.stream.get(), '+');
  }
  EXPECT_EQ(setting.take(), "a");
  if (kCountsMemory) {
    EXPECT_LT(mostMemory() - before, 10);
  }
}

// Tokens of an argument are borrowed from the list that they stand in.
TEST_F(TokenLifeTest, CollectedListsAreNotUsedAgainBeforeTheyAreReleased) {
  TokenStream::EndedLists ended(setting.stream);
  setting.push({"x", "+", "y"}, setting.hideSetOf("X"));
  const CppTokenScanner* const source = &setting.stream.listSource();
  const SpellingRange rest = setting.stream.listSource().rest();
  {
    const TokenStream::Hold hold(setting.stream);
    const TokenStream::EndedLists::Collecting collecting(ended);
    EXPECT_EQ(setting.takeAll(), "x{X}|+{X}|y{X}|a|<LF>");
  }
  setting.push({"other", "texts", "instead"});
  EXPECT_NE(&setting.stream.listSource(), source);
  EXPECT_EQ(setting.dumpRange({rest}), "x + y");
  EXPECT_EQ(setting.takeAll(), "other|texts|instead");
  ended.release();
  setting.push({"z"});
  EXPECT_TRUE(&setting.stream.listSource() == source || !kKeepsSpares);
}

// ---- Definitions that may be in use ----

struct RetireTest : testing::Test {
  // A definition that counts when it is freed.
  std::shared_ptr<const void> definition() {
    return {&freed, [](int* count) { ++*count; }};
  }

  int freed = 0;
  StreamSetting setting{"a b"};
};

TEST_F(RetireTest, WithoutListsOrHoldsADefinitionIsFreedAtOnce) {
  setting.stream.retire(definition());
  EXPECT_EQ(freed, 1);
  EXPECT_EQ(setting.take(), "a");  // Files use none.
  setting.stream.retire(definition());
  EXPECT_EQ(freed, 2);
}

TEST_F(RetireTest, ADefinitionStaysWhileAListIsRead) {
  setting.push({"x"});
  setting.push({"y", "z"});
  EXPECT_EQ(setting.take(), "y");
  setting.stream.retire(definition());
  setting.stream.retire(definition());
  EXPECT_EQ(setting.take(), "z");
  EXPECT_EQ(setting.take(), "x");
  EXPECT_EQ(freed, 0);
  EXPECT_EQ(setting.take(), "a");
  EXPECT_EQ(freed, 2);
}

TEST_F(RetireTest, ADefinitionStaysUnderAHold) {
  {
    const TokenStream::Hold hold(setting.stream);
    setting.stream.retire(definition());
    EXPECT_EQ(setting.take(), "a");
    EXPECT_EQ(freed, 0);
  }
  EXPECT_EQ(freed, 1);
}

TEST_F(RetireTest, TheLastOfListsAndHoldsCounts) {
  {
    const TokenStream::Hold hold(setting.stream);
    setting.push({"x"});
    setting.stream.retire(definition());
  }
  EXPECT_EQ(freed, 0);
  EXPECT_EQ(setting.take(), "x");
  {
    const TokenStream::Hold hold(setting.stream);
    EXPECT_EQ(setting.take(), "a");
    EXPECT_EQ(freed, 0);
  }
  EXPECT_EQ(freed, 1);
}

TEST_F(RetireTest, AFileAboveAListIsNoEndOfIt) {
  setting.push({"x"});
  setting.pushText("h", "h.h");
  setting.stream.retire(definition());
  EXPECT_EQ(setting.take(), "h");
  EXPECT_EQ(setting.take(), "<LF>");
  EXPECT_EQ(setting.take(), "x");
  EXPECT_EQ(freed, 0);
  EXPECT_EQ(setting.take(), "a");
  EXPECT_EQ(freed, 1);
}

TEST_F(RetireTest, AClosedSourceIsAListToo) {
  {
    const TokenStream::Hold hold(setting.stream);
    TokenList list = setting.listOf({"x"});
    const TokenStream::Closed closed(setting.stream, list);
    setting.stream.retire(definition());
    EXPECT_EQ(setting.takeAll(), "x");
    EXPECT_EQ(freed, 0);
  }
  EXPECT_EQ(freed, 1);
}

TEST(RetiredDefinitionTest, TheStreamFreesWhatIsLeft) {
  int freed = 0;
  {
    StreamSetting setting;
    setting.push({"x"});
    setting.stream.retire(std::shared_ptr<int>(&freed, [](int* count) { ++*count; }));
    EXPECT_EQ(freed, 0);
  }
  EXPECT_EQ(freed, 1);
}

}  // namespace
}  // namespace qnpp
