// Macro definitions without a preprocessor around them.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "macros/CppMacroTable.h"
#include "macros/Define.h"
#include "tests/unit/support/Streams.h"

namespace qnpp {

/// A stream, and a table of macros that are defined by lines as behind `#define`.
struct DefinitionSetting {
  explicit DefinitionSetting(const std::vector<std::string>& definitions = {}) {
    for (const std::string& definition : definitions) {
      define(definition);
    }
  }

  void define(const std::string& definition) {
    lines_.push_back(definition + "\n");
    streams.pushText(lines_.back());
    carryOutDefine(streams.stream, table, messages);
  }

  StreamSetting streams;
  CppMacroTable table{streams.names, streams.stream};
  MessageList messages;

 private:
  std::deque<std::string> lines_;
};

}  // namespace qnpp
