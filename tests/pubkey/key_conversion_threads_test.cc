// The conversions on many threads at once, the first of all calls among them.
#include <gtest/gtest.h>
#include <korvan/platform/last_error.h>

#include <atomic>
#include <cstddef>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/together.h"

namespace korvan::test {
namespace {

TEST(ConversionThreads, ThreadsConvertAndSplitTheirOwnKeysAtOnce) {
  std::atomic<int> wrong = 0;
  RunTogether(8, [&](int number) {
    const Bytes bits =
        ModelOctetString(Bytes(64, static_cast<unsigned char>(number)));
    const Bytes parameters = Counted(static_cast<std::size_t>(number) + 1);
    const Bytes blob = ModelBlob(0x2E23, parameters, bits);
    for (int round = 0; round < 200; ++round) {
      const Encoded back = Encode(blob);
      wrong += Convert(kGost2001, parameters, bits).blob != blob;
      wrong += back.key != bits || back.parameters != parameters;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(ConversionThreads, ThreadsWhoseConversionsFailHaveLastErrorsOfTheirOwn) {
  constexpr int kThreads = 4;
  MeetingPoint all_have_failed(kThreads);
  std::atomic<int> wrong = 0;
  RunTogether(kThreads, [&](int number) {
    const bool is_conversion = number % 2 == 0;
    if (is_conversion) {
      Convert("1.2.3", {}, {});
    } else {
      Encode(Bytes{1});
    }
    all_have_failed.Meet();
    wrong += GetLastError() != (is_conversion ? NTE_BAD_ALGID : NTE_BAD_KEY);
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace korvan::test
