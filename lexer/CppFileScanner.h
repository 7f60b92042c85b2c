// The token source over a file.
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "lexer/CppLexer.h"
#include "lexer/CppScanner.h"
#include "lexer/InputFile.h"
#include "lexer/LineNumber.h"
#include "lexer/Shortcuts.h"

namespace qnpp {

/// Reads the tokens of a file, wherever its bytes come from. Every file, unless it is empty, ends in exactly one line
/// end before TK_END: one is supplied when the last line has none.
///
/// The current line is the line of the reading position. A line end that has only been looked at does not count yet,
/// although the lexer has passed it; so a message about a directive shows the directive's line, whether or not the
/// handler had to look at the line end first.
class CppFileScanner final : public CppScanner {
 public:
  /// An input that is in a failed state is a file that could not be opened, which `openFailed` tells; nothing may be
  /// read then.
  CppFileScanner(const std::string& name, std::unique_ptr<std::istream> input, const LexerContext& context);
  /// Without an input until `open`.
  explicit CppFileScanner(const LexerContext& context) : CppScanner(true), context_(context) {}

  /// The same as a new scanner, but for memory that is used again.
  void open(const std::string& name, std::unique_ptr<std::istream> input);
  void open(const std::string& name, std::unique_ptr<FileBuffer> file);
  void open(const std::string& name, std::shared_ptr<const FileText> text);
  /// Closes the input, and gives back memory that another is not likely to need.
  void reset();

  bool openFailed() const { return !isOpen_; }
  /// Whether a text is read, and no file is open for it.
  bool isInMemory() const { return fileText_ != nullptr; }

  /// To be told the stamp that the file had when it was opened, if it has one.
  void setStamp(const std::optional<FileStamp>& stamp) { stamp_ = stamp; }
  bool hasStamp() const { return stamp_.has_value(); }
  /// The stamp of the file if it is surely that of the bytes read, all of them; to be asked at the end of the input.
  std::optional<FileStamp> stamp() const {
    return stamp_ && stamp_->size == lexer_->bytesRead() ? stamp_ : std::nullopt;
  }

  /// The name in messages and line directives.
  const std::string& fileName() const { return fileName_; }
  void setFileName(std::string name);
  /// The name that it had at first.
  const std::string& path() const { return isRenamed_ ? path_ : fileName_; }

  std::int32_t line() const { return subtractLines(lexer_->line(), linesLookedAt_); }
  /// Makes `line` the number of the current line; a line end that has been looked at counts from there.
  void setLine(std::int32_t line) { lexer_->setLine(addLines(line, linesLookedAt_)); }

  /// The line of the #include that is being carried out in this file.
  std::int32_t includeLine() const { return includeLine_; }
  void setIncludeLine(std::int32_t line) { includeLine_ = line; }

  /// How many bytes of the file have been read as tokens, one that has been looked at included.
  std::uint64_t offset() const { return lexer_->endOffset(); }

  /// What has been read from `from`, an offset, and one byte behind it, see CppLexer::withTextFrom. Nothing may have
  /// been looked at.
  template <typename Use>
  auto withTextFrom(std::uint64_t from, Use use) {
    return lexer_->withTextFrom(from, use);
  }

  CppTokenKind peek() override;
  CppTokenKind get() override;
  const HideSet& hideSet() override { return emptyHideSet_; }

  /// Like `get`, but writes tokens that come out as they stand instead of handing them out, see CppLexer::copyText. May
  /// still hand one out.
  CppTokenKind copyText();
  /// The name table's entry for the current token, if that is a name with one; null otherwise.
  Name* name() const { return name_; }

  /// Passes over empty lines, and over leading space or the beginning of a directive, see CppLexer::passLineStart;
  /// TK_END where no directive is known to follow. At the start of a line, or behind a directive, like
  /// `skipWholeLines`.
  CppTokenKind passLineStart(std::string& leadingSpace);
  /// Whether the rest of the line may be read as it stands, see CppLexer::isRestPlain. Only in the middle of a line.
  bool isRestPlain() { return canPass() && lexer_->isRestPlain(); }

  /// Passes over blanks in the middle of a line, which become the current token; perhaps not over all. Returns whether
  /// there were any.
  bool passBlanks() {
    if (!canPass() || !lexer_->passBlanks()) {
      return false;
    }
    text_ = lexer_->text();
    return true;
  }

  /// The same as those of the lexer; false where nothing was passed. Only in the middle of a line.
  bool readMacroName(std::string_view& name) { return canPass() && lexer_->readMacroName(name); }
  bool readMacroHead(MacroHead& head) { return canPass() && lexer_->readMacroHead(head); }
  std::optional<std::string_view> readReplacementText(std::string& scratch) {
    return canPass() ? std::optional(lexer_->readReplacementText(scratch)) : std::nullopt;
  }
  template <typename Pass>
  bool passAhead(Pass pass) {
    return canPass() && lexer_->passAhead(pass);
  }
  bool passLineEnd() {
    if (!canPass() || !lexer_->passPlainLineEnd()) {
      return false;
    }
    atLineStart_ = true;
    return true;
  }

  /// Passes over the rest of the line and its line end; false when the input ended instead.
  bool skipLine();
  /// Passes over whole lines of a skipped group and the word of a conditional directive, see CppLexer::skipWholeLines;
  /// TK_END where none is known to follow. At the start of a line, or behind a directive, of which the rest is passed
  /// like a line.
  CppTokenKind skipWholeLines(NestedConditionals& conditionals);

 private:
  void begin(const std::string& name);
  void read(std::streambuf& bytes);
  CppTokenKind taken(CppTokenKind kind);
  // In the middle of a line: whether the lexer may pass over what follows.
  bool canPass() const { return kShortcuts && !hasPeek_ && !atLineStart_; }

  LexerContext context_;
  std::string fileName_;
  std::string path_;  // If it has another name now.
  bool isRenamed_ = false;
  bool isOpen_ = false;
  std::unique_ptr<FileBuffer> file_;
  std::shared_ptr<const FileText> fileText_;
  TextBuffer textBuffer_;
  std::istream stream_{nullptr};  // Over one of these: to make a stream takes longer than to read a small header.
  std::unique_ptr<CppLexer> lexer_;
  std::optional<FileStamp> stamp_;
  Name* name_ = nullptr;
  const HideSet emptyHideSet_;
  std::int32_t includeLine_ = 0;
  std::int32_t linesLookedAt_ = 0;  // Line ends of the token that has been looked at.
  CppTokenKind peekKind_ = TK_END;
  bool hasPeek_ = false;
  bool atLineStart_ = true;  // The last token handed out was a line end, or none was.
};

}  // namespace qnpp
