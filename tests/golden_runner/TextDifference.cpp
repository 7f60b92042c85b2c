#include "TextDifference.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace qnpp::golden {

namespace {

using Lines = std::vector<std::string_view>;

// Beyond these a diff is no longer read by anyone. The first bounds the table of the diff, the second what is printed.
constexpr std::size_t kMostTableCells = 4'000'000;
constexpr std::size_t kMostPrintedLines = 120;
constexpr std::size_t kLinesOfContext = 3;

// The lines of a text, each with its line end.
Lines splitLines(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
    lines.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return lines;
}

struct DiffLine {
  char mark;  // ' ' in both texts, '-' in the expected one only, '+' in the actual one only
  std::string_view text;
};

void append(std::vector<DiffLine>& diff, char mark, const Lines& lines) {
  for (const std::string_view line : lines) diff.push_back({mark, line});
}

// The shortest line diff, by the table of longest common subsequences: cell (i, j) holds the length of the longest
// sequence of lines that expected[i..] and actual[j..] have in common.
void appendShortestDiff(std::vector<DiffLine>& diff, const Lines& expected, const Lines& actual) {
  const std::size_t width = actual.size() + 1;
  std::vector<std::size_t> table((expected.size() + 1) * width, 0);
  for (std::size_t i = expected.size(); i-- > 0;) {
    for (std::size_t j = actual.size(); j-- > 0;) {
      table[i * width + j] = expected[i] == actual[j] ? table[(i + 1) * width + j + 1] + 1
                                                      : std::max(table[(i + 1) * width + j], table[i * width + j + 1]);
    }
  }
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < expected.size() && j < actual.size()) {
    if (expected[i] == actual[j]) {
      diff.push_back({' ', expected[i]});
      ++i;
      ++j;
    } else if (table[(i + 1) * width + j] >= table[i * width + j + 1]) {
      diff.push_back({'-', expected[i++]});
    } else {
      diff.push_back({'+', actual[j++]});
    }
  }
  for (; i < expected.size(); ++i) diff.push_back({'-', expected[i]});
  for (; j < actual.size(); ++j) diff.push_back({'+', actual[j]});
}

// Sets the equal lines at both ends apart, which leaves a small middle for the table.
std::vector<DiffLine> diffLines(const Lines& expected, const Lines& actual) {
  const auto [expectedStart, actualStart] =
      std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  const auto [expectedEnd, actualEnd] = std::mismatch(expected.rbegin(), std::make_reverse_iterator(expectedStart),
                                                      actual.rbegin(), std::make_reverse_iterator(actualStart));
  const Lines expectedMiddle(expectedStart, expectedEnd.base());
  const Lines actualMiddle(actualStart, actualEnd.base());

  std::vector<DiffLine> diff;
  append(diff, ' ', Lines(expected.begin(), expectedStart));
  if ((expectedMiddle.size() + 1) * (actualMiddle.size() + 1) <= kMostTableCells) {
    appendShortestDiff(diff, expectedMiddle, actualMiddle);
  } else {
    append(diff, '-', expectedMiddle);
    append(diff, '+', actualMiddle);
  }
  append(diff, ' ', Lines(expectedEnd.base(), expected.end()));
  return diff;
}

// True for the changed lines and the equal ones near to them.
std::vector<bool> findPrintedLines(const std::vector<DiffLine>& diff) {
  std::vector<bool> isPrinted(diff.size(), false);
  for (std::size_t i = 0; i < diff.size(); ++i) {
    if (diff[i].mark == ' ') continue;
    const std::size_t first = i - std::min(i, kLinesOfContext);
    const std::size_t last = std::min(i + kLinesOfContext, diff.size() - 1);
    for (std::size_t k = first; k <= last; ++k) isPrinted[k] = true;
  }
  return isPrinted;
}

std::string formatDiff(const std::vector<DiffLine>& diff) {
  const std::vector<bool> isPrinted = findPrintedLines(diff);
  std::string result;
  std::size_t printed = 0;
  for (std::size_t i = 0; i < diff.size(); ++i) {
    if (!isPrinted[i]) {
      if (i == 0 || isPrinted[i - 1]) result += "    ...\n";
      continue;
    }
    if (printed++ == kMostPrintedLines) return result + "    (the rest of the differences is left out)\n";
    std::string_view line = diff[i].text;
    const bool hasLineEnd = line.ends_with('\n');
    if (hasLineEnd) line.remove_suffix(1);
    result += std::string("    ") + diff[i].mark + " " + escaped(line) + (hasLineEnd ? "" : "   (no line end)") + "\n";
  }
  return result;
}

// The whole line of `text` in which `position` lies.
std::string_view lineAround(std::string_view text, std::size_t position) {
  const std::size_t start = position == 0 ? 0 : text.rfind('\n', position - 1) + 1;
  const std::size_t end = text.find('\n', position);
  return text.substr(start, end == std::string_view::npos ? end : end + 1 - start);
}

std::string describeFirstDifference(std::string_view expected, std::string_view actual) {
  const auto position = static_cast<std::size_t>(
      std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end()).first - expected.begin());
  const std::string_view before = expected.substr(0, position);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  const std::size_t column = position - (before.rfind('\n') + 1) + 1;
  return "  first difference in line " + std::to_string(line) + ", column " + std::to_string(column) + "\n" +
         "    expected \"" + escaped(lineAround(expected, position)) + "\"\n" + "    actual   \"" +
         escaped(lineAround(actual, position)) + "\"\n";
}

}  // namespace

std::string escaped(std::string_view text) {
  static constexpr std::string_view kHexDigits = "0123456789ABCDEF";
  static constexpr std::string_view kCharacters = "\n\t\r\f\v\\";
  static constexpr std::string_view kLetters = "ntrfv\\";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (const std::size_t found = kCharacters.find(c); found != std::string_view::npos) {
      result += '\\';
      result += kLetters[found];
    } else if (byte < 0x20 || byte >= 0x7F) {
      result += "\\x";
      result += kHexDigits[byte >> 4];
      result += kHexDigits[byte & 0xF];
    } else {
      result += c;
    }
  }
  return result;
}

std::string describeDifference(std::string_view expected, std::string_view actual) {
  return describeFirstDifference(expected, actual) + "  line by line (- expected, + actual)\n" +
         formatDiff(diffLines(splitLines(expected), splitLines(actual)));
}

}  // namespace qnpp::golden
