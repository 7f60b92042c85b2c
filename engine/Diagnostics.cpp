#include "engine/Diagnostics.h"

#include <string>

namespace qnpp {
namespace {

constexpr std::string_view leadOf(Grade grade) {
  switch (grade) {
    case Grade::Warning:
      return "Warning: ";
    case Grade::FatalError:
      return "FATAL ERROR: ";
    default:
      return "";
  }
}

}  // namespace

// Each line goes out in one piece, so that those of programs running side by side do not mix.
void Diagnostics::deliver(Message message, std::string_view detail) {
  const Grade grade = entryOf(message).grade;
  hasError_ = hasError_ || grade != Grade::Warning;
  std::string line;
  if (const CppFileScanner* const file = source_.file()) {
    line.append(file->fileName()).append(":").append(std::to_string(file->line())).append(": ");
  }
  line.append(leadOf(grade)).append(textOf(message, detail)).append(".\n");
  stream_ << line << std::flush;
}

void Diagnostics::reportOutOfMemory() {
  hasError_ = true;
  if (const CppFileScanner* const file = source_.file()) {
    stream_ << file->fileName() << ':' << file->line() << ": ";
  }
  stream_ << leadOf(Grade::FatalError) << entryOf(Message::OutOfMemory).text << ".\n" << std::flush;
}

}  // namespace qnpp
