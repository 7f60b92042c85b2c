// qnpp inside of another program: sources in memory or on disk, a way of one's own to find includes, messages as data,
// the list of what was read, limits.
//
//   qnpp::Preprocessor preprocessor;
//   preprocessor.define("DEBUG=1");
//   preprocessor.setResolver([&files](const qnpp::IncludeRequest& request) -> std::optional<qnpp::Include> {
//     const auto found = files.find(request.name);
//     if (found == files.end()) return std::nullopt;
//     return qnpp::Include{found->first, qnpp::Source::borrowing(found->second)};
//   });
//   preprocessor.setDiagnosticSink([](const qnpp::Diagnostic& diagnostic) { std::cerr << diagnostic.text; });
//   const qnpp::Result result = preprocessor.run(qnpp::Source::borrowing(text), "main.idl");
//
// Threads: objects share nothing, so each may be used by a thread of its own. One object is for one thread at a time;
// only `cancel` may be called from any. Functions that are given to an object are called by the thread that calls
// `run`. They may call `cancel`, and must do nothing else with the object, such as setting another function or moving
// it.
//
// Exceptions: no function of Preprocessor lets one out. What a function that is given to an object throws ends the run
// and is handed back in the result.
//
// Memory: want of it is Status::OutOfMemory. What a call is given by std::string_view is copied, unless the call says
// that it borrows. What a run takes follows the definitions, how deep macros and files are nested, and the longest
// token, argument and condition, for each byte of which it may be 40: not the size of the source, but for what is kept
// in the result.
#ifndef QNPP_PREPROCESSOR_H
#define QNPP_PREPROCESSOR_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qnpp/version.h"

namespace qnpp {

/// How grave a message is. Errors of both sorts make a run a failed one.
enum class Severity { Warning, Error, FatalError };

/// A line of a source, by name and number as `#line` may have changed them. Numbers wrap at 32 bits.
struct Place {
  std::string_view file;
  std::int32_t line;
};

/// A message about the source. Everything in it is borrowed and valid during the call of the sink.
struct Diagnostic {
  Severity severity;
  std::string_view identifier;  ///< Such as "missing-file": the same in all versions.
  Place place;                  ///< {"", 0} when there is none: no source is open, or the scanner itself has failed.
  std::string_view message;     ///< Such as "Cannot open file: x.h".
  /// What the program qnpp writes for it, with its line end. Mostly that is "file:line: message.", with "Warning: " or
  /// "FATAL ERROR: " before the message. There is no file where it says that a comment is unterminated.
  std::string_view text;
  /// The `#include` directives that led to the file of `place`, innermost first.
  const Place* includeChain;
  std::size_t includeChainSize;
};
using DiagnosticSink = std::function<void(const Diagnostic&)>;

/// Gets the output block by block; a block is borrowed and valid during the call. Blocks have some 64 KB, so a message
/// is told before output that stands before its place.
using OutputSink = std::function<void(std::string_view block)>;

/// An output sink that writes to a stream, whose state it does not look at. While a run calls one, it takes files to
/// stay as they are, but for that of `descriptor`; after the call of any other function, it looks at an included file
/// again. So it is for a stream that nobody reads at the same time, such as one to a file.
struct StreamSink {
  std::ostream* stream;  ///< Borrowed.
  int descriptor = -1;   ///< Of the file that the stream writes to, which the source may include; or -1.
  void operator()(std::string_view block) const { *stream << block; }
};

/// Puts up to `size` bytes to `to` and returns how many, 0 at the end. Less than 0 says that reading failed, which ends
/// the run.
using Reader = std::function<std::ptrdiff_t(char* to, std::size_t size)>;

/// Bytes to be preprocessed, and where they come from.
class Source {
 public:
  static Source ofText(std::string text) { return {Kind::Text, std::move(text), {}, {}}; }
  /// `text` is borrowed: it has to stay as it is until the run is over.
  static Source borrowing(std::string_view text) { return {Kind::BorrowedText, {}, text, {}}; }
  /// The file is opened when the run gets to it. A directory counts as a file that cannot be opened. On Windows,
  /// this and all other paths are in the code page of the process.
  static Source ofFile(std::string path) { return {Kind::File, std::move(path), {}, {}}; }
  static Source ofReader(Reader reader) { return {Kind::Function, {}, {}, std::move(reader)}; }

