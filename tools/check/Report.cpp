#include "tools/check/Report.h"

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>
#include <string>

#include "qnpp/version.h"
#include "tools/Utf8.h"

namespace qnpp {
namespace {

using Json = nlohmann::ordered_json;

// A text for people: what is no character becomes a question mark.
std::string readable(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t size = utf8Size(text.substr(at));
    result.append(size == 0 ? "?" : text.substr(at, size));
    at += std::max<std::size_t>(1, size);
  }
  return result;
}

// The name of a file as a reference of a URI: bytes that are not free to stand there are written as "%2B".
std::string uriOf(std::string_view name) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string uri = name.starts_with('/') ? "file://" : "";
  for (const char character : name) {
    const auto code = static_cast<unsigned char>(character);
    if (code < 0x80U &&
        (std::isalnum(code) != 0 || std::string_view("-._~/").find(character) != std::string_view::npos)) {
      uri.push_back(character);
    } else {
      uri.push_back('%');
      uri.push_back(kDigits[code / 16U]);
      uri.push_back(kDigits[code % 16U]);
    }
  }
  return uri;
}

// From its first column on, a region without an end is the whole line. What is wrong with the command line is shown
// with the first line, since scanners want a place for everything.
Json placeOf(const Finding& finding) {
  const Json region = {{"startLine", std::max(1, finding.line)}, {"startColumn", 1}};
  return {{"physicalLocation", {{"artifactLocation", {{"uri", uriOf(finding.file)}}}, {"region", region}}}};
}

}  // namespace

void writeText(const std::vector<Finding>& findings, std::ostream& output) {
  for (const Finding& finding : findings) {
    if (finding.line > 0) {
      output << withEscapes(finding.file) << ':' << finding.line << ": ";
    }
    output << finding.rule->id << ": " << withEscapes(finding.text) << ". " << finding.rule->advice << '\n';
  }
}

void writeJson(const std::vector<Finding>& findings, std::ostream& output) {
  Json list = Json::array();
  for (const Finding& finding : findings) {
    list.push_back({{"id", finding.rule->id},
                    {"file", readable(finding.file)},
                    {"line", finding.line},
                    {"text", readable(finding.text)},
                    {"advice", finding.rule->advice}});
  }
  output << list.dump(1) << '\n';
}

void writeSarif(const std::vector<Finding>& findings, std::ostream& output) {
  Json described = Json::array();
  for (const Rule& rule : rules()) {
    described.push_back({{"id", rule.id},
                         {"shortDescription", {{"text", rule.summary}}},
                         {"fullDescription", {{"text", std::string(rule.summary) + " " + std::string(rule.advice)}}},
                         {"help", {{"text", rule.advice}}},
                         {"defaultConfiguration", {{"enabled", rule.isOn}, {"level", "warning"}}}});
  }
  Json results = Json::array();
  for (const Finding& finding : findings) {
    results.push_back({{"ruleId", finding.rule->id},
                       {"ruleIndex", finding.rule - rules().data()},
                       {"level", "warning"},
                       {"message", {{"text", readable(finding.text) + ". " + std::string(finding.rule->advice)}}},
                       {"locations", Json::array({placeOf(finding)})}});
  }
  const Json driver = {{"name", "qnpp-check"}, {"version", QnGetVersionString()}, {"rules", std::move(described)}};
  const Json run = {
      {"tool", {{"driver", driver}}}, {"columnKind", "unicodeCodePoints"}, {"results", std::move(results)}};
  const Json log = {
      {"$schema", "https://json.schemastore.org/sarif-2.1.0.json"}, {"version", "2.1.0"}, {"runs", Json::array({run})}};
  output << log.dump(1) << '\n';
}

}  // namespace qnpp
