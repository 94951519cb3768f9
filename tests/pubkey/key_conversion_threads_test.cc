// The conversions on many threads at once, the first of all calls among them.
#include <gtest/gtest.h>

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

TEST(ConversionThreads, ThreadsWhoseConversionsFailKeepTheirLastErrorsApart) {
  std::atomic<int> wrong = 0;
  RunTogether(4, [&](int number) {
    for (int round = 0; round < 200; ++round) {
      if (number % 2 == 0) {
        wrong += Convert("1.2.3", {}, {}).error != NTE_BAD_ALGID;
      } else {
        wrong += Encode(Bytes{1}).error != NTE_BAD_KEY;
      }
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace korvan::test
