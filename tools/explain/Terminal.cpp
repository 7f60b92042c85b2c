#include "tools/explain/Terminal.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <vector>

#include "tools/Utf8.h"
#include "tools/explain/Reasons.h"

namespace qnpp {
namespace {

enum class Style : std::uint8_t { Plain, Place, Name, Argument, Made, Reason, Faint };

bool startsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }
std::size_t columns(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

// A line of a terminal: text with styles, cut where the terminal ends.
class Row {
 public:
  explicit Row(const TerminalOptions& options) : options_(options), room_(options.width) {}

  Row& add(std::string_view text, Style style = Style::Plain) {
    if (room_ == 0 || text.empty()) {
      return *this;
    }
    std::string shown = printable(text);
    if (columns(shown) > room_) {
      cut(shown, room_ - 1);
      shown.append(options_.isUnicode ? "\u2026" : "~");
      room_ = 0;
    } else {
      room_ -= columns(shown);
    }
    if (options_.hasColour && style != Style::Plain) {
      text_.append("\x1b[").append(codeOf(style)).append("m").append(shown).append("\x1b[0m");
    } else {
      text_.append(shown);
    }
    return *this;
  }
  void write(std::ostream& output) const { output << text_ << '\n'; }

 private:
  static std::string_view codeOf(Style style) {
    switch (style) {
      case Style::Place:
        return "36";
      case Style::Name:
        return "1";
      case Style::Argument:
        return "32";
      case Style::Made:
        return "35";
      case Style::Reason:
        return "33";
      default:
        return "2";
    }
  }
  // The source may hold bytes that would steer the terminal, and so may the name of a file.
  static std::string printable(std::string_view text) {
    std::string blanks(text);
    std::replace_if(
        blanks.begin(), blanks.end(), [](char byte) { return byte == '\t' || byte == '\v' || byte == '\f'; }, ' ');
    return withEscapes(blanks);
  }
  static void cut(std::string& text, std::size_t count) {
    std::size_t at = 0;
    for (; at < text.size(); ++at) {
      if (startsCharacter(text[at]) && count-- == 0) {
        break;
      }
    }
    text.resize(at);
  }

  const TerminalOptions& options_;
  std::size_t room_;
  std::string text_;
};

class TerminalView {
 public:
  TerminalView(const Explanation& explanation, const Sources& sources, const TerminalOptions& options,
               std::ostream& output)
      : told_(explanation), sources_(sources), options_(options), output_(output), reasons_(explanation, sources) {}

  void write() {
    if (!options_.macro.empty()) {
      writeHistory();
    }
    for (std::size_t at = 1; at < told_.lines.size(); ++at) {
      const std::size_t last = lastOfSkipped(at);
      writeLine(told_.lines[at], told_.lines[last]);
      at = last;
    }
    if (!hasLine_ && options_.macro.empty()) {
      row().add("nothing " + options_.lines + "is a directive or a macro", Style::Reason).write(output_);
    }
    if (told_.isCut) {
      row()
          .add("What follows from " + reasons_.at(told_.cutAt) +
                   " on is left out: too much happens. Ask for fewer lines.",
               Style::Reason)
          .write(output_);
    }
  }

 private:
  using Item = Reasons::Item;

  Row row(std::string_view indent = {}) const {
    Row made(options_);
    made.add(indent, Style::Faint);
    return made;
  }

  // What became of the macro that is asked for.
  void writeHistory() {
    bool isDefined = false;
    for (const Definition& definition : told_.definitions) {
      if (definition.name == options_.macro) {
        isDefined = true;
        row()
            .add(reasons_.at(definition.place), Style::Place)
            .add(": ")
            .add(Reasons::headOf(definition))
            .write(output_);
        if (definition.endedAt.file != 0) {
          row("  ")
              .add(definition.isReplaced ? "replaced at " : "undefined at ")
              .add(reasons_.at(definition.endedAt), Style::Place)
              .write(output_);
        }
        row("  ")
            .add(definition.useCount == 0
                     ? "never used in what is shown"
                     : "used " + std::to_string(definition.useCount) + (definition.useCount == 1 ? " time" : " times"))
            .write(output_);
      }
    }
    if (!isDefined && options_.macro.starts_with("__")) {
      return;
    }
    if (!isDefined) {
      const std::string unread = reasons_.whereUnread(options_.macro);
      writeReason("", "  ", options_.macro, unread.empty() ? "is never defined" : "is no macro: " + unread);
    }
    output_ << '\n';
  }

  // The last of the lines that are skipped together with the one at position `at`; itself if it is not.
  std::size_t lastOfSkipped(std::size_t at) const {
    const Line& first = told_.lines[at];
    while (first.isSkipped && !first.isDirective && at + 1 < told_.lines.size()) {
      const Line& next = told_.lines[at + 1];
      if (!next.isSkipped || next.isDirective || next.directive != first.directive ||
          next.place.file != first.place.file) {
        break;
      }
      ++at;
    }
    return at;
  }

  void writeLine(const Line& line, const Line& last) {
    // The rest of a line that #else and #endif leave is mostly nothing.
    if (line.isSkipped && !line.isDirective && last.place.line == told_.directives[line.directive].place.line) {
      return;
    }
    saidOfNames_.clear();
    std::vector<Item> items = reasons_.itemsOf(line);
    std::vector<std::string> notes = notesOf(line);
    if (!options_.macro.empty()) {
      std::erase_if(items, [this](const Item& item) { return !reasons_.involves(item, options_.macro); });
      if (!asksFor(line, options_.macro)) {
        notes.clear();
      }
    }
    if (items.empty() && notes.empty()) {
      return;
    }
    hasLine_ = true;
    const auto text = sources_.lines(line.place.file, line.place.line, line.endLine);
    for (std::size_t index = 0; index < text.size(); ++index) {
      const SourcePlace place{line.place.file, line.place.line + static_cast<std::int32_t>(index)};
      row().add(reasons_.at(place), Style::Place).add(": ").add(text[index].text, Style::Name).write(output_);
    }
    if (last.place.line > line.endLine) {
      row()
          .add("and " + std::to_string(last.place.line - line.endLine) + " more, up to line " +
                   std::to_string(last.place.line),
               Style::Faint)
          .write(output_);
    }
    if (!line.isSkipped && !line.isDirective) {
      row()
          .add(reasons_.at(line.place), Style::Place)
          .add(options_.isUnicode ? "→ " : "> ")
          .add(onOneLine(outputOf(line)))
          .write(output_);
    }
    for (const std::string& note : notes) {
      writeReason("  ", "    ", "", note);
    }
    writeItems(items, "", 0);
    output_ << '\n';
  }

  // Whether the line is a conditional that asks whether the name is defined.
  bool asksFor(const Line& line, std::string_view name) const {
    const auto& asked = told_.directives[line.directive].asked;
    return line.isDirective && std::any_of(asked.begin(), asked.end(),
                                           [name](const Directive::Asked& other) { return other.name == name; });
  }

  // The output of a line without its line directive.
  std::string outputOf(const Line& line) const {
    std::string text;
    for (std::size_t at = line.outputBegin; at < line.outputEnd; ++at) {
      if (!told_.output()[at].isLineDirective) {
        text.append(told_.output()[at].text);
      }
    }
    return text;
  }

  std::vector<std::string> notesOf(const Line& line) const {
    std::vector<std::string> notes;
    const Directive& directive = told_.directives[line.directive];
    if (line.isSkipped && !line.isDirective) {
      notes.push_back(reasons_.whySkipped(directive));
    } else if (line.isDirective) {
      notes = reasons_.outcomeOf(directive);
      for (const Definition& definition : told_.definitions) {
        if (directive.word == TK_DEFINE && definition.place.file == line.place.file &&
            definition.place.line == line.place.line) {
          notes.push_back(definition.useCount == 0
                              ? "defines " + definition.name + ", which is not used in what was asked for"
                              : "defines " + definition.name + ", used " + std::to_string(definition.useCount) + "x");
        }
      }
    }
    for (Id id = line.messagesBegin; id < line.messagesEnd; ++id) {
      notes.push_back("message: " + told_.messages[id].text);
    }
    return notes;
  }

  void writeItems(const std::vector<Item>& items, const std::string& indent, std::size_t level) {
    if (level == kMostLevels && !items.empty()) {
      row(indent).add("deeper levels are left out", Style::Faint).write(output_);
      return;
    }
    for (const Item& item : items) {
      if (item.isName) {
        const KeptName& name = told_.keptNames[item.id];
        if (!saidOfNames_.insert(name.name + " " + reasons_.why(name)).second) {
          continue;  // Once in a line will do.
        }
        writeReason(indent + mark(), indent + bar() + "  ", name.name, reasons_.why(name));
      } else {
        writeExpansion(told_.expansions[item.id], indent, level);
      }
    }
  }

  // Behind a name, or alone. What it says at its end, a place mostly, is not to be cut, so it goes on in further lines.
  void writeReason(std::string before, const std::string& beforeOthers, std::string_view name,
                   std::string_view reason) {
    while (true) {
      const std::size_t room = options_.width - std::min(options_.width, columns(before) + columns(name) + 1);
      std::size_t end = 0;
      for (std::size_t at = 0; at <= reason.size() && columns(reason.substr(0, at)) <= room; ++at) {
        end = at == reason.size() || reason[at] == ' ' ? at : end;
      }
      end = end == 0 ? reason.size() : end;  // A word that is too long for any line.
      Row line = row(before);
      line.add(name, Style::Name).add(name.empty() ? "" : " ").add(reason.substr(0, end), Style::Reason).write(output_);
      if (end == reason.size()) {
        return;
      }
      reason.remove_prefix(end + 1);
      before = beforeOthers;
      name = {};
    }
  }

  std::string mark() const { return options_.isUnicode ? "├ " : "+ "; }
  std::string bar() const { return options_.isUnicode ? "│ " : "| "; }

  void writeExpansion(const Expansion& expansion, const std::string& indent, std::size_t level) {
    const std::string result = onOneLine(resultOf(told_, expansion));
    const std::string replacement = onOneLine(textOf(expansion.replacement));
    row(indent + mark())
        .add(onOneLine(sources_.written(expansion)), Style::Name)
        .add(options_.isUnicode ? " → " : " -> ")
        .add(result.empty() ? "(nothing)" : result)
        .write(output_);
    const std::string inner = indent + bar();
    Row head = row(inner);
    head.add(reasons_.placeOf(expansion), Style::Place);
    if (expansion.definition != 0) {
      head.add(": ").add(Reasons::headOf(told_.definitions[expansion.definition]), Style::Faint);
    }
    head.write(output_);
    for (std::size_t index = 0; index < expansion.arguments.size(); ++index) {
      writeArgument(expansion, index, inner, level);
    }
    if (replacement != result && replacement != told_.definitions[expansion.definition].text &&
        !isShownBelow(expansion, replacement)) {
      writeReplacement(expansion, inner);
    }
    writeItems(reasons_.itemsOf(expansion), inner, level + 1);
  }

  // An argument is worth a line if its expansion changed it, or something is to be said about a name in it.
  void writeArgument(const Expansion& expansion, std::size_t index, const std::string& indent, std::size_t level) {
    const Expansion::Argument& argument = expansion.arguments[index];
    const auto& parameters = told_.definitions[expansion.definition].parameters;
    const std::string name = index < parameters.size() ? parameters[index] : std::to_string(index + 1);
    const std::string read = onOneLine(textOf(argument.read));
    const std::string unexpanded = reasons_.whyUnexpanded(expansion, index);
    if (!unexpanded.empty()) {
      row(indent)
          .add(name, Style::Argument)
          .add(" = ")
          .add(read)
          .add(" ")
          .add(unexpanded, Style::Reason)
          .write(output_);
    }
    if (argument.contexts.empty()) {
      return;
    }
    const Id context = argument.contexts.front();
    const std::string expanded = onOneLine(textOf(told_.contexts[context].result));
    const auto& items = reasons_.itemsOfContext(context);
    if (expanded != read || !items.empty()) {
      row(indent)
          .add(name, Style::Argument)
          .add(" = ")
          .add(read)
          .add(options_.isUnicode ? " → " : " -> ")
          .add(expanded)
          .write(output_);
      writeItems(items, indent + bar(), level + 1);
    }
  }

  // Whether the replacement is nothing but the use of a macro, which is written next.
  bool isShownBelow(const Expansion& expansion, const std::string& replacement) const {
    const auto& items = reasons_.itemsOf(expansion);
    return items.size() == 1 && !items.front().isName &&
           onOneLine(sources_.written(told_.expansions[items.front().id])) == replacement &&
           std::all_of(expansion.replacement.begin(), expansion.replacement.end(), [this](const Fragment& fragment) {
             const Observer::Part part = told_.pieces[fragment.origin].part;
             return part == Observer::Part::Body || part == Observer::Part::Argument;
           });
  }

  // The replacement, and below it which parts are arguments or were made by "#" or "##".
  void writeReplacement(const Expansion& expansion, const std::string& indent) {
    Row text = row(indent);
    text.add("= ");
    std::string labels;
    std::string before;
    std::size_t column = 0;
    for (const Fragment& fragment : expansion.replacement) {
      const Piece& piece = told_.pieces[fragment.origin];
      const std::string label = reasons_.nameOf(piece);
      text.add(fragment.text, label.empty()                            ? Style::Plain
                              : piece.part == Observer::Part::Argument ? Style::Argument
                                                                       : Style::Made);
      if (!label.empty() && label != before && labels.size() <= column) {
        labels.append(column - labels.size(), ' ').append(label).push_back(' ');
      }
      before = label;
      column += fragment.text.size();
    }
    text.write(output_);
    if (!labels.empty()) {
      labels.pop_back();
      row(indent).add("  ").add(labels, Style::Faint).write(output_);
    }
  }

  const Explanation& told_;
  const Sources& sources_;
  const TerminalOptions& options_;
  std::ostream& output_;
  const Reasons reasons_;
  bool hasLine_ = false;
  std::set<std::string> saidOfNames_;  // What has been said about names of the line.
};

}  // namespace

void writeTerminal(const Explanation& explanation, const Sources& sources, const TerminalOptions& options,
                   std::ostream& output) {
  TerminalView(explanation, sources, options, output).write();
}

}  // namespace qnpp
