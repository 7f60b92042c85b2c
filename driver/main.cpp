// qnpp [options] [source_file]: one pass over one source, then exit.
//
// Status 0: no error was reported. Status 1: at least one was, or the command line ended the program, which `--help`
// and
// `--version` do as well. Status 2: the scanner gave up on a token, after saying so on standard error.

#include <iostream>

#include "driver/Driver.h"
#include "engine/CppPreprocessor.h"
#include "lexer/CppLexer.h"

int main(int argc, char** argv) {
  // Nothing here uses stdio, and reading need not push out what was written.
  std::ios::sync_with_stdio(false);
  std::cin.tie(nullptr);

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
  }
  driver.flush();
  return status;
}
