#include "tools/explain/Html.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Page.h"
#include "tools/Utf8.h"
#include "tools/explain/Reasons.h"

namespace qnpp {
namespace {

constexpr std::size_t kMostSteps = 4;         // Of a way back that is told.
constexpr std::size_t kLongestSummary = 160;  // Bytes of a text that has to fit into a line.
constexpr std::size_t kMostUses = 12;         // Of a macro that the list at the side names.
constexpr std::size_t kRowsOfBlock = 100;     // A browser lays out only the blocks that are seen.

// Text as it may stand in HTML; what is no character becomes the sign for that.
std::string escaped(std::string_view text) {
  std::string safe;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t size = utf8Size(text.substr(at));
    const char character = text[at];
    if (size == 0 || (static_cast<unsigned char>(character) < 0x20 && character != '\n' && character != '\t')) {
      safe.append("\uFFFD");
    } else if (character == '<') {
      safe.append("&lt;");
    } else if (character == '>') {
      safe.append("&gt;");
    } else if (character == '&') {
      safe.append("&amp;");
    } else if (character == '"') {
      safe.append("&quot;");
    } else {
      safe.append(text.substr(at, size));
    }
    at += std::max<std::size_t>(1, size);
  }
  return safe;
}

std::string code(std::string_view text) { return "<code>" + escaped(text) + "</code>"; }

std::string shortened(std::string text) {
  if (text.size() > kLongestSummary) {
    std::size_t end = kLongestSummary;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
      --end;
    }
    text.resize(end);
    text.append("\u2026");
  }
  return text;
}

class Page {
 public:
  Page(const Explanation& explanation, const Sources& sources, std::size_t mostUses, std::ostream& output)
      : told_(explanation), sources_(sources), output_(output), reasons_(explanation, sources), mostUses_(mostUses) {
    for (Id at = 1; at < told_.lines.size(); ++at) {
      const Line& line = told_.lines[at];
      linesAt_[line.place.file][line.place.line].push_back(&line);
    }
    for (const Directive& directive : told_.directives) {
      for (const Directive::Asked& name : directive.asked) {
        asked_.insert(name.name);
      }
    }
    for (Id id = 1; id < told_.expansions.size(); ++id) {
      const Expansion& expansion = told_.expansions[id];
      if (expansion.callEnd > expansion.nameBegin && expansion.context == 0) {
        namesIn_[expansion.place.file][expansion.nameBegin] = id;
      }
      if (!expansion.isKept && expansion.definition != 0) {
        usesOf_[expansion.definition].push_back(id);
      }
    }
  }

  void write() {
    const std::string title = told_.files.size() > 1 ? escaped(told_.files[1].name) : "";
    output_ << kPageBeginning
            << "<head>\n<meta charset=\"utf-8\">\n"
               "<meta name=\"viewport\" content=\"width=device-width\">\n<title>"
            << title << " - qnpp-explain</title>\n<style>\n"
            << kPageStyle << "</style>\n</head>\n<body>\n<a class=\"skip-link\" href=\"#text\">To the text</a>\n";
    writeHeader(title);
    output_ << "<div class=\"all\">\n<main id=\"text\">\n";
    for (const auto& [file, lines] : linesAt_) {
      writeFile(file, lines);
    }
    output_ << "</main>\n";
    writeSide();
    output_ << "</div>\n<div id=\"told\" role=\"status\" aria-live=\"polite\" class=\"live-only\"></div>\n<script>\n"
            << kPageScript << "</script>\n</body>\n</html>\n";
  }

 private:
  using Item = Reasons::Item;

  std::string link(const SourcePlace& place) const {
    const std::string text = escaped(reasons_.at(place));
    if (place.file == 0) {
      return text;
    }
    return "<a href=\"#" + rowOf(place) + "\">" + text + "</a>";
  }
  static std::string rowOf(const SourcePlace& place) {
    return "f" + std::to_string(place.file) + "l" + std::to_string(place.line);
  }