 private:
  friend class Run;
  enum class Kind { Text, BorrowedText, File, Function };

  Source(Kind kind, std::string text, std::string_view borrowed, Reader reader)
      : kind_(kind), text_(std::move(text)), borrowed_(borrowed), reader_(std::move(reader)) {}

  Kind kind_;
  std::string text_;  // Or the path.
  std::string_view borrowed_;
  Reader reader_;
};

/// What an `#include` asks for; borrowed and valid during the call of the resolver.
struct IncludeRequest {
  std::string_view name;  ///< As it is written between the quotes or angles.
  bool isQuoted;          ///< `"name"`, as against `<name>`.
  Place place;            ///< Of the `#include`, as `#line` may have changed it.
  /// The path of the file with the `#include`: that of its Include, or of the source of the run.
  std::string_view includerPath;
};

/// What a resolver has found.
struct Include {
  /// Its name in messages, line directives and `__FILE__`, where it is written as it is: only the backslashes of a line
  /// directive are doubled. So a line end in it splits lines.
  std::string path;
  Source source;
};
/// Nothing is an error of the source, "Cannot open file".
using Resolver = std::function<std::optional<Include>(const IncludeRequest&)>;

/// What ends a run before its end. 0 means that there is no such limit.
struct Limits {
  /// How many files may be open around a file that is included: with 1, the source may include files that include
  /// nothing.
  std::size_t includeDepth = 0;
  /// Each macro that is replaced counts 1, each token that it is replaced by counts 1, and so do 16 bytes of what `#`
  /// and `##` make. Names that stand for plain text need not count.
  std::uint64_t expansionWork = 0;
  /// So many bytes are delivered, and the run ends when there are more.
  std::uint64_t outputBytes = 0;
  /// Since the begin of the run; one below 0 is over by then. Looked at between calls of functions that are given to
  /// the object, never during one.
  std::chrono::milliseconds time{0};
};
enum class Limit { None, IncludeDepth, ExpansionWork, OutputBytes, Time };

/// How a run ended. All but the first two end it before the end of the source, with everything before that delivered.
enum class Status {
  Clean,
  Errors,  ///< An error was reported. Nothing stops at one, but of a source that cannot be opened there is no output.
  DivisionByZero,
  OutOfMemory,
  LimitReached,
  Cancelled,
  ScannerFailed,   ///< The scanner could not go on, mostly because reading failed.
  CallbackFailed,  ///< A function that was given to the object has thrown.
};

/// A file that was included.
struct Dependency {
  enum class Found { Absolute, BesideIncluder, InIncludeDirectory, ByResolver };

  std::string path;  ///< As it was opened, or as the resolver named it.
  std::string name;  ///< As it was asked for.
  bool isQuoted;
  Found found;
  std::string includer;  ///< Where it was asked for: the name of that file, and the line there.
  std::int32_t line;
};

/// Which lines of the sources those of the output stand for. There is an entry wherever a line directive stands, or
/// would stand if they were written; from there on lines follow one another.
struct LineMap {
  enum class Reason {
    Start,
    Entered,     ///< An `#include`.
    Returned,    ///< The end of an included file.
    Renumbered,  ///< A `#line`.
    Corrected,   ///< The output has got out of step with the source.
  };
  struct Entry {
    std::uint64_t offset;      ///< Of the first byte of the output that it is about: behind the directive.
    std::uint64_t outputLine;  ///< The line that this byte is in, counted from 1.
    std::size_t file;          ///< Position in `files`.
    std::int32_t line;
    Reason reason;
  };

  std::vector<std::string> files;  ///< Names of files, each once.
  std::vector<Entry> entries;      ///< In the order of the output.

