#include "driver/DescriptorStream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "tests/support/Files.h"

namespace qnpp {
namespace {

TEST(DescriptorStreamTest, PipesHaveReadersAndFilesHaveNone) {
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  EXPECT_TRUE(DescriptorStream(pipe[1], DescriptorStream::Ownership::Owned).hasReader());
  ::close(pipe[0]);

  const TemporaryFolder folder;
  const std::string file = folder.write("a.out", "");
  for (const char* const name : {file.c_str(), "/dev/null"}) {
    DescriptorStream stream(::open(name, O_WRONLY), DescriptorStream::Ownership::Owned);
    EXPECT_FALSE(stream.hasReader()) << name;
    stream << "text";
    EXPECT_TRUE(stream.good()) << name;
  }
  EXPECT_EQ(folder.read("a.out"), "text");
}

}  // namespace
}  // namespace qnpp
