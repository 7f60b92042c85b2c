// The lexer: any bytes at all.
//
// What must hold, besides no fault: the tokens do not depend on the pieces in which the input arrives; they are the
// input, with a blank for each comment, and its literals are those of a reader in the target itself; and the ways to
// pass over text in one go (skipping a line, copying text) leave what the same tokens would leave one by one. Some
// short names are macros.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzSupport.h"
#include "lexer/CppLexer.h"
#include "lexer/NameTable.h"
#include "lexer/OutputBuffer.h"
#include "macros/CppMacro.h"
#include "tests/support/PiecewiseInput.h"
#include "tests/support/Sinks.h"

namespace {

using qnpp::CppTokenKind;
using qnpp::fuzz::kWhole;
using qnpp::fuzz::require;

// A lexer and all that it works with.
class Bench {
 public:
  Bench(std::string_view text, std::size_t piece) : input_(text, piece) {
    output_.attach(sink_);
    for (const std::string_view name : {"a", "ab", "abc", "abcdefghij", "if", "x1", "_"}) {
      define(name);
    }
    for (const std::string_view name : {"b", "bc", "bcdefghijk", "line", "x", "L"}) {
      define(name).finalText = {kFinalText.data(), kFinalText.size(), names_.generation()};
    }
  }

  qnpp::CppLexer& lexer() { return lexer_; }
  qnpp::OutputBuffer& output() { return output_; }

  // What is written for a token of a text line.
  std::string_view textOf(CppTokenKind kind) {
    const std::string_view text = lexer_.text();
    const qnpp::Name* const name = qnpp::isName(kind) ? names_.find(text) : nullptr;
    return name != nullptr && name->finalText.generation == names_.generation() ? kFinalText : text;
  }

  // Everything written, the messages last.
  std::string written() {
    output_.flush();
    return sink_.str() + "\n----\n" + diagnostics_.str();
  }

 private:
  static constexpr std::string_view kFinalText = "(final b)";

  qnpp::Name& define(std::string_view text) {
    qnpp::Name& name = *names_.intern(text);
    name.macro = &macro_;
    names_.noteMacro(name);
    return name;
  }

