#include "tools/check/Report.h"

#include <algorithm>
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

}  // namespace

void writeText(const std::vector<Finding>& findings, std::ostream& output) {
  for (const Finding& finding : findings) {
    if (finding.line > 0) {
      output << finding.file << ':' << finding.line << ": ";
    }
    output << finding.rule->id << ": " << finding.text << ". " << finding.rule->advice << '\n';
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
                         {"help", {{"text", rule.advice}}},
                         {"defaultConfiguration", {{"enabled", rule.isOn}, {"level", "warning"}}}});
  }
  Json results = Json::array();
  for (const Finding& finding : findings) {
    Json result = {{"ruleId", finding.rule->id},
                   {"ruleIndex", finding.rule - rules().data()},
                   {"level", "warning"},
                   {"message", {{"text", readable(finding.text) + ". " + std::string(finding.rule->advice)}}}};
    if (finding.line > 0) {
      const Json place = {{"artifactLocation", {{"uri", readable(finding.file)}}},
                          {"region", {{"startLine", finding.line}}}};
      result["locations"] = Json::array({{{"physicalLocation", place}}});
    }
    results.push_back(std::move(result));
  }
  const Json driver = {{"name", "qnpp-check"}, {"version", QnGetVersionString()}, {"rules", std::move(described)}};
  const Json run = {{"tool", {{"driver", driver}}}, {"results", std::move(results)}};
  const Json log = {
      {"$schema", "https://json.schemastore.org/sarif-2.1.0.json"}, {"version", "2.1.0"}, {"runs", Json::array({run})}};
  output << log.dump(1) << '\n';
}

}  // namespace qnpp
