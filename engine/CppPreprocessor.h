// The preprocessor.
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "directives/ConditionalStack.h"
#include "directives/ExpressionEvaluator.h"
#include "directives/GuardedFiles.h"
#include "directives/IncludeSearch.h"
#include "directives/KnownFiles.h"
#include "engine/Diagnostics.h"
#include "engine/Host.h"
#include "lexer/Budget.h"
#include "lexer/NameTable.h"
#include "lexer/OutputBuffer.h"
#include "lexer/TokenList.h"
#include "lexer/TokenStream.h"
#include "macros/CppMacroTable.h"
#include "macros/MacroExpander.h"

namespace qnpp {

/// Preprocesses one source text: carries out its directives, expands its macros, and writes the result with line
/// directives. One object does one run: fill `macroTable`, set the include directories, open the source, `run`. Any
/// number of objects may live side by side; they share nothing.
///
/// Nothing in the source stops a run but a division by zero. Each error is reported at once, and processing goes on to
/// the end of the input. The budget, and whatever else throws, may end it anywhere; the object is of no use afterwards
/// but for `finishEarly`, `reportOutOfMemory`, `place` and `findIncludeChain`.
class CppPreprocessor {
 public:
  /// Both are borrowed and outlive the object. Defines `__FILE__`, `__LINE__`, `__DATE__` and `__TIME__`.
  CppPreprocessor(Host& host, Budget& budget);
  CppPreprocessor(const CppPreprocessor&) = delete;
  CppPreprocessor& operator=(const CppPreprocessor&) = delete;
  ~CppPreprocessor();

  CppMacroTable& macroTable() { return macroTable_; }

  /// Sets the directories that `#include` searches. They are borrowed and outlive the object.
  void setIncludeDirectories(std::span<const std::string> directories) { includes_.setDirectories(directories); }

  /// Whether line directives are written; they are unless this says otherwise.
  void setLineDirectives(bool areWritten) { writesLineDirectives_ = areWritten; }

  /// Who is told what happens; borrowed. Has no effect but in a build that can be watched. To be set before macros
  /// are added.
  void setObserver(Observer& observer);

  /// Opens the main source and writes the first line directive. `name`, unless it is empty, stands for it in messages,
  /// in line directives and in `__FILE__`. An input in a failed state is a source that cannot be opened: that is
  /// reported, and the answer is false.
  bool openSource(std::unique_ptr<std::istream> input, const std::string& path, const std::string& name);

  /// Preprocesses the whole input of a source that has been opened. Throws DivisionByZero, or FatalLexerError when the
  /// scanner cannot go on.
  void run();

  /// To be called when the run has ended before its end: delivers the output written so far.
  void finishEarly() { output_.flush(); }
  /// These say in one line that memory has run out, which takes none, and that the scanner cannot go on.
  void reportOutOfMemory() { diagnostics_.reportOutOfMemory(); }
  void reportFailure(std::string_view message) { reportError(Message::ScannerFailed, message); }
  /// Where the reading stands, nothing before a source is open, and the lines that led there, innermost first.
  FilePlace place() const;
  std::span<const FilePlace> findIncludeChain() { return diagnostics_.findIncludeChain(); }

  /// Evaluates the tokens of a conditional expression, in which macros have been expanded, from the current source.
  /// Clears `ok` when anything in it is wrong; the errors are reported and evaluation goes on. Throws DivisionByZero.
  void evaluate(CppExprValue& result, bool& ok);

 private:
  class Hooks;

  // What an `#include` names: a file that has been opened, or the path of one that is known to stand for line ends.
  struct IncludedFile {
    std::unique_ptr<CppFileScanner> file;
    std::string path;
    std::uint64_t lineEnds = 0;
  };

  // ---- The run loop (engine/RunLoop.cpp) ----
  void processLines();
  void processLine();
  void collectLeadingSpace();
  void beginTextLine();
  void writeTextLine(CppTokenKind kind);
  void handleTextToken(CppTokenKind kind);
  void processDirective();
  void carryOutDirective(CppTokenKind kind);
  void checkEndOfFile();

  // ---- Directives (engine/Directives.cpp). Each is called behind its word and reads the rest of the line. ----
  void handleDefine();
  void handleUndef();
  void handleIf();
  void handleIfdef(bool wantDefined);
  void handleElif();
  void handleElse();
  void handleEndif();
  void handleInclude();
  void handleLine();
  void handlePragma();
  void handlePragmaOperator();
  void handleError();

  bool openConditional();
  void enterFile();
  void evaluateCondition();
  template <typename Read>
  void readOperand(bool isCondition, Read read);
  void renumber();

  void reportError(Message message, std::string_view detail = {}) { diagnostics_.report(message, detail); }
  bool findFile(const IncludeName& name);
  void markLine(LineMark mark);
  void markLine(LineMark mark, const FilePlace& now);
  void writeLineDirective(std::int32_t line, std::string_view name);
  template <typename Tell>
  void observe(Tell tell) const {
    stream_.observe(tell);
  }
  GuardedFiles::Traces traces() const { return {output_.position(), diagnostics_.count()}; }

  Host& host_;
  OutputBuffer output_;
  NameTable names_;
  std::uint64_t effectCount_ = 0;
  LexerContext lexerContext_;
  std::unique_ptr<Hooks> hooks_;  // What the layers below call back.
  TokenStream stream_;
  CppMacroTable macroTable_{names_, stream_};
  Diagnostics diagnostics_;
  MacroExpander expander_{lexerContext_, names_, stream_, macroTable_, diagnostics_};
  ConditionalStack conditionals_;
  ExpressionEvaluator evaluator_;
  IncludeSearch includes_;
  KnownFiles knownFiles_;
  GuardedFiles guardedFiles_{knownFiles_, names_, lexerContext_.budget};
  IncludedFile found_;        // By the search of an `#include`.
  TokenList operand_;         // Of the directive being carried out.
  std::string leadingSpace_;  // Of the line being read.
  bool writesLineDirectives_ = true;
};

}  // namespace qnpp
