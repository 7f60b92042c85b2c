#include "macros/Predefined.h"

#include <array>
#include <ctime>
#include <string>

namespace qnpp {
namespace {

struct DateAndTime {
  std::string date;  // "Mar  5 2016"
  std::string time;  // "hh:mm:ss"
};

DateAndTime localDateAndTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  std::array<char, 26> text{};
  if (localtime_r(&now, &local) == nullptr || asctime_r(&local, text.data()) == nullptr) {
    return {};
  }
  // "Sat Mar  5 10:20:30 2016\n": the C library's form has fixed columns. That of Windows has a zero before the 5.
  std::string form(text.data());
  if (form[8] == '0') {
    form[8] = ' ';
  }
  return {form.substr(4, 7) + form.substr(20, 4), form.substr(11, 8)};
}

}  // namespace

PredefinedMacros::PredefinedMacros(CppMacroTable& table, NameTable& names)
    : file_(names.intern("__FILE__")), line_(names.intern("__LINE__")) {
  const DateAndTime now = localDateAndTime();
  file_->isRefreshed = line_->isRefreshed = true;
  table.defineFromCommandLine(file_->text(), "");
  table.defineFromCommandLine(line_->text(), "");
  table.defineFromCommandLine("__DATE__", now.date);
  table.defineFromCommandLine("__TIME__", now.time);
}

void PredefinedMacros::refresh(const Name& name, const CppFileScanner& file) {
  if (name.isRefreshed) {
    std::string& text = &name == file_ ? fileText_ : lineText_;
    name.macro->text = text = textOf(name, file);
  }
}

std::string PredefinedMacros::textOf(const Name& name, const CppFileScanner& file) const {
  return &name == file_ ? '"' + file.fileName() + '"' : std::to_string(file.line());
}

}  // namespace qnpp
