// Tables of whole runs.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/support/Preprocess.h"

namespace qnpp {

/// A source, and what comes out behind the first line directive.
struct RunRow {
  const char* source;
  const char* output;
  const char* messages = "";
};

template <std::size_t Count>
void expectRuns(const RunRow (&rows)[Count]) {
  for (const RunRow& row : rows) {
    const Preprocessed run = preprocess(row.source);
    EXPECT_EQ(run.output, std::string(kFirstLine) + row.output) << row.source;
    EXPECT_EQ(run.messages, row.messages) << row.source;
  }
}

}  // namespace qnpp
