// Messages about the source, on their way to a stream.
#pragma once

#include <ostream>
#include <string_view>

#include "lexer/Messages.h"
#include "lexer/TokenStream.h"

namespace qnpp {

/// Writes each message as one line, "name:line: message.", and flushes. The place is that of the innermost file at that
/// moment; before the first file is opened there is none.
class Diagnostics final : public MessageSink {
 public:
  /// Both are borrowed and outlive the object.
  Diagnostics(std::ostream& stream, const TokenStream& source) : stream_(stream), source_(source) {}

  /// Whether an error of any grade has been reported.
  bool hasError() const { return hasError_; }

  /// Reports Message::OutOfMemory, without asking for any.
  void reportOutOfMemory();

 private:
  void deliver(Message message, std::string_view detail) override;

  std::ostream& stream_;
  const TokenStream& source_;
  bool hasError_ = false;
};

}  // namespace qnpp
