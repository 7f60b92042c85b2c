#include "tools/explain/Reasons.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "lexer/ByteSet.h"
#include "tools/Nearness.h"

namespace qnpp {
namespace {

using Kept = Observer::Kept;

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

std::string_view wordOf(CppTokenKind word) {
  switch (word) {
    case TK_IF:
      return "#if";
    case TK_IFDEF:
      return "#ifdef";
    case TK_IFNDEF:
      return "#ifndef";
    case TK_ELSE:
      return "#else";
    case TK_ELIF:
      return "#elif";
    case TK_ENDIF:
      return "#endif";
    case TK_INCLUDE:
      return "#include";
    case TK_DEFINE:
      return "#define";
    case TK_UNDEF:
      return "#undef";
    case TK_LINE:
      return "#line";
    case TK_ERROR:
      return "#error";
    case TK_PRAGMA:
      return "#pragma";
    default:
      return "#";
  }
}

// Without blanks at the beginning.
std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  return text;
}

// Whether a word of the text looks as if its author meant a macro.
bool looksLikeMacro(std::string_view name) {
  return name.size() >= 3 && std::none_of(name.begin(), name.end(), [](unsigned char c) { return std::islower(c); }) &&
         std::any_of(name.begin(), name.end(), [](unsigned char c) { return std::isupper(c); });
}

// A condition without a value either was not to be read, since what follows is skipped anyway, or ended the run.
bool hasEndedRun(const Directive& directive) {
  return (directive.word == TK_IF || directive.word == TK_ELIF) && !directive.isEvaluated && !directive.isSkipping;
}

}  // namespace

Reasons::Reasons(const Explanation& explanation, const Sources& sources)
    : told_(explanation), sources_(sources), ofExpansion_(told_.expansions.size()), ofContext_(told_.contexts.size()) {
  for (Id id = 1; id < told_.definitions.size(); ++id) {
    definitions_[told_.definitions[id].name].push_back(id);
  }
  Id name = 1;
  const auto placeNamesBefore = [&](Id expansion) {
    for (; name < told_.keptNames.size() && told_.keptNames[name].expansionsBefore <= expansion; ++name) {
      const KeptName& kept = told_.keptNames[name];
      // Of a name behind "defined" the directive tells.
      if (kept.why != Kept::OperandOfDefined && !why(kept).empty()) {
        place({true, name}, told_.pieces[kept.origin].expansion, kept.context);
      }
    }
  };
  for (Id id = 1; id < told_.expansions.size(); ++id) {
    placeNamesBefore(id);
    const Expansion& expansion = told_.expansions[id];
    if (!expansion.isKept) {
      place({false, id}, expansion.parent, expansion.context);
    }
  }
  placeNamesBefore(static_cast<Id>(told_.expansions.size()));
}

void Reasons::place(const Item& item, Id parent, Id context) {
  if (parent != 0 && told_.expansions[parent].context == context) {
    ofExpansion_[parent].push_back(item);
  } else {
    ofContext_[context].push_back(item);
  }
}

// ---- Places and heads ----

std::string Reasons::at(const SourcePlace& place) const {
  return place.file == 0 ? "the command line" : told_.files[place.file].name + ":" + std::to_string(place.line);
}

std::string Reasons::headOf(const Definition& definition) {
  std::string head = "#define " + definition.name;
  if (definition.isFunctionLike) {
    head.push_back('(');
    for (std::size_t index = 0; index < definition.parameters.size(); ++index) {
      head.append(index == 0 ? "" : ", ").append(definition.parameters[index]);
    }
    head.push_back(')');
  }
  return definition.text.empty() ? head : head + " " + definition.text;
}

std::string Reasons::placeOf(const Expansion& expansion) const {
  return expansion.definition == 0 ? "predefined" : at(told_.definitions[expansion.definition].place);
}

// ---- Names ----

// The macro that the name may have been meant for: of the nearest the one defined first.
std::optional<std::string> Reasons::nearest(std::string_view name) const {
  std::size_t most = mostOff(name);
  std::optional<std::string> found;
  for (const Definition& definition : told_.definitions) {
    const std::size_t distance = most == 0 ? 1 : editDistance(name, definition.name, most);
    if (distance > 0 && distance <= most) {
      found = quoted(definition.name) + " (" + at(definition.place) + ")";
      most = distance - 1;
    }
  }
  return found;
}

// Finds the lines that look like definitions, whatever the run made of them.
void Reasons::findWrittenDefinitions() const {
  constexpr std::int32_t kAtOnce = 1000;  // A source may be longer than what memory should hold of it.
  constexpr std::string_view kWord = "define";
  std::set<std::string_view> seen;
  for (Id file = 1; file < told_.files.size(); ++file) {
    if (!seen.insert(told_.files[file].path).second) {
      continue;
    }
    std::vector<Sources::SourceLine> lines;
    std::int32_t number = 1;
    do {
      lines = sources_.lines(file, number, number + kAtOnce - 1);
      for (const Sources::SourceLine& line : lines) {
        std::string_view rest = trimmed(line.text);
        if (rest.starts_with('#') && trimmed(rest.substr(1)).starts_with(kWord)) {
          rest = trimmed(rest.substr(1)).substr(kWord.size());
          const std::string_view name = trimmed(rest);
          const auto end = std::find_if_not(name.begin(), name.end(), isWordByte);
          if (name.size() < rest.size()) {
            written_.try_emplace(std::string(name.begin(), end), SourcePlace{file, number});
          }
        }
        ++number;
      }
    } while (lines.size() == kAtOnce);
  }
}

