// Public key to blob: layout, algorithms, errors, buffers.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/guarded_room.h"
#include "support/heap_watch.h"

namespace korvan::test {
namespace {

using Pointers = std::vector<void*>;

const Converted kRefused = {0, NTE_BAD_ALGID, {}, kUntouchedSize};

// The lookup loads the algorithm's name when it is first found.
void LoadName(const char* oid) { Convert(oid, {}, {}); }

// The number of requests that a conversion makes of the heap. The last one is
// for the blob.
int RequestsFor(const CERT_PUBLIC_KEY_INFO& info) {
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  HeapWatch watch;
  KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size);
  watch.Stop();
  std::free(blob);
  return static_cast<int>(watch.Sizes().size());
}

TEST(ConvertPublicKeyInfo, ABlobIsHeaderParametersAndKey) {
  const Bytes parameters = {0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7};
  const Converted call =
      Convert(kGost2001, parameters, Bytes{0x04, 0x40} + Counted(64));
  EXPECT_EQ(call.result, 1);
  EXPECT_EQ(call.size, 88u);
  const Bytes header = {0x06, 0x20, 0x00, 0x00,   // public key, version 0x20
                        0x23, 0x2E, 0x00, 0x00,   // 0x2E23
                        0x4D, 0x41, 0x47, 0x31,   // "MAG1"
                        0x00, 0x02, 0x00, 0x00};  // 512 bits
  EXPECT_EQ(call.blob, header + parameters + Counted(64));
}

TEST(ConvertPublicKeyInfo, TheKeyFollowsTheHeaderWhenThereAreNoParameters) {
  const Converted call =
      Convert(kGost2001, {}, Bytes{0x04, 0x40} + Counted(64));
  EXPECT_EQ(call.blob, ModelHeader(0x2E23, 512) + Counted(64));
  EXPECT_EQ(call.size, 80u);
}

TEST(ConvertPublicKeyInfo, EveryPublicKeyAlgorithmOfTheRegistryIsKnown) {
  const std::pair<const char*, unsigned int> kAlgorithms[] = {
      {"1.3.6.1.4.1.86913.2.1.2.2", 0x2E29},
      {"1.2.643.2.2.20", 0x2E1E},
      {"1.2.643.2.2.19", 0x2E23},
      {"1.2.643.2.2.98", 0xAA24},
      {"1.2.840.113549.1.1.1", 0xA400},
      {"1.2.840.10040.4.1", 0x2200},
      {"1.2.840.10046.2.1", 0xAA01},
      {"1.3.14.3.2.12", 0x2200},
      {"1.2.840.113549.1.3.1", 0xAA01},
      {"1.3.14.3.2.22", 0xA400},
      {"2.16.840.1.101.2.1.1.20", 0x2200},
      {"1.2.840.113549.1.9.16.3.5", 0xAA02},
      {"1.3.6.1.5.5.7.6.2", 0x2000},
  };
  for (const auto& [oid, algorithm] : kAlgorithms) {
    EXPECT_EQ(Convert(oid, {}, {9}).blob, ModelHeader(algorithm, 8) + Bytes{9})
        << oid;
  }
}

TEST(ConvertPublicKeyInfo, OtherAlgorithmsAreRefused) {
  for (const char* const oid :
       {"", "1.2.643.2.2.1", "1.2.643.2.2.190", " 1.2.643.2.2.19",
        "1.2.840.10045.2.1", "1.2.643.2.2.9", "GOST R 34.10-2001"}) {
    EXPECT_EQ(Convert(oid, {1}, {2}), kRefused) << oid;
  }
}

TEST(ConvertPublicKeyInfo, AMissingAlgorithmIsRefused) {
  EXPECT_EQ(Convert(nullptr, {1}, {2}), kRefused);
}

TEST(ConvertPublicKeyInfo, AnEarlierBlobIsFreedWhenTheAlgorithmIsRefused) {
  const CERT_PUBLIC_KEY_INFO info = InfoOf("1.2.3", {}, {});
  unsigned char* blob = EarlierBuffer();
  void* const earlier = blob;
  unsigned int size = kUntouchedSize;
  HeapWatch watch;
  EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 0);
  watch.Stop();
  EXPECT_EQ(watch.Freed(), Pointers{earlier});
  EXPECT_EQ(blob, nullptr);
  EXPECT_EQ(size, kUntouchedSize);
}

