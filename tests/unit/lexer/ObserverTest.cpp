// What is left of watching in the program, whose build has no observers.
#include "lexer/Observer.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "lexer/Spelling.h"

namespace qnpp {
namespace {

TEST(ObserverTest, LeavesNothingInTheProgram) {
  static_assert(std::is_empty_v<ObserverLink>);
  static_assert(std::is_empty_v<Origin>);
  const ObserverLink link;
  const int told = link([](Observer& /*observer*/) -> int { throw "an observer was told"; });
  EXPECT_EQ(told, 0);
}

}  // namespace
}  // namespace qnpp
