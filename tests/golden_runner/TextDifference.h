// Differences between two texts, to be read by people.
#pragma once

#include <string>
#include <string_view>

namespace qnpp::golden {

// Shows how two different texts differ: first the line and column of the first difference with both lines in full,
// then a line diff ("-" expected, "+" actual) with a few equal lines around each change. Bytes that a terminal would
// hide or act upon are escaped, and a last line without a line end says so.
std::string describeDifference(std::string_view expected, std::string_view actual);

// `text` on one line: \n \t \r \f \v \\ and \xHH for the bytes that do not print.
std::string escaped(std::string_view text);

}  // namespace qnpp::golden
