#include "tools/check/Check.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <set>

#include "tools/Nearness.h"
#include "tools/check/SourceTokens.h"

namespace qnpp {
namespace {

constexpr std::array<Rule, 13> kRules{{
    {"byte-order-mark", "The file begins with a byte order mark.", "Save the file without it."},
    {"comment-in-string", "A comment begins in what looks like a string, a path or an address.",
     "Make the text a string literal, or break the two characters up."},
    {"directive-as-text", "A line that begins like a directive is text.",
     "Close the invocation, or write something behind the name of the macro, before the directive."},
    {"divisor-in-condition", "A condition divides although all operands are evaluated.",
     "Test the divisor in an #if of its own, around this one."},
    {"lone-hash", "A \"#\" alone in a skipped group takes the next line with it.", "Remove the \"#\"."},
    {"no-guard", "A header without a guard is included more than once.",
     "Begin it with #ifndef NAME and #define NAME, and end it with #endif."},
    {"number-with-macro", "Letters behind a number are the name of a macro.",
     "Give the macro another name, or put the number together by ##."},
    {"output-is-source", "The output would be written over the source.", "Give the output another name."},
    {"pragma-once", "#pragma once is passed on and does nothing else.",
     "Begin the file with #ifndef NAME and #define NAME, and end it with #endif."},
    {"string-with-escape",
     "Text between quotes is no string, because of an escape: macros are expanded in it, or blanks in it are lost.",
     "Write the escape in another way; only \\\" and \\\\ may stand in a string."},
    {"unknown-directive", "A word behind \"#\" is nearly a directive.", "Write the directive that is meant."},
    {"unused-macro", "A macro is defined and never used.", "Remove the definition.", false},
    {"words-behind-else", "Words behind #else or #endif are text.", "Put them into a comment."},
}};

constexpr std::array<std::string_view, 12> kDirectives{"if",      "ifdef",  "ifndef", "else", "elif",  "endif",
                                                       "include", "define", "undef",  "line", "error", "pragma"};

using Tokens = std::vector<SourceToken>;

// Position of the first token from `at` on that is no white space; the size for none.
std::size_t passBlanks(const Tokens& line, std::size_t at) {
  while (at < line.size() && isBlank(line[at].kind)) {
    ++at;
  }
  return at;
}

constexpr std::size_t kNoDirective = std::numeric_limits<std::size_t>::max();

// Position of the word of a directive, or kNoDirective. That of a lone "#" is the size.
std::size_t directiveWord(const Tokens& line) {
  const std::size_t hash = passBlanks(line, 0);
  return hash == line.size() || line[hash].kind != '#' ? kNoDirective : passBlanks(line, hash + 1);
}

// The directive in a line; TK_END for none.
CppTokenKind directiveOf(const Tokens& line) {
  const std::size_t word = directiveWord(line);
  return word < line.size() ? line[word].kind : TK_END;
}

bool isDirective(std::string_view word) {
  return std::find(kDirectives.begin(), kDirectives.end(), word) != kDirectives.end();
}

// The directive that a word may be meant for. "ident" and the like are words of their own right.
std::optional<std::string_view> nearestDirective(std::string_view word) {
  std::size_t most = word.size() < 4 ? 1 : 2;
  std::optional<std::string_view> found;
  for (const std::string_view directive : kDirectives) {
    const std::size_t distance = editDistance(word, directive, most);
    if (distance > 0 && distance <= most) {
      found = directive;
      most = distance - 1;
    }
  }
  return word == "elifdef" || word == "elifndef" || word == "ident" || word == "assert" ? std::nullopt : found;
}

class Checker {
 public:
  Checker(const Explanation& explanation, const std::string& textReadOnce)
      : told_(explanation), textReadOnce_(textReadOnce) {
    for (const Definition& definition : told_.definitions) {
      (definition.isFunctionLike ? functionLike_ : objectLike_).insert(definition.name);
    }
    for (Id id = 1; id < told_.files.size(); ++id) {
      instances_[told_.files[id].path].push_back(id);
    }
    for (std::size_t at = 1; at < told_.lines.size(); ++at) {
      linesOf_[told_.lines[at].place.file].push_back(&told_.lines[at]);
    }
    for (const Expansion& call : told_.expansions) {
      // Those in arguments lie within others.
      if (call.context == 0 && call.isFunctionLike && call.callEnd > call.nameBegin) {
        callsIn_[call.place.file].push_back(&call);
      }
    }
  }

