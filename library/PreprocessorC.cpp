// The interface for C, made of the one for C++.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qnpp/preprocessor-c.h"
#include "qnpp/preprocessor.h"

static_assert(QnFatalError == static_cast<int>(qnpp::Severity::FatalError));
static_assert(QnDivisionByZero == static_cast<int>(qnpp::Status::DivisionByZero));
static_assert(QnCallbackFailed == static_cast<int>(qnpp::Status::CallbackFailed));
static_assert(QnTime == static_cast<int>(qnpp::Limit::Time));

struct QnPreprocessor {
  qnpp::Preprocessor preprocessor;
  qnpp::Result result;
};

// An exception does not go through a function of the caller, who may have been compiled without a way for it. It waits
// here until that function has returned.
struct QnInclude {
  std::optional<qnpp::Include> found;
  std::exception_ptr exception;

  template <typename Find>
  void set(Find find) noexcept {
    try {
      found = find();
    } catch (...) {
      exception = std::current_exception();
    }
  }
};

namespace {

// What ends a run because a function of the caller wants it.
struct Refused {};

void endIf(int refusal) {
  if (refusal != 0) {
    throw Refused();
  }
}

// Texts that end in NUL, for as long as the object lives.
class Texts {
 public:
  explicit Texts(std::size_t most) { texts_.reserve(most); }

  const char* add(std::string_view text) { return texts_.emplace_back(text).c_str(); }
  QnPlace add(const qnpp::Place& place) { return {add(place.file), place.line}; }

 private:
  std::vector<std::string> texts_;
};

qnpp::Resolver resolverOf(QnResolver resolver, void* context) {
  return [resolver, context](const qnpp::IncludeRequest& request) {
    Texts texts(3);
    const QnIncludeRequest asked = {texts.add(request.name), request.isQuoted ? 1 : 0, texts.add(request.place),
                                    texts.add(request.includerPath)};
    QnInclude include;
    endIf(resolver(context, &asked, &include));
    if (include.exception != nullptr) {
      std::rethrow_exception(include.exception);
    }
    return std::move(include.found);
  };
}

qnpp::DiagnosticSink sinkOf(QnDiagnosticSink sink, void* context) {
  return [sink, context](const qnpp::Diagnostic& diagnostic) {
    Texts texts(4 + diagnostic.includeChainSize);
    std::vector<QnPlace> chain;
    for (std::size_t i = 0; i < diagnostic.includeChainSize; ++i) {
      chain.push_back(texts.add(diagnostic.includeChain[i]));
    }
    const QnDiagnostic told = {static_cast<int>(diagnostic.severity),
                               texts.add(diagnostic.identifier),
                               texts.add(diagnostic.place),
                               texts.add(diagnostic.message),
                               texts.add(diagnostic.text),
                               chain.data(),
                               chain.size()};
    endIf(sink(context, &told));
  };
}

qnpp::OutputSink sinkOf(QnOutputSink sink, void* context) {
  return [sink, context](std::string_view block) { endIf(sink(context, block.data(), block.size())); };
}

// A limit that no counter reaches is none.
template <typename Number>
Number limitOf(std::uint64_t limit) {
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
  return static_cast<Number>(std::min(limit, kMost));
}

// Nothing throws here but for want of memory: the run itself says what went wrong by its status.
template <typename MakeSource>
int run(QnPreprocessor* preprocessor, const char* name, MakeSource makeSource) noexcept {
  if (preprocessor == nullptr) {
    return QnOutOfMemory;
  }
  preprocessor->result = qnpp::Result();
  try {
    preprocessor->result = preprocessor->preprocessor.run(makeSource(), name == nullptr ? "" : name);
  } catch (...) {
    preprocessor->result.status = qnpp::Status::OutOfMemory;
    preprocessor->result.hasErrors = true;
  }
  return static_cast<int>(preprocessor->result.status);
}

}  // namespace

QnPreprocessor* QnNewPreprocessor() {
  return std::unique_ptr<QnPreprocessor>(new (std::nothrow) QnPreprocessor).release();
}

void QnFreePreprocessor(QnPreprocessor* preprocessor) { const std::unique_ptr<QnPreprocessor> owner(preprocessor); }

void QnDefine(QnPreprocessor* preprocessor, const char* definition) {
  if (preprocessor != nullptr) {
    preprocessor->preprocessor.define(definition);
  }
}

void QnAddIncludeDirectory(QnPreprocessor* preprocessor, const char* directory) {
  if (preprocessor != nullptr) {
    preprocessor->preprocessor.addIncludeDirectory(directory);
  }
}

// A closure of two pointers is kept in the std::function itself, so that making one cannot fail.
void QnSetResolver(QnPreprocessor* preprocessor, QnResolver resolver, void* context) {
  if (preprocessor != nullptr) {
    preprocessor->preprocessor.setResolver(resolver == nullptr ? nullptr : resolverOf(resolver, context));
  }
}