  void writeHeader(const std::string& title) {
    output_ << "<header>\n<h1>" << title
            << "</h1>\n<p>The source, beside it what qnpp writes for it, and below each line how that came about. "
               "<span class=\"a\">Arguments</span>, <span class=\"j\">texts made by # and ##</span>, and "
               "<span class=\"m\">names that were replaced</span> stand out.</p>\n";
    if (told_.isCut) {
      output_ << "<p class=\"message\">Nothing was written down from " << link(told_.cutAt)
              << " on. Ask for it by its lines, as in <code>qnpp-explain --html FILE SOURCE:" << told_.cutAt.line << "-"
              << told_.cutAt.line + 1000 << "</code>, or for more by <code>--most</code>.</p>\n";
    }
    output_
        << "<p class=\"live-only\"><button id=\"previous\">Previous use</button> <button id=\"next\">Next use</button> "
           "<button id=\"forward\">One level on</button> <button id=\"backward\">One level back</button> "
           "<button id=\"close\">Close all</button> Keys: <kbd>n</kbd> next use, <kbd>p</kbd> previous, "
           "<kbd>\u2192</kbd> one level on, <kbd>\u2190</kbd> one level back, <kbd>c</kbd> close all, "
           "<kbd>Enter</kbd> open or close.</p>\n</header>\n";
  }

  // ---- The text ----

  using Lines = std::map<std::int32_t, std::vector<const Line*>>;

  void writeFile(Id file, const Lines& lines) {
    const SourceFile& source = told_.files[file];
    output_ << "<section aria-labelledby=\"f" << file << "\">\n<h2 id=\"f" << file << "\">" << escaped(source.name);
    if (source.includedAt.file != 0) {
      output_ << " <span class=\"faint\">included at " << link(source.includedAt) << "</span>";
    }
    output_ << "</h2>\n";
    std::int32_t number = lines.begin()->first;
    std::int32_t last = std::max(lines.rbegin()->first, lines.rbegin()->second.back()->endLine);
    if (told_.isCut && told_.cutAt.file == file) {
      last = std::numeric_limits<std::int32_t>::max();
    }
    std::size_t rows = 0;
    std::int32_t joinedUpTo = 0;
    const Line* skippedBefore = nullptr;
    for (const Sources::SourceLine& text : sources_.lines(file, number, last)) {
      if (rows++ % kRowsOfBlock == 0) {
        output_ << (rows > 1 ? "</div>\n" : "") << "<div class=\"block\">\n";
      }
      const auto found = lines.find(number);
      const bool isContinued = found == lines.end() && number <= joinedUpTo;
      static const std::vector<const Line*> kNone;
      const std::vector<const Line*>& here = found == lines.end() ? kNone : found->second;
      for (const Line* const line : here) {
        joinedUpTo = std::max(joinedUpTo, line->endLine);
      }
      writeRow({file, number}, text, here, isContinued);
      writeNotes(here, skippedBefore);
      ++number;
    }
    output_ << (rows > 0 ? "</div>\n" : "") << "</section>\n";
  }

  void writeRow(const SourcePlace& place, const Sources::SourceLine& text, const std::vector<const Line*>& lines,
                bool isContinued) {
    const bool isSkipped =
        !lines.empty() && lines.front()->isSkipped &&
        (!lines.front()->isDirective || told_.directives[lines.front()->directive].isInSkippedGroup) &&
        !closesSkipping(*lines.front());
    output_ << "<div class=\"row" << (isSkipped ? " skipped" : "") << (isContinued ? " join" : "") << "\" id=\""
            << rowOf(place) << "\"><a class=\"n\" href=\"#" << rowOf(place) << "\">" << place.line
            << "</a><span class=\"s\"";
    if (isSkipped && !lines.front()->isDirective) {
      output_ << " title=\"" << escaped(reasons_.whySkipped(told_.directives[lines.front()->directive])) << '"';
    }
    output_ << '>';
    writeSource(place.file, text);
    output_ << "</span><span class=\"o\">";
    for (const Line* const line : lines) {
      writeFragments(told_.output(), line->outputBegin, line->outputEnd, line == lines.back(), false);
    }
    output_ << "</span></div>\n";
  }

  // A directive that ends a skipped group stands in none.
  bool closesSkipping(const Line& line) const {
    return line.isDirective && told_.directives[line.directive].opener != 0 &&
           !told_.directives[line.directive].isSkipping;
  }