  std::vector<Finding> run() {
    for (const auto& [path, files] : instances_) {
      checkFile(path, files);
    }
    checkUnused();
    if (told_.hasDividedByZero) {
      const SourcePlace& place = told_.directives.back().place;
      name_ = told_.files[place.file].name;
      add("divisor-in-condition", place.line, "a division by 0, or one that is out of range, ends the run");
    }
    std::sort(found_.begin(), found_.end());
    found_.erase(std::unique(found_.begin(), found_.end()), found_.end());
    return std::move(found_);
  }

 private:
  // A use of a macro with arguments, and whether nothing comes of it.
  struct Call {
    std::uint64_t end = 0;
    bool isEmpty = true;
  };

  void add(std::string_view id, std::int32_t line, std::string text) {
    found_.push_back(findingOf(id, name_, line, std::move(text)));
  }

  void checkFile(const std::string& path, const std::vector<Id>& files) {
    name_ = told_.files[files.front()].name;
    text_ = textReadOnce_;
    if (!path.empty()) {
      std::ifstream input(path, std::ios::binary);
      text_.assign(std::istreambuf_iterator<char>(input), {});
    }
    if (text_.starts_with("\xEF\xBB\xBF")) {
      add("byte-order-mark", 1, "the byte order mark at the beginning of the file goes to the output");
    }
    skipped_.clear();
    read_.clear();
    textRead_.clear();
    ties_.clear();
    calls_.clear();
    for (const Id file : files) {
      for (const Line* const line : linesOf_[file]) {
        (line->isSkipped && !line->isDirective ? skipped_ : read_).insert(line->place.line);
        if (!line->isSkipped && !line->isDirective) {
          textRead_.insert(line->place.line);
        }
        if (!line->isSkipped && !line->isDirective && line->endLine > line->place.line) {
          ties_[line->place.line] = std::max(ties_[line->place.line], line->endLine);
        }
      }
      for (const Expansion* const call : callsIn_[file]) {
        Call& known = calls_[call->nameBegin];
        known.end = std::max(known.end, call->callEnd);
        known.isEmpty = known.isEmpty && call->replacement.empty();
      }
    }
    const auto lines = tokensOf(text_);
    for (std::size_t at = 0; at < lines.size(); ++at) {
      if (!lines[at].empty()) {
        checkLine(lines[at], at + 1 < lines.size() ? &lines[at + 1] : nullptr);
      }
    }
    if (files.size() > 1) {
      checkGuard(lines);
    }
  }

  bool isSkipped(std::int32_t line) const { return skipped_.count(line) > 0 && read_.count(line) == 0; }

  // The line of text that goes on over this one; 0 for none.
  std::int32_t tiedTo(std::int32_t line) const {
    const auto behind = ties_.lower_bound(line);
    if (behind == ties_.begin()) {
      return 0;
    }
    const auto& [first, last] = *std::prev(behind);
    return first < line && line <= last ? first : 0;
  }

  void checkLine(const Tokens& line, const Tokens* next) {
    const std::int32_t number = line.front().line;
    const std::size_t word = directiveWord(line);
    if (word != kNoDirective && tiedTo(number) != 0) {
      if (word < line.size() && isDirective(line[word].text)) {
        add("directive-as-text", number,
            "\"#" + std::string(line[word].text) + "\" is text here: it belongs to the " + "text that begins in line " +
                std::to_string(tiedTo(number)));
      }
      return;
    }
    if (word != kNoDirective) {
      checkDirective(line, word, next);
    }
    if (isSkipped(number)) {
      return;
    }
    checkComments(line);
    checkStrings(line);
    checkNumbers(line);
  }

  void checkDirective(const Tokens& line, std::size_t word, const Tokens* next) {
    const std::int32_t number = line.front().line;
    if (word == line.size()) {
      const CppTokenKind taken = next == nullptr ? TK_END : directiveOf(*next);
      if (isSkipped(number) && isConditional(taken)) {
        add("lone-hash", number, "this \"#\" takes the directive in the next line with it, which is not carried out");
      }
      return;
    }
    const std::string text(line[word].text);
    const std::size_t behind = passBlanks(line, word + 1);
    switch (line[word].kind) {
      case TK_ELSE:
      case TK_ENDIF:
        if (behind < line.size() && textRead_.count(number) > 0) {
          add("words-behind-else", number, "what stands behind #" + text + " goes to the output");
        }
        return;
      case TK_IF:
      case TK_ELIF:
        if (!isSkipped(number)) {
          checkDivisors(line, behind);
        }
        return;
      case TK_PRAGMA:
        if (behind < line.size() && line[behind].text == "once" && !isSkipped(number)) {
          add("pragma-once", number, "\"#pragma once\" does not keep the file from being read again");
        }
        return;
      case TK_IDENTIFIER:
        if (const auto meant = nearestDirective(text)) {
          add("unknown-directive", number,
              "\"#" + text + "\" is no directive; the nearest is \"#" + std::string(*meant) + "\"");
        }
        return;
      default:
        return;
    }
  }

