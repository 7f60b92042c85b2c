// Token streams without a preprocessor around them.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "lexer/CppFileScanner.h"
#include "lexer/InputFile.h"
#include "lexer/Messages.h"
#include "lexer/TokenStream.h"
#include "tests/unit/support/Spellings.h"
#include "tests/unit/support/TokenDump.h"

namespace qnpp {

/// A stream, and one file in it that holds the text. Spellings made by `spell` live as long as the setting; those that
/// the stream is to own are made by `stream.spell`.
struct StreamSetting final : SpellingSetting, TokenStream::Listener {
  explicit StreamSetting(std::string_view text = "") { pushText(text); }

  /// Makes `text`, which is borrowed, a file of the stream.
  void pushText(std::string_view text, const std::string& name = "a.c") {
    auto input = std::make_unique<InputText>();
    input->reset(text);
    stream.pushFile(std::make_unique<CppFileScanner>(name, std::move(input), context));
  }

  void push(std::initializer_list<std::string_view> texts, const HideSet& hideSet = {}) {
    TokenList list = listOf(texts, hideSet);
    stream.push(list);
  }

  /// Takes the next token: its text, and the hide set if it is not empty, as in "a{AB}"; the kind for an end.
  std::string take() {
    const CppTokenKind kind = stream.get();
    if (kind == TK_END) {
      return "END";
    }
    const std::string letters = lettersOf(stream.hideSet());
    return visible(stream.text()) + (letters.empty() ? "" : "{" + letters + "}");
  }
  /// What is left up to the end, tokens apart by "|".
  std::string takeAll() {
    std::string tokens;
    for (std::string token = take(); token != "END"; token = take()) {
      tokens += (tokens.empty() ? "" : "|") + token;
    }
    return tokens;
  }

  void fileEnded() override { events += "end of " + stream.file()->fileName() + "; "; }
  void fileResumed() override { events += "back in " + stream.file()->fileName() + "; "; }

  TokenStream stream{names, context, *this};
  std::string events;  ///< What the listener was told.
};

/// Keeps the identifiers of messages: "too-few-arguments missing-file(a.h)".
struct MessageList final : MessageSink {
  std::string identifiers;

 private:
  void deliver(Message message, std::string_view detail) override {
    identifiers.append(identifiers.empty() ? "" : " ").append(entryOf(message).identifier);
    if (!detail.empty()) {
      identifiers.append("(").append(detail).append(")");
    }
  }
};

}  // namespace qnpp