void QnSetDiagnosticSink(QnPreprocessor* preprocessor, QnDiagnosticSink sink, void* context) {
  if (preprocessor != nullptr) {
    preprocessor->preprocessor.setDiagnosticSink(sink == nullptr ? nullptr : sinkOf(sink, context));
  }
}

void QnSetOutputSink(QnPreprocessor* preprocessor, QnOutputSink sink, void* context) {
  if (preprocessor != nullptr) {
    preprocessor->preprocessor.setOutputSink(sink == nullptr ? nullptr : sinkOf(sink, context));
  }
}

void QnSetLimits(QnPreprocessor* preprocessor, const QnLimits* limits) {
  if (preprocessor == nullptr) {
    return;
  }
  qnpp::Limits wanted;
  wanted.includeDepth = limitOf<std::size_t>(limits->includeDepth);
  wanted.expansionWork = limits->expansionWork;
  wanted.outputBytes = limits->outputBytes;
  wanted.time = std::chrono::milliseconds(limitOf<std::chrono::milliseconds::rep>(limits->milliseconds));
  preprocessor->preprocessor.setLimits(wanted);
}

void QnSetLineDirectives(QnPreprocessor* preprocessor, int areWritten) {
  if (preprocessor != nullptr) {
    preprocessor->preprocessor.setLineDirectives(areWritten != 0);
  }
}

void QnSetDependencies(QnPreprocessor* preprocessor, int areWanted) {
  if (preprocessor != nullptr) {
    preprocessor->preprocessor.setDependencies(areWanted != 0);
  }
}

void QnSetLineMap(QnPreprocessor* preprocessor, int isWanted) {
  if (preprocessor != nullptr) {
    preprocessor->preprocessor.setLineMap(isWanted != 0);
  }
}

void QnIncludeText(QnInclude* include, const char* path, const char* text, size_t size) {
  include->set([&] { return qnpp::Include{path, qnpp::Source::ofText(std::string(text, size))}; });
}

void QnIncludeFile(QnInclude* include, const char* path) {
  include->set([&] { return qnpp::Include{path, qnpp::Source::ofFile(path)}; });
}

int QnRunText(QnPreprocessor* preprocessor, const char* text, size_t size, const char* name) {
  return run(preprocessor, name, [&] { return qnpp::Source::borrowing({text, size}); });
}

int QnRunFile(QnPreprocessor* preprocessor, const char* path, const char* name) {
  return run(preprocessor, name, [&] { return qnpp::Source::ofFile(path); });
}

void QnCancel(QnPreprocessor* preprocessor) {
  if (preprocessor != nullptr) {
    preprocessor->preprocessor.cancel();
  }
}

const char* QnGetOutput(const QnPreprocessor* preprocessor, size_t* size) {
  if (size != nullptr) {
    *size = preprocessor == nullptr ? 0 : preprocessor->result.output.size();
  }
  return preprocessor == nullptr ? "" : preprocessor->result.output.c_str();
}

int QnHasErrors(const QnPreprocessor* preprocessor) {
  return preprocessor == nullptr || preprocessor->result.hasErrors ? 1 : 0;
}

int QnGetLimit(const QnPreprocessor* preprocessor) {
  return preprocessor == nullptr ? QnNoLimit : static_cast<int>(preprocessor->result.limit);
}

QnPlace QnGetEnd(const QnPreprocessor* preprocessor) {
  return preprocessor == nullptr ? QnPlace{"", 0}
                                 : QnPlace{preprocessor->result.endFile.c_str(), preprocessor->result.endLine};
}

QnPlace QnGetEndInclude(const QnPreprocessor* preprocessor, size_t index) {
  if (preprocessor == nullptr || index >= preprocessor->result.endIncludes.size()) {
    return {"", 0};
  }
  const auto& [file, line] = preprocessor->result.endIncludes[index];
  return {file.c_str(), line};
}

size_t QnCountDependencies(const QnPreprocessor* preprocessor) {
  return preprocessor == nullptr ? 0 : preprocessor->result.dependencies.size();
}

const char* QnGetDependency(const QnPreprocessor* preprocessor, size_t index) {
  return index < QnCountDependencies(preprocessor) ? preprocessor->result.dependencies[index].path.c_str() : nullptr;
}

// The name is one of `files`, and a std::string ends in NUL.
QnPlace QnFindLine(const QnPreprocessor* preprocessor, uint64_t outputLine) {
  if (preprocessor == nullptr) {
    return {"", 0};
  }
  const qnpp::Place place = preprocessor->result.lineMap.find(outputLine);
  return {place.file.data(), place.line};
}