  void checkDivisors(const Tokens& line, std::size_t at) {
    bool isGuarded = false;
    const SourceToken* divisor = nullptr;
    for (; at < line.size(); ++at) {
      const SourceToken& token = line[at];
      isGuarded = isGuarded || token.kind == TK_ANDAND || token.kind == TK_OROR || token.kind == '?';
      if (token.kind == '/' || token.kind == '%') {
        const std::size_t behind = passBlanks(line, at + 1);
        if (behind < line.size() && (isName(line[behind].kind) || line[behind].kind == '(')) {
          divisor = &line[behind];
        }
      }
    }
    if (isGuarded && divisor != nullptr) {
      add("divisor-in-condition", line.front().line,
          "the division by \"" + std::string(divisor->text) + "\" is carried out whatever stands beside it");
    }
  }

  // A quote that is open, "https:" or "lib/" before a comment; "lib/*.o" only if it is not closed in its line.
  void checkComments(const Tokens& line) {
    std::size_t quotes = 0;
    for (std::size_t at = 0; at < line.size(); ++at) {
      const SourceToken& token = line[at];
      quotes += token.isLoneQuote() ? 1U : 0U;
      if (!token.isComment() || at == 0) {
        continue;
      }
      const SourceToken& before = line[at - 1];
      const bool isLineComment = token.text[1] == '/';
      const bool holdsQuote = token.text.substr(0, token.text.find('\n')).find('"') != std::string_view::npos;
      if (quotes % 2 == 1 && holdsQuote) {
        add("comment-in-string", token.line, "a comment begins between quotes that make no string");
      } else if (isLineComment && before.kind == ':' && at > 1 && isName(line[at - 2].kind) && token.text.size() > 2 &&
                 token.text[2] != ' ') {
        add("comment-in-string", token.line, "a comment begins in what looks like an address");
      } else if (!isLineComment && token.text.find('\n') != std::string_view::npos && token.text.size() > 2 &&
                 (token.text[2] == '.' || token.text[2] == '/' || token.text[2] == ')') &&
                 (isName(before.kind) || before.kind == '.' || before.kind == '/')) {
        add("comment-in-string", token.line,
            "a comment begins in what looks like a path, and goes on over the line end");
      }
    }
  }

  // Whether the token is the name of a macro, and not one that wants a "(" and has none.
  bool isMacro(const Tokens& line, std::size_t at) const {
    if (!isName(line[at].kind)) {
      return false;
    }
    const std::string name(line[at].text);
    const std::size_t behind = passBlanks(line, at + 1);
    return objectLike_.count(name) > 0 ||
           (functionLike_.count(name) > 0 && behind < line.size() && line[behind].kind == '(');
  }

  void checkStrings(const Tokens& line) {
    const bool isDefinition = directiveOf(line) == TK_DEFINE;
    for (std::size_t at = 0; at < line.size(); ++at) {
      if (!line[at].isLoneQuote()) {
        continue;
      }
      bool hasEscape = false;
      const SourceToken* macro = nullptr;
      const SourceToken* blanks = nullptr;
      std::size_t end = at + 1;
      for (; end < line.size() && !line[end].isLoneQuote(); ++end) {
        const SourceToken& token = line[end];
        hasEscape = hasEscape || token.text == "\\";
        if (macro == nullptr && isMacro(line, end)) {
          macro = &token;
        }
        if (isBlank(token.kind) && (token.text != " " || isBlank(line[end - 1].kind))) {
          blanks = &token;
        }
      }
      const Call* const call = callAround(line[at]);
      if (end < line.size() && hasEscape && (call == nullptr || !call->isEmpty)) {
        // Text keeps its blanks; a replacement list and an argument do not.
        addString(line[at].line, macro, blanks != nullptr && (isDefinition || call != nullptr));
      }
      at = end;
    }
  }

