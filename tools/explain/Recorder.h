// The observer that writes down what a run does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "lexer/Observer.h"
#include "lexer/TokenStream.h"
#include "tools/explain/Explanation.h"

namespace qnpp {

/// Which lines of the source are asked for, with all that is included there.
struct LineRange {
  std::int32_t first = 1;
  std::int32_t last = std::numeric_limits<std::int32_t>::max();
};

/// Records a run. Each line is written down as it is read, and forgotten again if it was not asked for: what is kept
/// follows the lines asked for, the definitions and the depth of the conditionals.
class Recorder final : public Observer {
 public:
  /// Writes down at most about `mostSteps` expansions, parts and words.
  explicit Recorder(std::string sourcePath, LineRange range = {},
                    std::size_t mostSteps = std::numeric_limits<std::size_t>::max());

  /// To be called for each message, in the form in which qnpp writes it.
  void addMessage(std::string text);

  /// To be called when the run is over, before its preprocessor is gone.
  Explanation finish();

  void watch(const TokenStream& stream) override { stream_ = &stream; }
  void lineBegan(bool isSkipped) override;
  void directiveBegan(CppTokenKind word) override;
  void directiveEnded(bool isSkipping) override;
  void lineDirectiveBegan() override { isInLineDirective_ = true; }
  void written(std::string_view text, Origin origin) override;
  void lookedFor(std::string_view path, bool isFound) override;
  void fileEntered() override;
  void fileEnded() override;
  void renumbered(std::int32_t line) override;
  void defined(const Name& name, const CppMacro& macro) override;
  void undefined(const Name& name) override;
  void askedFor(std::string_view name, bool isDefined) override;
  void operandRead(SpellingRange tokens) override;
  void operandExpanded(SpellingRange tokens) override;
  void evaluated(std::uint32_t value, bool isSigned, bool isOk) override;
  void nameKept(std::string_view name, Origin origin, Kept why) override;
  Origin expansionBegan(const Name& name, Origin origin) override;
  void expansionFailed(Origin expansion, Kept why) override;
  void argumentRead(Origin expansion, SpellingRange tokens) override;
  void argumentExpansionBegan(Origin expansion, std::uint32_t argument) override;
  void argumentExpanded(Origin expansion, std::uint32_t argument, SpellingRange tokens) override;
  Origin made(Origin expansion, Part part, std::uint32_t argument, Origin from) override;
  void replaced(Origin expansion, SpellingRange tokens) override;

 private:
  // A file that is being read.
  struct OpenFile {
    Id file = 0;
    std::int32_t renumbered = 0;  // By how much its lines are called higher than they are.
    std::size_t conditionalsBelow = 0;
    bool isWanted = false;  // It was included on a line that was asked for.
  };
  // A conditional that is open.
  struct OpenConditional {
    Id opener = 0;
    Id current = 0;  // The directive that began the present group.
    Id taken = 0;
    std::size_t linesBefore = 0;
    std::size_t filesBefore = 0;
  };
  // How much was written down when the line began.
  struct Mark {
    std::size_t contexts = 1;
    std::size_t expansions = 1;
    std::size_t pieces = 1;
    std::size_t keptNames = 1;
    std::size_t lines = 1;
    std::size_t messages = 1;
    std::size_t output = 0;
  };

  SourcePlace place() const;
  bool isWanted(const Line& line) const;
  bool hasRoom();
  void measureLine();
  void endLine();
  void addSkipped();
  Mark mark() const;
  void forgetFrom(const Mark& mark);
  Expansion* find(Origin expansion);
  void extend(Id context, Id origin, std::size_t position);
  void append(Id context, std::string_view text, Id origin);
  void keepName(std::string_view name, Kept why, Id origin, Id context);
  Id hiderOf(std::string_view name, Id origin) const;
  void endDefinition(std::string_view name, bool isReplaced);
  void closeConditional();

  const TokenStream* stream_ = nullptr;
  std::string sourcePath_;
  std::string foundPath_;
  LineRange range_;
  std::size_t mostSteps_;
  Explanation told_;
  std::vector<OpenFile> openFiles_;
  std::vector<OpenConditional> conditionals_;
  std::vector<Id> openContexts_ = {0};
  std::unordered_map<std::string, Id> definitions_;  // That hold now.
  Mark lineMark_;
  Line line_;
  bool isInLine_ = false;
  bool isInSource_ = false;         // It stands in the source itself, or
  bool isInWantedFile_ = false;     // in a file that was included on a line that was asked for.
  bool wasCut_ = false;             // Before it, as much had been written down as may be.
  Id directive_ = 0;                // The one that is being carried out.
  bool isInLineDirective_ = false;  // What is written is a line directive.
};

}  // namespace qnpp
