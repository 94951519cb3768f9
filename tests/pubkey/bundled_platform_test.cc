// What holds with the platform library alone: no heap beyond the outputs.
#include <gtest/gtest.h>
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <cstdlib>
#include <thread>
#include <vector>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/heap_watch.h"

namespace korvan::test {
namespace {

using Sizes = std::vector<std::size_t>;

TEST(BundledPlatform, AKeyOf512BytesIsConvertedWithNoHeapButTheBlob) {
  const Bytes parameters = Counted(20);
  for (const Bytes& bits :
       {Counted(512), ModelOctetString(Counted(64)),
        ModelOctetString(Counted(128)), ModelOctetString(Counted(512))}) {
    const CERT_PUBLIC_KEY_INFO info = InfoOf(kRsa, parameters, bits);
    unsigned char* blob = nullptr;
    unsigned int size = 0;
    HeapWatch watch;
    EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 1);
    watch.Stop();
    EXPECT_EQ(watch.Sizes(), Sizes{size});
    EXPECT_TRUE(watch.Freed().empty());
    std::free(blob);
  }
}

TEST(BundledPlatform, TheLastErrorOfANewThreadTakesNoHeap) {
  std::thread([] {
    HeapWatch watch(1);
    SetLastError(NTE_BAD_KEY);
    const unsigned int error = GetLastError();
    watch.Stop();
    EXPECT_EQ(error, NTE_BAD_KEY);
    EXPECT_TRUE(watch.Sizes().empty());
  }).join();
}

TEST(BundledPlatform, ABlobOfAKeyOf512BytesIsSplitWithNoHeapButTheOutputs) {
  for (const unsigned int key_bytes : {0u, 64u, 128u, 512u}) {
    const Bytes blob =
        ModelHeader(0x2E23, key_bytes * 8) + Counted(key_bytes + 20);
    unsigned char* key = nullptr;
    unsigned char* parameters = nullptr;
    unsigned int key_size = 0;
    unsigned int parameters_size = 0;
    HeapWatch watch;
    EXPECT_EQ(KRVEncodePublicKeyAndParametrs(
                  0, nullptr, blob.data(), SizeOf(blob), 0, 0, &key, &key_size,
                  &parameters, &parameters_size),
              1);
    watch.Stop();
    EXPECT_EQ(watch.Sizes(), (Sizes{key_size, 20}));
    EXPECT_TRUE(watch.Freed().empty());
    std::free(key);
    std::free(parameters);
  }
}

TEST(BundledPlatform, SizesAloneAreGivenWithoutTheHeap) {
  for (const unsigned int algorithm : {0x2E23u, 0x2E29u}) {
    const Bytes blob = ModelHeader(algorithm, 4096) + Counted(532);
    unsigned int key_size = 0;
    unsigned int parameters_size = 0;
    HeapWatch watch;
    EXPECT_EQ(KRVEncodePublicKeyAndParametrs(
                  0, nullptr, blob.data(), SizeOf(blob), 0, 0, nullptr,
                  &key_size, nullptr, &parameters_size),
              1);
    watch.Stop();
    EXPECT_TRUE(watch.Sizes().empty());
  }
}

}  // namespace
}  // namespace korvan::test
