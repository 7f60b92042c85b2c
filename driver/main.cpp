// qnpp [options] [source_file]: one pass over one source, then exit.
//
// Status 0: no error was reported. Status 1: at least one was, or memory ran out, or the command line ended the
// program, which `--help` and `--version` do as well. Status 2: the scanner gave up, after saying so on standard error.

#include <csignal>
#include <iostream>
#include <new>
#include <stdexcept>

#include "driver/Driver.h"
#include "engine/CppPreprocessor.h"
#include "lexer/CppLexer.h"

namespace {

int preprocess(int argc, char** argv) {
  qnpp::Driver driver(std::cout, std::cerr);
  qnpp::CppPreprocessor preprocessor(std::cerr, std::cin);
  int status = 1;
  try {
    // Read the command line; open the output and the source.
    if (driver.prepare(argc, argv, preprocessor)) {
      // Preprocess.
      status = preprocessor.run() ? 1 : 0;
    }
  } catch (const qnpp::FatalLexerError&) {
    status = 2;
  } catch (const std::bad_alloc&) {
    preprocessor.reportOutOfMemory();
  } catch (const std::length_error&) {  // A container that would grow beyond what can be addressed.
    preprocessor.reportOutOfMemory();
  }
  driver.flush();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  // A reader that goes away is a failed write like any other, and those do not count: the run goes on to its end, and
  // the status says whether the source was in order.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    // Nothing here uses stdio, and reading need not push out what was written.
    std::ios::sync_with_stdio(false);
    std::cin.tie(nullptr);
    return preprocess(argc, argv);
  } catch (const std::bad_alloc&) {
    std::cerr << "FATAL ERROR: out of memory.\n";
    return 1;
  }
}
