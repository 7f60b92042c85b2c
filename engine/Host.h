// What a run of the engine tells its surroundings, and asks of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "directives/IncludeSearch.h"
#include "lexer/InputFile.h"
#include "lexer/Messages.h"
#include "lexer/OutputBuffer.h"

namespace qnpp {

/// A line of a file, by the name and number that it has there and then.
struct FilePlace {
  std::string_view file;
  std::int32_t line = 0;
};

/// A message with all that is known about it.
struct Report {
  const MessageEntry& entry;
  FilePlace place;                          ///< Where no file is open, or the scanner has failed: nothing.
  std::string_view text;                    ///< The message by itself.
  std::string_view printed;                 ///< The whole line as the program writes it, its line end included.
  std::span<const FilePlace> includeChain;  ///< The lines that include the file of `place`, innermost first.
};

/// A file that is entered by #include.
struct Inclusion {
  const IncludeName& name;
  FilePlace place;        ///< Of the #include.
  std::string_view path;  ///< Of the file.
  IncludeOrigin origin;
};

/// Why a line directive is due.
enum class LineMark : std::uint8_t { Start, Entered, Returned, Renumbered, Corrected };

/// All views in what it is given are valid during the call; what it throws ends the run.
class Host : public TextSink {
 public:
  /// A file that has been found elsewhere than on disk.
  struct FoundFile {
    std::string path;
    std::unique_ptr<std::istream> input;  ///< In a failed state if it could not be opened.
  };

  virtual void report(const Report& report) = 0;

  /// Whether `resolve` is asked for files. They are searched on disk otherwise.
  virtual bool isResolver() const = 0;
  virtual std::optional<FoundFile> resolve(const IncludeName& name, const FilePlace& place,
                                           std::string_view includerPath) = 0;
  /// How often a sink of the caller's has been called that may have changed files.
  virtual std::uint64_t callCount() const = 0;
  /// Whether the output is written to this file, so that it changes whenever a block is delivered.
  virtual bool isOutput(const FileStamp& file) const = 0;

  /// Before a file is entered, which makes `depth` files around it.
  virtual void enter(const Inclusion& inclusion, std::size_t depth) = 0;

  /// A line directive was due. `offset` is how much of the output there is, the directive included if there is one.
  virtual void mark(LineMark mark, const FilePlace& place, std::uint64_t offset) = 0;

 protected:
  ~Host() = default;
};

}  // namespace qnpp
