// One run of the engine for a caller of the library.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/Host.h"
#include "lexer/Budget.h"
#include "qnpp/preprocessor.h"

namespace qnpp {

class CppPreprocessor;

/// What a caller has set.
struct Settings {
  std::vector<std::string> definitions;
  std::vector<std::string> includeDirectories;
  Resolver resolver;
  DiagnosticSink diagnosticSink;
  OutputSink outputSink;
  Limits limits;
  bool writesLineDirectives = true;
  bool wantsDependencies = true;
  bool wantsLineMap = false;
};

/// Finds a text among strings without making a string of it.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

/// Runs the engine once, and turns what it says and how it ends into a result.
class Run final : public Host {
 public:
  /// All are borrowed and outlive the object. A run clears `isCancelled` at its end.
  Run(const Settings& settings, std::atomic<bool>& isCancelled, Result& result);

  /// One of these is to be called once. The second ends the run before it begins, for want of memory.
  void preprocess(Source source, std::string_view name) noexcept;
  void refuse() noexcept;

 private:
  template <typename Part>
  bool attempt(Part part) noexcept;
  void beginEngine(std::unique_ptr<CppPreprocessor>& engine);
  bool open(CppPreprocessor& engine, Source source, std::string_view name);
  void finish(CppPreprocessor& engine) noexcept;
  void finishEarly(CppPreprocessor& engine) noexcept;
  void noteEnd(CppPreprocessor& engine) noexcept;
  void end(Status status, Limit limit = Limit::None);
  void end(const RunEnded& ended);
  template <typename Call>
  auto callBack(Call call);

  std::unique_ptr<std::istream> inputOf(Source source);

  void write(std::string_view text) override;
  void report(const Report& report) override;
  bool isResolver() const override { return settings_.resolver != nullptr; }
  std::optional<FoundFile> resolve(const IncludeName& name, const FilePlace& place,
                                   std::string_view includerPath) override;
  std::uint64_t callCount() const override { return callCount_; }
  bool isOutput(const FileStamp& file) const override { return outputFile_ && outputFile_->isOfSameFile(file); }
  void enter(const Inclusion& inclusion, std::size_t depth) override;
  void mark(LineMark mark, const FilePlace& place, std::uint64_t offset) override;

  void addDependency(const Inclusion& inclusion);
  void addEntry(LineMark mark, const FilePlace& place, std::uint64_t offset);
  void deliver(std::string_view text);
  void countLines(std::string_view text);
  void finishLineMap();

  const Settings& settings_;
  std::atomic<bool>& isCancelled_;
  Result& result_;
  Budget budget_;
  bool isEnded_ = false;                 // Before the end of the source.
  const char* failure_ = nullptr;        // What the scanner said when it could not go on.
  bool isOutputOver_ = false;            // Nothing may be delivered any more.
  std::uint64_t callCount_ = 0;          // Of the caller's sinks, but for a StreamSink,
  std::optional<FileStamp> outputFile_;  // and the file that this writes to.
  std::uint64_t delivered_ = 0;
  std::uint64_t linesDelivered_ = 0;
  std::size_t entriesCounted_ = 0;  // Entries of the line map that have got their line of the output.
  std::vector<Place> includeChain_;
  std::unordered_set<std::string, TextHash, std::equal_to<>> paths_;
  std::unordered_map<std::string, std::size_t, TextHash, std::equal_to<>> fileNumbers_;
};

}  // namespace qnpp
