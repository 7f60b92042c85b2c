#include <atomic>
#include <new>
#include <utility>

#include "library/Run.h"
#include "qnpp/preprocessor.h"

namespace qnpp {

struct Preprocessor::State {
  Settings settings;
  bool isIncomplete = false;  // There was no memory for a setting.
  std::atomic<bool> isCancelled{false};

  // Carries out a setting.
  template <typename Set>
  void set(Set set) noexcept {
    try {
      set(settings);
    } catch (...) {  // Nothing but memory, or a length that cannot be had, makes copying and moving fail.
      isIncomplete = true;
    }
  }
};

Preprocessor::Preprocessor() noexcept : state_(new (std::nothrow) State) {}
Preprocessor::~Preprocessor() = default;
Preprocessor::Preprocessor(Preprocessor&& other) noexcept = default;
Preprocessor& Preprocessor::operator=(Preprocessor&& other) noexcept = default;

void Preprocessor::define(std::string_view definition) noexcept {
  if (state_ != nullptr) {
    state_->set([&](Settings& settings) { settings.definitions.emplace_back(definition); });
  }
}

void Preprocessor::addIncludeDirectory(std::string_view directory) noexcept {
  if (state_ != nullptr) {
    state_->set([&](Settings& settings) { settings.includeDirectories.emplace_back(directory); });
  }
}

void Preprocessor::setResolver(Resolver resolver) noexcept {
  if (state_ != nullptr) {
    state_->set([&](Settings& settings) { settings.resolver = std::move(resolver); });
  }
}

void Preprocessor::setDiagnosticSink(DiagnosticSink sink) noexcept {
  if (state_ != nullptr) {
    state_->set([&](Settings& settings) { settings.diagnosticSink = std::move(sink); });
  }
}

void Preprocessor::setOutputSink(OutputSink sink) noexcept {
  if (state_ != nullptr) {
    state_->set([&](Settings& settings) { settings.outputSink = std::move(sink); });
  }
}

void Preprocessor::setLimits(const Limits& limits) noexcept {
  if (state_ != nullptr) {
    state_->settings.limits = limits;
  }
}

void Preprocessor::setLineDirectives(bool areWritten) noexcept {
  if (state_ != nullptr) {
    state_->settings.writesLineDirectives = areWritten;
  }
}

void Preprocessor::setDependencies(bool areWanted) noexcept {
  if (state_ != nullptr) {
    state_->settings.wantsDependencies = areWanted;
  }
}

void Preprocessor::setLineMap(bool isWanted) noexcept {
  if (state_ != nullptr) {
    state_->settings.wantsLineMap = isWanted;
  }
}

Result Preprocessor::run(Source source, std::string_view name) noexcept {
  Result result;
  if (state_ == nullptr) {
    result.status = Status::OutOfMemory;
    result.hasErrors = true;
    return result;
  }
  Run run(state_->settings, state_->isCancelled, result);
  if (state_->isIncomplete) {
    run.refuse();
  } else {
    run.preprocess(std::move(source), name);
  }
  return result;
}

void Preprocessor::cancel() noexcept {
  if (state_ != nullptr) {
    state_->isCancelled = true;
  }
}

}  // namespace qnpp
