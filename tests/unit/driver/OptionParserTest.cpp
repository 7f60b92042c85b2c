#include "driver/OptionParser.h"

#include <gtest/gtest.h>

#include <array>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

namespace qnpp {
namespace {

// The shapes of qnpp's own table, with messages that are easy to tell apart.
constexpr std::array<OptionEntry, 7> kTable{{
    {"I ", 1, "no I %d"},
    {"D_", 1, "no D %d"},
    {"o", 1, "no o"},
    {"p", 2, "no p"},
    {"xy", 1, "no xy"},
    {"v", OptionEntry::kTakesNoValue, ""},
    {"-long", OptionEntry::kTakesNoValue, ""},
}};

// A parser together with the words and the messages that it looks into.
class Parsed {
 public:
  Parsed(std::initializer_list<const char*> words, PlainArguments plainArguments = PlainArguments::Anywhere)
      : argv_(withProgramName(words)),
        parser_(static_cast<int>(argv_.size()), argv_.data(), kTable, "p: ", plainArguments, messages_) {}

  const OptionParser* operator->() const { return &parser_; }

  // Everything that has been reported since the last call.
  std::string messages() {
    std::string text = messages_.str();
    messages_.str("");
    return text;
  }

  // The values of a letter option between angle brackets, or "none".
  std::string letterValues(std::string_view letter) const {
    const auto values = parser_.letterValues(letter);
    if (!values) return "none";
    std::string text;
    for (const std::string_view value : *values) text.append("<").append(value).append(">");
    return text;
  }

  std::string plainArguments() const {
    std::string text;
    for (std::size_t i = 0; i < parser_.plainArgumentCount(); ++i) {
      text.append("<").append(parser_.plainArgument(i)).append(">");
    }
    return text;
  }

  std::string unknownOptions() {
    parser_.reportUnknownOptions();
    return messages();
  }

  std::string ignoredWords() {
    parser_.warnAboutIgnoredWords();
    return messages();
  }

 private:
  static std::vector<const char*> withProgramName(std::initializer_list<const char*> words) {
    std::vector<const char*> argv{"program"};
    argv.insert(argv.end(), words);
    return argv;
  }

