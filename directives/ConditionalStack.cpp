#include "directives/ConditionalStack.h"

namespace qnpp {

bool ConditionalStack::open() {
  enclosing_.push_back({state_, isSkipping_});
  if (isSkipping_) {
    state_ = CppCondState::Inactive;
  }
  return !isSkipping_;
}

void ConditionalStack::setGroup(bool isTaken) {
  isSkipping_ = !isTaken;
  state_ = isTaken ? CppCondState::Taken : CppCondState::Pending;
}

ConditionalStack::Elif ConditionalStack::takeElif(std::optional<Message>& message) {
  if (!isOpen()) {
    message = Message::ElifWithoutIf;
    return Elif::Ignore;
  }
  switch (state_) {
    case CppCondState::Pending:
      return Elif::Evaluate;
    case CppCondState::Taken:
      isSkipping_ = true;
      break;
    case CppCondState::AfterElse:
      message = Message::ElifAfterElse;
      break;
    case CppCondState::Inactive:
      break;
  }
  return Elif::Ignore;
}

std::optional<Message> ConditionalStack::takeElse() {
  if (!isOpen()) {
    return Message::ElseWithoutIf;
  }
  switch (state_) {
    case CppCondState::AfterElse:
      return Message::ElseAfterElse;
    case CppCondState::Taken:
      isSkipping_ = true;
      break;
    case CppCondState::Pending:
      isSkipping_ = false;
      break;
    case CppCondState::Inactive:
      break;
  }
  state_ = CppCondState::AfterElse;
  return std::nullopt;
}

std::optional<Message> ConditionalStack::close() {
  if (!isOpen()) {
    return Message::EndifWithoutIf;
  }
  pop();
  return std::nullopt;
}

bool ConditionalStack::carryOutNested(CppTokenKind kind) {
  if (kind == TK_IF || kind == TK_IFDEF || kind == TK_IFNDEF) {
    return !open();
  }
  const bool isNested = enclosing_.back().isSkipping;
  if (!isNested || (kind != TK_ENDIF && state_ == CppCondState::AfterElse)) {
    return false;
  }
  if (kind == TK_ENDIF) {
    pop();
  } else if (kind == TK_ELSE) {
    state_ = CppCondState::AfterElse;
  }
  return true;
}

void ConditionalStack::pop() {
  isSkipping_ = enclosing_.back().isSkipping;
  state_ = enclosing_.back().state;
  enclosing_.pop_back();
}

void ConditionalStack::enterFile() {
  fileBases_.push_back(fileBase_);
  fileBase_ = enclosing_.size();
}

bool ConditionalStack::leaveFile() {
  const bool wasOpen = isOpen();
  while (isOpen()) {
    pop();
  }
  if (!fileBases_.empty()) {
    fileBase_ = fileBases_.back();
    fileBases_.pop_back();
  }
  return wasOpen;
}

}  // namespace qnpp
