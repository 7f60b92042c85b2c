// Messages about the source, on their way to the host.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Host.h"
#include "lexer/Messages.h"
#include "lexer/TokenStream.h"

namespace qnpp {

/// Puts messages into their form, "name:line: message.", and reports each at once. The place is that of the innermost
/// file at that moment; before the first file is opened there is none.
class Diagnostics final : public MessageSink {
 public:
  /// Both are borrowed and outlive the object.
  Diagnostics(Host& host, const TokenStream& stream);

  /// Reports Message::OutOfMemory. Does without memory: what does not fit into what is there is left out, which is the
  /// outer end of a deep include chain, or the place in the text if its name is very long.
  void reportOutOfMemory();

  /// The lines that include the innermost file, innermost first; valid until the next call of any function.
  std::span<const FilePlace> findIncludeChain();

 private:
  void deliver(Message message, std::string_view detail) override;
  void findPlace(std::size_t mostIncludes);

  Host& host_;
  const TokenStream& stream_;
  // Of the message being reported. They keep some memory, for the one that there is none left.
  FilePlace place_;
  std::string text_;
  std::string printed_;
  std::vector<FilePlace> includeChain_;
};

}  // namespace qnpp
