// The command line of a companion: that of qnpp, and what the companion has beyond it.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/RunOptions.h"

// Compiling its headers takes seconds, so they are left to CommandLine.cpp.
namespace CLI {
class App;
}  // namespace CLI

namespace qnpp {

/// The options that qnpp does not have are entered first, each with what `--help` says about it; then the words are
/// read. All other words are taken as qnpp takes them, and wrong ones are reported as it does.
///
/// An option that is called like one of a compiler, `--MD`, is written and shown as `-MD`.
class CommandLine {
 public:
  /// The name of the companion, and how its help names the sources: "[source_file]".
  CommandLine(std::string name, std::string sourcesWord, std::size_t mostSources = 1);
  ~CommandLine();

  /// A sentence for the help.
  void addNote(std::string note) { note_ = std::move(note); }

  void addFlag(const std::string& name, bool& flag, const std::string& text);
  /// An option with a value, of which the last one counts; `valueWord` shows what it is: "<file>". Where there are
  /// choices, it has to be one of them.
  void addValue(const std::string& name, const std::string& valueWord, std::string& to, const std::string& text,
                const std::vector<std::string>& choices = {});
  /// The same with a number that is not negative, or within the bounds, which are allowed too.
  void addNumber(const std::string& name, const std::string& valueWord, std::size_t& to, const std::string& text,
                 std::optional<std::pair<int, int>> bounds = {});
  /// An option that may come more than once, each time with a value.
  void addValues(const std::string& name, const std::string& valueWord, std::vector<std::string>& to,
                 const std::string& text, const std::vector<std::string>& choices = {});

  /// Reads the words behind the name of the program. Nothing is left to do when the answer is false: help or version
  /// went to `output`, or what is wrong went to `messages`, and status() is that of the process. Throws Failure for
  /// what is wrong with options that qnpp does not have.
  bool read(const std::vector<std::string>& words, RunOptions& options, std::ostream& output, std::ostream& messages);

  int status() const { return status_; }
  /// All sources, where there may be more than one. The first is in the options too.
  const std::vector<std::string>& sources() const { return sources_; }

 private:
  void writeHelp(std::ostream& output) const;
  bool answerQuestions(const class OptionParser& parser, std::ostream& output);
  bool readProgramOptions(const class OptionParser& parser, RunOptions& options, std::ostream& messages);

  std::string name_;
  std::string sourcesWord_;
  std::size_t mostSources_;
  std::string note_;
  std::unique_ptr<CLI::App> app_;
  std::vector<std::string> sources_;
  int status_;
};

/// The words of a process, without its name.
std::vector<std::string> wordsOf(int argc, const char* const* argv);

}  // namespace qnpp
