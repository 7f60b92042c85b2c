#include "engine/CppPreprocessor.h"

#include "lexer/InputFile.h"
#include "lexer/Shortcuts.h"

namespace qnpp {

// Tells the end of files, and opens them for the search.
class CppPreprocessor::Hooks final : public TokenStream::Listener, public FileOpener {
 public:
  explicit Hooks(CppPreprocessor& preprocessor) : preprocessor_(preprocessor) {}

  void fileEnded() override {
    preprocessor_.checkEndOfFile();
    const CppFileScanner& file = *preprocessor_.stream_.file();
    preprocessor_.guardedFiles_.leave(file.path(), file.stamp(), preprocessor_.traces());
    inMemory_ -= file.isInMemory() ? 1U : 0U;
    preprocessor_.observe([](Observer& observer) { observer.fileEnded(); });
  }
  void fileResumed() override { preprocessor_.markLine(LineMark::Returned); }

  // The source is opened.
  void begin(const std::istream& source) {
    const auto* const file = dynamic_cast<const InputFile*>(&source);
    isAtRest_ = file != nullptr ? file->stamp().has_value() : dynamic_cast<const InputText*>(&source) != nullptr;
  }

  // A search begins. It is at the moment of the one before if the clock that changes of files are dated by has stood
  // still, the caller has not been called, and no file has been opened, which may wait for who has a lease on it: so
  // mostly nothing can tell this run that a file was changed between the two, rather than behind them. Something could
  // where it reads from a pipe; so all that it reads has to be at rest, texts in memory and files that have a stamp.
  void beginSearch() {
    const Seen seen = {fileClock(), preprocessor_.host_.callCount()};
    if (seen != seen_) {
      ++momentCount_;
      seen_ = seen;
    }
  }
  std::uint64_t moment() const override {
    const bool isKnown = kShortcuts && isAtRest_ && seen_.time != FileTime();
    return isKnown ? momentCount_ : 0;
  }

  // Where so many files can be open at once that to open one more cannot fail for want of descriptors, what is known of
  // the file stands for it.
  bool open(const std::string& path) override {
    const std::size_t depth = preprocessor_.stream_.files().size() + 1;
    if (kShortcuts && depth <= deepest_ && openKnown(path)) {
      return true;
    }
    auto file = std::make_unique<FileBuffer>(path);
    momentCount_ += file->isOpen() ? 1U : 0U;
    const bool isOpen = file->isOpen() && isRoomFor(*file, depth);
    preprocessor_.observe([&](Observer& observer) { observer.lookedFor(path, isOpen); });
    if (!isOpen) {
      return false;
    }
    const std::optional<FileStamp> stamp = stampOf(*file);
    isAtRest_ = isAtRest_ && stamp;
    if (kShortcuts && stamp) {
      file->copyTo(preprocessor_.knownFiles_.opened(path, *stamp, moment()));
    }
    find(path, std::move(file), stamp);
    return true;
  }

  // A file that the caller has found; false when it could not be opened.
  bool open(const std::string& path, std::unique_ptr<std::istream> input) {
    const bool isOpen = input->good();
    preprocessor_.observe([&](Observer& observer) { observer.lookedFor(path, isOpen); });
    if (isOpen) {
      find(path, std::move(input), std::nullopt);
    }
    return isOpen;
  }

 private:
  // The stamp of a file at rest, which one that the run itself writes to is not.
  std::optional<FileStamp> stampOf(const FileBuffer& file) const {
    const std::optional<FileStamp>& stamp = file.stamp();
    return stamp && preprocessor_.host_.isOutput(*stamp) ? std::nullopt : stamp;
  }

  // What a moment is known by.
  struct Seen {
    FileTime time;
    std::uint64_t callCount = 0;
    bool operator==(const Seen&) const = default;
  };

  // Whether there are descriptors for as many files as are being read with this one, which is open.
  bool isRoomFor(const FileBuffer& file, std::size_t depth) {
    if (depth > deepest_) {
      // Of as many again, so that the next files need not be asked about.
      const std::size_t left = inMemory_ == 0 ? 0 : file.descriptorsLeft(inMemory_ + depth);
      deepest_ = depth - inMemory_ + left;
    }
    return depth <= deepest_;
  }

