// The version is one, wherever it is told.
#include <gtest/gtest.h>
#include <korvan/version.h>

#include <string>

namespace {

TEST(Version, TheStringIsTheThreeNumbers) {
  EXPECT_EQ(KORVAN_VERSION, std::to_string(KORVAN_VERSION_MAJOR) + "." +
                                std::to_string(KORVAN_VERSION_MINOR) + "." +
                                std::to_string(KORVAN_VERSION_PATCH));
}

TEST(Version, TheBuildAndItsPackagesHaveThatOfTheHeader) {
  EXPECT_STREQ(KORVAN_VERSION, KORVAN_TEST_PROJECT_VERSION);
}

}  // namespace
