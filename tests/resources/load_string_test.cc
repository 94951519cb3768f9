#include <gtest/gtest.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <string>

namespace {

TEST(LoadString, CopiesTheTextButNeverATerminator) {
  std::string buffer(12, '#');
  EXPECT_EQ(LoadString_korvan(nullptr, 8048, buffer.data(), 12), 11);
  EXPECT_EQ(buffer, "Common Name#");
}

}  // namespace
