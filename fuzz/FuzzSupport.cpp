#include "FuzzSupport.h"

#include <cstdlib>
#include <iostream>
#include <new>

#include "tests/support/LimitedAllocation.h"
#include "tests/support/PiecewiseInput.h"

namespace qnpp::fuzz {
namespace {

constexpr std::size_t kMostOutput = std::size_t{1} << 20;
constexpr std::size_t kMostAllocated = std::size_t{256} << 20;

void print(std::string_view title, std::string_view text) {
  std::cerr << "---- " << title << " ----\n" << text << "\n";
}

}  // namespace

RunResult runWithLimits(std::string_view source, std::size_t piece, const Run& run) {
  RunResult result;
  PiecewiseInput input(source, piece);
  const auto read = [&input](char* to, std::size_t size) {
    return input.rdbuf()->sgetn(to, static_cast<std::streamsize>(size));
  };
  LimitedSink output(kMostOutput);
  LimitedSink messages(kMostOutput);
  try {
    const LimitedAllocation limited({.bytes = kMostAllocated});
    result.status = run(read, output, messages);
  } catch (const OutputLimitReached&) {
    return {};
  } catch (const std::bad_alloc&) {
    return {};
  }
  if (result.status == Status::OutOfMemory || result.status == Status::CallbackFailed) {
    return {};
  }
  result.output = output.text();
  result.messages = messages.text();
  result.isComplete = true;
  return result;
}

RunResult preprocess(std::string_view source, std::size_t piece) {
  return runWithLimits(source, piece, [](const Reader& read, std::ostream& output, std::ostream& messages) {
    Preprocessor preprocessor;
    preprocessor.setOutputSink([&output](std::string_view block) { output << block; });
    preprocessor.setDiagnosticSink([&messages](const Diagnostic& diagnostic) { messages << diagnostic.text; });
    return preprocessor.run(Source::ofReader(read), "a.c").status;
  });
}

void require(bool holds, std::string_view rule) {
  if (!holds) {
    std::cerr << "VIOLATED: " << rule << std::endl;
    std::abort();
  }
}

void requireEqual(const RunResult& a, const RunResult& b, std::string_view rule) {
  if (a != b) {
    print("one output", a.output);
    print("the other", b.output);
    print("messages of the one", a.messages);
    print("messages of the other", b.messages);
    require(false, rule);
  }
}

void show(std::string_view source) {
  static const bool isWanted = std::getenv("QNPP_FUZZ_SHOW") != nullptr;
  if (isWanted) {
    print("source", source);
  }
}

}  // namespace qnpp::fuzz