  void addString(std::int32_t line, const SourceToken* macro, bool losesBlanks) {
    const std::string beginning = "the text between these quotes is no string, and ";
    if (macro != nullptr) {
      add("string-with-escape", line, beginning + "\"" + std::string(macro->text) + "\" in it is a macro");
    } else if (losesBlanks) {
      add("string-with-escape", line, beginning + "blanks that follow one another in it become a single one");
    }
  }

  // The use of a macro in whose arguments the token stands; null for none.
  const Call* callAround(const SourceToken& token) const {
    const auto offset = static_cast<std::uint64_t>(token.text.data() - text_.data());
    const auto behind = calls_.upper_bound(offset);
    return behind != calls_.begin() && offset < std::prev(behind)->second.end ? &std::prev(behind)->second : nullptr;
  }

  void checkNumbers(const Tokens& line) {
    for (std::size_t at = 1; at < line.size(); ++at) {
      const SourceToken& number = line[at - 1];
      const bool isNumber = number.kind >= TK_DEC_INT && number.kind <= TK_HEX_UINT;
      if (isNumber && isMacro(line, at)) {
        add("number-with-macro", number.line,
            "\"" + std::string(line[at].text) + "\" behind the number \"" + std::string(number.text) + "\" is a macro");
      }
    }
  }

  // A header that is meant to be read several times undefines what it defines, or is guarded by its users.
  void checkGuard(const std::vector<Tokens>& lines) {
    const std::size_t dot = name_.rfind('.');
    const std::string ending = dot == std::string::npos ? "" : name_.substr(dot);
    if (ending != ".h" && ending != ".hh" && ending != ".hpp" && ending != ".hxx") {
      return;
    }
    bool defines = false;
    CppTokenKind before = TK_END;
    for (const Tokens& line : lines) {
      const CppTokenKind directive = directiveOf(line);
      const bool isGuard = directive == TK_DEFINE && (before == TK_IFNDEF || before == TK_IF);
      const std::size_t operand = directive == TK_PRAGMA ? passBlanks(line, directiveWord(line) + 1) : line.size();
      if (isGuard || directive == TK_UNDEF || (operand < line.size() && line[operand].text == "once")) {
        return;  // That of "once" is told anyway.
      }
      defines = defines || directive == TK_DEFINE;
      before = directive == TK_END ? before : directive;
    }
    if (defines) {
      add("no-guard", 1, "the file is included more than once and has no guard");
    }
  }

  void checkUnused() {
    std::set<std::string> asked;
    for (const Directive& directive : told_.directives) {
      for (const Directive::Asked& name : directive.asked) {
        asked.insert(name.name);
      }
    }
    for (const Definition& definition : told_.definitions) {
      if (definition.place.file == 1 && definition.useCount == 0 && asked.count(definition.name) == 0) {
        name_ = told_.files[1].name;
        add("unused-macro", definition.place.line, "the macro \"" + definition.name + "\" is never used");
      }
    }
  }

  const Explanation& told_;
  const std::string& textReadOnce_;
  std::set<std::string> objectLike_;  // Names of macros.
  std::set<std::string> functionLike_;
  std::map<std::string, std::vector<Id>> instances_;  // By path.
  std::map<Id, std::vector<const Line*>> linesOf_;
  std::map<Id, std::vector<const Expansion*>> callsIn_;
  std::vector<Finding> found_;

  // Of the file that is looked at.
  std::string name_;
  std::string text_;
  std::set<std::int32_t> skipped_;
  std::set<std::int32_t> read_;
  std::set<std::int32_t> textRead_;            // Lines with text that is not skipped, behind #else too.
  std::map<std::int32_t, std::int32_t> ties_;  // Texts of several lines: the first and the last.
  std::map<std::uint64_t, Call> calls_;        // By the offsets of their names.
};

}  // namespace

std::span<const Rule> rules() { return kRules; }

Finding findingOf(std::string_view id, std::string file, std::int32_t line, std::string text) {
  const auto rule = std::find_if(kRules.begin(), kRules.end(), [id](const Rule& other) { return other.id == id; });
  return {std::move(file), line, &*rule, std::move(text)};
}

std::vector<Finding> check(const Explanation& explanation, const std::string& textReadOnce) {
  return Checker(explanation, textReadOnce).run();
}

}  // namespace qnpp