  // The source, the names that were replaced as links to how.
  void writeSource(Id file, const Sources::SourceLine& line) {
    std::uint64_t at = line.begin;
    const std::uint64_t end = line.begin + line.text.size();
    const auto names = namesIn_.find(file);
    const auto part = [&](std::uint64_t from, std::uint64_t to) {
      return escaped(std::string_view(line.text).substr(from - line.begin, to - from));
    };
    if (names != namesIn_.end()) {
      for (auto name = names->second.lower_bound(at); name != names->second.end() && name->first < end; ++name) {
        const Expansion& expansion = told_.expansions[name->second];
        if (name->first < at || expansion.isKept) {
          continue;
        }
        const std::uint64_t behind = std::min<std::uint64_t>(end, name->first + expansion.name.size());
        output_ << part(at, name->first) << "<a class=\"m\" href=\"#x" << name->second << "\" data-x=\"" << name->second
                << "\" title=\"" << escaped(Reasons::headOf(told_.definitions[expansion.definition])) << '"' << '>'
                << part(name->first, behind) << "</a>";
        at = behind;
      }
    }
    output_ << part(at, end);
  }

  // The first expansion on the way back.
  Id topOf(Id origin) const {
    Id top = 0;
    for (; origin != 0; origin = told_.expansions[top].origin) {
      top = told_.pieces[origin].expansion;
    }
    return top;
  }

  // Where tokens come from, step by step, up to `mostSteps`.
  std::string wayBack(Id origin, std::size_t mostSteps) const {
    std::string way;
    for (std::size_t step = 0; origin != 0; ++step) {
      const Piece& piece = told_.pieces[origin];
      const Expansion& expansion = told_.expansions[piece.expansion];
      const std::string name = reasons_.nameOf(piece);
      way.append(step == 0 ? "" : " \u2190 ");
      if (step == mostSteps) {
        return way + "\u2026";
      }
      const bool isArgument = piece.part == Observer::Part::Argument;
      way.append(name.empty() ? "text of " : isArgument ? "argument " + name + " of " : "made by " + name + " in ");
      way.append(expansion.name).append(" (").append(reasons_.placeOf(expansion)).append(")");
      origin = isArgument && piece.from != 0 ? piece.from : expansion.origin;
      if (origin == 0) {
        way.append(", used at ").append(reasons_.at(expansion.place));
      }
    }
    return way;
  }

  void writeFragments(const std::vector<Fragment>& fragments, std::size_t begin, std::size_t end, bool isLast,
                      bool canBeReached) {
    for (std::size_t at = begin; at < end; ++at) {
      const Fragment& fragment = fragments[at];
      std::string_view text = fragment.text;
      if (isLast && at + 1 == end && text.ends_with('\n')) {
        text.remove_suffix(1);
      }
      if (text.empty()) {
        continue;
      }
      if (fragment.isLineDirective) {
        output_ << "<span class=\"faint\">" << escaped(text) << "</span>";
      } else if (fragment.origin == 0) {
        output_ << escaped(text);
      } else {
        const Observer::Part part = told_.pieces[fragment.origin].part;
        output_ << "<span class=\""
                << (part == Observer::Part::Argument ? "a"
                    : part == Observer::Part::Body   ? "b"
                                                     : "j")
                << "\" data-x=\"" << topOf(fragment.origin) << "\" title=\""
                << escaped(wayBack(fragment.origin, canBeReached ? 1 : kMostSteps)) << '"'
                << (canBeReached ? " tabindex=\"0\"" : "") << '>' << escaped(text) << "</span>";
      }
    }
  }

  // ---- Below a line ----

  void writeNotes(const std::vector<const Line*>& lines, const Line*& skippedBefore) {
    for (const Line* const line : lines) {
      const bool isSkippedText = line->isSkipped && !line->isDirective;
      if (isSkippedText && (skippedBefore == nullptr || skippedBefore->directive != line->directive)) {
        writeNote(reasons_.whySkipped(told_.directives[line->directive]), "why");
      }
      if (isSkippedText) {
        skippedBefore = line;
      } else if (line->isDirective) {
        for (const std::string& note : reasons_.outcomeOf(told_.directives[line->directive])) {
          writeNote(note, "why");
        }
        skippedBefore = told_.directives[line->directive].isInSkippedGroup ? skippedBefore : nullptr;
      }
      for (Id id = line->messagesBegin; id < line->messagesEnd; ++id) {
        output_ << "<p class=\"why message\" id=\"m" << id << "\">" << escaped(told_.messages[id].text) << "</p>\n";
      }
      const std::vector<Item> items = reasons_.itemsOf(*line);
      if (!items.empty()) {
        writeTree(*line, items);
      }
    }
  }