std::string Reasons::whereUnread(const std::string& name) const {
  if (definitions_.count(name) != 0) {
    return "";
  }
  if (!isWrittenKnown_) {
    isWrittenKnown_ = true;
    findWrittenDefinitions();
  }
  const auto found = written_.find(name);
  if (found == written_.end()) {
    return "";
  }
  const SourcePlace& place = found->second;
  const bool isSkipped = std::any_of(told_.skipped.begin(), told_.skipped.end(), [&](const SkippedLines& lines) {
    return told_.files[lines.file].path == told_.files[place.file].path && lines.first <= place.line &&
           place.line <= lines.last;
  });
  return isSkipped ? "defined only in a skipped group, at " + at(place)
                   : "the \"#define\" at " + at(place) + " is not read as one";
}

std::string Reasons::why(const KeptName& name) const {
  switch (name.why) {
    case Kept::Hidden: {
      if (name.hider == 0) {
        return "came out of its own expansion, so it is not expanded again";
      }
      const Expansion& hider = told_.expansions[name.hider];
      return "came out of the expansion of " + quoted(hider.name) + " at " + at(hider.place) +
             ", so it is not expanded again";
    }
    case Kept::OperandOfDefined:
      return "stands behind \"defined\", which asks for the name itself";
    case Kept::NoParenthesis:
      return "is not used: no \"(\" follows";
    case Kept::BadArguments:
      return "is not used: its arguments are not right";
    case Kept::NoMacro:
      break;
  }
  const auto found = definitions_.find(name.name);
  if (found != definitions_.end()) {
    const auto later = std::lower_bound(found->second.begin(), found->second.end(), name.definitionsBefore);
    if (later != found->second.begin()) {
      const Definition& before = told_.definitions[later[-1]];
      return "is no longer a macro: defined at " + at(before.place) + ", undefined at " + at(before.endedAt);
    }
    return "is not a macro yet: defined at " + at(told_.definitions[*later].place);
  }
  const bool isOperand = told_.contexts[name.context].kind == Context::Kind::Operand;
  const std::string isNone = isOperand ? "is no macro, so it counts as 0 in a condition" : "is no macro";
  const std::string unread = whereUnread(name.name);
  if (!unread.empty()) {
    return isNone + ": " + unread;
  }
  if (!isOperand && name.origin == 0 && !looksLikeMacro(name.name)) {
    return "";
  }
  const std::optional<std::string> meant = nearest(name.name);
  if (meant) {
    return isNone + "; the nearest is " + *meant;
  }
  const CppTokenKind word = isOperand ? told_.directives[told_.contexts[name.context].owner].word : TK_END;
  return word == TK_IF || word == TK_ELIF ? isNone : "";
}

std::string Reasons::whyUnexpanded(const Expansion& expansion, std::size_t argument) const {
  const Expansion::Argument& read = expansion.arguments[argument];
  if (!read.contexts.empty()) {
    return "";
  }
  const std::string text = qnpp::textOf(read.read);
  for (auto at = text.begin(); at != text.end();) {
    const auto end = std::find_if_not(at, text.end(), isWordByte);
    const auto found = definitions_.find(std::string_view(at, end));
    if (found != definitions_.end()) {
      const bool isLiteral =
          std::any_of(expansion.replacement.begin(), expansion.replacement.end(), [&](const Fragment& fragment) {
            const Piece& piece = told_.pieces[fragment.origin];
            return piece.part == Observer::Part::Literal && piece.argument == argument;
          });
      const bool isJoined = std::any_of(
          expansion.replacement.begin(), expansion.replacement.end(),
          [&](const Fragment& fragment) { return told_.pieces[fragment.origin].part == Observer::Part::Joined; });
      return isLiteral  ? "is not expanded: operand of \"#\""
             : isJoined ? "is not expanded: operand of \"##\""
                        : "is not expanded: the parameter is not used";
    }
    at = end == text.end() ? end : end == at ? end + 1 : end;
  }
  return "";
}

std::string Reasons::nameOf(const Piece& piece) const {
  const Expansion& expansion = told_.expansions[piece.expansion];
  const auto& parameters = told_.definitions[expansion.definition].parameters;
  const std::string parameter =
      piece.argument < parameters.size() ? parameters[piece.argument] : std::to_string(piece.argument + 1);
  switch (piece.part) {
    case Observer::Part::Argument:
      return parameter;
    case Observer::Part::Literal:
      return "#" + parameter;
    case Observer::Part::Joined:
      return "##";
    default:
      return "";
  }
}

// ---- Directives ----

