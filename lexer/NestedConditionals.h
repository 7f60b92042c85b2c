// What goes on in a skipped group while its lines are passed over.
#pragma once

#include "lexer/CppTokenKind.h"

namespace qnpp {

/// Is told of the conditionals within a skipped group while its lines are passed over.
class NestedConditionals {
 public:
  /// At the word of a conditional directive in a skipped group. If it belongs to a conditional within the group and is
  /// in order, it is carried out, and the answer is true; otherwise nothing has changed.
  virtual bool carryOutNested(CppTokenKind kind) = 0;

 protected:
  ~NestedConditionals() = default;
};

}  // namespace qnpp
