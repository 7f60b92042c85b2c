#include "tools/explain/Json.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "tools/Utf8.h"
#include "tools/explain/Reasons.h"

namespace qnpp {
namespace {

using Json = nlohmann::ordered_json;

// Text as a string; bytes that are no UTF-8 as {"hex": ...}, so that nothing is lost.
Json textOf(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t size = utf8Size(text.substr(at));
    if (size == 0) {
      constexpr std::string_view kDigits = "0123456789abcdef";
      std::string hex;
      for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        hex.push_back(kDigits[code / 16U]);
        hex.push_back(kDigits[code % 16U]);
      }
      return {{"hex", hex}};
    }
    at += size;
  }
  return text;
}

Json placeOf(const SourcePlace& place) {
  return place.file == 0 ? Json() : Json{{"file", place.file}, {"line", place.line}};
}

Json fragmentsOf(const std::vector<Fragment>& fragments) {
  Json list = Json::array();
  for (const Fragment& fragment : fragments) {
    Json entry = {{"text", textOf(fragment.text)}};
    if (fragment.origin != 0) {
      entry["piece"] = fragment.origin;
    }
    if (fragment.isLineDirective) {
      entry["lineDirective"] = true;
    }
    list.push_back(std::move(entry));
  }
  return list;
}

std::string_view nameOf(Observer::Part part) {
  switch (part) {
    case Observer::Part::Body:
      return "body";
    case Observer::Part::Argument:
      return "argument";
    case Observer::Part::Literal:
      return "literal";
    case Observer::Part::Joined:
      return "joined";
  }
  return "";
}

std::string_view nameOf(Observer::Kept why) {
  switch (why) {
    case Observer::Kept::NoMacro:
      return "no-macro";
    case Observer::Kept::Hidden:
      return "hidden";
    case Observer::Kept::OperandOfDefined:
      return "operand-of-defined";
    case Observer::Kept::NoParenthesis:
      return "no-parenthesis";
    case Observer::Kept::BadArguments:
      return "bad-arguments";
  }
  return "";
}

std::string_view nameOf(Context::Kind kind) {
  switch (kind) {
    case Context::Kind::Text:
      return "text";
    case Context::Kind::Argument:
      return "argument";
    case Context::Kind::Operand:
      return "operand";
  }
  return "";
}

// A list of entries, each with its position as "id"; the first, which stands for none, is left out.
template <typename Entry, typename ToJson>
Json listOf(const std::vector<Entry>& entries, Id first, ToJson toJson) {
  Json list = Json::array();
  for (Id id = first; id < entries.size(); ++id) {
    Json entry = {{"id", id}};
    entry.update(toJson(entries[id]));
    list.push_back(std::move(entry));
  }
  return list;
}

Json toJson(const SourceFile& file) {
  return {{"name", textOf(file.name)}, {"path", textOf(file.path)}, {"includedAt", placeOf(file.includedAt)}};
}

Json toJson(const Definition& definition) {
  Json parameters;
  if (definition.isFunctionLike) {
    parameters = definition.parameters;
  }
  return {{"name", textOf(definition.name)},        {"parameters", std::move(parameters)},
          {"text", textOf(definition.text)},        {"place", placeOf(definition.place)},
          {"endedAt", placeOf(definition.endedAt)}, {"isReplaced", definition.isReplaced},
          {"useCount", definition.useCount}};
}

Json toJson(const Context& context) {
  Json entry = {{"kind", nameOf(context.kind)}};
  if (context.kind == Context::Kind::Argument) {
    entry["expansion"] = context.owner;
    entry["argument"] = context.argument;
  } else if (context.kind == Context::Kind::Operand) {
    entry["directive"] = context.owner;
  }
  entry["result"] = fragmentsOf(context.result);
  return entry;
}

Json toJson(const Piece& piece) {
  Json entry = {{"part", nameOf(piece.part)}, {"expansion", piece.expansion}};
  if (piece.part == Observer::Part::Argument || piece.part == Observer::Part::Literal) {
    entry["argument"] = piece.argument;
  }
  if (piece.from != 0) {
    entry["from"] = piece.from;
  }
  return entry;
}

