// Tables of macro expansions.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Preprocess.h"

namespace qnpp {

/// A line of text under some definitions, written as behind `#define `, and what it is expanded to.
struct ExpansionRow {
  std::vector<std::string> definitions;
  std::string text;
  std::string expanded;
  std::string message = "";  ///< The only message, about the line of the text; empty for none.
};

inline void expectExpansions(const std::vector<ExpansionRow>& rows) {
  for (const ExpansionRow& row : rows) {
    std::string source;
    for (const std::string& definition : row.definitions) {
      source += "#define " + definition + "\n";
    }
    const std::string line = std::to_string(row.definitions.size() + 1);
    const Preprocessed run = preprocess(source + row.text + "\n");
    EXPECT_EQ(run.output, kFirstLine + ("#line " + line + " \"a.c\"\n") + row.expanded + "\n") << source << row.text;
    EXPECT_EQ(run.messages, row.message.empty() ? "" : "a.c:" + line + ": " + row.message + ".\n")
        << source << row.text;
  }
}

}  // namespace qnpp
