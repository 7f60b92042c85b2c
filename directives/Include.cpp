// #include and its search for files.
#include "directives/FileNames.h"
#include "engine/Sources.h"

namespace qnpp {

void CppPreprocessor::handleInclude() {
  InFlight inFlight(*this);
  std::string name;
  bool quoted = false;
  const bool hasName = readIncludeName(name, quoted);
  std::unique_ptr<CppFileScanner> file = hasName ? searchFile(name, quoted) : nullptr;
  if (hasName && file == nullptr) {
    reportError("Cannot open file: " + name);
  }
  nextToken();  // The line end: not before the search, so that its message shows this line.
  inFlight.release();
  if (file != nullptr) {
    enterFile(std::move(file));
  }
}

// Reads "<name>" or "\"name\"" from the operand, which a macro may have made. Reports and returns false when there is
// no such name.
bool CppPreprocessor::readIncludeName(std::string& name, bool& quoted) {
  readOperand();
  const ClosedSource source(*this, operand_);
  const CppTokenKind form = nextOperandToken();
  quoted = form == TK_STRING;
  bool isComplete = quoted;
  if (quoted) {
    name = currentText().substr(1, currentText().size() - 2);
  } else if (form == '<') {
    // Blanks count here, and only a ">" that is a token of its own ends the name.
    CppTokenKind kind = nextToken();
    for (; kind != '>' && kind != TK_NEWLINE && kind != TK_END; kind = nextToken()) {
      name.append(currentText());
    }
    isComplete = kind == '>';
  }
  if (!isComplete) {
    reportError("Filename expected after #include directive");
    return false;
  }
  if (name.empty()) {
    reportError("An expected file name is missing");
    return false;
  }
  checkEndOfOperand();
  return true;
}

// The first file that opens: the name itself when it is absolute; else, in the quoted form, the name in the directory
// of the current file; then the name in each include directory. Null when there is none.
std::unique_ptr<CppFileScanner> CppPreprocessor::searchFile(const std::string& name, bool quoted) {
  std::unique_ptr<CppFileScanner> file;
  if (isAbsoluteName(name)) {
    file = openFile(name);
  } else if (quoted) {
    const std::string directory = directoryOf(currentFile_->fileName());
    file = openFile(directory == "." ? name : directory + '/' + name);
  }
  for (auto directory = includeDirectories_.begin(); file == nullptr && directory != includeDirectories_.end();
       ++directory) {
    file = openFile(*directory + '/' + name);
  }
  return file;
}

std::unique_ptr<CppFileScanner> CppPreprocessor::openFile(const std::string& path) {
  auto file = std::make_unique<CppFileScanner>(path, standardInput_, lexerContext_);
  return file->openFailed() ? nullptr : std::move(file);
}

// The file has conditionals of its own: none of the includer's is open in it.
void CppPreprocessor::enterFile(std::unique_ptr<CppFileScanner> file) {
  depthStack_.push_back(condDepth_);
  condDepth_ = 0;
  pushFile(std::move(file));
  writeLineDirective();
}

}  // namespace qnpp
