// Messages about the source: one line each, "name:line: message.", flushed at once.
#include "engine/CppPreprocessor.h"

namespace qnpp {

void CppPreprocessor::reportError(std::string_view message) {
  writeDiagnostic("", message);
  hasError_ = true;
}

void CppPreprocessor::reportWarning(std::string_view message) { writeDiagnostic("Warning: ", message); }

// Each line goes out in one piece, so that those of programs running side by side do not mix.
void CppPreprocessor::writeDiagnostic(std::string_view grade, std::string_view message) {
  ++messageCount_;
  std::string line = currentFile_->fileName();
  line.append(":").append(std::to_string(currentFile_->line())).append(": ");
  line.append(grade).append(message).append(".\n");
  diagnostics_ << line << std::flush;
}

void CppPreprocessor::reportCannotOpenSource(std::string_view name) {
  diagnostics_ << "FATAL ERROR: cannot open " << name << ".\n" << std::flush;
  hasError_ = true;
}

// There is no memory to be had here, so the line is written piece by piece.
void CppPreprocessor::reportOutOfMemory() {
  output_.flush();
  if (currentFile_ != nullptr) {
    diagnostics_ << currentFile_->fileName() << ':' << currentFile_->line() << ": ";
  }
  diagnostics_ << "FATAL ERROR: out of memory.\n" << std::flush;
  hasError_ = true;
}

}  // namespace qnpp