  // Opens the file if it is known.
  bool openKnown(const std::string& path) {
    const KnownFiles::File* const known = preprocessor_.knownFiles_.find(path, moment());
    if (known == nullptr) {
      return false;
    }
    if (known->isPassedBy()) {
      preprocessor_.found_.file.reset();
      preprocessor_.found_.path = path;
      preprocessor_.found_.lineEnds = known->lineEnds;
    } else {
      find(path, known->text, known->stamp);
      ++inMemory_;
    }
    return true;
  }

  // The file has been found, and will be read from `input`.
  template <typename Input>
  void find(const std::string& path, Input input, const std::optional<FileStamp>& stamp) {
    IncludedFile& found = preprocessor_.found_;
    found.file = preprocessor_.stream_.makeFile();
    found.file->open(path, std::move(input));
    found.file->setStamp(stamp);
    found.path = path;
  }

  CppPreprocessor& preprocessor_;
  std::size_t deepest_ = 0;   // So many files can be open at once.
  std::size_t inMemory_ = 0;  // So many of those that are being read would be, had their texts not been kept.
  Seen seen_;
  std::uint64_t momentCount_ = 0;
  bool isAtRest_ = false;
};

CppPreprocessor::CppPreprocessor(Host& host, Budget& budget)
    : host_(host),
      lexerContext_{output_, diagnostics_, names_, effectCount_, budget},
      hooks_(std::make_unique<Hooks>(*this)),
      stream_(names_, lexerContext_, *hooks_),
      diagnostics_(host, stream_),
      evaluator_(stream_, diagnostics_, budget),
      includes_(*hooks_) {
  output_.attach(host);
}

CppPreprocessor::~CppPreprocessor() = default;

void CppPreprocessor::setObserver(Observer& observer) {
  output_.observer().set(observer);
  observe([this](Observer& set) { set.watch(stream_); });
}

bool CppPreprocessor::openSource(std::unique_ptr<std::istream> input, const std::string& path,
                                 const std::string& name) {
  hooks_->begin(*input);
  auto file = std::make_unique<CppFileScanner>(path, std::move(input), lexerContext_);
  if (file->openFailed()) {
    reportError(Message::CannotOpenSource, file->fileName());
    return false;
  }
  if (!name.empty()) {
    file->setFileName(name);
  }
  stream_.pushFile(std::move(file));
  observe([](Observer& observer) { observer.fileEntered(); });
  markLine(LineMark::Start);
  return true;
}

FilePlace CppPreprocessor::place() const {
  const CppFileScanner* const file = stream_.file();
  return file == nullptr ? FilePlace() : FilePlace{file->fileName(), file->line()};
}

void CppPreprocessor::evaluate(CppExprValue& result, bool& ok) {
  const ExpressionEvaluator::Result evaluated = evaluator_.evaluate();
  result = evaluated.value;
  ok = ok && evaluated.isOk;
}

// ---- Included files ----

// Leaves it in `found_`; reports it and returns false if there is none.
bool CppPreprocessor::findFile(const IncludeName& name) {
  CppFileScanner& includer = *stream_.file();
  includer.setIncludeLine(includer.line());
  std::optional<IncludeOrigin> origin;
  if (!host_.isResolver()) {
    hooks_->beginSearch();
    origin = includes_.find(name, includer.fileName());
  } else if (auto found = host_.resolve(name, place(), includer.path())) {
    if (hooks_->open(found->path, std::move(found->input))) {
      origin = IncludeOrigin::Elsewhere;
    }
  }
  if (!origin) {
    reportError(Message::CannotOpenFile, name.name);
    return false;
  }
  host_.enter({name, place(), found_.path, *origin}, stream_.files().size());
  return true;
}

// ---- Line directives: which source line the next output line stands for ----

void CppPreprocessor::markLine(LineMark mark) { markLine(mark, place()); }

void CppPreprocessor::markLine(LineMark mark, const FilePlace& now) {
  if (writesLineDirectives_) {
    writeLineDirective(now.line, now.file);
  }
  output_.setLine(now.line);
  host_.mark(mark, now, output_.position());
}

void CppPreprocessor::writeLineDirective(std::int32_t line, std::string_view name) {
  observe([](Observer& observer) { observer.lineDirectiveBegan(); });
  output_.write("#line ");
  output_.writeNumber(line);
  output_.write(" \"");
  // A backslash would be an escape to the reader of the directive, so each one is doubled.
  for (std::size_t at = name.find('\\'); at != std::string_view::npos; at = name.find('\\')) {
    output_.write(name.substr(0, at + 1));
    output_.write('\\');
    name.remove_prefix(at + 1);
  }
  output_.write(name);
  output_.write("\"\n");
}

}  // namespace qnpp
