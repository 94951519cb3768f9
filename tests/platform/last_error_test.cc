// The last-error code as any platform has to keep it: built with the bundled
// one and with a host's own.
#include <gtest/gtest.h>
#include <korvan/cryptoapi.h>
#include <korvan/platform/last_error.h>

#include <thread>

namespace {

TEST(LastError, TheLastErrorOfAThreadThatSetNoneIsZero) {
  unsigned int found = 1;
  std::thread([&] { found = GetLastError(); }).join();
  EXPECT_EQ(found, 0u);
}

TEST(LastError, TheLastErrorIsTheCodeThatWasSetLast) {
  SetLastError(NTE_NO_MEMORY);
  SetLastError(ERROR_INVALID_PARAMETER);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(LastError, AnyCodeCanBeTheLastError) {
  for (const unsigned int code : {0u, 1u, 0x80090008u, 0xFFFFFFFFu}) {
    SetLastError(code);
    EXPECT_EQ(GetLastError(), code);
  }
}

TEST(LastError, ReadingTheLastErrorDoesNotResetIt) {
  for (const unsigned int code : {0u, 1u, 0x80090008u, 0xFFFFFFFFu}) {
    SetLastError(code);
    GetLastError();
    EXPECT_EQ(GetLastError(), code);
  }
}

TEST(LastError, EveryThreadHasALastErrorOfItsOwn) {
  SetLastError(ERROR_INVALID_PARAMETER);
  unsigned int set_there = 0;
  std::thread([&] {
    SetLastError(NTE_BAD_KEY);
    set_there = GetLastError();
  }).join();
  EXPECT_EQ(set_there, NTE_BAD_KEY);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

}  // namespace