TEST(ConvertPublicKeyInfo, NoOutputIsTouchedWithoutAnInfo) {
  unsigned char* blob = EarlierBuffer();
  unsigned char* const earlier = blob;
  unsigned int size = kUntouchedSize;
  HeapWatch watch;
  EXPECT_EQ(KRVConvertPublicKeyInfo(0, nullptr, 0, 0, &blob, &size), 0);
  watch.Stop();
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(blob, earlier);
  EXPECT_EQ(size, kUntouchedSize);
  EXPECT_TRUE(watch.Freed().empty());
  std::free(blob);
}

TEST(ConvertPublicKeyInfo, NoOutputIsTouchedWithoutAPlaceForTheSize) {
  const CERT_PUBLIC_KEY_INFO info = InfoOf(kRsa, {}, {});
  unsigned char* blob = EarlierBuffer();
  unsigned char* const earlier = blob;
  HeapWatch watch;
  EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, nullptr), 0);
  watch.Stop();
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(blob, earlier);
  EXPECT_TRUE(watch.Freed().empty());
  std::free(blob);
}

TEST(ConvertPublicKeyInfo,
     AnInvalidParameterEndsTheConversionBeforeItReadsTheInfo) {
  EXPECT_EQ(KRVConvertPublicKeyInfo(0, nullptr, 0, 0, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(ConvertPublicKeyInfo, TheHeapIsAskedForTheBlobOnceAndExactly) {
  LoadName(kGost2001);
  const Bytes parameters = Counted(8);
  const Bytes bits = Bytes{0x04, 0x40} + Counted(64);
  const CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, parameters, bits);
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  HeapWatch watch;
  EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 1);
  watch.Stop();
  EXPECT_EQ(watch.Sizes().back(), 88u);
  for (void* const freed : watch.Freed()) {
    EXPECT_NE(freed, nullptr);
    EXPECT_NE(freed, blob);
  }
  std::free(blob);
}

TEST(ConvertPublicKeyInfo, TheBlobOfAnEarlierCallIsFreed) {
  LoadName(kRsa);
  const Bytes bits = Counted(3);
  const CERT_PUBLIC_KEY_INFO info = InfoOf(kRsa, {}, bits);
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  ASSERT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 1);
  void* const earlier = blob;
  HeapWatch watch;
  EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 1);
  watch.Stop();
  EXPECT_EQ(watch.Freed().front(), earlier);
  EXPECT_EQ(Take(blob, size), ModelBlob(0xA400, {}, bits));
}

TEST(ConvertPublicKeyInfo, TheSizeMayBeToldWhereThatOfAnInputStood) {
  const Bytes parameters = Counted(8);
  const Bytes bits = ModelOctetString(Counted(64));
  const Bytes expected = ModelBlob(0x2E23, parameters, bits);
  for (const bool is_of_key : {false, true}) {
    CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, parameters, bits);
    DWORD& size =
        is_of_key ? info.PublicKey.cbData : info.Algorithm.Parameters.cbData;
    unsigned char* blob = nullptr;
    EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 1);
    EXPECT_EQ(Take(blob, size), expected);
  }
}

TEST(ConvertPublicKeyInfo, EmptyParametersAndKeysNeedNoAddress) {
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = const_cast<char*>(kRsa);
  EXPECT_EQ(Convert(info),
            (Converted{1, kUntouchedError, ModelHeader(0xA400, 0), 16}));
}

TEST(ConvertPublicKeyInfo, UnusedBitsOfTheKeyAreIgnored) {
  const Bytes bits = Counted(5);
  CERT_PUBLIC_KEY_INFO info = InfoOf(kRsa, {}, bits);
  info.PublicKey.cUnusedBits = 7;
  EXPECT_EQ(Convert(info).blob, ModelHeader(0xA400, 40) + bits);
}

TEST(ConvertPublicKeyInfo, ArgumentsWithoutMeaningAreIgnored) {
  const Bytes bits = Counted(5);
  const CERT_PUBLIC_KEY_INFO info = InfoOf(kRsa, {}, bits);
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  EXPECT_EQ(KRVConvertPublicKeyInfo(1, &info, 0xA400, 0xFFFFFFFF, &blob, &size),
            1);
  EXPECT_EQ(Take(blob, size), ModelHeader(0xA400, 40) + bits);
}

TEST(ConvertPublicKeyInfo, ASuccessLeavesTheLastErrorAlone) {
  EXPECT_EQ(Convert(kRsa, {}, {1}).error, kUntouchedError);
}

TEST(ConvertPublicKeyInfo, NoByteBeyondParametersAndKeyIsRead) {
  GuardedRoom parameters_room(1000);
  GuardedRoom bits_room(1000);
  for (const unsigned int count : {0u, 1u, 2u, 3u, 66u, 528u, 529u, 1000u}) {
    const Bytes parameters = Counted(count);
    for (const Bytes& bits :
         {Counted(count), ModelOctetString(Counted(count / 2)),
          Bytes(count, 0x04), Bytes(count, 0x1F)}) {
      CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, parameters, bits);
      info.Algorithm.Parameters.pbData = parameters_room.Place(parameters);
      info.PublicKey.pbData = bits_room.Place(bits);
      EXPECT_EQ(Convert(info).blob, ModelBlob(0x2E23, parameters, bits));
    }
  }
}

