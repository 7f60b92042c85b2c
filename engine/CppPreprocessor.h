// The preprocessor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "directives/CppCondState.h"
#include "directives/CppExprValue.h"
#include "directives/WaitingOperator.h"
#include "lexer/CppFileScanner.h"
#include "lexer/CppTokenScanner.h"
#include "lexer/HideSetCache.h"
#include "lexer/NameTable.h"
#include "lexer/OutputBuffer.h"
#include "lexer/SpellingPool.h"
#include "lexer/StoredTextLexer.h"
#include "lexer/TokenList.h"
#include "macros/Arguments.h"
#include "macros/CppMacroTable.h"
#include "macros/Expansion.h"

namespace qnpp {

/// Preprocesses one source text: carries out its directives, expands its macros, and writes the result with line
/// directives. One object does one run: fill `macroTable` and the include directories, set the output, open the source,
/// `run`. Any number of objects may live side by side; they share nothing.
///
/// Nothing in the source stops a run. Each error is written at once as a line on the diagnostic stream, and processing
/// goes on to the end of the input.
///
/// The members are spread over the source folders by subject: the run loop, diagnostics and output in engine/, macro
/// expansion in macros/, the other directives in directives/.
class CppPreprocessor {
 public:
  /// Both streams are borrowed and outlive the object. Defines `__FILE__`, `__LINE__`, `__DATE__` and `__TIME__`.
  CppPreprocessor(std::ostream& diagnostics, std::istream& standardInput);
  CppPreprocessor(const CppPreprocessor&) = delete;
  CppPreprocessor& operator=(const CppPreprocessor&) = delete;
  ~CppPreprocessor();

  CppMacroTable& macroTable() { return macroTable_; }

  /// Appends a directory to those searched by `#include`.
  void addIncludeDirectory(std::string directory) { includeDirectories_.push_back(std::move(directory)); }

  /// Where the output goes; borrowed. To be set before the source is opened.
  void setOutput(std::ostream& output) { output_.attach(output); }

  /// Opens the main source and writes the first line directive. An empty `fileName` means standard input; `sourceName`,
  /// unless it is empty, is the name in messages, in line directives and in `__FILE__`. Reports a source that cannot be
  /// opened; see `hasError`.
  void openSource(const std::string& fileName, const std::string& sourceName);

  /// Preprocesses the whole input. Returns whether an error was reported.
  bool run();

  bool hasError() const { return hasError_; }

  /// To be called when any of the above ended in std::bad_alloc: says so in one line and brings out the output written
  /// so far. The object is of no use afterwards.
  void reportOutOfMemory();

  /// Evaluates the tokens of a conditional expression, macros already expanded, from the current source.
  /// Clears `ok` when anything in it is wrong; the errors are reported and evaluation goes on.
  void evaluate(CppExprValue& result, bool& ok);

 private:
  // A source on the stack, and how far the pool is given back when a list has been read.
  struct Source {
    std::unique_ptr<CppScanner> scanner;
    SpellingPool::Mark mark;
  };
  class InFlight;
  class ClosedSource;
  class ExpressionReader;

  // How many finished scanners and expansions are kept for the next need.
  static constexpr std::size_t kMostSpares = 64;

  // ---- Reading tokens (engine/Sources.cpp) ----
  // All of them fall back to the enclosing source when the current one has ended.
  CppTokenKind peekToken();
  CppTokenKind nextToken();
  std::string_view currentText() const { return current_->text(); }
  // The name table's entry for the current token, which is a name; null when no definition mentions it.
  Name* currentName();
  // A spelling of the current token.
  const Spelling* currentSpelling(CppTokenKind kind);
  void skipBlanks();
  // Skips line ends too; true when anything was skipped.
  bool skipWhiteSpace();
  // Consumes tokens up to and including a line end, or up to the end of the input.
  void discardLine();

