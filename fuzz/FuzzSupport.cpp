#include "FuzzSupport.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <new>

#include "engine/CppPreprocessor.h"
#include "lexer/CppLexer.h"

namespace qnpp::fuzz {
namespace {

// Bytes that may still be allocated; no limit while it is at its largest.
std::size_t allocationBudget = SIZE_MAX;

void* allocate(std::size_t size) {
  if (allocationBudget != SIZE_MAX) {
    if (size > allocationBudget) {
      throw std::bad_alloc();
    }
    allocationBudget -= size;
  }
  void* const made = std::malloc(size > 0 ? size : 1);
  if (made == nullptr) {
    throw std::bad_alloc();
  }
  return made;
}

void print(std::string_view title, std::string_view text) {
  std::cerr << "---- " << title << " ----\n" << text << "\n";
}

}  // namespace

AllocationBudget::AllocationBudget(std::size_t bytes) { allocationBudget = bytes; }
AllocationBudget::~AllocationBudget() { allocationBudget = SIZE_MAX; }

RunResult preprocess(std::string_view source, std::size_t piece) {
  RunResult result;
  PiecewiseInput input(source, piece);
  LimitedSink output(kMostOutput);
  LimitedSink diagnostics(kMostOutput);
  try {
    const AllocationBudget budget(kMostAllocated);
    CppPreprocessor preprocessor(diagnostics, input);
    preprocessor.setOutput(output);
    preprocessor.openSource("", "");
    result.hasError = preprocessor.run();
  } catch (const DivisionByZero&) {
    result.dividesByZero = true;
  } catch (const OutputLimitReached&) {
    return {};
  } catch (const std::bad_alloc&) {
    return {};
  }
  result.output = output.text();
  result.diagnostics = diagnostics.text();
  result.isComplete = true;
  return result;
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
    print("messages of the one", a.diagnostics);
    print("messages of the other", b.diagnostics);
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

// All forms that a sanitizer's run-time library would otherwise supply, so that none of its own meets one of these.
void* operator new(std::size_t size) { return qnpp::fuzz::allocate(size); }
void* operator new[](std::size_t size) { return qnpp::fuzz::allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size > 0 ? size : 1); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size > 0 ? size : 1); }
void operator delete(void* old) noexcept { std::free(old); }
void operator delete[](void* old) noexcept { std::free(old); }
void operator delete(void* old, std::size_t) noexcept { std::free(old); }
void operator delete[](void* old, std::size_t) noexcept { std::free(old); }
void operator delete(void* old, const std::nothrow_t&) noexcept { std::free(old); }
void operator delete[](void* old, const std::nothrow_t&) noexcept { std::free(old); }
