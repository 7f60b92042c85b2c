#include "driver/OptionParser.h"

#include <algorithm>

namespace qnpp {
namespace {

// Keys of the records that stand for no option of the table.
constexpr std::string_view kUnknownOption = "___unk_opt";
constexpr std::string_view kRepeatedOption = "___dup_opt";
constexpr std::string_view kIgnoredWords = "___arg_ign";
constexpr std::string_view kPlainArgument = "___arg_a_opt";
constexpr std::string_view kMisplacedArgument = "___arg_misp";

bool looksLikeOption(std::string_view word) { return word.starts_with('-'); }

std::string_view withoutDash(std::string_view word) { return word.substr(1); }

// What a valueless option leaves unread: every other word of the command line. The words before it keep a blank behind
// each, those after it have one between them, so for `-h` the words `a -h b c` give "a b c" and `a -h` gives "a ".
std::string joinOtherWords(std::span<const char* const> words, std::size_t position) {
  std::string text;
  for (std::size_t i = 0; i < position; ++i) {
    text.append(words[i]).push_back(' ');
  }
  for (std::size_t i = position + 1; i < words.size(); ++i) {
    if (i > position + 1) {
      text.push_back(' ');
    }
    text.append(words[i]);
  }
  return text;
}

std::string fillNumber(std::string_view message, std::size_t number) {
  std::string text(message);
  const std::size_t place = text.find("%d");
  if (place != std::string::npos) {
    text.replace(place, 2, std::to_string(number));
  }
  return text;
}

}  // namespace

OptionParser::OptionParser(int argc, const char* const* argv, std::span<const OptionEntry> table,
                           std::string_view prefix, PlainArguments plainArguments, std::ostream& messages)
    : words_(argv + std::clamp(argc, 0, 1), static_cast<std::size_t>(std::max(argc - 1, 0))),
      table_(table),
      prefix_(prefix),
      plainArguments_(plainArguments),
      messages_(messages) {
  letters_.reserve(words_.size());
  parse();
}

void OptionParser::parse() {
  std::size_t position = 0;
  while (position < words_.size()) {
    const std::string_view word = words_[position];
    if (!looksLikeOption(word)) {
      values_[kPlainArgument].push_back(word);
      ++position;
      continue;
    }
    if (plainArguments_ == PlainArguments::BehindOptions) misplacePlainArguments();

    const OptionEntry* entry = findEntry(withoutDash(word));
    if (entry == nullptr) {
      events_.push_back({kUnknownOption, word});
      ++position;
    } else if (entry->argumentCount == OptionEntry::kTakesNoValue) {
      recordValueless(*entry, position);
      ++position;
    } else if (entry->isLetter()) {
      position = recordLetter(*entry, position);
    } else {
      position = recordNamed(*entry, position);
    }
  }
}

// A letter option matches whatever follows its letter, all others must match as a whole; the first row that fits wins.
const OptionEntry* OptionParser::findEntry(std::string_view option) const {
  for (const OptionEntry& entry : table_) {
    const bool matches = entry.isLetter() ? option.starts_with(entry.name[0]) : option == entry.name;
    if (matches) {
      return &entry;
    }
  }
  return nullptr;
}

void OptionParser::recordValueless(const OptionEntry& entry, std::size_t position) {
  events_.push_back({entry.name, {}});
  // Joined only when they are reported, one text after the other: each is nearly as long as the command line.
  events_.push_back({kIgnoredWords, {}, position});
}

// The next word may serve as the value of a letter option that allows it, but a word with a dash only if it begins like
// the first option of the table, whatever the option at hand. Thus `-I -Ifoo` searches the directory "-Ifoo", whereas
// in `-I -x` the `-I` lacks its value and `-x` is an option of its own.
std::size_t OptionParser::recordLetter(const OptionEntry& entry, std::size_t position) {
  const char letter = entry.name[0];
  const char* const attached = words_[position] + 2;  // Behind the dash and the letter.
  ++position;
  if (*attached != '\0') {
    letters_.push_back({letter, attached});
    return position;
  }
  if (entry.mustBeAttached() || position == words_.size()) {
    letters_.push_back({letter, nullptr});
    return position;
  }
  const char* const next = words_[position];
  if (looksLikeOption(next) && !withoutDash(next).starts_with(table_.front().name[0])) {
    letters_.push_back({letter, nullptr});
    return position;
  }
  letters_.push_back({letter, next});
  return position + 1;
}

// The last occurrence wins, even when it lacks its value. A following word is a value unless it is an option that the
// table knows: `-o -v` has no value, `-o -zzz` writes to the file "-zzz".
std::size_t OptionParser::recordNamed(const OptionEntry& entry, std::size_t position) {
  const auto [record, isNew] = values_.try_emplace(entry.name);
  if (!isNew) {
    events_.push_back({kRepeatedOption, entry.name});
    record->second.clear();
  }
  ++position;
  for (int taken = 0; taken < entry.argumentCount && position < words_.size(); ++taken, ++position) {
    const std::string_view word = words_[position];
    if (looksLikeOption(word) && findEntry(withoutDash(word)) != nullptr) {
      break;
    }
    record->second.push_back(word);
  }
  return position;
}

void OptionParser::misplacePlainArguments() {
  const auto plain = values_.find(kPlainArgument);
  if (plain == values_.end()) {
    return;
  }
  for (const std::string_view word : plain->second) {
    events_.push_back({kMisplacedArgument, word});
  }
  values_.erase(plain);
}

template <typename Visitor>
void OptionParser::forEachEvent(std::string_view key, Visitor visit) const {
  for (const Event& event : events_) {
    if (event.key == key) {
      visit(event);
    }
  }
}

bool OptionParser::reportUnknownOptions() const {
  bool found = false;
  forEachEvent(kUnknownOption, [&](const Event& event) {
    messages_ << prefix_ << "unknown option '" << event.value << "' ('-h' for help)\n";
    found = true;
  });
  return found;
}

bool OptionParser::reportMisplacedArguments() const {
  bool found = false;
  forEachEvent(kMisplacedArgument, [&](const Event& event) {
    messages_ << prefix_ << "'" << event.value << "' argument is misplaced ('-h' for help)\n";
    found = true;
  });
  return found;
}

void OptionParser::warnAboutRepeatedOptions() const {
  forEachEvent(kRepeatedOption, [&](const Event& event) {
    messages_ << prefix_ << "'-" << event.value
              << "' option appears more than once\n\tonly the last one will be considered\n";
  });
}

void OptionParser::warnAboutIgnoredWords() const {
  forEachEvent(kIgnoredWords, [&](const Event& event) {
    const std::string text = joinOtherWords(words_, event.position);
    if (!text.empty()) {
      messages_ << prefix_ << "argument(s) '" << text << "' is(are) ignored\n";
    }
  });
}

bool OptionParser::isPresent(std::string_view option) const {
  const auto isEvent = [&](const Event& event) { return event.key == option; };
  const auto isLetter = [&](const LetterOccurrence& occurrence) { return occurrence.letter == option[0]; };
  return values_.contains(option) || std::any_of(events_.begin(), events_.end(), isEvent) ||
         (option.size() == 1 && std::any_of(letters_.begin(), letters_.end(), isLetter));
}

std::optional<std::vector<std::string_view>> OptionParser::letterValues(std::string_view letter) const {
  std::vector<std::string_view> values;
  values.reserve(letters_.size());
  for (const LetterOccurrence& occurrence : letters_) {
    if (occurrence.letter != letter[0]) {
      continue;
    }
    if (occurrence.value == nullptr) {
      messages_ << prefix_ << fillNumber(missingValueMessage(letter), values.size() + 1) << '\n';
      return std::nullopt;
    }
    values.emplace_back(occurrence.value);
  }
  return values;
}

std::optional<std::string_view> OptionParser::value(std::string_view option) const {
  const auto record = values_.find(option);
  if (record == values_.end() || record->second.empty()) {
    messages_ << prefix_ << missingValueMessage(option) << '\n';
    return std::nullopt;
  }
  return record->second.front();
}

std::size_t OptionParser::plainArgumentCount() const {
  const auto plain = values_.find(kPlainArgument);
  return plain == values_.end() ? 0 : plain->second.size();
}

std::string_view OptionParser::plainArgument(std::size_t position) const {
  return values_.at(kPlainArgument).at(position);
}

std::string_view OptionParser::missingValueMessage(std::string_view option) const {
  const OptionEntry* entry = findEntry(option);
  return entry == nullptr ? std::string_view() : entry->missingValueMessage;
}

}  // namespace qnpp