TEST(ConvertPublicKeyInfo, ABlobWithoutMemoryIsReported) {
  LoadName(kRsa);
  const Bytes bits = Counted(5);
  const CERT_PUBLIC_KEY_INFO info = InfoOf(kRsa, {}, bits);
  unsigned char* blob = EarlierBuffer();
  void* const earlier = blob;
  unsigned int size = kUntouchedSize;
  HeapWatch watch(RequestsFor(info));
  EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 0);
  watch.Stop();
  EXPECT_EQ(GetLastError(), NTE_NO_MEMORY);
  EXPECT_EQ(blob, nullptr);
  EXPECT_EQ(size, 21u);
  EXPECT_EQ(watch.Freed().front(), earlier);
}

// How often the platform's record classes ask the heap is their own affair, so
// each request of the call fails once.
TEST(ConvertPublicKeyInfo, NoBufferIsLeftBehindWhicheverRequestFails) {
  LoadName(kGost2001);
  const Bytes bits = ModelOctetString(Counted(2000));
  for (const Bytes& key : {bits, Bytes{0x04, 0x40} + Counted(64)}) {
    const CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, {}, key);
    bool succeeded = false;
    for (int fail_at = 1; !succeeded; ++fail_at) {
      ASSERT_LT(fail_at, 60);
      unsigned char* blob = EarlierBuffer();
      unsigned int size = kUntouchedSize;
      bool thrown = false;
      SetLastError(kUntouchedError);
      HeapWatch watch(fail_at);
      try {
        succeeded = KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size) == 1;
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      watch.Stop();
      // The earlier buffer is freed, and all that was granted except the blob.
      const std::size_t failed = succeeded ? 0 : 1;
      EXPECT_EQ(watch.FreedBlocks(),
                1 + watch.Sizes().size() - failed - (succeeded ? 1 : 0));
      EXPECT_EQ(blob != nullptr, succeeded);
      if (thrown) {
        EXPECT_EQ(size, kUntouchedSize);
        EXPECT_EQ(GetLastError(), kUntouchedError);
      } else {
        EXPECT_EQ(size, ModelBlob(0x2E23, {}, key).size());
        EXPECT_EQ(GetLastError(), succeeded ? kUntouchedError : NTE_NO_MEMORY);
      }
      std::free(blob);
    }
  }
}

TEST(ConvertPublicKeyInfo, ASizeThatDoesNotFitIn32BitsIsReportedAsNoMemory) {
  LoadName(kGost2001);
  const Bytes bits = Bytes{0x04, 0x40} + Counted(64);
  const auto blob_requests =
      static_cast<std::size_t>(RequestsFor(InfoOf(kGost2001, {}, bits)));
  for (const unsigned int parameters_size : {0xFFFFFFB0u, 0xFFFFFFFFu}) {
    CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, {}, bits);
    // Nobody may read them: the call ends before a byte is copied.
    info.Algorithm.Parameters.cbData = parameters_size;
    unsigned char* blob = EarlierBuffer();
    unsigned int size = kUntouchedSize;
    HeapWatch watch;
    EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 0);
    watch.Stop();
    EXPECT_EQ(GetLastError(), NTE_NO_MEMORY);
    EXPECT_EQ(blob, nullptr);
    EXPECT_EQ(size, parameters_size + 80);
    EXPECT_EQ(watch.Sizes().size() + 1, blob_requests);
  }
}

TEST(ConvertPublicKeyInfo, TheHeapIsAskedForTheLargestSizeThatFitsIn32Bits) {
  const Bytes bits = Bytes{0x04, 0x40} + Counted(64);
  CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, {}, bits);
  info.Algorithm.Parameters.cbData = 0xFFFFFFAF;
  LoadName(kGost2001);
  unsigned char* blob = nullptr;
  unsigned int size = kUntouchedSize;
  HeapWatch watch(RequestsFor(InfoOf(kGost2001, {}, bits)));
  EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 0);
  watch.Stop();
  EXPECT_EQ(watch.Sizes().back(), 0xFFFFFFFF);
  EXPECT_EQ(GetLastError(), NTE_NO_MEMORY);
  EXPECT_EQ(size, 0xFFFFFFFF);
}

}  // namespace
}  // namespace korvan::test