  void pushFile(std::unique_ptr<CppFileScanner> file);
  // Make tokens the current source; read to its end, it falls back to the enclosing one. The first takes the tokens out
  // of the list and leaves it empty.
  void pushTokens(TokenList& tokens);
  void pushTokens(SpellingRange tokens, const HideSet& hideSet);
  // The same for a source that is closed: its end reads as the end of the input, until `openSources` brings the
  // enclosing sources back with the floor that was returned.
  [[nodiscard]] std::size_t pushClosed(TokenList& tokens);
  [[nodiscard]] std::size_t pushClosed(SpellingRange tokens, const HideSet& hideSet, NormalizedTokens& surroundings);
  void openSources(std::size_t floor);
  std::size_t closeSources();
  void dropExhaustedLists(SpellingPool::Mark& mark);
  void pushScanner(std::unique_ptr<CppTokenScanner> scanner, const SpellingPool::Mark& mark);
  SpellingPool::Mark markForSource() const { return inFlight_ > 0 ? inFlightMark_ : pool_.mark(); }
  std::unique_ptr<CppTokenScanner> spareScanner();
  void popSource();
  // Drops the current source, which is a list.
  void removeSource();
  void recycle(std::unique_ptr<CppTokenScanner> scanner);
  void emptyGraveyard(std::size_t size);
  bool hasEnclosingSource() const { return sources_.size() > floor_ + 1; }
  bool isCurrentFile() const { return current_->isFile(); }
  CppFileScanner& fileSource() { return static_cast<CppFileScanner&>(*current_); }
  CppTokenScanner& listSource() { return static_cast<CppTokenScanner&>(*current_); }

  // ---- Run loop (engine/RunLoop.cpp) ----
  void processLine();
  void collectLeadingSpace(std::string& text);
  void writeTextLine(CppTokenKind kind);
  void handleTextToken(CppTokenKind kind);
  CppTokenKind copyText();
  void processDirective();

  // ---- Diagnostics (engine/Diagnostics.cpp) ----
  void reportError(std::string_view message);
  void reportWarning(std::string_view message);
  void reportCannotOpenSource(std::string_view name);
  void writeDiagnostic(std::string_view grade, std::string_view message);

  // ---- Line directives (engine/Output.cpp) ----
  void writeLineDirective();

  // ---- Macros (macros/) ----
  std::string readMacroName();
  void handleDefine();
  bool readParameters(std::vector<std::string>& parameters);
  std::string readReplacementText();
  void handleUndef();

  // Frees definitions that have been replaced or removed, unless an expansion may still be reading one.
  void dropRetiredMacros() {
    if (listCount_ == 0 && inFlight_ == 0) {
      macroTable_.dropRetired();
    }
  }

  void expandInText();
  bool findExpandedText(Name& name);
  bool appendExpandedText(const Name& name, std::string& text) const;
  bool hasSettledTokens(const Name& name) const;
  void expandFunctionLikeInText(const Name& name, const HideSet& hideSet);
  void pushObjectLike(const Name& name, const HideSet& hideSet);
  bool isRefreshed(const Name& name) const { return &name == fileName_ || &name == lineName_; }
  void definePredefinedMacros();
  void refreshPredefined(const Name& name);
  const Replacement& replacementOf(const Name& name);

  bool collectArguments(const CppMacro& macro, Arguments& arguments);
  CppTokenKind readArgument(CppTokenKind kind, Arguments& arguments);
  bool readArgumentInPlace(Arguments& arguments);

  // Takes the tokens out of the list and leaves their expansion there.
  void expandTokenList(TokenList& tokens);
  void runExpansions(std::size_t base);
  Expansion& pushExpansion();
  std::unique_ptr<Expansion> popExpansion();
  void recycle(std::unique_ptr<Expansion> expansion);
  bool beginSubstitution(const Name& name, const HideSet& hideSet, std::size_t graveyardSize);
  void substitute(Expansion& expansion);
  void finishSubstitution(Expansion& expansion);
  bool appendExpanded(Expansion& expansion, std::uint32_t argument);
  void beginListExpansion(std::uint32_t argument);
  void expandList(Expansion& expansion);
  void finishListExpansion();
  bool expandNameInList(TokenList& result);
  void passDefinedOperand(TokenList& result);
  std::uint64_t eventCount() const { return messageCount_ + commentCount_; }
  // Appends a literal of the argument's text to `literal`.
  void stringize(const Arguments& arguments, std::uint32_t argument, std::string& literal);
  const Spelling* join(const Replacement& replacement, const Arguments& arguments, const Replacement::Step& step);

