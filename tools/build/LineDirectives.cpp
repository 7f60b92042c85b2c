#include "tools/build/LineDirectives.h"

#include <array>
#include <cstdio>

namespace qnpp::build {
namespace {

// As qnpp writes it: only backslashes are doubled.
std::string hashDirective(std::int32_t line, std::string_view file) {
  std::string text = "#line " + std::to_string(line) + " \"";
  for (const char c : file) {
    text.append(c == '\\' ? 2 : 1, c);
  }
  return text + "\"\n";
}

// As a string literal of C.
std::string inQuotes(std::string_view file) {
  std::string text = "\"";
  for (const char c : file) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      text += '\\';
      text += c;
    } else if (byte < 0x20 || byte == 0x7F) {
      std::array<char, 5> octal;
      static_cast<void>(std::snprintf(octal.data(), octal.size(), "\\%03o", byte));
      text += octal.data();
    } else {
      text += c;
    }
  }
  return text + '"';
}

std::string directive(const LineMap& map, const LineMap::Entry& entry, LineDirectiveStyle style) {
  const std::string line = std::to_string(entry.line);
  if (style == LineDirectiveStyle::Glsl) {
    return entry.reason == LineMap::Reason::Start ? "" : "#line " + line + ' ' + std::to_string(entry.file) + '\n';
  }
  const char* const flag = entry.reason == LineMap::Reason::Entered    ? " 1"
                           : entry.reason == LineMap::Reason::Returned ? " 2"
                                                                       : "";
  return "# " + line + ' ' + inQuotes(map.files[entry.file]) + flag + '\n';
}

}  // namespace

std::string restyle(std::string_view output, const LineMap& map, LineDirectiveStyle style) {
  std::string result;
  std::size_t taken = 0;
  for (const LineMap::Entry& entry : map.entries) {
    const auto offset = static_cast<std::size_t>(entry.offset);
    const std::size_t length = hashDirective(entry.line, map.files[entry.file]).size();
    result.append(output, taken, offset - length - taken);
    result += directive(map, entry, style);
    taken = offset;
  }
  return result.append(output, taken);
}

std::string fileTable(const LineMap& map, std::string_view lead) {
  std::string text;
  for (std::size_t i = 0; i < map.files.size(); ++i) {
    text.append(lead).append(std::to_string(i)).append(" ").append(inQuotes(map.files[i])).append("\n");
  }
  return text;
}

}  // namespace qnpp::build
