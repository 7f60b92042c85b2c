// Scopes over the stack of token sources; for the parts of CppPreprocessor only.
#pragma once

#include <cstddef>

#include "engine/CppPreprocessor.h"

namespace qnpp {

/// While one lives, spellings of the pool are in use outside of the sources: arguments, operands, results. What the
/// pool holds for sources that end meanwhile is given back later.
class CppPreprocessor::InFlight {
 public:
  explicit InFlight(CppPreprocessor& preprocessor) : preprocessor_(preprocessor) {
    if (preprocessor_.inFlight_++ == 0) {
      preprocessor_.inFlightMark_ = preprocessor_.pool_.mark();
    }
  }
  InFlight(const InFlight&) = delete;
  InFlight& operator=(const InFlight&) = delete;
  ~InFlight() { --preprocessor_.inFlight_; }

  /// Gives back everything made meanwhile; nothing of it may be in use.
  void release() {
    if (preprocessor_.inFlight_ == 1) {
      preprocessor_.pool_.release(preprocessor_.inFlightMark_);
    }
  }

 private:
  CppPreprocessor& preprocessor_;
};

/// Makes `tokens`, taken out of the list, the current source and sets the enclosing ones aside: its end reads as the
/// end of the input. The destructor drops it and brings the others back.
class CppPreprocessor::ClosedSource {
 public:
  ClosedSource(CppPreprocessor& preprocessor, TokenList& tokens)
      : preprocessor_(preprocessor), floor_(preprocessor.pushClosed(tokens)) {}
  ClosedSource(const ClosedSource&) = delete;
  ClosedSource& operator=(const ClosedSource&) = delete;
  ~ClosedSource() {
    preprocessor_.isCollecting_ = false;  // It is set only when memory ran out while arguments were read.
    preprocessor_.openSources(floor_);
  }

 private:
  CppPreprocessor& preprocessor_;
  std::size_t floor_;
};

}  // namespace qnpp