  /// What the line of the output stands for; {"", 0} before the first entry. An entry in the middle of a line counts
  /// for all of it.
  QNPP_EXPORT Place find(std::uint64_t outputLine) const noexcept;
};

struct Result {
  Status status = Status::Clean;
  Limit limit = Limit::None;  ///< Which, if `status` is LimitReached.
  bool hasErrors = false;     ///< Whether an error was reported, however the run ended.
  std::string output;         ///< Empty when there is an output sink.
  /// Each file once, in the order of their first use. The source of the run is not among them.
  std::vector<Dependency> dependencies;
  LineMap lineMap;  ///< Empty unless it was asked for.
  /// Where a run ended before its end; empty and 0 otherwise, and when no source was open by then.
  std::string endFile;
  std::int32_t endLine = 0;
  /// The `#include` directives that led there, innermost first: the name of the file, and the line.
  std::vector<std::pair<std::string, std::int32_t>> endIncludes;
  /// If `status` is CallbackFailed: the first that was thrown.
  std::exception_ptr exception;
};

/// Preprocesses sources, one after the other, with the same definitions, include directories and functions. Macros that
/// a source defines end with its run.
///
/// A setting for which there is no memory makes the next run, and all later ones, end as Status::OutOfMemory. So does
/// an object for which there was none; that has no message.
class Preprocessor {
 public:
  QNPP_EXPORT Preprocessor() noexcept;
  QNPP_EXPORT ~Preprocessor();
  /// An object that was moved from may be assigned to or destroyed, and nothing else.
  QNPP_EXPORT Preprocessor(Preprocessor&& other) noexcept;
  QNPP_EXPORT Preprocessor& operator=(Preprocessor&& other) noexcept;

  /// "NAME" defines NAME as 1, "NAME=text" as what follows the first "=". The first definition of a name wins; what is
  /// no name has no effect. Nothing is escaped: where the text holds a line end, a directive may stand behind it, and
  /// is carried out wherever NAME is used. Line feeds and carriage returns are line ends, so look for both in texts
  /// that others have chosen.
  QNPP_EXPORT void define(std::string_view definition) noexcept;
  /// Appends a directory to those that are searched for includes. They mean nothing when there is a resolver.
  QNPP_EXPORT void addIncludeDirectory(std::string_view directory) noexcept;
  /// With a resolver, includes are what it says, and no file is touched but those that it names by Source::ofFile.
  QNPP_EXPORT void setResolver(Resolver resolver) noexcept;
  /// Without a diagnostic sink, messages are dropped.
  QNPP_EXPORT void setDiagnosticSink(DiagnosticSink sink) noexcept;
  /// Without an output sink, the output is in the result.
  QNPP_EXPORT void setOutputSink(OutputSink sink) noexcept;
  QNPP_EXPORT void setLimits(const Limits& limits) noexcept;
  /// Whether line directives are written into the output. They are unless this says otherwise.
  QNPP_EXPORT void setLineDirectives(bool areWritten) noexcept;
  /// Whether the result has the dependencies. It has them unless this says otherwise.
  QNPP_EXPORT void setDependencies(bool areWanted) noexcept;
  /// Whether the result has a line map. It has none unless this says so.
  QNPP_EXPORT void setLineMap(bool isWanted) noexcept;

  /// Preprocesses a source from its beginning to its end. `name` stands for the source in messages, in line directives
  /// and in `__FILE__`; when it is empty, that is the path of a file, and "source" for all else.
  QNPP_EXPORT Result run(Source source, std::string_view name = {}) noexcept;

  /// Ends the run that is under way, and the next one if there is none, as Status::Cancelled. May be called from any
  /// thread and from a signal handler; the run ends soon afterwards. Calls that come at the last moment end the run
  /// too, even if all has been delivered, unless it has ended for another reason. So none is lost, and one that comes
  /// too late ends the next run before it begins; that may be run again. For a deadline, Limits::time is the better
  /// way.
  QNPP_EXPORT void cancel() noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace qnpp

#endif
