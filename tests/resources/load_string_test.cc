// The string table: every text, cut and whole, and its errors.
#include <gtest/gtest.h>
#include <korvan/cryptoapi.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <climits>
#include <cstring>
#include <string>
#include <thread>

#include "resources/expected_texts.h"
#include "support/untouched_error.h"

namespace korvan::test {
namespace {

// A buffer larger than any text, filled with what no text holds.
std::string Filled() { return std::string(300, '#'); }

TEST(LoadString, ATextIsCopiedButNeverATerminator) {
  std::string buffer(12, '#');
  EXPECT_EQ(LoadString_korvan(nullptr, 8048, &buffer[0], 12), 11);
  EXPECT_EQ(buffer, "Common Name#");
}

TEST(LoadString, ExactlyTheStatedTextsAreKnown) {
  EXPECT_EQ(kExpectedTexts.size(), 169u);
  for (unsigned int id = 0; id < 0x20000; ++id) {
    std::string buffer = Filled();
    SetLastError(kUntouchedError);
    const int length = LoadString_korvan(nullptr, id, &buffer[0], 300);
    const auto text = kExpectedTexts.find(id);
    if (text == kExpectedTexts.end()) {
      ASSERT_EQ(length, 0) << id;
      ASSERT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << id;
    } else {
      ASSERT_EQ(buffer.substr(0, static_cast<std::size_t>(length)),
                text->second);
      ASSERT_EQ(GetLastError(), kUntouchedError) << id;
    }
  }
}

TEST(LoadString, NoMoreThanTheSizeIsCopiedAndNothingBeyondIsTouched) {
  for (const auto& [id, text] : kExpectedTexts) {
    const int length = static_cast<int>(text.size());
    for (int size = 0; size <= length + 3; ++size) {
      const int copied = size < length ? size : length;
      std::string expected = Filled();
      expected.replace(0, static_cast<std::size_t>(copied), text, 0,
                       static_cast<std::size_t>(copied));
      std::string buffer = Filled();
      SetLastError(kUntouchedError);
      ASSERT_EQ(LoadString_korvan(nullptr, id, &buffer[0], size), copied);
      ASSERT_EQ(buffer, expected) << id << ", size " << size;
      ASSERT_EQ(GetLastError(), kUntouchedError);
    }
  }
}

TEST(LoadString, ANegativeSizeSetsNoLimit) {
  for (const auto& [id, text] : kExpectedTexts) {
    for (int size : {-1, -2, -255, INT_MIN}) {
      std::string expected = Filled();
      expected.replace(0, text.size(), text);
      std::string buffer = Filled();
      SetLastError(kUntouchedError);
      ASSERT_EQ(LoadString_korvan(nullptr, id, &buffer[0], size),
                static_cast<int>(text.size()));
      ASSERT_EQ(buffer, expected) << id << ", size " << size;
      ASSERT_EQ(GetLastError(), kUntouchedError);
    }
  }
}

TEST(LoadString, ASizeOf0CopiesNothingAndIsNoError) {
  char buffer = '#';
  SetLastError(kUntouchedError);
  EXPECT_EQ(LoadString_korvan(nullptr, 8048, &buffer, 0), 0);
  EXPECT_EQ(buffer, '#');
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

TEST(LoadString, AnUnknownNumberZeroesTheFirstByteWhateverTheSize) {
  for (unsigned int id :
       {0u, 4u, 8031u, 8526u, 8601u, 0x80000001u, 0xFFFFFFFFu}) {
    for (int size : {-1, INT_MIN, 0, 1, 100, INT_MAX}) {
      char buffer[2] = {'#', '#'};
      SetLastError(kUntouchedError);
      EXPECT_EQ(LoadString_korvan(nullptr, id, buffer, size), 0);
      EXPECT_EQ(buffer[0], '\0');
      EXPECT_EQ(buffer[1], '#');
      EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
  }
}

TEST(LoadString, ANullBufferIsRefused) {
  for (unsigned int id : {8048u, 0u}) {
    for (int size : {-1, 0, 100}) {
      SetLastError(kUntouchedError);
      EXPECT_EQ(LoadString_korvan(nullptr, id, nullptr, size), 0);
      EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
  }
}

TEST(LoadString, TheModuleIsIgnored) {
  char buffer[12] = {};
  EXPECT_EQ(LoadString_korvan(buffer, 8048, buffer, 11), 11);
  EXPECT_STREQ(buffer, "Common Name");
}

TEST(LoadString, OddTextsStayAsTheyAreKnown) {
  char buffer[64] = {};
  EXPECT_EQ(LoadString_korvan(nullptr, 2, buffer, 63), 19);
  EXPECT_STREQ(buffer, "%1!s!\n\n%2!u!: %3!s!");
  EXPECT_EQ(LoadString_korvan(nullptr, 56, buffer, 63), 34);
  EXPECT_STREQ(buffer, "GOST R 34.10 - 94  Quorin Ver. 2.8");
}

TEST(LoadString, AFailureSetsTheLastErrorOfItsOwnThreadOnly) {
  SetLastError(kUntouchedError);
  unsigned int set_there = 0;
  std::thread([&] {
    LoadString_korvan(nullptr, 8048, nullptr, 0);
    set_there = GetLastError();
  }).join();
  EXPECT_EQ(set_there, ERROR_INVALID_PARAMETER);
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

}  // namespace
}  // namespace korvan::test
