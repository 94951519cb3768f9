// The bundled last-error code: one for each thread.
#include <gtest/gtest.h>
#include <korvan/platform/last_error.h>

#include <thread>

namespace {

TEST(LastError, IsZeroInAThreadThatSetNone) {
  unsigned int found = 1;
  std::thread([&] { found = GetLastError(); }).join();
  EXPECT_EQ(found, 0u);
}

TEST(LastError, IsTheCodeThatWasSetLast) {
  SetLastError(0x8009000E);
  SetLastError(87);
  EXPECT_EQ(GetLastError(), 87u);
}

TEST(LastError, StaysWhenItIsRead) {
  SetLastError(0xFFFFFFFF);
  EXPECT_EQ(GetLastError(), 0xFFFFFFFF);
  EXPECT_EQ(GetLastError(), 0xFFFFFFFF);
}

TEST(LastError, IsTheThreadsOwn) {
  SetLastError(87);
  std::thread([] { SetLastError(0x80090003); }).join();
  EXPECT_EQ(GetLastError(), 87u);
}

}  // namespace