  std::vector<const char*> argv_;
  std::ostringstream messages_;
  OptionParser parser_;
};

TEST(OptionParser, NothingIsPresentOnAnEmptyCommandLine) {
  Parsed parsed{};
  for (const char* option : {"I", "D", "o", "p", "v", "-long"}) EXPECT_FALSE(parsed->isPresent(option)) << option;
  EXPECT_EQ(parsed->plainArgumentCount(), 0U);
  EXPECT_FALSE(parsed->reportUnknownOptions());
  EXPECT_FALSE(parsed->reportMisplacedArguments());
  parsed->warnAboutRepeatedOptions();
  parsed->warnAboutIgnoredWords();
  EXPECT_EQ(parsed.letterValues("I"), "");
  EXPECT_EQ(parsed.messages(), "");
}

TEST(OptionParser, SurvivesAnEmptyArgv) {
  std::ostringstream messages;
  const char* const none[] = {nullptr};
  const OptionParser parser(0, none, kTable, "p: ", PlainArguments::Anywhere, messages);
  EXPECT_EQ(parser.plainArgumentCount(), 0U);
}

TEST(OptionParser, WordsWithoutDashArePlainArgumentsWhereverTheyStand) {
  EXPECT_EQ(Parsed({"a", "-DX", "b", "-o", "out", "c"}).plainArguments(), "<a><b><c>");
}

TEST(OptionParser, AnEmptyWordIsAPlainArgument) { EXPECT_EQ(Parsed({"", ""}).plainArguments(), "<><>"); }

TEST(OptionParser, EveryUnknownOptionIsReportedAsItWasWritten) {
  Parsed parsed{"-x", "a", "-vv", "--lon", "-v"};
  EXPECT_TRUE(parsed->reportUnknownOptions());
  EXPECT_EQ(parsed.messages(),
            "p: unknown option '-x' ('-h' for help)\n"
            "p: unknown option '-vv' ('-h' for help)\n"
            "p: unknown option '--lon' ('-h' for help)\n");
}

TEST(OptionParser, DashesAloneAreUnknownOptions) {
  EXPECT_EQ(Parsed({"-"}).unknownOptions(), "p: unknown option '-' ('-h' for help)\n");
  EXPECT_EQ(Parsed({"--"}).unknownOptions(), "p: unknown option '--' ('-h' for help)\n");
}

TEST(OptionParser, NamedOptionsMustMatchAsAWhole) {
  EXPECT_EQ(Parsed({"-oout"}).unknownOptions(), "p: unknown option '-oout' ('-h' for help)\n");
  EXPECT_EQ(Parsed({"-long"}).unknownOptions(), "p: unknown option '-long' ('-h' for help)\n");
  EXPECT_EQ(Parsed({"--v"}).unknownOptions(), "p: unknown option '--v' ('-h' for help)\n");
  EXPECT_EQ(Parsed({"-d"}).unknownOptions(), "p: unknown option '-d' ('-h' for help)\n");
}

TEST(OptionParser, ValuelessOptionsArePresent) {
  EXPECT_TRUE(Parsed({"-v"})->isPresent("v"));
  EXPECT_FALSE(Parsed({"-v"})->isPresent("-long"));
  EXPECT_TRUE(Parsed({"--long"})->isPresent("-long"));
}

// The words before the option keep a blank behind each, those after it have one between them.
TEST(OptionParser, AValuelessOptionIgnoresAllOtherWords) {
  struct Row {
    std::initializer_list<const char*> words;
    const char* messages;
  };
  const Row rows[] = {
      {{"-v"}, ""},
      {{"a", "-v"}, "p: argument(s) 'a ' is(are) ignored\n"},
      {{"-v", "a"}, "p: argument(s) 'a' is(are) ignored\n"},
      {{"-v", "a", "b"}, "p: argument(s) 'a b' is(are) ignored\n"},
      {{"a", "b", "-v", "c", "d"}, "p: argument(s) 'a b c d' is(are) ignored\n"},
      {{"-DX", "-o", "f", "-v"}, "p: argument(s) '-DX -o f ' is(are) ignored\n"},
      {{"-v", "--long"}, "p: argument(s) '--long' is(are) ignored\np: argument(s) '-v ' is(are) ignored\n"},
      {{"-v", "-v"}, "p: argument(s) '-v' is(are) ignored\np: argument(s) '-v ' is(are) ignored\n"},
      {{"-v", ""}, ""},
      {{"", "-v"}, "p: argument(s) ' ' is(are) ignored\n"},
  };
  for (const Row& row : rows) EXPECT_EQ(Parsed(row.words).ignoredWords(), row.messages);
}

TEST(OptionParser, WordsBehindAValuelessOptionAreStillParsed) {
  Parsed parsed{"-v", "-x", "-DA", "file"};
  EXPECT_EQ(parsed.unknownOptions(), "p: unknown option '-x' ('-h' for help)\n");
  EXPECT_EQ(parsed.letterValues("D"), "<A>");
  EXPECT_EQ(parsed.plainArguments(), "<file>");
}

TEST(OptionParser, LetterValuesMayBeAttached) {
  Parsed parsed{"-Idir", "-DA=1", "-I=x", "-D-o", "-I-v"};
  EXPECT_EQ(parsed.letterValues("I"), "<dir><=x><-v>");
  EXPECT_EQ(parsed.letterValues("D"), "<A=1><-o>");
  EXPECT_FALSE(parsed->isPresent("v"));
}

TEST(OptionParser, ALetterWithABlankTakesTheNextWord) {
  EXPECT_EQ(Parsed({"-I", "dir", "-I", "more"}).letterValues("I"), "<dir><more>");
  EXPECT_EQ(Parsed({"-I", "dir"}).plainArguments(), "");
  EXPECT_EQ(Parsed({"-I", ""}).letterValues("I"), "<>");
}

// Only a word that begins like the first option of the table is taken in spite of its dash.
TEST(OptionParser, ALetterWithABlankTakesAWordWithADashOnlyIfItNamesTheFirstOption) {
  EXPECT_EQ(Parsed({"-I", "-Ifoo"}).letterValues("I"), "<-Ifoo>");
  EXPECT_EQ(Parsed({"-I", "-I"}).letterValues("I"), "<-I>");
  EXPECT_EQ(Parsed({"-I", "-I", "-I", "dir"}).letterValues("I"), "<-I><dir>");

  Parsed unknown{"-I", "-x"};
  EXPECT_EQ(unknown.unknownOptions(), "p: unknown option '-x' ('-h' for help)\n");
  EXPECT_EQ(unknown.letterValues("I"), "none");

  Parsed known{"-I", "-DA"};
  EXPECT_EQ(known.letterValues("I"), "none");
  EXPECT_EQ(known.letterValues("D"), "<A>");

  Parsed dash{"-I", "-"};
  EXPECT_EQ(dash.unknownOptions(), "p: unknown option '-' ('-h' for help)\n");
}

TEST(OptionParser, ALetterWithAnUnderscoreNeverTakesTheNextWord) {
  Parsed parsed{"-D", "NAME"};
  EXPECT_EQ(parsed.letterValues("D"), "none");
  EXPECT_EQ(parsed.messages(), "p: no D 1\n");
  EXPECT_EQ(parsed.plainArguments(), "<NAME>");
}

TEST(OptionParser, TheFirstOccurrenceOfALetterWithoutValueIsReportedByItsNumber) {
  struct Row {
    std::initializer_list<const char*> words;
    const char* letter;
    const char* message;
  };
  const Row rows[] = {
      {{"-D"}, "D", "p: no D 1\n"},
      {{"-DA", "-D"}, "D", "p: no D 2\n"},
      {{"-D", "-DA", "-D"}, "D", "p: no D 1\n"},
      {{"-DA", "-Ix", "-DB", "-I", "-D"}, "D", "p: no D 3\n"},
      {{"-DA", "-Ix", "-DB", "-I", "-D"}, "I", "p: no I 2\n"},
      {{"-I"}, "I", "p: no I 1\n"},
  };
  for (const Row& row : rows) {
    Parsed parsed(row.words);
    EXPECT_TRUE(parsed->isPresent(row.letter));
    EXPECT_EQ(parsed.letterValues(row.letter), "none");
    EXPECT_EQ(parsed.messages(), row.message);
  }
}

TEST(OptionParser, ANamedOptionTakesTheNextWord) {
  EXPECT_EQ(Parsed({"-o", "out"})->value("o"), "out");
  EXPECT_EQ(Parsed({"-o", "out"}).plainArguments(), "");
  EXPECT_EQ(Parsed({"-o", ""})->value("o"), "");
}

TEST(OptionParser, ANamedOptionTakesAWordWithADashUnlessTheTableKnowsIt) {
  for (const char* word : {"-zzz", "-", "--", "-vv", "-long", "-oo"}) {
    EXPECT_EQ(Parsed({"-o", word})->value("o"), word);
    EXPECT_EQ(Parsed({"-o", word}).unknownOptions(), "");
  }
  for (const char* word : {"-v", "--long", "-o", "-p", "-I", "-Idir", "-D", "-DA=1"}) {
    Parsed parsed{"-o", word};
    EXPECT_TRUE(parsed->isPresent("o"));
    EXPECT_EQ(parsed->value("o"), std::nullopt) << word;
    EXPECT_EQ(parsed.messages(), "p: no o\n");
  }
  EXPECT_TRUE(Parsed({"-o", "-v"})->isPresent("v"));
}

TEST(OptionParser, ANamedOptionAtTheEndLacksItsValue) {
  Parsed parsed{"a", "-o"};
  EXPECT_EQ(parsed->value("o"), std::nullopt);
  EXPECT_EQ(parsed.messages(), "p: no o\n");
}

TEST(OptionParser, ANamedOptionThatWasNeverGivenLacksItsValue) {
  Parsed parsed{"-p", "x"};
  EXPECT_EQ(parsed->value("o"), std::nullopt);
  EXPECT_EQ(parsed.messages(), "p: no o\n");
}

// Only a blank or an underscore as the second character makes a letter option.
TEST(OptionParser, ANamedOptionMayHaveTwoCharacters) {
  Parsed parsed{"-xy", "value", "-xyz"};
  EXPECT_EQ(parsed->value("xy"), "value");
  EXPECT_EQ(parsed.unknownOptions(), "p: unknown option '-xyz' ('-h' for help)\n");
}

TEST(OptionParser, ANamedOptionTakesAsManyWordsAsItsArgumentCount) {
  EXPECT_EQ(Parsed({"-p", "1", "2", "3"}).plainArguments(), "<3>");
  EXPECT_TRUE(Parsed({"-p", "1", "-v", "3"})->isPresent("v"));
  EXPECT_EQ(Parsed({"-p", "1", "-v", "3"}).plainArguments(), "<3>");
}

TEST(OptionParser, TheLastOccurrenceOfANamedOptionWinsWithAWarningForEachRepetition) {
  Parsed twice{"-o", "a", "-o", "b"};
  EXPECT_EQ(twice->value("o"), "b");
  twice->warnAboutRepeatedOptions();
  EXPECT_EQ(twice.messages(), "p: '-o' option appears more than once\n\tonly the last one will be considered\n");

  Parsed thrice{"-o", "a", "-o", "b", "-o", "c"};
  EXPECT_EQ(thrice->value("o"), "c");
  thrice->warnAboutRepeatedOptions();
  EXPECT_EQ(thrice.messages(),
            "p: '-o' option appears more than once\n\tonly the last one will be considered\n"
            "p: '-o' option appears more than once\n\tonly the last one will be considered\n");

  Parsed different{"-o", "a", "-p", "b", "c"};
  different->warnAboutRepeatedOptions();
  EXPECT_EQ(different.messages(), "");
}

TEST(OptionParser, AnOccurrenceWithoutValueCountsAsOneForTheRepetition) {
  Parsed first{"-o", "-o", "b"};
  first->warnAboutRepeatedOptions();
  EXPECT_EQ(first.messages(), "p: '-o' option appears more than once\n\tonly the last one will be considered\n");
  EXPECT_EQ(first->value("o"), "b");

  Parsed last{"-o", "a", "-o"};
  last->warnAboutRepeatedOptions();
  EXPECT_EQ(last.messages(), "p: '-o' option appears more than once\n\tonly the last one will be considered\n");
  EXPECT_EQ(last->value("o"), std::nullopt);
}

TEST(OptionParser, RepeatedLettersAreNoRepetition) {
  Parsed parsed{"-DA", "-DA", "-Ix", "-Ix"};
  parsed->warnAboutRepeatedOptions();
  EXPECT_EQ(parsed.messages(), "");
  EXPECT_EQ(parsed.letterValues("D"), "<A><A>");
}

TEST(OptionParser, PlainArgumentsBeforeAnOptionAreMisplacedWhereOptionsComeFirst) {
  Parsed parsed({"-DA", "a", "b", "-o", "out", "c"}, PlainArguments::BehindOptions);
  EXPECT_TRUE(parsed->reportMisplacedArguments());
  EXPECT_EQ(parsed.messages(),
            "p: 'a' argument is misplaced ('-h' for help)\n"
            "p: 'b' argument is misplaced ('-h' for help)\n");
  EXPECT_EQ(parsed.plainArguments(), "<c>");

  EXPECT_FALSE(Parsed({"-o", "out", "c"}, PlainArguments::BehindOptions)->reportMisplacedArguments());
  EXPECT_FALSE(Parsed({"a", "-v"}, PlainArguments::Anywhere)->reportMisplacedArguments());
}

}  // namespace
}  // namespace qnpp
