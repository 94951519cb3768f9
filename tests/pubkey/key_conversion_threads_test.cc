// The conversions on many threads at once, the first of all calls among them.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"

namespace korvan::test {
namespace {

TEST(Threads, ConvertAndSplitAtOnce) {
  constexpr int kThreads = 8;
  std::atomic<int> ready = 0;
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      const Bytes bits =
          ModelOctetString(Bytes(64, static_cast<unsigned char>(number)));
      const Bytes parameters = Counted(static_cast<std::size_t>(number) + 1);
      const Bytes blob = ModelBlob(0x2E23, parameters, bits);
      for (++ready; ready != kThreads;) {
      }
      for (int round = 0; round < 200; ++round) {
        const Converted there = Convert(kGost2001, parameters, bits);
        const Encoded back = Encode(blob);
        if (there.blob != blob || back.key != bits ||
            back.parameters != parameters) {
          ++wrong;
        }
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(wrong, 0);
}

TEST(Threads, KeepTheirLastErrorsApart) {
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&, number] {
      for (int round = 0; round < 200; ++round) {
        const unsigned int error = number % 2 == 0
                                       ? Convert("1.2.3", {}, {}).error
                                       : Encode(Bytes{1}).error;
        wrong +=
            error == (number % 2 == 0 ? NTE_BAD_ALGID : NTE_BAD_KEY) ? 0 : 1;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace korvan::test
