# cmake -DINCLUDE_DIR=... -DWORK_DIR=... -DCOMPILERS=... -P HeaderTest.cmake: the public headers can be used by a program in
# C++17, and draw no warning there.

set(source "${WORK_DIR}/user.cpp")
file(WRITE "${source}" "
#include <qnpp/preprocessor.h>
int main() {
  qnpp::Preprocessor preprocessor;
  preprocessor.define(\"A=1\");
  preprocessor.setResolver([](const qnpp::IncludeRequest& request) -> std::optional<qnpp::Include> {
    return qnpp::Include{std::string(request.name), qnpp::Source::ofReader([](char*, std::size_t) { return 0; })};
  });
  preprocessor.setDiagnosticSink([](const qnpp::Diagnostic&) {});
  preprocessor.setOutputSink([](std::string_view) {});
  const qnpp::Result result = preprocessor.run(qnpp::Source::ofText(\"A\"), \"a\");
  return result.lineMap.find(1).line;
}
")
foreach(compiler IN LISTS COMPILERS)
  execute_process(COMMAND "${compiler}" -std=c++17 -Wall -Wextra -pedantic -Werror "-I${INCLUDE_DIR}" -fsyntax-only "${source}"
                  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endforeach()
