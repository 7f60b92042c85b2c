// Many preprocessors in one process.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/Preprocess.h"

namespace qnpp {
namespace {

TEST(SideBySideTest, OneMayRunInsideTheRunOfAnother) {
  Preprocessor outer;
  outer.define("X=outer");
  outer.setResolver([](const IncludeRequest& request) -> std::optional<Include> {
    const Preprocessed inner = preprocess(std::string("X ") + std::string(request.name) + "\n");
    return Include{"inner", Source::ofText(inner.output)};
  });
  EXPECT_EQ(outer.run(Source::borrowing("#include <a>\nX\n"), "a.c").output,
            "#line 1 \"a.c\"\n#line 1 \"inner\"\n#line 1 \"a.c\"\n#line 2 \"a.c\"\nouter a\n#line 2 \"a.c\"\nouter\n");
}

}  // namespace
}  // namespace qnpp
