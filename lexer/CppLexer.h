// The lexer: bytes in, token kinds out.
#pragma once

// flex's class header is included once per scanner class; the generated scanner has done so already.
#ifndef yyFlexLexerOnce
#undef yyFlexLexer
#define yyFlexLexer yyCppFlexLexer
#include <FlexLexer.h>
#endif

#include <cstddef>
#include <cstdint>
#include <exception>
#include <istream>
#include <memory>
#include <string>
#include <string_view>

#include "lexer/Budget.h"
#include "lexer/CppTokenKind.h"
#include "lexer/LineNumber.h"
#include "lexer/Messages.h"
#include "lexer/NameTable.h"
#include "lexer/NestedConditionals.h"
#include "lexer/OutputBuffer.h"

namespace qnpp {

/// How large the scanner's buffer is at first, and so how much is read at once.
inline constexpr std::size_t kReadSize = std::size_t{32} * 1024;

/// Thrown when the scanner itself cannot go on (a read error, say).
class FatalLexerError : public std::exception {
 public:
  /// `message` is a text of the generated scanner, which lives as long as the program.
  explicit FatalLexerError(const char* message) : message_(message) {}
  const char* what() const noexcept override { return message_; }

 private:
  const char* message_;
};

/// What a lexer works with beside its input. All of it is borrowed and outlives the lexer.
struct LexerContext {
  OutputBuffer& output;    ///< Gets the line ends inside comments.
  MessageSink& messages;   ///< Gets the message about an unterminated comment.
  const NameTable& names;  ///< Tells `copyText` which words are macros, and what some of them come to.
  /// Counts what comments do beside being a blank: line ends written, messages given. A text in which one does is lexed
  /// anew at each use.
  std::uint64_t& effectCount;
  Budget& budget;  ///< Is looked at before input is read.
};

/// The name of a macro or `_Pragma` in the word from `word` to `end`, or null. Moves `word` to where the name begins: a
/// name may follow a number directly. At `end` stands a byte that is none of a word, and three bytes may be read there.
Name* findMacroName(const NameTable& names, const char*& word, const char* end);

class CppLexer;

/// The bytes of the input behind a token, for those who read them past the rules. There is a NUL behind those that are
/// in the scanner's buffer.
class BytesAhead {
 public:
  /// Bytes that are all there is.
  explicit BytesAhead(const char* begin) : begin_(begin) {}
  BytesAhead(const char* begin, CppLexer& lexer) : begin_(begin), lexer_(&lexer) {}

  const char* begin() const { return begin_; }
  /// Gets more of the input behind the NUL at `end`. All bytes may move for that, from `begin()` on: returns where
  /// `end` is now. Null when there is no more, or the NUL is one of the input.
  const char* getMore(const char* end);
  /// To be called for line ends that have been read.
  void setLines(std::size_t lines) { lines_ = lines; }
  std::size_t lines() const { return lines_; }

 private:
  const char* begin_;
  CppLexer* lexer_ = nullptr;
  std::size_t lines_ = 0;
};

/// What stands before the replacement list of a definition.
struct MacroHead {
  std::string_view name;  ///< In the scanner's buffer: valid until the next token is asked for.
  bool functionLike = false;
  std::string parameterList;  // See ParameterNames.
  std::uint32_t parameterCount = 0;
};

/// Turns a byte stream into tokens. flex generates the scanner from CppLexer.l; this class adds the counters, the
/// readers for comments and literals, and ways to pass over text without handing out each token.
///
/// The literal, comment and skipping readers walk through the scanner's own buffer. The pattern matcher would walk a
/// long literal again for every quote in it that opens none, and through a long comment character by character.
class CppLexer final : public yyCppFlexLexer {
 public:
  /// Reads from `input`, which is borrowed unless it is handed over.
  CppLexer(std::istream& input, const LexerContext& context);
  CppLexer(std::unique_ptr<std::istream> input, const LexerContext& context);
  CppLexer(const CppLexer&) = delete;
  CppLexer& operator=(const CppLexer&) = delete;
  ~CppLexer() override;

  /// Starts over at line 1 with another borrowed input, keeping the buffers.
  void restart(std::istream& input);
  void restart(std::unique_ptr<std::istream> input);
  /// Lets go of the input; only `restart` may follow. Returns whether the buffer is as large as at first.
  bool close();

