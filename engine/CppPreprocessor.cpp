#include "engine/CppPreprocessor.h"

#include <utility>

namespace qnpp {

CppPreprocessor::CppPreprocessor(std::ostream& diagnostics, std::istream& standardInput)
    : diagnostics_(diagnostics), standardInput_(standardInput) {
  spareScanners_.reserve(kMostSpares);
  spareExpansions_.reserve(kMostSpares);
  definePredefinedMacros();
}

CppPreprocessor::~CppPreprocessor() = default;

void CppPreprocessor::openSource(const std::string& fileName, const std::string& sourceName) {
  auto file = std::make_unique<CppFileScanner>(fileName, standardInput_, lexerContext_);
  if (file->openFailed()) {
    reportCannotOpenSource(file->fileName());
    return;
  }
  if (!sourceName.empty()) {
    file->setFileName(sourceName);
  }
  pushFile(std::move(file));
  writeLineDirective();
}

}  // namespace qnpp
