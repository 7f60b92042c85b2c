// Where a lexer writes to in tests.
#pragma once

#include <string>
#include <string_view>

#include "lexer/Messages.h"
#include "lexer/OutputBuffer.h"

namespace qnpp {

/// Keeps what is written to it.
class KeptText final : public TextSink {
 public:
  void write(std::string_view text) override { text_.append(text); }
  const std::string& str() const { return text_; }
  void clear() { text_.clear(); }

 private:
  std::string text_;
};

/// Keeps the messages of a lexer, as the program writes them.
class KeptMessages final : public MessageSink {
 public:
  const std::string& str() const { return text_; }
  void clear() { text_.clear(); }

 private:
  void deliver(Message message, std::string_view detail) override {
    text_.append(detail).append(": ").append(entryOf(message).text).append(".\n");
  }

  std::string text_;
};

}  // namespace qnpp