  /// The next token, TK_END at the end of the input and ever after.
  CppTokenKind next() { return yylex(); }

  /// Text of the token handed out last; valid until the next token is asked for.
  std::string_view text() const { return text_; }
  /// How much of the input it and the tokens before it are.
  std::uint64_t endOffset() const { return offsetOf(yytext) + static_cast<std::uint64_t>(yyleng); }

  /// Calls `use` with the input from `from`, an offset, up to one byte behind the token handed out last; with an empty
  /// text if not all of that is in the buffer. Valid during the call.
  template <typename Use>
  auto withTextFrom(std::uint64_t from, Use use) {
    char* const at = beginScan();
    const std::uint64_t size = offsetOf(at) - from;
    const bool isThere = size <= static_cast<std::uint64_t>(at - bufferBegin()) && !atBufferEnd(at);
    const auto used = use(isThere ? std::string_view(at - size, size + 1) : std::string_view());
    endScan(at);
    return used;
  }

  /// How much of the input has been read into the buffer.
  std::uint64_t bytesRead() const { return bytesRead_; }

  /// Number of the line being read, from 1: the line ends of all tokens and comments matched so far count.
  std::int32_t line() const { return line_; }
  void setLine(std::int32_t line) { line_ = line; }

  /// Writes the tokens that follow to the output as they stand, up to the next one that the reader has to see: a name
  /// with a macro definition, `_Pragma`, a line end, or the end of the input. That one is handed out like by `next`. A
  /// macro whose final text is known (see Name) need not be seen: that text is written in the place of the name.
  ///
  /// Goes on behind a line end when the output is in step with the input (the output line is the current line) and the
  /// next line is sure to be a text line. To be called in the middle of a text line only.
  CppTokenKind copyText();

  /// The name table's entry for the name that `copyText` handed out; null when that was no name.
  Name* name() const { return name_; }

  /// Passes over blanks in the middle of a line, as if they were one token; perhaps not over all of them. Returns
  /// whether there were any.
  bool passBlanks() {
    if (yy_hold_char != ' ' && yy_hold_char != '\t') {
      return false;
    }
    passBlanksInBuffer();
    return true;
  }

  /// From the start of a line where text is taken: passes over blanks and comments, writing an empty line for each line
  /// of nothing else, over directives of nothing but a "#", and over the beginning of another, as if the tokens had
  /// been asked for. What of them begins the next line of text is appended to `leadingSpace`, which is empty. Returns
  /// the kind of what was passed last: the word of a directive, or "#" where none is sure to follow; TK_SPACE or
  /// TK_NEWLINE when something else follows or it takes more to be sure; TK_END when nothing was passed. TK_OTHER when
  /// a line of text is sure to follow: then it may be copied as if some of it had been taken.
  CppTokenKind passLineStart(std::string& leadingSpace);

  /// Whether the rest of the line means what stands there and nothing else: all of it is in the buffer, without
  /// comments, continued line ends and macros, and ends in "\n".
  bool isRestPlain();

  /// Passes over the name behind `#define` or `#undef` as if its tokens had been asked for, and the parameters as well
  /// if `head` wants them. Returns false, with nothing passed, unless there is no fault in them, nothing but blanks is
  /// between them, and all of it is in the buffer.
  bool readMacroName(std::string_view& name);
  bool readMacroHead(MacroHead& head);

  /// In the middle of a line: passes over all up to the line end and returns it as a replacement list is kept: white
  /// space, comments too, becomes one blank between two tokens and nothing at either end; a continued line end is no
  /// white space, so it joins what stands before and behind it. The text is in `scratch`, which is empty, or in the
  /// scanner's buffer, and then valid until the next token is asked for.
  std::string_view readReplacementText(std::string& scratch);

  /// In the middle of a line: has `pass` look at the bytes behind the current token, and passes over all before the
  /// place that it returns, with the line ends that it has told of. Returns false, with nothing passed, where that is
  /// null. The text of the current token is lost.
  template <typename Pass>
  bool passAhead(Pass pass) {
    BytesAhead bytes(beginScan(), *this);
    const char* const behind = pass(bytes);
    char* at = yytext + (bytes.begin() - yytext);
    if (behind != nullptr) {
      at = yytext = at + (behind - at);
      countLines(bytes.lines());
    }
    endScan(at);
    return behind != nullptr;
  }