std::string Reasons::textOf(const Directive& directive) {
  std::string text(wordOf(directive.word));
  if (directive.word == TK_IFDEF || directive.word == TK_IFNDEF) {
    return directive.asked.empty() ? text : text + " " + directive.asked.front().name;
  }
  const std::string operand = onOneLine(directive.read);
  return operand.empty() ? text : text + " " + operand;
}

std::string Reasons::whySkipped(const Directive& directive) const {
  if (directive.taken != 0 && (directive.word == TK_ELSE || directive.word == TK_ELIF)) {
    const Directive& taken = told_.directives[directive.taken];
    return "skipped: the group of " + quoted(textOf(taken)) + " at " + at(taken.place) + " was taken";
  }
  std::string reason = "skipped: " + quoted(textOf(directive)) + " at " + at(directive.place) + " is false";
  if (directive.isEvaluated && !directive.isOk) {
    return reason + ", since it cannot be evaluated";
  }
  if (directive.isEvaluated && onOneLine(directive.expanded) != onOneLine(directive.read)) {
    reason.append(": ").append(onOneLine(directive.expanded));
  }
  for (const Directive::Asked& asked : directive.asked) {
    reason.append("; ").append(asked.name).append(asked.isDefined ? " is defined" : " is not defined");
  }
  return reason;
}

std::vector<std::string> Reasons::outcomeOf(const Directive& directive) const {
  std::vector<std::string> lines;
  for (const Directive::LookUp& lookUp : directive.lookUps) {
    lines.push_back((lookUp.isFound ? "found: " : "not there: ") + lookUp.path);
  }
  if (directive.word == TK_INCLUDE && directive.lookUps.empty() && onOneLine(directive.expanded).starts_with('<')) {
    lines.emplace_back("looked for nowhere: no -I names a directory");
  }
  if (directive.isInSkippedGroup && directive.opener != 0 && directive.word <= TK_IFNDEF) {
    lines.emplace_back("stands in a skipped group, so it is not looked at");
    return lines;
  }
  if (directive.isEvaluated) {
    const std::string expanded = onOneLine(directive.expanded);
    if (expanded != onOneLine(directive.read)) {
      lines.push_back("reads " + expanded);
    }
  }
  for (const Directive::Asked& asked : directive.asked) {
    std::string line = asked.name + (asked.isDefined ? " is defined" : " is not defined");
    const auto found = definitions_.find(asked.name);
    if (asked.isDefined && found != definitions_.end()) {
      line.append(", at ").append(at(told_.definitions[found->second.front()].place));
    }
    lines.push_back(std::move(line));
  }
  const std::string follows = directive.isSkipping ? "what follows is skipped" : "what follows is read";
  if (directive.isEvaluated && !directive.isOk) {
    lines.push_back("cannot be evaluated, so it counts as 0: " + follows);
  } else if (directive.isEvaluated) {
    lines.push_back("is " +
                    (directive.isSigned ? std::to_string(static_cast<std::int32_t>(directive.value))
                                        : std::to_string(directive.value) + "u") +
                    ": " + follows);
  } else if (directive.opener != 0 && directive.word != TK_ENDIF && !hasEndedRun(directive)) {
    const bool wasTaken = directive.taken != 0;
    lines.push_back((wasTaken ? "the group at " + at(told_.directives[directive.taken].place) + " was taken: " : "") +
                    follows);
  }
  return lines;
}

// ---- The tree ----

const std::vector<Reasons::Item>& Reasons::itemsOf(const Expansion& expansion) const {
  return ofExpansion_[static_cast<std::size_t>(&expansion - told_.expansions.data())];
}

std::vector<Reasons::Item> Reasons::itemsOf(const Line& line) const {
  std::vector<Item> items;
  const auto& inText = ofContext_.front();
  // Those of the text stand in the order in which they were met.
  const auto isBefore = [&](const Item& item) {
    return item.isName ? item.id < line.namesBegin : item.id < line.expansionsBegin;
  };
  for (auto at = std::partition_point(inText.begin(), inText.end(), isBefore); at != inText.end(); ++at) {
    if (at->isName ? at->id >= line.namesEnd : at->id >= line.expansionsEnd) {
      break;
    }
    items.push_back(*at);
  }
  const Id operand = line.isDirective ? told_.directives[line.directive].context : 0;
  if (operand != 0) {
    items.insert(items.end(), ofContext_[operand].begin(), ofContext_[operand].end());
  }
  return items;
}

bool Reasons::involves(const Item& item, std::string_view name) const {
  std::vector<Item> open = {item};
  while (!open.empty()) {
    const Item looked = open.back();
    open.pop_back();
    if (looked.isName) {
      if (told_.keptNames[looked.id].name == name) {
        return true;
      }
      continue;
    }
    const Expansion& expansion = told_.expansions[looked.id];
    if (expansion.name == name) {
      return true;
    }
    open.insert(open.end(), ofExpansion_[looked.id].begin(), ofExpansion_[looked.id].end());
    for (const Expansion::Argument& argument : expansion.arguments) {
      for (const Id context : argument.contexts) {
        open.insert(open.end(), ofContext_[context].begin(), ofContext_[context].end());
      }
    }
  }
  return false;
}

}  // namespace qnpp
