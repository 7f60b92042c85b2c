// The command line: words in, options out.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qnpp {

/// One row of the table that says which options a program has.
///
/// The name is what follows the leading `-`, so "-help" is the row of `--help`. A second character that is a blank or
/// an underscore makes the first one a single-letter option with a value: with a blank ("I ") the value may be attached
/// or be the next word, with an underscore ("D_") it must be attached.
struct OptionEntry {
  std::string_view name;
  int argumentCount;  ///< How many values the option takes; kTakesNoValue for one that only is there or not.
  /// Reported when the value is missing; "%d" in it stands for the number of the occurrence among those of its option.
  std::string_view missingValueMessage;

  static constexpr int kTakesNoValue = -1;

  bool isLetter() const { return name.size() == 2 && (name[1] == ' ' || name[1] == '_'); }
  bool mustBeAttached() const { return isLetter() && name[1] == '_'; }
};

/// Where on the command line plain arguments (words that do not begin with `-`) are accepted.
enum class PlainArguments { Anywhere, BehindOptions };

/// A command line, taken apart by a table of options.
///
/// Parsing only records; nothing is written before one of the report and value operations is called, so the caller
/// decides which complaints matter and in which order. Every message goes to `messages` behind the prefix and ends in a
/// line end.
///
/// `argv` and its words, the table, the prefix and `messages` must outlive the parser: it looks into them.
class OptionParser {
 public:
  OptionParser(int argc, const char* const* argv, std::span<const OptionEntry> table, std::string_view prefix,
               PlainArguments plainArguments, std::ostream& messages);

  /// These two report every offending word and answer whether there was one.
  bool reportUnknownOptions() const;
  bool reportMisplacedArguments() const;

  /// Both are warnings: a named option that was given again, and the words that `--help` and its like leave unread.
  void warnAboutRepeatedOptions() const;
  void warnAboutIgnoredWords() const;

  /// Options are asked for by their name without the mark of a letter option: "D", "o", "-help". An option that lacks
  /// its value is present all the same.
  bool isPresent(std::string_view option) const;

  /// The values of a letter option, in order. If an occurrence has none, the first such is reported by its number and
  /// the answer is empty.
  std::optional<std::vector<std::string_view>> letterValues(std::string_view letter) const;

  /// The value of a named option, taken from its last occurrence. A missing value is reported, and the answer is empty.
  std::optional<std::string_view> value(std::string_view option) const;

  std::size_t plainArgumentCount() const;
  std::string_view plainArgument(std::size_t position) const;

 private:
  // Something that happened on the way; the key is the name of a valueless option or one of the special keys.
  struct Event {
    std::string_view key;
    std::string_view value;    // The word or name to be reported, if it is one.
    std::size_t position = 0;  // The place among the words, where all the others are to be reported.
  };

  // One occurrence of a letter option.
  struct LetterOccurrence {
    char letter;
    const char* value;  // The rest of the word, or the next word; null if it lacks one.
  };

  void parse();
  const OptionEntry* findEntry(std::string_view option) const;
  void recordValueless(const OptionEntry& entry, std::size_t position);
  // These two return the position of the first word behind the option and its values.
  std::size_t recordLetter(const OptionEntry& entry, std::size_t position);
  std::size_t recordNamed(const OptionEntry& entry, std::size_t position);
  void misplacePlainArguments();
  std::string_view missingValueMessage(std::string_view option) const;

  template <typename Visitor>
  void forEachEvent(std::string_view key, Visitor visit) const;

  std::span<const char* const> words_;  // argv[1] and on, borrowed.
  std::span<const OptionEntry> table_;  // Borrowed.
  std::string_view prefix_;
  PlainArguments plainArguments_;
  std::ostream& messages_;  // Borrowed.

  std::vector<Event> events_;
  std::vector<LetterOccurrence> letters_;
  // By name: the values of named options (none if the option lacks its value) and the plain arguments.
  std::map<std::string_view, std::vector<std::string_view>> values_;
};

}  // namespace qnpp