  // ---- Directives (directives/) ----
  void readOperand();
  CppTokenKind peekOperandToken();
  CppTokenKind nextOperandToken();
  void checkEndOfOperand();
  [[noreturn]] void raiseArithmeticFault();

  bool openConditional();
  void closeConditional();
  void setGroup(bool taken);
  void evaluateCondition();
  void handleIf();
  void handleIfdef(bool wantDefined);
  void handleElif();
  void handleElse();
  void handleEndif();
  void checkEndOfFile();

  void handleInclude();
  bool readIncludeName(std::string& name, bool& quoted);
  std::unique_ptr<CppFileScanner> searchFile(const std::string& name, bool quoted);
  std::unique_ptr<CppFileScanner> openFile(const std::string& path);
  void enterFile(std::unique_ptr<CppFileScanner> file);

  void handleLine();
  void renumber();
  void handlePragma();
  void handlePragmaOperator();
  void handleError();

  // Lexing and storage; the order matters, each uses the ones before.
  std::ostream& diagnostics_;
  std::istream& standardInput_;
  OutputBuffer output_;
  NameTable names_;
  std::uint64_t commentCount_ = 0;
  LexerContext lexerContext_{output_, diagnostics_, names_, commentCount_};
  StoredTextLexer storedTextLexer_{lexerContext_};
  SpellingPool pool_{names_, storedTextLexer_};
  CppMacroTable macroTable_{names_, pool_};
  const Name* fileName_ = nullptr;  // The names that are refreshed at each use.
  const Name* lineName_ = nullptr;

  // Sources: the current one is the last. Those below `floor_` are set aside: the end of the source at `floor_` reads
  // as the end of the input.
  std::vector<Source> sources_;
  std::size_t floor_ = 0;
  CppScanner* current_ = nullptr;
  CppFileScanner* currentFile_ = nullptr;
  std::vector<CppFileScanner*> fileStack_;  // The files that are suspended by an `#include`.
  std::vector<std::unique_ptr<CppTokenScanner>> spareScanners_;
  std::size_t listCount_ = 0;  // How many of the sources are lists.

  HideSetCache hideSets_;

  // Expansions under way (see macros/Expansion.h), innermost last, and what they hold on to.
  std::vector<std::unique_ptr<Expansion>> expansions_;
  std::vector<std::unique_ptr<Expansion>> spareExpansions_;
  std::vector<std::unique_ptr<CppTokenScanner>> graveyard_;
  TokenList expandedList_;     // Result of the last outermost list expansion.
  bool isCollecting_ = false;  // Arguments are being read: lists that end meanwhile go to the graveyard.
  std::size_t inFlight_ = 0;   // How many InFlight objects there are.
  SpellingPool::Mark inFlightMark_;
  bool inCondition_ = false;  // A conditional expression is being expanded.
  std::uint64_t messageCount_ = 0;

  // Conditional inclusion.
  bool skipping_ = false;
  CppCondState condState_ = CppCondState::Inactive;
  std::int32_t condDepth_ = 0;
  std::deque<CppCondState> stateStack_;
  std::deque<bool> skipStack_;
  std::deque<std::int32_t> depthStack_;

  TokenList operand_;  // Of the directive being carried out.
  std::vector<WaitingOperator> waitingOperators_;
  std::deque<std::string> includeDirectories_;
  std::string leadingSpace_;  // Of the line being read.
  std::string argumentText_;  // Scratch space for stringizing and joining.
  std::string joinedText_;
  bool hasError_ = false;
};

}  // namespace qnpp
