// The preprocessor.
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "directives/ConditionalStack.h"
#include "directives/ExpressionEvaluator.h"
#include "directives/IncludeSearch.h"
#include "engine/Diagnostics.h"
#include "lexer/NameTable.h"
#include "lexer/OutputBuffer.h"
#include "lexer/TokenList.h"
#include "lexer/TokenStream.h"
#include "macros/CppMacroTable.h"
#include "macros/MacroExpander.h"

namespace qnpp {

/// Preprocesses one source text: carries out its directives, expands its macros, and writes the result with line
/// directives. One object does one run: fill `macroTable` and the include directories, set the output, open the source,
/// `run`. Any number of objects may live side by side; they share nothing.
///
/// Nothing in the source stops a run but a division by zero. Each error is written at once as a line on the diagnostic
/// stream, and processing goes on to the end of the input.
class CppPreprocessor {
 public:
  /// Both streams are borrowed and outlive the object. Defines `__FILE__`, `__LINE__`, `__DATE__` and `__TIME__`.
  CppPreprocessor(std::ostream& diagnostics, std::istream& standardInput);
  CppPreprocessor(const CppPreprocessor&) = delete;
  CppPreprocessor& operator=(const CppPreprocessor&) = delete;
  ~CppPreprocessor();

  CppMacroTable& macroTable() { return macroTable_; }

  /// Appends a directory to those searched by `#include`.
  void addIncludeDirectory(std::string directory) { includes_.addDirectory(std::move(directory)); }

  /// Where the output goes; borrowed. To be set before the source is opened.
  void setOutput(std::ostream& output) { output_.attach(output); }

  /// Opens the main source and writes the first line directive. An empty `fileName` means standard input; `sourceName`,
  /// unless it is empty, is the name in messages, in line directives and in `__FILE__`. Reports a source that cannot be
  /// opened; see `hasError`.
  void openSource(const std::string& fileName, const std::string& sourceName);

  /// Preprocesses the whole input of a source that has been opened. Returns whether an error was reported. Throws
  /// DivisionByZero, or FatalLexerError when the scanner cannot go on, with the output up to there delivered.
  bool run();

  bool hasError() const { return diagnostics_.hasError(); }

  /// To be called when any of the above ended in std::bad_alloc: says so in one line and brings out the output written
  /// so far. The object is of no use afterwards.
  void reportOutOfMemory();

  /// Evaluates the tokens of a conditional expression, macros already expanded, from the current source.
  /// Clears `ok` when anything in it is wrong; the errors are reported and evaluation goes on. Throws DivisionByZero.
  void evaluate(CppExprValue& result, bool& ok);

 private:
  class Hooks;

  // ---- The run loop (engine/RunLoop.cpp) ----
  void processLines();
  void processLine();
  void collectLeadingSpace();
  void writeTextLine(CppTokenKind kind);
  void handleTextToken(CppTokenKind kind);
  void processDirective();
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
  void evaluateCondition();
  void readOperand(bool isCondition);
  void renumber();

  void reportError(Message message, std::string_view detail = {}) { diagnostics_.report(message, detail); }
  void writeLineDirective();

  std::istream& standardInput_;
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
  ExpressionEvaluator evaluator_{stream_, diagnostics_};
  IncludeSearch includes_;
  TokenList operand_;         // Of the directive being carried out.
  std::string leadingSpace_;  // Of the line being read.
};

}  // namespace qnpp