Json toJson(const Directive& directive) {
  Json entry = {{"text", textOf(Reasons::textOf(directive))},
                {"place", placeOf(directive.place)},
                {"endLine", directive.endLine},
                {"expanded", textOf(directive.expanded)},
                {"context", directive.context},
                {"isInSkippedGroup", directive.isInSkippedGroup},
                {"isSkipping", directive.isSkipping},
                {"opener", directive.opener},
                {"taken", directive.taken},
                {"entered", directive.entered}};
  if (directive.isEvaluated) {
    entry["value"] = directive.isOk
                         ? directive.isSigned ? Json(static_cast<std::int32_t>(directive.value)) : Json(directive.value)
                         : Json();
  }
  for (const Directive::Asked& asked : directive.asked) {
    entry["asked"].push_back({{"name", textOf(asked.name)}, {"isDefined", asked.isDefined}});
  }
  for (const Directive::LookUp& lookUp : directive.lookUps) {
    entry["lookUps"].push_back({{"path", textOf(lookUp.path)}, {"isFound", lookUp.isFound}});
  }
  return entry;
}

Json toJson(const Line& line) {
  return {{"place", placeOf(line.place)},
          {"endLine", line.endLine},
          {"isSkipped", line.isSkipped},
          {"directive", line.directive},
          {"output", {line.outputBegin, line.outputEnd}}};
}

}  // namespace

void writeJson(const Explanation& explanation, const Sources& sources, std::ostream& output) {
  const Reasons reasons(explanation, sources);
  const auto plain = [](const auto& entry) { return toJson(entry); };
  Json all;
  all["format"] = "qnpp-explain";
  all["version"] = 1;
  all["files"] = listOf(explanation.files, 1, plain);
  all["definitions"] = listOf(explanation.definitions, 1, plain);
  all["contexts"] = listOf(explanation.contexts, 1, plain);
  all["pieces"] = listOf(explanation.pieces, 1, plain);
  all["expansions"] = listOf(explanation.expansions, 1, [&](const Expansion& expansion) {
    Json entry = {{"name", textOf(expansion.name)},
                  {"definition", expansion.definition},
                  {"place", placeOf(expansion.place)},
                  {"endLine", expansion.endLine},
                  {"context", expansion.context},
                  {"parent", expansion.parent},
                  {"written", textOf(sources.written(expansion))}};
    if (expansion.origin != 0) {
      entry["piece"] = expansion.origin;
    }
    if (expansion.callEnd > expansion.nameBegin) {
      entry["bytes"] = {expansion.nameBegin, expansion.callEnd};
    }
    if (expansion.isKept) {
      entry["kept"] = nameOf(expansion.why);
      return entry;
    }
    entry["arguments"] = Json::array();
    for (const Expansion::Argument& argument : expansion.arguments) {
      entry["arguments"].push_back({{"read", fragmentsOf(argument.read)}, {"contexts", argument.contexts}});
    }
    entry["replacement"] = fragmentsOf(expansion.replacement);
    entry["result"] = {expansion.resultBegin, expansion.resultEnd};
    return entry;
  });
  all["names"] = Json::array();
  for (std::size_t at = 1; at < explanation.keptNames.size(); ++at) {
    const KeptName& name = explanation.keptNames[at];
    const std::string why = reasons.why(name);
    if (!why.empty()) {
      Json entry = {{"name", textOf(name.name)},    {"kept", nameOf(name.why)}, {"why", textOf(why)},
                    {"place", placeOf(name.place)}, {"context", name.context},  {"piece", name.origin}};
      if (name.hider != 0) {
        entry["hiddenBy"] = name.hider;
      }
      all["names"].push_back(std::move(entry));
    }
  }
  all["directives"] = listOf(explanation.directives, 1, plain);
  all["lines"] = Json::array();
  for (std::size_t at = 1; at < explanation.lines.size(); ++at) {
    all["lines"].push_back(toJson(explanation.lines[at]));
  }
  all["output"] = fragmentsOf(explanation.output());
  all["messages"] = Json::array();
  for (std::size_t at = 1; at < explanation.messages.size(); ++at) {
    all["messages"].push_back(
        {{"text", textOf(explanation.messages[at].text)}, {"place", placeOf(explanation.messages[at].place)}});
  }
  all["leftOutFrom"] = explanation.isCut ? placeOf(explanation.cutAt) : Json();
  output << all.dump(1) << '\n';
}

}  // namespace qnpp
