#include "qnpp/version.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>

namespace {

TEST(Version, HasNumbersPlatformDateRevisionAndReleaseName) {
  const std::regex form(
      R"re(\d+\.\d+\.\d+ win32 \((Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) ( [1-9]|[123][0-9]) \d{4}, )re"
      R"re([0-9a-z]+\) "[^"]+")re");
  EXPECT_TRUE(std::regex_match(QnGetVersionString(), form)) << QnGetVersionString();
  EXPECT_LE(std::strlen(QnGetLibNameAndVersionString()), 255U);
}

TEST(Version, TheLibraryTextIsTheSameWithTheName) {
  EXPECT_EQ(QnGetLibNameAndVersionString(), std::string("Quenley ") + QnGetVersionString());
}

TEST(Version, EveryCallGivesTheSameStorage) {
  EXPECT_EQ(QnGetVersionString(), QnGetVersionString());
  EXPECT_EQ(QnGetLibNameAndVersionString(), QnGetLibNameAndVersionString());
  EXPECT_EQ(QnGetCopyrightString(), QnGetCopyrightString());
}

TEST(Version, TheCopyrightIsOneLine) {
  const std::string text = QnGetCopyrightString();
  EXPECT_NE(text, "");
  EXPECT_EQ(text.find('\n'), std::string::npos);
}

}  // namespace
