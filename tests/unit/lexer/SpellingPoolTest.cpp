// Spellings: shared ones, and those of a pool.
#include "lexer/SpellingPool.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <string_view>
#include <vector>

#include "macros/CppMacro.h"
#include "tests/unit/support/Spellings.h"

namespace qnpp {
namespace {

using std::string_view_literals::operator""sv;

struct SpellingPoolTest : testing::Test {
  // What a spelling stands for: a token, several in brackets, or a text that is lexed at each reading.
  static std::string dump(const Spelling& spelling) {
    if (spelling.isSingleToken()) {
      return dumpToken(spelling.kind, spelling.text());
    }
    if (spelling.kind == Spelling::kOpensComment) {
      return "opens a comment: " + visible(spelling.text());
    }
    std::string pieces;
    for (const Spelling* const piece : static_cast<const CompoundSpelling&>(spelling).pieces) {
      pieces += (pieces.empty() ? "" : " ") + dump(*piece);
    }
    return "[" + pieces + "]";
  }

  SpellingSetting setting;
  SpellingPool& pool = setting.pool;
};

TEST(SpellingTest, EveryCharacterHasASharedSpelling) {
  for (int code = 0; code < 256; ++code) {
    const char character = static_cast<char>(code);
    const Spelling& spelling = *characterSpelling(character);
    EXPECT_EQ(&spelling, characterSpelling(character));
    EXPECT_EQ(spelling.text(), std::string_view(&character, 1));
    EXPECT_EQ(spelling.name, nullptr);
    // Letters, digits and CR are no tokens by themselves that stand for no others: they are never asked for.
    const bool isWord = std::string_view("_").find(character) == 0 || (code < 128 && std::isalnum(code) != 0);
    if (!isWord && character != '\r') {
      EXPECT_EQ(dumpToken(spelling.kind, spelling.text()), lexAll(spelling.text())) << code;
    }
  }
  EXPECT_EQ(blankSpelling(), characterSpelling(' '));
}

TEST(SpellingTest, SomeTokensAreWrittenAsTheyStand) {
  SpellingSetting setting;
  CppMacro macro;
  setting.name("MACRO").macro = &macro;
  for (const std::string_view text : {"a", "MACROS", "if", "defined", "1", "\"MACRO\"", "+", " ", "\\\n", "##"}) {
    EXPECT_TRUE(setting.spell(text)->isWrittenAsIs()) << text;
  }
  for (const std::string_view text : {"MACRO", "\n", "_Pragma", "", "a+b", "/**/"}) {
    EXPECT_FALSE(setting.spell(text)->isWrittenAsIs()) << text;
  }
}

struct PoolRow {
  std::string_view text;
  const char* spelling;
};

TEST_F(SpellingPoolTest, ATextIsWhatItLexesInto) {
  const PoolRow rows[] = {
      {"a", "IDENTIFIER:a"},
      {"x1", "IDENTIFIER:x1"},
      {"if", "IF"},
      {"defined", "DEFINED"},
      {"_Pragma", "PRAGMA_OP"},
      {"12", "DEC_INT:12"},
      {"1", "DEC_INT:1"},
      {"0x1uL", "HEX_UINT:0x1uL"},
      {"\"a\"", "STRING:\"a\""},
      {"\"\"", "STRING:\"\""},
      {R"("\"\\")", R"(STRING:"\"\\")"},
      {"'a'", "CHAR:'a'"},
      {"+", "+"},
      {"<<", "SHL"},
      {"##", "PASTE"},
      {" ", "SPACE"},
      {"\n", "NEWLINE"},
      {"\\\r\n", "CONTINUATION:\\<CR><LF>"},
      {"=", "OTHER:="},
      {"\0"sv, "OTHER:<NUL>"},
      {"\"", "OTHER:\""},
      {"", "[]"},
      {"+-", "[+ -]"},
      {"1a", "[DEC_INT:1 IDENTIFIER:a]"},
      {"0x", "[OCT_INT:0 IDENTIFIER:x]"},
      {"a ", "[IDENTIFIER:a SPACE]"},
      {"L\"x\"", "[IDENTIFIER:L STRING:\"x\"]"},
      {"\"a\"b\"", "[STRING:\"a\" IDENTIFIER:b OTHER:\"]"},
      {"\"a\\\"", "[OTHER:\" IDENTIFIER:a OTHER:\\ OTHER:\"]"},
      {"\"\\n\"", "[OTHER:\" OTHER:\\ IDENTIFIER:n OTHER:\"]"},
      {"\"\\", "[OTHER:\" OTHER:\\]"},
      {"\"a\nb\"", "[OTHER:\" IDENTIFIER:a NEWLINE IDENTIFIER:b OTHER:\"]"},
      {"\"a\rb\"", "STRING:\"a<CR>b\""},
      {"\"a\0b\""sv, "STRING:\"a<NUL>b\""},
      {"\r", "NEWLINE"},
      {"a\r\n", "[IDENTIFIER:a NEWLINE]"},
      {"/*", "opens a comment: /*"},
      {"a//b", "opens a comment: a//b"},
      {"\"//\"", "STRING:\"//\""},
  };
  for (const PoolRow& row : rows) {
    const Spelling& spelling = *pool.spell(row.text);
    EXPECT_EQ(dump(spelling), row.spelling) << visible(row.text);
    EXPECT_TRUE(spelling.text() == row.text || row.text == "\r") << visible(row.text);
  }
  EXPECT_EQ(setting.effectCount, 0U);  // Nothing was read that writes or reports.
  EXPECT_EQ(setting.diagnostics.str(), "");
}

TEST_F(SpellingPoolTest, NamesAndCharactersAreShared) {
  Name& known = setting.name("known");
  EXPECT_EQ(pool.spell(TK_IDENTIFIER, "known"), &known.spelling);
  EXPECT_EQ(pool.spell("known"), &known.spelling);
  EXPECT_EQ(pool.spell(TK_IF, "if"), &setting.names.find("if")->spelling);
  EXPECT_EQ(pool.spell(TK_DEFINED, "defined"), &setting.names.find("defined")->spelling);
  EXPECT_EQ(pool.spell('+', "+"), characterSpelling('+'));
  EXPECT_EQ(pool.spell(TK_SPACE, " "), blankSpelling());
  EXPECT_EQ(pool.spell(TK_NEWLINE, "\n"), characterSpelling('\n'));
  EXPECT_EQ(pool.spell(TK_OTHER, ";"), characterSpelling(';'));
  EXPECT_EQ(pool.spell("+"), characterSpelling('+'));
}

TEST_F(SpellingPoolTest, OneDigitAndOneLetterAreTokensOfTheirKinds) {
  EXPECT_EQ(dump(*pool.spell(TK_DEC_INT, "1")), "DEC_INT:1");
  EXPECT_EQ(dump(*pool.spell(TK_OCT_INT, "0")), "OCT_INT:0");
  EXPECT_EQ(dump(*pool.spell(TK_IDENTIFIER, "x")), "IDENTIFIER:x");
}

TEST_F(SpellingPoolTest, TokenTextsAreCopied) {
  std::string text = "\"string\"";
  const Spelling& spelling = *pool.spell(TK_STRING, text);
  text.assign(text.size(), '-');
  EXPECT_EQ(spelling.text(), "\"string\"");
}

TEST_F(SpellingPoolTest, LexesATextIntoSpellings) {
  std::vector<const Spelling*> tokens{blankSpelling()};
  pool.lex("f(a, \"b\") /*\n*/+ 1", tokens);
  std::string dumped;
  for (const Spelling* const token : tokens) {
    dumped += dump(*token) + " ";
  }
  EXPECT_EQ(dumped, "SPACE IDENTIFIER:f ( IDENTIFIER:a , SPACE STRING:\"b\" ) SPACE SPACE + SPACE DEC_INT:1 ");
  EXPECT_EQ(setting.written(), "\n");
}

TEST_F(SpellingPoolTest, OlderSpellingsSurviveARelease) {
  const Spelling& older = *pool.spell("\"older\"");
  const SpellingPool::Mark mark = pool.mark();
  for (int count = 0; count < 5000; ++count) {
    pool.spell("\"newer " + std::to_string(count) + "\"");
    pool.spell("unknown" + std::to_string(count));
    pool.spell("a+" + std::to_string(count));
  }
  EXPECT_LT(mark, pool.mark());
  pool.release(mark);
  EXPECT_EQ(pool.mark(), mark);
  EXPECT_EQ(older.text(), "\"older\"");
  EXPECT_EQ(dump(*pool.spell("x-y")), "[IDENTIFIER:x - IDENTIFIER:y]");
  EXPECT_EQ(older.text(), "\"older\"");
}

TEST_F(SpellingPoolTest, KeptTextsLiveAsLongAsSpellings) {
  const SpellingPool::Mark mark = pool.mark();
  std::string text = "text";
  const std::string_view kept = pool.store(text);
  text = "else";
  EXPECT_EQ(kept, "text");
  EXPECT_LT(mark, pool.mark());
}

TEST_F(SpellingPoolTest, WordsLearnThatTheyHaveBecomeNames) {
  const Spelling& before = *pool.spell("later");
  const Spelling& inside = *pool.spell("+later");
  const Spelling& other = *pool.spell("other");
  EXPECT_EQ(before.name, nullptr);
  Name& name = setting.name("later");
  EXPECT_EQ(before.name, nullptr);
  pool.nameBecameKnown(name);
  EXPECT_EQ(before.name, &name);
  EXPECT_EQ(static_cast<const CompoundSpelling&>(inside).pieces[1]->name, &name);
  EXPECT_EQ(other.name, nullptr);
}

TEST_F(SpellingPoolTest, ReleasedWordsLearnNothing) {
  const Spelling& kept = *pool.spell("later");
  const SpellingPool::Mark mark = pool.mark();
  pool.spell("later");
  pool.release(mark);
  const std::string_view reused = pool.store(std::string(sizeof(Spelling) + 16, 'x'));
  pool.nameBecameKnown(setting.name("later"));
  EXPECT_EQ(reused, std::string(sizeof(Spelling) + 16, 'x'));  // Not written over.
  EXPECT_NE(kept.name, nullptr);
}

TEST_F(SpellingPoolTest, EffectsAreCountedForEveryoneWhoAsks) {
  const std::uint64_t before = setting.lexer.effectCount();
  std::vector<const Spelling*> tokens;
  pool.lex("a /* b */ // c", tokens);
  EXPECT_EQ(setting.lexer.effectCount(), before);
  pool.lex("a /*\n*/ /* b", tokens);
  EXPECT_EQ(setting.lexer.effectCount(), before + 2);
}

}  // namespace
}  // namespace qnpp