  /// Passes over a line end if "\n" comes next; otherwise returns false.
  bool passPlainLineEnd() {
    if (yy_hold_char != '\n') {
      return false;
    }
    yytext = beginScan() + 1;
    countLine();
    endScan(yytext);
    return true;
  }

  /// Passes over the rest of the line, its line end included, as if its tokens had been asked for. Returns false when
  /// the input ended before a line end. To be called in the middle of a line only, so behind some token of it.
  bool skipLine();

  /// From the start of a line of a skipped group: passes over whole lines, doing all that is due for them, up to behind
  /// the word of a conditional directive that `conditionals` does not carry out. Returns the kind of that word. Stops
  /// before that at a line that has to be looked at token by token, and returns TK_NEWLINE; TK_SPACE when that line has
  /// begun; TK_END when nothing was passed.
  CppTokenKind skipWholeLines(NestedConditionals& conditionals);

  // Called by the generated scanner.
  int yylex() override;
  int LexerInput(char* to, int size) override;
  [[noreturn]] void LexerError(const char* message) override;

 private:
  friend class BytesAhead;

  // Reading in the scanner's buffer. Between tokens the byte behind the token is kept aside, so that the token's text
  // ends in a NUL: `beginScan` puts it back and tells where it is, `endScan` says where the next token starts.
  char* beginScan() {
    *yy_c_buf_p = yy_hold_char;
    return yy_c_buf_p;
  }
  void endScan(char* at) {
    yyleng = static_cast<int>(at - yytext);
    yy_c_buf_p = at;
    yy_hold_char = *at;
    *at = '\0';
  }
  // True for the NUL behind the last byte that is in the buffer, as against a NUL of the input.
  bool atBufferEnd(const char* at) const { return at == bufferEnd(); }
  // In CppLexer.l, where the buffer's type is known: the place of that NUL; where the buffer begins; and getting more
  // input behind `at`, which has to be that place. Everything from `yytext` on is kept, and `at` and `yytext` move with
  // it. False: no more input.
  char* bufferEnd() const;
  char* bufferBegin() const;
  bool refill(char*& at);
  // Forgets the bytes before `at`, then refills.
  bool refillFrom(char*& at) {
    yytext = at;
    return refill(at);
  }

  // Fills the buffer, if nothing has been read yet, so that it can be read as described above.
  void beginReading() {
    if (bytesRead_ == 0 || inputEnded_) {
      fillFirst();
    }
  }
  void fillFirst();

  std::uint64_t offsetOf(const char* at) const { return bytesRead_ - static_cast<std::uint64_t>(bufferEnd() - at); }

  CppTokenKind token(CppTokenKind kind) {
    text_ = {yytext, static_cast<std::size_t>(yyleng)};
    return kind;
  }
  CppTokenKind token(CppTokenKind kind, std::string_view text) {
    text_ = text;
    return kind;
  }

  void countLine() { line_ = addLines(line_, 1); }
  void countLines(std::size_t count) { line_ = addLines(line_, static_cast<std::int32_t>(count)); }
  CppTokenKind scanAt(char* at);

  CppTokenKind passDirectiveWord(char*& at, char* word);
  void passBlanksInBuffer();
  bool isPlainUpToLineEnd(const char* at) const;

  // Parts of copyText; see TextCopy.
  class TextCopy;

  // Readers behind the opening characters. Those of literals tell whether there is one, and pass over the quote alone
  // if it opens none; the others return the place behind, and forget what is before it.
  bool readLiteral();
  bool passLiteral(char*& at);
  bool passEscape(char*& at, char quote);
  char* passBlockComment(char* at);
  char* passLineComment(char* at);
  char* passLineEnd(char* at);

  // Skipped lines; see LineSkip.
  class LineSkip;
  bool passLine(char*& at);
  char* passBackslashOrComment(char* at);

  std::istream* input_ = nullptr;
  std::unique_ptr<std::istream> ownedInput_;
  LexerContext context_;
  std::int32_t line_ = 1;
  std::string_view text_;
  Name* name_ = nullptr;
  bool inputEnded_ = false;
  std::uint64_t bytesRead_ = 0;
  std::uint64_t refillCount_ = 0;  // How often the buffer may have moved.
  // Up to these offsets no string or character literal closes: a quote before it need not be tried again.
  std::uint64_t stringUnclosedUntil_ = 0;
  std::uint64_t characterUnclosedUntil_ = 0;
};

}  // namespace qnpp
