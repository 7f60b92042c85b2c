#include "engine/CppPreprocessor.h"

namespace qnpp {

// Tells the end of files, and opens them for the search.
class CppPreprocessor::Hooks final : public TokenStream::Listener, public FileOpener {
 public:
  explicit Hooks(CppPreprocessor& preprocessor) : preprocessor_(preprocessor) {}

  void fileEnded() override { preprocessor_.checkEndOfFile(); }
  void fileResumed() override { preprocessor_.writeLineDirective(); }

  std::unique_ptr<CppFileScanner> open(const std::string& path) override {
    auto file = std::make_unique<CppFileScanner>(path, preprocessor_.standardInput_, preprocessor_.lexerContext_);
    return file->openFailed() ? nullptr : std::move(file);
  }

 private:
  CppPreprocessor& preprocessor_;
};

CppPreprocessor::CppPreprocessor(std::ostream& diagnostics, std::istream& standardInput)
    : standardInput_(standardInput),
      lexerContext_{output_, diagnostics, names_, effectCount_},
      hooks_(std::make_unique<Hooks>(*this)),
      stream_(names_, lexerContext_, *hooks_),
      diagnostics_(diagnostics, stream_),
      includes_(*hooks_) {}

CppPreprocessor::~CppPreprocessor() = default;

void CppPreprocessor::openSource(const std::string& fileName, const std::string& sourceName) {
  auto file = std::make_unique<CppFileScanner>(fileName, standardInput_, lexerContext_);
  if (file->openFailed()) {
    reportError(Message::CannotOpenSource, file->fileName());
    return;
  }
  if (!sourceName.empty()) {
    file->setFileName(sourceName);
  }
  stream_.pushFile(std::move(file));
  writeLineDirective();
}

void CppPreprocessor::reportOutOfMemory() {
  output_.flush();
  diagnostics_.reportOutOfMemory();
}

void CppPreprocessor::evaluate(CppExprValue& result, bool& ok) {
  const ExpressionEvaluator::Result evaluated = evaluator_.evaluate();
  result = evaluated.value;
  ok = ok && evaluated.isOk;
}

// A line directive tells a later compiler which source line the next output line stands for.
void CppPreprocessor::writeLineDirective() {
  const std::int32_t line = stream_.file()->line();
  output_.write("#line ");
  output_.writeNumber(line);
  output_.write(" \"");
  // A backslash would be an escape to the reader of the directive, so each one is doubled.
  std::string_view name = stream_.file()->fileName();
  for (std::size_t at = name.find('\\'); at != std::string_view::npos; at = name.find('\\')) {
    output_.write(name.substr(0, at + 1));
    output_.write('\\');
    name.remove_prefix(at + 1);
  }
  output_.write(name);
  output_.write("\"\n");
  output_.setLine(line);
}

}  // namespace qnpp
