// qnpp once more, but for one thing: the text that it writes is put together from what a Recorder has written down.

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "driver/Driver.h"
#include "engine/CppPreprocessor.h"
#include "tools/explain/Recorder.h"

int main(int argc, char** argv) {
  qnpp::Driver driver(std::cout, std::cerr);
  const auto preprocessor = std::make_unique<qnpp::CppPreprocessor>(std::cerr, std::cin);
  qnpp::Recorder recorder("");
  preprocessor->setObserver(recorder);
  bool isDividedByZero = false;
  int status = 1;
  if (driver.prepare(argc, argv, *preprocessor)) {
    std::ostream discarded(nullptr);
    preprocessor->setOutput(discarded);
    try {
      status = preprocessor->run() ? 1 : 0;
    } catch (const qnpp::FatalLexerError&) {
      status = 2;
    } catch (const qnpp::DivisionByZero&) {
      isDividedByZero = true;
    }
    driver.textOutput() << qnpp::textOf(recorder.finish().output());
  }
  driver.flush();
  if (isDividedByZero) {
    static_cast<void>(std::raise(SIGFPE));
  }
  return status;
}
