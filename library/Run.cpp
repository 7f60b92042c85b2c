#include "library/Run.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

#include "engine/CppPreprocessor.h"
#include "lexer/InputFile.h"
#include "library/Inputs.h"

namespace qnpp {
namespace {

constexpr std::string_view kNameOfSource = "source";

constexpr Severity severityOf(Grade grade) {
  switch (grade) {
    case Grade::Warning:
    case Grade::Remark:
      return Severity::Warning;
    case Grade::Error:
      return Severity::Error;
    default:
      return Severity::FatalError;
  }
}

constexpr Dependency::Found foundOf(IncludeOrigin origin) {
  switch (origin) {
    case IncludeOrigin::Absolute:
      return Dependency::Found::Absolute;
    case IncludeOrigin::BesideIncluder:
      return Dependency::Found::BesideIncluder;
    case IncludeOrigin::InIncludeDirectory:
      return Dependency::Found::InIncludeDirectory;
    default:
      return Dependency::Found::ByResolver;
  }
}

constexpr LineMap::Reason reasonOf(LineMark mark) {
  switch (mark) {
    case LineMark::Start:
      return LineMap::Reason::Start;
    case LineMark::Entered:
      return LineMap::Reason::Entered;
    case LineMark::Returned:
      return LineMap::Reason::Returned;
    case LineMark::Renumbered:
      return LineMap::Reason::Renumbered;
    default:
      return LineMap::Reason::Corrected;
  }
}

// "NAME" stands for 1, "NAME=text" for the text behind the first "=", which may be empty.
void define(CppMacroTable& macros, std::string_view definition) {
  const std::size_t equals = definition.find('=');
  if (equals == std::string_view::npos) {
    macros.defineFromCommandLine(definition, "1");
  } else {
    macros.defineFromCommandLine(definition.substr(0, equals), definition.substr(equals + 1));
  }
}

// In a catch block. The first exception is what went wrong; delivering what there is may bring about another.
void keepException(std::exception_ptr& exception) {
  if (exception == nullptr) {
    exception = std::current_exception();
  }
}

}  // namespace

std::streamsize ReaderInput::Buffer::xsgetn(char* to, std::streamsize size) {
  std::ptrdiff_t count = 0;
  try {
    count = read_(to, static_cast<std::size_t>(size));
  } catch (...) {
    keepException(exception_);
    throw RunEnded{RunEnded::Reason::CallbackFailed};
  }
  if (count < 0 || count > size) {
    throw std::ios_base::failure("read error");
  }
  return count;
}

Run::Run(const Settings& settings, std::atomic<bool>& isCancelled, Result& result)
    : settings_(settings), isCancelled_(isCancelled), result_(result) {
  budget_.watch(isCancelled);
  if (const auto* const sink = settings.outputSink.target<StreamSink>(); sink != nullptr) {
    outputFile_ = stampOfOpen(sink->descriptor);
  }
}

// ---- Beginning and end ----

void Run::preprocess(Source source, std::string_view name) noexcept {
  std::unique_ptr<CppPreprocessor> engine;
  const bool isDone = attempt([&] {
    beginEngine(engine);
    budget_.look();  // A run that was cancelled beforehand opens nothing.
    if (open(*engine, std::move(source), name)) {
      engine->run();
    }
  });
  if (isDone) {
    finish(*engine);
  } else if (engine != nullptr) {
    finishEarly(*engine);
  } else {
    refuse();
  }
  finishLineMap();
}

// Behind the last call of a caller's function, so whoever cancels there is heard too. From here on `cancel` is about
// the next run: what is told from another thread ends either this run or that one, and never both or neither.
void Run::finish(CppPreprocessor& engine) noexcept {
  if (isCancelled_.exchange(false)) {
    end(Status::Cancelled);
    noteEnd(engine);
  } else {
    result_.status = result_.hasErrors ? Status::Errors : Status::Clean;
  }
}

void Run::refuse() noexcept {
  end(Status::OutOfMemory);
  attempt([this] {
    const MessageEntry& entry = entryOf(Message::OutOfMemory);
    report({entry, {}, entry.text, "FATAL ERROR: out of memory.\n", {}});
  });
  isCancelled_ = false;
}

// Carries out a part of the run, and notes how that ended it. A caller's exception goes before any other reason.
template <typename Part>
bool Run::attempt(Part part) noexcept {
  try {
    part();
    return true;
  } catch (const RunEnded& ended) {
    end(ended);
  } catch (const DivisionByZero&) {
    end(Status::DivisionByZero);
  } catch (const FatalLexerError& error) {
    failure_ = error.what();
    end(Status::ScannerFailed);
  } catch (const std::bad_alloc&) {
    end(Status::OutOfMemory);
  } catch (const std::length_error&) {  // A container that would grow beyond what can be addressed.
    end(Status::OutOfMemory);
  }
  return false;
}

void Run::end(const RunEnded& ended) {
  using Reason = RunEnded::Reason;
  switch (ended.reason) {
    case Reason::IncludeDepth:
      return end(Status::LimitReached, Limit::IncludeDepth);
    case Reason::ExpansionWork:
      return end(Status::LimitReached, Limit::ExpansionWork);
    case Reason::OutputBytes:
      return end(Status::LimitReached, Limit::OutputBytes);
    case Reason::Time:
      return end(Status::LimitReached, Limit::Time);
    case Reason::Cancelled:
      return end(Status::Cancelled);
    case Reason::CallbackFailed:
      return end(Status::CallbackFailed);
  }
}

void Run::end(Status status, Limit limit) {
  if (!isEnded_ || status == Status::CallbackFailed) {
    isEnded_ = true;
    result_.status = status;
    result_.limit = limit;
  }
}

void Run::beginEngine(std::unique_ptr<CppPreprocessor>& engine) {
  constexpr std::size_t kDeepInclude = 32;
  includeChain_.reserve(kDeepInclude);
  budget_.setLimits(settings_.limits.expansionWork, settings_.limits.time);
  engine = std::make_unique<CppPreprocessor>(*this, budget_);
  engine->setLineDirectives(settings_.writesLineDirectives);
  for (const std::string& definition : settings_.definitions) {
    define(engine->macroTable(), definition);
  }
  engine->setIncludeDirectories(settings_.includeDirectories);
}

bool Run::open(CppPreprocessor& engine, Source source, std::string_view name) {
  std::string path(name.empty() ? kNameOfSource : name);
  std::string otherName;
  if (source.kind_ == Source::Kind::File) {
    path = source.text_;
    otherName = name;
  } else if (!settings_.outputSink) {
    // Mostly what comes out is about as long, and a string that grows to it would be copied and paged in twice.
    result_.output.reserve(std::max(source.text_.size(), source.borrowed_.size()));
  }
  return engine.openSource(inputOf(std::move(source)), path, otherName);
}

std::unique_ptr<std::istream> Run::inputOf(Source source) {
  switch (source.kind_) {
    case Source::Kind::Text:
      return std::make_unique<OwnedText>(std::move(source.text_));
    case Source::Kind::BorrowedText: {
      auto text = std::make_unique<InputText>();
      text->reset(source.borrowed_);
      return text;
    }
    case Source::Kind::File:
      return std::make_unique<InputFile>(source.text_);
    default:
      return std::make_unique<ReaderInput>(std::move(source.reader_), result_.exception);
  }
}

// Delivers what there is. Each step is taken whatever becomes of those before it.
void Run::finishEarly(CppPreprocessor& engine) noexcept {
  attempt([&engine] { engine.finishEarly(); });
  if (result_.status == Status::OutOfMemory) {
    attempt([&engine] { engine.reportOutOfMemory(); });
  } else if (result_.status == Status::ScannerFailed) {
    attempt([&engine, this] { engine.reportFailure(failure_); });
  }
  noteEnd(engine);
  isCancelled_ = false;
}

void Run::noteEnd(CppPreprocessor& engine) noexcept {
  attempt([&engine, this] {
    const FilePlace place = engine.place();
    result_.endLine = place.line;
    result_.endFile = place.file;
    for (const FilePlace& include : engine.findIncludeChain()) {
      result_.endIncludes.emplace_back(include.file, include.line);
    }
  });
}

// ---- What the engine says ----

template <typename Call>
auto Run::callBack(Call call) {
  try {
    return call();
  } catch (...) {
    keepException(result_.exception);
    throw RunEnded{RunEnded::Reason::CallbackFailed};
  }
}

void Run::write(std::string_view text) {
  if (isOutputOver_) {
    return;
  }
  const std::uint64_t limit = settings_.limits.outputBytes;
  const bool isTooMuch = limit != 0 && text.size() > limit - delivered_;
  deliver(isTooMuch ? text.substr(0, static_cast<std::size_t>(limit - delivered_)) : text);
  if (isTooMuch) {
    isOutputOver_ = true;
    throw RunEnded{RunEnded::Reason::OutputBytes};
  }
}

void Run::deliver(std::string_view text) {
  isOutputOver_ = true;  // Unless this goes well: there must be no gap in the output.
  if (settings_.outputSink) {
    callCount_ += settings_.outputSink.target<StreamSink>() == nullptr ? 1U : 0U;
    callBack([&] { settings_.outputSink(text); });
  } else {
    result_.output.append(text);
  }
  isOutputOver_ = false;
  if (settings_.wantsLineMap) {
    countLines(text);
  }
  delivered_ += text.size();
}

void Run::report(const Report& report) {
  const Severity severity = severityOf(report.entry.grade);
  result_.hasErrors = result_.hasErrors || severity != Severity::Warning;
  if (!settings_.diagnosticSink) {
    return;
  }
  includeChain_.clear();
  for (const FilePlace& place : report.includeChain) {
    if (report.entry.message == Message::OutOfMemory && includeChain_.size() == includeChain_.capacity()) {
      break;
    }
    includeChain_.push_back({place.file, place.line});
  }
  const Diagnostic diagnostic = {severity,
                                 report.entry.identifier,
                                 {report.place.file, report.place.line},
                                 report.text,
                                 report.printed,
                                 includeChain_.data(),
                                 includeChain_.size()};
  ++callCount_;
  callBack([&] { settings_.diagnosticSink(diagnostic); });
}

std::optional<Host::FoundFile> Run::resolve(const IncludeName& name, const FilePlace& place,
                                            std::string_view includerPath) {
  const IncludeRequest request = {name.name, name.isQuoted, {place.file, place.line}, includerPath};
  std::optional<Include> found = callBack([&] { return settings_.resolver(request); });
  if (!found) {
    return std::nullopt;
  }
  return FoundFile{std::move(found->path), inputOf(std::move(found->source))};
}

void Run::enter(const Inclusion& inclusion, std::size_t depth) {
  if (settings_.limits.includeDepth != 0 && depth > settings_.limits.includeDepth) {
    throw RunEnded{RunEnded::Reason::IncludeDepth};
  }
  if (settings_.wantsDependencies) {
    addDependency(inclusion);
  }
}

void Run::addDependency(const Inclusion& inclusion) {
  if (!paths_.contains(inclusion.path)) {
    paths_.emplace(inclusion.path);
    result_.dependencies.push_back({std::string(inclusion.path), inclusion.name.name, inclusion.name.isQuoted,
                                    foundOf(inclusion.origin), std::string(inclusion.place.file),
                                    inclusion.place.line});
  }
}

// ---- The line map ----

void Run::mark(LineMark mark, const FilePlace& place, std::uint64_t offset) {
  if (settings_.wantsLineMap) {
    addEntry(mark, place, offset);
  }
}

void Run::addEntry(LineMark mark, const FilePlace& place, std::uint64_t offset) {
  LineMap& map = result_.lineMap;
  auto number = fileNumbers_.find(place.file);
  if (number == fileNumbers_.end()) {
    number = fileNumbers_.emplace(place.file, map.files.size()).first;
    map.files.emplace_back(place.file);
  }
  map.entries.push_back({offset, 0, number->second, place.line, reasonOf(mark)});
}

// Finds out for the entries within the text, which is about to count as delivered, in which line of the output they
// are.
void Run::countLines(std::string_view text) {
  const auto count = [](std::string_view part) {
    return static_cast<std::uint64_t>(std::count(part.begin(), part.end(), '\n'));
  };
  std::size_t counted = 0;
  auto& entries = result_.lineMap.entries;
  for (; entriesCounted_ < entries.size(); ++entriesCounted_) {
    LineMap::Entry& entry = entries[entriesCounted_];
    if (entry.offset - delivered_ > text.size()) {
      break;
    }
    const auto size = static_cast<std::size_t>(entry.offset - delivered_);
    linesDelivered_ += count(text.substr(counted, size - counted));
    counted = size;
    entry.outputLine = linesDelivered_ + 1;
  }
  linesDelivered_ += count(text.substr(counted));
}

// What an entry is about may never have been delivered.
void Run::finishLineMap() {
  auto& entries = result_.lineMap.entries;
  for (; entriesCounted_ < entries.size() && entries[entriesCounted_].offset == delivered_; ++entriesCounted_) {
    entries[entriesCounted_].outputLine = linesDelivered_ + 1;
  }
  entries.resize(entriesCounted_);
}

}  // namespace qnpp