  qnpp::PiecewiseInput input_;
  qnpp::KeptText sink_;
  qnpp::KeptMessages diagnostics_;
  qnpp::OutputBuffer output_;
  qnpp::CppMacro macro_;
  qnpp::NameTable names_;
  std::uint64_t effectCount_ = 0;
  qnpp::Budget budget_;
  qnpp::CppLexer lexer_{input_, qnpp::LexerContext{output_, diagnostics_, names_, effectCount_, budget_}};
};

struct Token {
  CppTokenKind kind;
  std::string text;
  std::int32_t line;
  bool operator==(const Token&) const = default;
};

struct Tokens {
  std::vector<Token> tokens;
  std::string written;
};

Tokens lex(std::string_view text, std::size_t piece) {
  Bench bench(text, piece);
  Tokens result;
  for (CppTokenKind kind = bench.lexer().next(); kind != qnpp::TK_END; kind = bench.lexer().next()) {
    require(!bench.lexer().text().empty(), "every token has a text");
    result.tokens.push_back({kind, std::string(bench.lexer().text()), bench.lexer().line()});
  }
  require(bench.lexer().next() == qnpp::TK_END, "the end of the input is final");
  result.written = bench.written();
  return result;
}

// How many bytes the literal is that `input` begins with; 1 when the quote there opens none.
std::size_t literalSize(std::string_view input) {
  const char quote = input.front();
  std::size_t at = 1;
  while (at < input.size() && input[at] != quote && input[at] != '\n') {
    if (input[at] == '\\') {
      const std::string_view behind = input.substr(at + 1);
      const bool isHex = behind.starts_with('x') && behind.find_first_of("0123456789ABCDEFabcdef", 1) == 1;
      const std::string_view escapes = quote == '"' ? "\"\\" : "\"'?\\abfnrtv01234567";
      if (behind.find_first_of(escapes) != 0 && (quote == '"' || !isHex)) {
        return 1;
      }
      ++at;
    }
    ++at;
  }
  const bool isEmptyCharacter = quote == '\'' && at == 1;
  return at < input.size() && input[at] == quote && !isEmptyCharacter ? at + 1 : 1;
}

// How many bytes at the beginning of `input` the token is; 0 when it is something else that stands there. A line end
// may be written in three ways, and a NUL that ends a line comment is one too.
std::size_t sizeInInput(const Token& token, std::string_view input, bool afterLineComment) {
  if (token.kind == qnpp::TK_NEWLINE) {
    return input.starts_with("\r\n") ? 2
                                     : input.find_first_of(std::string_view("\r\n\0", afterLineComment ? 3 : 2)) == 0;
  }
  if (token.kind == qnpp::TK_SPACE && token.text == " " && input.starts_with("//")) {
    return std::min(input.size(), input.find_first_of(std::string_view("\r\n\0", 3)));
  }
  if (token.kind == qnpp::TK_SPACE && token.text == " " && input.starts_with("/*")) {
    const std::size_t end = input.find("*/", 2);
    return end == std::string_view::npos ? input.size() : end + 2;
  }
  if (input.starts_with('"') || input.starts_with('\'')) {
    const std::size_t size = literalSize(input);
    const CppTokenKind kind = size == 1 ? qnpp::TK_OTHER : input.front() == '"' ? qnpp::TK_STRING : qnpp::TK_CHAR;
    return token.kind == kind && token.text == input.substr(0, size) ? size : 0;
  }
  return input.starts_with(token.text) ? token.text.size() : 0;
}

bool areInput(const std::vector<Token>& tokens, std::string_view input) {
  bool afterLineComment = false;
  for (const Token& token : tokens) {
    const std::size_t size = sizeInInput(token, input, afterLineComment);
    if (size == 0) {
      return false;
    }
    afterLineComment = input.starts_with("//");
    input.remove_prefix(size);
  }
  return input.empty();
}

// Reads `text` line by line, each as `readLine` does, and returns what was written and the line after each.
template <typename ReadLine>
std::string readLines(std::string_view text, std::size_t piece, ReadLine readLine) {
  Bench bench(text, piece);
  std::string lines;
  while (readLine(bench)) {
    lines += std::to_string(bench.lexer().line()) + ' ';
  }
  return lines + '\n' + bench.written();
}

// Takes the rest of the line token by token; false when the input ended before a line end.
bool dropLine(Bench& bench, CppTokenKind kind) {
  while (kind != qnpp::TK_NEWLINE && kind != qnpp::TK_END) {
    kind = bench.lexer().next();
  }
  return kind == qnpp::TK_NEWLINE;
}

// ---- A line of a skipped group leaves an empty one ----

bool skipByTokens(Bench& bench) {
  const CppTokenKind first = bench.lexer().next();
  if (first == qnpp::TK_END) {
    return false;
  }
  const bool hasLineEnd = dropLine(bench, first);
  bench.output().endLine();
  return hasLineEnd;
}

bool skipLine(Bench& bench) {
  const CppTokenKind first = bench.lexer().next();
  if (first == qnpp::TK_END) {
    return false;
  }
  const bool hasLineEnd = first == qnpp::TK_NEWLINE || bench.lexer().skipLine();
  bench.output().endLine();
  return hasLineEnd;
}

// ---- A text line is written; a line directive would stand where output and input are out of step ----

template <typename Next, typename TextOf>
bool writeLine(Bench& bench, Next next, TextOf textOf) {
  std::string blanks;
  CppTokenKind kind = bench.lexer().next();
  while (qnpp::isBlank(kind)) {
    blanks += bench.lexer().text();
    kind = bench.lexer().next();
  }
  if (kind == '#') {
    return dropLine(bench, kind);
  }
  if (kind == qnpp::TK_NEWLINE) {
    bench.output().endLine();
    return true;
  }
  if (kind == qnpp::TK_END) {
    return false;
  }
  // The line end of a line counts when it has been taken, and here none has been.
  if (bench.output().line() != bench.lexer().line()) {
    bench.output().write("(line)\n");
    bench.output().setLine(bench.lexer().line());
  }
  bench.output().write(blanks);
  bench.output().write(bench.textOf(kind));
  for (kind = next(bench); kind != qnpp::TK_NEWLINE; kind = next(bench)) {
    if (kind == qnpp::TK_END) {
      return false;
    }
    bench.output().write(textOf(bench, kind));
  }
  bench.output().endLine();
  return true;
}

bool writeByTokens(Bench& bench) {
  return writeLine(
      bench, [](Bench& b) { return b.lexer().next(); }, [](Bench& b, CppTokenKind kind) { return b.textOf(kind); });
}

bool copyText(Bench& bench) {
  return writeLine(
      bench, [](Bench& b) { return b.lexer().copyText(); },
      [](Bench& b, CppTokenKind kind) {
        const qnpp::Name* const name = b.lexer().name();
        require(kind == qnpp::TK_PRAGMA_OP || (name != nullptr && name->text() == b.lexer().text()),
                "only names that matter are handed out");
        return b.lexer().text();
      });
}

std::string writtenOnly(const std::string& lines) { return lines.substr(lines.find('\n')); }

class NoneNested final : public qnpp::NestedConditionals {
 public:
  bool carryOutNested(CppTokenKind /*kind*/) override { return false; }
};

// Whole lines in one go where that is possible, and token by token where it is not. Returns what was written.
std::string skipWholeLines(std::string_view text, std::size_t piece) {
  Bench bench(text, piece);
  NoneNested none;
  for (bool goesOn = true; goesOn;) {
    const CppTokenKind stop = bench.lexer().skipWholeLines(none);
    const bool hasBegun = stop != qnpp::TK_NEWLINE && stop != qnpp::TK_END;
    const CppTokenKind first = bench.lexer().next();
    goesOn = first != qnpp::TK_END && dropLine(bench, first);
    if (first != qnpp::TK_END || hasBegun) {
      bench.output().endLine();
    }
  }
  return '\n' + bench.written();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Blanks before it put an input at another place of the blocks of 64 bytes.
  const std::string text = std::string(size % 64, ' ').append(qnpp::fuzz::textOf(data, size));
  const std::size_t small = qnpp::fuzz::smallPiece(size);

  const Tokens whole = lex(text, kWhole);
  for (const std::size_t piece : {small, 3 * small}) {
    const Tokens pieces = lex(text, piece);
    require(whole.tokens == pieces.tokens, "the tokens do not depend on the pieces of the input");
    require(whole.written == pieces.written, "what the lexer writes does not depend on the pieces of the input");
  }
  require(areInput(whole.tokens, text), "the tokens are the input");

  const std::string skipped = readLines(text, kWhole, skipByTokens);
  require(skipped == readLines(text, kWhole, skipLine), "skipping a line passes over its tokens");
  require(skipped == readLines(text, small, skipLine), "skipping a line does not depend on the pieces");
  require(writtenOnly(skipped) == skipWholeLines(text, kWhole), "skipping whole lines passes over their tokens");
  require(writtenOnly(skipped) == skipWholeLines(text, small), "skipping whole lines does not depend on the pieces");

  const std::string written = writtenOnly(readLines(text, kWhole, writeByTokens));
  require(written == writtenOnly(readLines(text, kWhole, copyText)), "copying text writes its tokens");
  require(written == writtenOnly(readLines(text, small, copyText)), "copying text does not depend on the pieces");
  return 0;
}
