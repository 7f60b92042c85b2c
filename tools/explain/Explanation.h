// What a run did, as data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lexer/CppTokenKind.h"
#include "lexer/Observer.h"

namespace qnpp {

/// Position in one of the lists of an Explanation. In each of them the first entry stands for "none".
using Id = std::uint32_t;

/// A line of a file, counted from 1 whatever `#line` says.
struct SourcePlace {
  Id file = 0;
  std::int32_t line = 0;
};

/// A file that was read; one that was included twice is there twice.
struct SourceFile {
  std::string name;  ///< As it was called when it was entered.
  std::string path;  ///< As it was opened; empty for a source that can be read only once.
  SourcePlace includedAt = {};
  Id include = 0;  ///< The directive that included it.
};

/// A stretch of text whose tokens have one origin: a Piece, or 0 where they came straight from a file.
struct Fragment {
  std::string text;
  Id origin = 0;
  bool isLineDirective = false;
};

/// What tokens of a replacement were made of.
struct Piece {
  Observer::Part part = Observer::Part::Body;
  Id expansion = 0;
  std::uint32_t argument = 0;  ///< Which one; of a part that is one, or a literal of one.
  Id from = 0;                 ///< Origin of the argument's tokens.
};

/// A definition of a macro, from there to where it ends.
struct Definition {
  std::string name;
  std::vector<std::string> parameters;
  std::string text;
  bool isFunctionLike = false;
  SourcePlace place;    ///< None for the command line.
  SourcePlace endedAt;  ///< Where it was undefined or replaced; none if it was not.
  bool isReplaced = false;
  std::size_t useCount = 0;
};

/// Where names are expanded: the text of the source (the first of them), an argument, or the operand of a directive.
/// Its result is what is left to be written or read when nothing more can be expanded.
struct Context {
  enum class Kind : std::uint8_t { Text, Argument, Operand };
  Kind kind = Kind::Text;
  Id owner = 0;  ///< Expansion or directive.
  std::uint32_t argument = 0;
  std::vector<Fragment> result;
};

/// A use of a macro.
struct Expansion {
  /// An argument as it was read, and each place where it was expanded.
  struct Argument {
    std::vector<Fragment> read;
    std::vector<Id> contexts;
  };

  std::string name;
  Id definition = 0;  ///< 0 for the predefined macros.
  Id origin = 0;      ///< Of the name.
  Id context = 0;
  Id parent = 0;  ///< The expansion in whose result the name stood, if that is in the same context.
  SourcePlace place;
  std::uint64_t nameBegin = 0;  ///< Offsets in the file, if the name stands there;
  std::uint64_t callEnd = 0;    ///< behind the ")" too, if that stands there too.
  std::int32_t endLine = 0;
  bool isFunctionLike = false;
  bool isKept = false;  ///< It stands as it is:
  Observer::Kept why = Observer::Kept::NoMacro;
  std::vector<Argument> arguments;
  std::vector<Fragment> replacement;
  std::size_t resultBegin = 0;  ///< Positions in the result of its context.
  std::size_t resultEnd = 0;
};

/// A name that was looked at and is no use of a macro, or a use that came to nothing.
struct KeptName {
  std::string name;
  Observer::Kept why = Observer::Kept::NoMacro;
  Id origin = 0;
  Id context = 0;
  Id hider = 0;  ///< The expansion out of which a hidden name came.
  SourcePlace place;
  Id definitionsBefore = 0;  ///< Those from here on came later,
  Id expansionsBefore = 0;   ///< and so with these.
};

struct Directive {
  struct Asked {
    std::string name;
    bool isDefined = false;
  };
  struct LookUp {
    std::string path;
    bool isFound = false;
  };

  CppTokenKind word = TK_END;
  SourcePlace place;
  std::int32_t endLine = 0;
  std::string read;      ///< The operand, as it stood
  std::string expanded;  ///< and after its expansion.
  Id context = 0;        ///< Of that, while it is known.
  std::vector<Asked> asked;
  std::vector<LookUp> lookUps;
  Id entered = 0;  ///< The file that was included.
  bool isEvaluated = false;
  bool isOk = false;
  std::uint32_t value = 0;
  bool isSigned = true;
  bool isInSkippedGroup = false;
  bool isSkipping = false;  ///< What follows is skipped.
  Id opener = 0;            ///< The #if of its conditional,
  Id taken = 0;             ///< and what began the group that was taken, up to here.
};

/// What the run loop read in one go: a line of the source, or several that an invocation or a comment ties together.
struct Line {
  SourcePlace place;
  std::int32_t endLine = 0;  ///< The last of them.
  bool isSkipped = false;
  bool isDirective = false;
  Id directive = 0;             ///< The one that it is; of a skipped line of text the one that began the group.
  std::size_t outputBegin = 0;  ///< What happened, as positions in the lists.
  std::size_t outputEnd = 0;
  Id expansionsBegin = 0;
  Id expansionsEnd = 0;
  Id namesBegin = 0;
  Id namesEnd = 0;
  Id messagesBegin = 0;
  Id messagesEnd = 0;
};

/// Lines of a file that a conditional left out.
struct SkippedLines {
  Id file = 0;
  std::int32_t first = 0;
  std::int32_t last = 0;
};

struct RunMessage {
  std::string text;
  SourcePlace place;
};

struct Explanation {
  std::vector<SourceFile> files;
  std::vector<Definition> definitions;
  std::vector<Context> contexts;  ///< The first is the text; `result` of it is the output.
  std::vector<Expansion> expansions;
  std::vector<Piece> pieces;
  std::vector<KeptName> keptNames;
  std::vector<Directive> directives;
  std::vector<Line> lines;
  std::vector<RunMessage> messages;
  std::vector<SkippedLines> skipped;  ///< All of them, asked for or not; no entry stands for "none".
  bool hasDividedByZero = false;      ///< The last directive did, which ended the run.
  bool isCut = false;                 ///< More happened than was to be recorded,
  SourcePlace cutAt;                  ///< from here on.

  const std::vector<Fragment>& output() const { return contexts.front().result; }
};

/// The text of fragments, from position `begin` to before `end`.
std::string textOf(const std::vector<Fragment>& fragments, std::size_t begin, std::size_t end);
inline std::string textOf(const std::vector<Fragment>& fragments) { return textOf(fragments, 0, fragments.size()); }

/// What an expansion came to in the end.
std::string resultOf(const Explanation& explanation, const Expansion& expansion);

}  // namespace qnpp