  // Where there are scripts, a browser takes this for mere text, and the script makes elements of it when they are
  // about to be seen. So a page with a hundred thousand of them opens at once.
  void writeTree(const Line& line, const std::vector<Item>& items) {
    if (usesWritten_ >= mostUses_) {
      output_ << "<p class=\"faint why\">Not taken apart here, for the size of the page. Ask for <code>"
              << escaped(told_.files[1].name) << ':' << lineOfSource(line.place) << "</code> alone.</p>\n";
      return;
    }
    saidOfNames_.clear();
    output_ << "<noscript class=\"t\" data-from=\"" << line.expansionsBegin << "\" data-to=\"" << line.expansionsEnd
            << "\">";
    writeItems(items, 0);
    output_ << "</noscript>\n";
  }

  // The line of the source itself where things happen.
  std::int32_t lineOfSource(SourcePlace place) const {
    while (told_.files[place.file].includedAt.file != 0) {
      place = told_.files[place.file].includedAt;
    }
    return place.line;
  }

  void writeNote(const std::string& note, std::string_view style) {
    output_ << "<p class=\"" << style << "\">" << escaped(note) << "</p>\n";
  }

  void writeItems(const std::vector<Item>& items, std::size_t level) {
    if (level == kMostLevels && !items.empty()) {
      output_ << "<p class=\"faint\">Deeper levels are left out.</p>\n";
      return;
    }
    for (const Item& item : items) {
      if (!item.isName) {
        if (usesWritten_ >= mostUses_) {
          output_ << "<p class=\"faint\">Further uses are left out, for the size of the page: <code>--most-uses</code> "
                     "shows more.</p>\n";
          return;
        }
        writeUse(item.id, level);
        continue;
      }
      const KeptName& name = told_.keptNames[item.id];
      const std::string why = reasons_.why(name);
      if (saidOfNames_.insert(name.name + " " + why).second) {
        output_ << "<p class=\"why\">" << code(name.name) << ' ' << escaped(why) << "</p>\n";
      }
    }
  }

  void writeUse(Id id, std::size_t level) {
    ++usesWritten_;
    const Expansion& expansion = told_.expansions[id];
    const Definition& definition = told_.definitions[expansion.definition];
    const std::string result = onOneLine(resultOf(told_, expansion));
    output_ << "<details class=\"u" << (level == 0 ? " top" : "") << "\" id=\"x" << id << "\"><summary>"
            << code(shortened(onOneLine(sources_.written(expansion)))) << " \u2192 "
            << (result.empty() ? "nothing" : code(shortened(result))) << "</summary>\n<p>";
    if (expansion.definition == 0) {
      output_ << "Predefined.";
    } else {
      output_ << link(definition.place) << ": " << code(Reasons::headOf(definition));
    }
    output_ << "</p>\n";
    for (std::size_t index = 0; index < expansion.arguments.size(); ++index) {
      writeArgument(expansion, index, level);
    }
    if (expansion.isFunctionLike) {
      output_ << "<p>gives <code>";
      writeFragments(expansion.replacement, 0, expansion.replacement.size(), false, true);
      output_ << "</code></p>\n";
    }
    const auto& items = reasons_.itemsOf(expansion);
    writeItems(items, level + 1);
    if (!items.empty() && level == 0) {
      output_ << "<p>in the end <code>";
      writeFragments(told_.contexts[expansion.context].result, expansion.resultBegin, expansion.resultEnd, false, true);
      output_ << "</code></p>\n";
    }
    output_ << "</details>\n";
  }

  void writeArgument(const Expansion& expansion, std::size_t index, std::size_t level) {
    const auto& parameters = told_.definitions[expansion.definition].parameters;
    const Expansion::Argument& argument = expansion.arguments[index];
    const std::string read = textOf(argument.read);
    output_ << "<p><code class=\"a\">"
            << escaped(index < parameters.size() ? parameters[index] : std::to_string(index + 1))
            << "</code> = " << (read.empty() ? "nothing" : code(read));
    const std::string unexpanded = reasons_.whyUnexpanded(expansion, index);
    if (!unexpanded.empty()) {
      output_ << " <span class=\"why\">" << escaped(unexpanded) << "</span>";
    }
    if (argument.contexts.empty()) {
      output_ << "</p>\n";
      return;
    }
    const Id context = argument.contexts.front();
    const std::string expanded = textOf(told_.contexts[context].result);
    if (expanded != read) {
      output_ << " \u2192 " << (expanded.empty() ? "nothing" : code(expanded));
    }
    output_ << "</p>\n";
    writeItems(reasons_.itemsOfContext(context), level + 1);
  }

