// #if, #ifdef, #ifndef, #elif, #else and #endif.
#include "engine/Sources.h"

namespace qnpp {

// Returns false inside a skipped group: the conditional is only counted there, and its line means nothing.
bool CppPreprocessor::openConditional() {
  ++condDepth_;
  stateStack_.push_back(condState_);
  skipStack_.push_back(skipping_);
  if (skipping_) {
    condState_ = CppCondState::Inactive;
    discardLine();
    return false;
  }
  return true;
}

void CppPreprocessor::setGroup(bool taken) {
  skipping_ = !taken;
  condState_ = taken ? CppCondState::Taken : CppCondState::Pending;
}

void CppPreprocessor::handleIf() {
  if (openConditional()) {
    evaluateCondition();
  }
}

// A condition that cannot be evaluated counts as false.
void CppPreprocessor::evaluateCondition() {
  InFlight inFlight(*this);
  {
    inCondition_ = true;
    readOperand();
    inCondition_ = false;
    const ClosedSource source(*this, operand_);
    CppExprValue value;
    bool ok = true;
    evaluate(value, ok);
    setGroup(ok && value.value != 0);
    if (ok) {
      checkEndOfOperand();
    }
  }
  nextToken();  // The line end.
  inFlight.release();
}

void CppPreprocessor::handleIfdef(bool wantDefined) {
  if (!openConditional()) {
    return;
  }
  skipBlanks();
  if (!isName(peekToken())) {
    reportError(wantDefined ? "An identifier is expected after \"#ifdef\""
                            : "An identifier is expected after \"#ifndef\"");
    discardLine();
    setGroup(false);
    return;
  }
  nextToken();
  const Name* const name = currentName();
  const bool isDefined = name != nullptr && name->macro != nullptr;
  setGroup(isDefined == wantDefined);
  skipBlanks();
  if (peekToken() == TK_NEWLINE) {
    nextToken();
  } else if (peekToken() != TK_END) {
    // What is left is the next line of the run loop: written when the group is taken.
    reportError("Invalid characters appear before a new-line in the preprocessor directive");
  }
}

void CppPreprocessor::handleElif() {
  if (condDepth_ == 0) {
    reportError("No \"#if\" directive associated to \"elif\"");
    discardLine();
    return;
  }
  switch (condState_) {
    case CppCondState::AfterElse:
      reportError("Cannot use an \"#elif\" directive after an \"#else\"");
      discardLine();
      break;
    case CppCondState::Inactive:
      discardLine();
      break;
    case CppCondState::Taken:
      discardLine();  // Not even evaluated: its errors are not reported.
      skipping_ = true;
      break;
    case CppCondState::Pending:
      evaluateCondition();
      break;
  }
}

// #else and #endif read nothing behind their word: the rest of the line is the next line of the run loop, so that it is
// written as text when the group it then stands in is taken, and leaves an empty line when there is nothing.
void CppPreprocessor::handleElse() {
  if (condDepth_ == 0) {
    reportError("No \"#if\" directive associated to \"#else\"");
    return;
  }
  switch (condState_) {
    case CppCondState::AfterElse:
      reportError("Cannot use another \"#else\" directive after an \"#else\"");
      return;
    case CppCondState::Taken:
      skipping_ = true;
      break;
    case CppCondState::Pending:
      skipping_ = false;
      break;
    case CppCondState::Inactive:
      break;
  }
  condState_ = CppCondState::AfterElse;
}

void CppPreprocessor::handleEndif() {
  if (condDepth_ == 0) {
    reportError("No \"#if\" directive associated to \"#endif\"");
    return;
  }
  closeConditional();
}

void CppPreprocessor::closeConditional() {
  skipping_ = skipStack_.back();
  skipStack_.pop_back();
  condState_ = stateStack_.back();
  stateStack_.pop_back();
  --condDepth_;
}

// A file has ended: its conditionals end with it, and those of the file that included it are open again.
void CppPreprocessor::checkEndOfFile() {
  if (condDepth_ > 0) {
    reportError("Unterminated \"#if\" conditional");
  }
  while (condDepth_ > 0) {
    closeConditional();
  }
  if (!depthStack_.empty()) {
    condDepth_ = depthStack_.back();
    depthStack_.pop_back();
  }
}

}  // namespace qnpp
