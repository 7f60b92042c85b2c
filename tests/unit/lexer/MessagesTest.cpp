// The table of messages.
#include "lexer/Messages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>

#include "tests/support/Files.h"
#include "tests/unit/support/Streams.h"

namespace qnpp {
namespace {

TEST(MessagesTest, TheTableHoldsEachMessageInItsPlace) {
  EXPECT_EQ(messageTable().size(), static_cast<std::size_t>(Message::ScannerFailed) + 1);
  for (std::size_t index = 0; index < messageTable().size(); ++index) {
    EXPECT_EQ(static_cast<std::size_t>(messageTable()[index].message), index);
    EXPECT_EQ(&entryOf(static_cast<Message>(index)), &messageTable()[index]);
  }
}

TEST(MessagesTest, IdentifiersAreUniqueLowerCaseWords) {
  std::set<std::string_view> seen;
  for (const MessageEntry& entry : messageTable()) {
    const std::string_view identifier = entry.identifier;
    EXPECT_TRUE(seen.insert(identifier).second) << identifier;
    EXPECT_TRUE(std::all_of(identifier.begin(), identifier.end(), [](char byte) {
      return (byte >= 'a' && byte <= 'z') || byte == '-';
    })) << identifier;
    EXPECT_TRUE(!identifier.empty() && identifier.front() != '-' && identifier.back() != '-' &&
                identifier.find("--") == std::string_view::npos)
        << identifier;
  }
}

TEST(MessagesTest, TextsAreUniqueAndHaveNoFullStop) {
  std::set<std::string_view> seen;
  for (const MessageEntry& entry : messageTable()) {
    EXPECT_TRUE(seen.insert(entry.text).second) << entry.text;
    EXPECT_NE(entry.text.back(), '.') << entry.text;
    EXPECT_EQ(std::count(entry.text.begin(), entry.text.end(), '%'), entry.text.find("%s") == entry.text.npos ? 0 : 1)
        << entry.text;
  }
}

TEST(MessagesTest, TheDetailStandsInItsPlace) {
  EXPECT_EQ(textOf(Message::CannotOpenFile, "a.h"), "Cannot open file: a.h");
  EXPECT_EQ(textOf(Message::CannotOpenFile, "%s %d"), "Cannot open file: %s %d");
  EXPECT_EQ(textOf(Message::IncompatibleRedefinition, "A"), "Macro \"A\" has an incompatible redefinition");
  EXPECT_EQ(textOf(Message::ErrorDirective, ""), "#error directive: ");
  EXPECT_EQ(textOf(Message::PasteAtEnd, "ignored"), "'##' operator cannot be at the end of the replacement list");
}

// What the manual has as an item: the text in backquotes, with what varies in italics, and with its grade.
TEST(MessagesTest, TheManualExplainsEachText) {
  const std::string manual = readFile(QNPP_SOURCE_DIR "/docs/qnpp.1.md");
  const std::size_t begin = manual.find("\n## DIAGNOSTICS\n");
  ASSERT_NE(begin, std::string::npos);
  const std::string section = manual.substr(begin, manual.find("\n## ", begin + 1) - begin);
  for (const MessageEntry& entry : messageTable()) {
    if (entry.grade == Grade::Failure) {
      // Its text is the generated scanner's; this is the commonest.
      EXPECT_NE(section.find("\n- `input in flex scanner failed`"), std::string::npos);
      continue;
    }
    if (entry.grade == Grade::Remark) {
      EXPECT_NE(section.find("\n- *line*`: " + std::string(entry.text) + "`\\\n"), std::string::npos) << entry.text;
      continue;
    }
    std::string item = entry.grade == Grade::Warning      ? "Warning: "
                       : entry.grade == Grade::FatalError ? "FATAL ERROR: "
                                                          : "";
    item += entry.text;
    bool isFound = false;
    const std::size_t place = item.find("%s");
    if (place == std::string::npos) {
      isFound = section.find("\n- `" + item + "`\\\n") != std::string::npos;
    } else {
      const std::size_t found = section.find("\n- `" + item.substr(0, place) + "`*");
      const std::string behind = item.substr(place + 2);
      isFound = found != std::string::npos;
      if (isFound && !behind.empty()) {
        const std::string line = section.substr(found + 1, section.find('\n', found + 1) - found - 1);
        isFound = line.ends_with("*`" + behind + "`\\");
      }
    }
    EXPECT_TRUE(isFound) << item;
  }
}

TEST(MessagesTest, ASinkCountsWhatItDelivers) {
  MessageList messages;
  EXPECT_EQ(messages.count(), 0U);
  messages.report(Message::CannotOpenFile, "a.h");
  messages.report(Message::IncompatibleRedefinition, "A");
  messages.report(Message::TooFewArguments);
  EXPECT_EQ(messages.count(), 3U);
  EXPECT_EQ(messages.identifiers, "missing-file(a.h) incompatible-redefinition(A) too-few-arguments");
}

}  // namespace
}  // namespace qnpp