  // ---- The side ----

  void writeSide() {
    output_ << "<aside aria-label=\"Overview\">\n";
    if (told_.messages.size() > 1) {
      output_ << "<details open><summary>Messages (" << told_.messages.size() - 1 << ")</summary><ul>\n";
      for (Id id = 1; id < told_.messages.size(); ++id) {
        output_ << "<li><a class=\"message\" href=\"#m" << id << "\">" << escaped(told_.messages[id].text)
                << "</a></li>\n";
      }
      output_ << "</ul></details>\n";
    }
    output_ << "<details open><summary>Includes</summary>\n";
    writeIncludes();
    output_ << "</details>\n<details open><summary>Macros (" << told_.definitions.size() - 1 << ")</summary><ul>\n";
    for (Id id = 1; id < told_.definitions.size(); ++id) {
      writeMacro(id);
    }
    output_ << "</ul></details>\n</aside>\n";
  }

  void writeMacro(Id id) {
    const Definition& definition = told_.definitions[id];
    const auto found = usesOf_.find(id);
    const std::size_t count = found == usesOf_.end() ? 0 : found->second.size();
    output_ << "<li>" << code(definition.name) << ' ' << link(definition.place);
    if (definition.endedAt.file != 0) {
      output_ << ", " << (definition.isReplaced ? "replaced at " : "undefined at ") << link(definition.endedAt);
    }
    const std::string none = asked_.count(definition.name) > 0 ? "only asked for" : "never used";
    output_ << "<br><span class=\"count\">" << (count == 0 ? none : "used " + std::to_string(count) + "\u00d7")
            << "</span>";
    for (std::size_t at = 0; at < std::min(count, kMostUses); ++at) {
      const Id use = found->second[at];
      output_ << (at == 0 ? ": " : ", ") << "<a href=\"#x" << use << "\">" << told_.expansions[use].place.line
              << "</a>";
    }
    output_ << (count > kMostUses ? ", \u2026" : "") << "</li>\n";
  }

  // Files are included within one another as deep as memory allows, so no function may call itself for each.
  void writeIncludes() {
    std::vector<Id> around;  // The files whose lists are open.
    const auto close = [&] {
      output_ << "</li></ul>\n";
      around.pop_back();
    };
    for (Id id = 1; id < told_.files.size(); ++id) {
      const SourceFile& file = told_.files[id];
      while (!around.empty() && around.back() != file.includedAt.file) {
        close();
      }
      const bool isShown = linesAt_.count(id) > 0;
      output_ << "<ul><li>" << (isShown ? "<a href=\"#f" + std::to_string(id) + "\">" : "") << escaped(file.name)
              << (isShown ? "</a>" : "");
      around.push_back(id);
    }
    while (!around.empty()) {
      close();
    }
    for (const Directive& directive : told_.directives) {
      if (directive.word == TK_INCLUDE && directive.entered == 0) {
        output_ << "<p class=\"message\">Not found: " << code(Reasons::textOf(directive)) << ' '
                << link(directive.place) << "</p>\n";
      }
    }
  }

  const Explanation& told_;
  const Sources& sources_;
  std::ostream& output_;
  const Reasons reasons_;
  std::map<Id, Lines> linesAt_;
  std::map<Id, std::map<std::uint64_t, Id>> namesIn_;  // By file and offset.
  std::map<Id, std::vector<Id>> usesOf_;               // By definition.
  std::set<std::string> asked_;                        // Names that conditions ask for.
  std::set<std::string> saidOfNames_;                  // What has been said about names of the line.
  std::size_t mostUses_;
  std::size_t usesWritten_ = 0;
};

}  // namespace

void writeHtml(const Explanation& explanation, const Sources& sources, std::size_t mostUses, std::ostream& output) {
  Page(explanation, sources, mostUses, output).write();
}

}  // namespace qnpp
