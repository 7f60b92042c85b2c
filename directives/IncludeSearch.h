// #include: the name, and the search for the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "lexer/Messages.h"
#include "lexer/TokenStream.h"

namespace qnpp {

struct IncludeName {
  std::string name;
  bool isQuoted = false;  ///< "name", as against <name>.
};

/// Reads "<name>" or "\"name\"" from the closed source `operand`, which a macro may have made. Reports what is wrong;
/// none when there is no name.
std::optional<IncludeName> readIncludeName(TokenStream& operand, MessageSink& messages);

/// Behind the word `include`: the name, if the rest of the line is nothing but one in quotes, in which no macro can be.
/// It is taken, and the line end is next.
std::optional<IncludeName> readQuotedName(TokenStream& stream);

/// Where a file was found.
enum class IncludeOrigin : std::uint8_t { Absolute, BesideIncluder, InIncludeDirectory, Elsewhere };

/// Opens files for the search, and keeps the one that was found.
class FileOpener {
 public:
  /// Opens the file of this path; false when it cannot be opened.
  virtual bool open(const std::string& path) = 0;
  /// A number of the present moment. As long as it stays the same, a file that was not there is not looked for again.
  /// 0: whether files change cannot be known.
  virtual std::uint64_t moment() const = 0;

 protected:
  ~FileOpener() = default;
};

class IncludeSearch {
 public:
  /// `files` is borrowed and outlives the object.
  explicit IncludeSearch(FileOpener& files) : files_(files) {}

  /// Sets the directories that are searched, in this order. They are borrowed and outlive the object.
  void setDirectories(std::span<const std::string> directories) { directories_ = directories; }

  /// The first file that opens: the name itself when it is absolute; else, in the quoted form, the name in the
  /// directory of the includer, as that is called now; then the name in each include directory. None when there is no
  /// such file.
  std::optional<IncludeOrigin> find(const IncludeName& name, std::string_view includer);

 private:
  // At some moment, a name was in none of the first directories.
  struct Absence {
    std::uint64_t moment = 0;
    std::size_t directories = 0;
  };

  bool openIn(std::string_view directory, const std::string& name);
  bool findInDirectories(const std::string& name);

  FileOpener& files_;
  std::span<const std::string> directories_;
  std::string path_;  // That was tried last.
  std::unordered_map<std::string, Absence> absences_;
};

}  // namespace qnpp
