// __FILE__, __LINE__, __DATE__ and __TIME__.
#include <array>
#include <ctime>
#include <string>

#include "engine/CppPreprocessor.h"

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
  // "Sat Mar  5 10:20:30 2016\n": the C library's form has fixed columns.
  const std::string form(text.data());
  return {form.substr(4, 7) + form.substr(20, 4), form.substr(11, 8)};
}

}  // namespace

void CppPreprocessor::definePredefinedMacros() {
  const DateAndTime now = localDateAndTime();
  macroTable_.defineFromCommandLine("__FILE__", "");
  macroTable_.defineFromCommandLine("__LINE__", "");
  macroTable_.defineFromCommandLine("__DATE__", now.date);
  macroTable_.defineFromCommandLine("__TIME__", now.time);
  fileName_ = names_.find("__FILE__");
  lineName_ = names_.find("__LINE__");
}

// Brings the text of __FILE__ or __LINE__ up to date. It stays stored, so a later definition is compared with the value
// of the last use. Only the name counts: a definition of the source's own is overwritten too.
void CppPreprocessor::refreshPredefined(const Name& name) {
  if (&name == fileName_) {
    name.macro->text = '"' + currentFile_->fileName() + '"';
  } else if (&name == lineName_) {
    name.macro->text = std::to_string(currentFile_->line());
  }
}

}  // namespace qnpp
