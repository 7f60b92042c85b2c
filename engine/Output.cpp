// Line directives: they tell a later compiler which source line the next output line stands for.
#include "engine/CppPreprocessor.h"

namespace qnpp {

void CppPreprocessor::writeLineDirective() {
  const std::int32_t line = currentFile_->line();
  output_.write("#line ");
  output_.writeNumber(line);
  output_.write(" \"");
  // A backslash would be an escape to the reader of the directive, so each one is doubled.
  std::string_view name = currentFile_->fileName();
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
