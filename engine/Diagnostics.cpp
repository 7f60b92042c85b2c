// Messages about the source: one line each, "name:line: message.", flushed at once.
#include "engine/CppPreprocessor.h"

namespace qnpp {

void CppPreprocessor::reportError(std::string_view message) {
  writeLocation();
  diagnostics_ << message << ".\n" << std::flush;
  hasError_ = true;
}

void CppPreprocessor::reportWarning(std::string_view message) {
  writeLocation();
  diagnostics_ << "Warning: " << message << ".\n" << std::flush;
}

void CppPreprocessor::reportCannotOpenSource(std::string_view name) {
  diagnostics_ << "FATAL ERROR: cannot open " << name << ".\n" << std::flush;
  hasError_ = true;
}

void CppPreprocessor::writeLocation() {
  ++messageCount_;
  diagnostics_ << currentFile_->fileName() << ':' << currentFile_->line() << ": ";
}

}  // namespace qnpp
