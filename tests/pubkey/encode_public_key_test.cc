// Blob to public key: parts, sizes, errors, buffers.
#include <gtest/gtest.h>
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <optional>
#include <vector>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/guarded_room.h"
#include "support/heap_watch.h"

namespace korvan::test {
namespace {

using Pointers = std::vector<void*>;

const Encoded kRefused = {0,  NTE_BAD_KEY,   {}, kUntouchedSize,
                          {}, kUntouchedSize};

TEST(EncodePublicKey, ABlobIsSplitIntoAWrappedKeyAndParameters) {
  const Bytes parameters = {0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7};
  EXPECT_EQ(Encode(ModelHeader(0x2E23, 512) + parameters + Counted(64)),
            (Encoded{1, kUntouchedError, Bytes{0x04, 0x40} + Counted(64), 66,
                     parameters, 8}));
}

TEST(EncodePublicKey, AKeyOf128BytesIsWrappedWithALongLength) {
  EXPECT_EQ(Encode(ModelHeader(0x2E23, 1024) + Counted(128)),
            (Encoded{1, kUntouchedError, Bytes{0x04, 0x81, 0x80} + Counted(128),
                     131, std::nullopt, 0}));
}

TEST(EncodePublicKey, TheKeyOfOneAlgorithmIsLeftBare) {
  EXPECT_EQ(Encode(ModelHeader(0x2E29, 512) + Counted(64)),
            (Encoded{1, kUntouchedError, Counted(64), 64, std::nullopt, 0}));
}

TEST(EncodePublicKey, TheKeysOfAllOtherAlgorithmsAreWrapped) {
  for (const unsigned int algorithm :
       {0u, 0x2E28u, 0x2E2Au, 0x2E1Eu, 0xA400u, 0x12E29u, 0xFFFFFFFFu}) {
    const Bytes blob = ModelHeader(algorithm, 8) + Bytes{7, 9};
    const Bytes wrapped = {0x04, 0x01, 9};
    EXPECT_EQ(Encode(blob),
              (Encoded{1, kUntouchedError, wrapped, 3, Bytes{7}, 1}));
  }
}

TEST(EncodePublicKey, BitsAreRoundedDownToBytes) {
  const Bytes key = Counted(63);
  EXPECT_EQ(Encode(ModelHeader(0x2E23, 511) + Bytes{0xA0} + key),
            (Encoded{1, kUntouchedError, Bytes{0x04, 0x3F} + key, 65,
                     Bytes{0xA0}, 1}));
}

TEST(EncodePublicKey, ABlobOfAKeyWithoutBitsIsAllParameters) {
  EXPECT_EQ(Encode(ModelHeader(0x2E23, 7) + Counted(5)),
            (Encoded{1, kUntouchedError, Bytes{0x04, 0x00}, 2, Counted(5), 5}));
}

TEST(EncodePublicKey, AnEmptyBareKeyIsHandedOut) {
  EXPECT_EQ(Encode(ModelHeader(0x2E29, 0)),
            (Encoded{1, kUntouchedError, Bytes{}, 0, std::nullopt, 0}));
}

TEST(EncodePublicKey, TheRestOfTheHeaderIsIgnored) {
  Bytes blob = ModelHeader(0x2E23, 8) + Bytes{7, 9};
  const Encoded whole = ModelEncode(blob);
  for (const std::size_t at : {0u, 1u, 2u, 3u, 8u, 9u, 10u, 11u}) {
    blob[at] = 0xEE;
    EXPECT_EQ(Encode(blob), whole) << "byte " << at;
  }
}

TEST(EncodePublicKey, ParametersOfAThousandBytesAreCopiedWhole) {
  for (const unsigned int algorithm : {0x2E23u, 0x2E29u}) {
    const Bytes blob = ModelHeader(algorithm, 512) + Counted(1064);
    EXPECT_EQ(Encode(blob), ModelEncode(blob));
    EXPECT_EQ(Encode(blob).parameters, Counted(1000));
  }
}

TEST(EncodePublicKey, NoOutputIsTouchedWithoutABlob) {
  const Bytes blob = ModelHeader(0x2E23, 8) + Bytes{9};
  for (const bool null : {true, false}) {
    unsigned char* key = EarlierBuffer();
    unsigned char* parameters = EarlierBuffer();
    unsigned char* const earlier[] = {key, parameters};
    unsigned int key_size = kUntouchedSize;
    unsigned int parameters_size = kUntouchedSize;
    HeapWatch watch;
    EXPECT_EQ(KRVEncodePublicKeyAndParametrs(
                  0, nullptr, null ? nullptr : blob.data(), null ? 17 : 0, 0, 0,
                  &key, &key_size, &parameters, &parameters_size),
              0);
    watch.Stop();
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(key, earlier[0]);
    EXPECT_EQ(parameters, earlier[1]);
    EXPECT_EQ(key_size, kUntouchedSize);
    EXPECT_EQ(parameters_size, kUntouchedSize);
    EXPECT_TRUE(watch.Freed().empty());
    std::free(key);
    std::free(parameters);
  }
}

TEST(EncodePublicKey, ABlobOfFewerThan16BytesIsRefusedAndReadNoFurther) {
  const Bytes blob = ModelHeader(0x2E23, 0);
  GuardedRoom room(16);
  for (unsigned int size = 1; size < 16; ++size) {
    EXPECT_EQ(Encode(room.Place({blob.data(), size}), size), kRefused);
  }
  EXPECT_EQ(Encode(room.Place(blob), 16).result, 1);
}

TEST(EncodePublicKey, ABlobThatIsTooShortForItsKeyIsRefused) {
  EXPECT_EQ(Encode(ModelHeader(0x2E23, 512) + Counted(63)), kRefused);
  EXPECT_EQ(Encode(ModelHeader(0x2E29, 512) + Counted(63)), kRefused);
  EXPECT_EQ(Encode(ModelHeader(0x2E23, 0xFFFFFFFF) + Counted(64)), kRefused);
}

TEST(EncodePublicKey, ParametersOfTwoGibibytesAreRefused) {
  // Nobody may read past the header: the sizes alone decide.
  GuardedRoom room(16);
  const unsigned char* const blob = room.Place(ModelHeader(0x2E23, 512));
  EXPECT_EQ(Encode(blob, 0x80000000u + 16 + 64), kRefused);
  EXPECT_EQ(Encode(blob, 0xFFFFFFFF), kRefused);
}

TEST(EncodePublicKey, TheEarlierBuffersAreFreedWhenTheBlobIsRefused) {
  for (const unsigned int size : {5u, 16u}) {
    const Bytes blob = ModelHeader(0x2E23, 512);
    unsigned char* key = EarlierBuffer();
    unsigned char* parameters = EarlierBuffer();
    const Pointers earlier = {key, parameters};
    unsigned int sizes[2] = {};
    HeapWatch watch;
    EXPECT_EQ(
        KRVEncodePublicKeyAndParametrs(0, nullptr, blob.data(), size, 0, 0,
                                       &key, &sizes[0], &parameters, &sizes[1]),
        0);
    watch.Stop();
    EXPECT_EQ(watch.Freed(), earlier);
    EXPECT_EQ(key, nullptr);
    EXPECT_EQ(parameters, nullptr);
  }
}

TEST(EncodePublicKey, TheEarlierBuffersAreFreedWhenTheBlobIsSplit) {
  const Bytes blob = ModelHeader(0x2E29, 8) + Bytes{7, 9};
  unsigned char* key = EarlierBuffer();
  unsigned char* parameters = EarlierBuffer();
  const Pointers earlier = {key, parameters};
  unsigned int key_size = 0;
  unsigned int parameters_size = 0;
  HeapWatch watch;
  EXPECT_EQ(
      KRVEncodePublicKeyAndParametrs(0, nullptr, blob.data(), 18, 0, 0, &key,
                                     &key_size, &parameters, &parameters_size),
      1);
  watch.Stop();
  EXPECT_EQ(watch.Freed(), earlier);
  EXPECT_EQ(watch.Sizes(), (std::vector<std::size_t>{1, 1}));
  EXPECT_EQ(Take(key, key_size), Bytes{9});
  EXPECT_EQ(Take(parameters, parameters_size), Bytes{7});
}

TEST(EncodePublicKey, EarlierParametersAreFreedWhenTheBlobHasNone) {
  const Bytes blob = ModelHeader(0x2E23, 8) + Bytes{9};
  unsigned char* parameters = EarlierBuffer();
  unsigned int key_size = kUntouchedSize;
  unsigned int parameters_size = kUntouchedSize;
  EXPECT_EQ(
      KRVEncodePublicKeyAndParametrs(0, nullptr, blob.data(), 17, 0, 0, nullptr,
                                     &key_size, &parameters, &parameters_size),
      1);
  EXPECT_EQ(parameters, nullptr);
  EXPECT_EQ(key_size, 3u);
  EXPECT_EQ(parameters_size, 0u);
}

TEST(EncodePublicKey, SizesAloneAreGivenWhenNoOutputIsAskedFor) {
  for (const unsigned int algorithm : {0x2E23u, 0x2E29u}) {
    const Bytes blob = ModelHeader(algorithm, 512) + Counted(72);
    unsigned int key_size = kUntouchedSize;
    unsigned int parameters_size = kUntouchedSize;
    SetLastError(kUntouchedError);
    EXPECT_EQ(KRVEncodePublicKeyAndParametrs(
                  0, nullptr, blob.data(), SizeOf(blob), 0, 0, nullptr,
                  &key_size, nullptr, &parameters_size),
              1);
    EXPECT_EQ(key_size, algorithm == 0x2E29u ? 64u : 66u);
    EXPECT_EQ(parameters_size, 8u);
    EXPECT_EQ(GetLastError(), kUntouchedError);
  }
}

TEST(EncodePublicKey, TheKeyAloneCanBeAskedFor) {
  const Bytes blob = ModelHeader(0x2E23, 512) + Counted(72);
  unsigned char* key = nullptr;
  unsigned int key_size = 0;
  unsigned int parameters_size = 0;
  EXPECT_EQ(KRVEncodePublicKeyAndParametrs(0, nullptr, blob.data(),
                                           SizeOf(blob), 0, 0, &key, &key_size,
                                           nullptr, &parameters_size),
            1);
  EXPECT_EQ(Take(key, key_size), ModelEncode(blob).key);
  EXPECT_EQ(parameters_size, 8u);
}

TEST(EncodePublicKey, TheParametersAloneCanBeAskedFor) {
  const Bytes blob = ModelHeader(0x2E23, 512) + Counted(72);
  unsigned char* parameters = nullptr;
  unsigned int key_size = 0;
  unsigned int parameters_size = 0;
  EXPECT_EQ(KRVEncodePublicKeyAndParametrs(
                0, nullptr, blob.data(), SizeOf(blob), 0, 0, nullptr, &key_size,
                &parameters, &parameters_size),
            1);
  EXPECT_EQ(Take(parameters, parameters_size), Counted(8));
  EXPECT_EQ(key_size, 66u);
}

TEST(EncodePublicKey, ArgumentsWithoutMeaningAreIgnored) {
  const Bytes blob = ModelHeader(0x2E23, 8) + Bytes{9};
  GuardedRoom room(1);
  // No byte of the text can be read.
  const auto* const text = reinterpret_cast<const char*>(room.Place({}));
  unsigned char* key = nullptr;
  unsigned int key_size = 0;
  unsigned int parameters_size = 0;
  EXPECT_EQ(KRVEncodePublicKeyAndParametrs(1, text, blob.data(), 17, 0xA400,
                                           0xFFFFFFFF, &key, &key_size, nullptr,
                                           &parameters_size),
            1);
  EXPECT_EQ(Take(key, key_size), (Bytes{0x04, 0x01, 9}));
}

TEST(EncodePublicKey, NoByteBeyondTheBlobIsRead) {
  GuardedRoom room(2000);
  for (const unsigned int algorithm : {0x2E23u, 0x2E29u}) {
    for (const unsigned int key : {0u, 1u, 127u, 128u, 512u, 1000u}) {
      const Bytes blob = ModelHeader(algorithm, key * 8) + Counted(key + 9);
      EXPECT_EQ(Encode(room.Place(blob), SizeOf(blob)), ModelEncode(blob));
    }
  }
}

TEST(EncodePublicKey, TheHeapIsAskedForTheOutputsExactly) {
  const Bytes blob = ModelHeader(0x2E23, 512) + Counted(72);
  unsigned char* key = nullptr;
  unsigned char* parameters = nullptr;
  unsigned int key_size = 0;
  unsigned int parameters_size = 0;
  HeapWatch watch;
  EXPECT_EQ(KRVEncodePublicKeyAndParametrs(0, nullptr, blob.data(),
                                           SizeOf(blob), 0, 0, &key, &key_size,
                                           &parameters, &parameters_size),
            1);
  watch.Stop();
  const auto sizes = watch.Sizes();
  ASSERT_GE(sizes.size(), 2u);
  EXPECT_EQ(sizes[sizes.size() - 2], 66u);
  EXPECT_EQ(sizes.back(), 8u);
  std::free(key);
  std::free(parameters);
}

// How often the platform's record classes ask the heap is their own affair, so
// each request of the call fails once. A key that was already handed out when
// the parameters failed stays with the caller.
TEST(EncodePublicKey, NoBufferIsLeftBehindWhicheverRequestFails) {
  for (const Bytes& blob : {ModelHeader(0x2E23, 512) + Counted(72),
                            ModelHeader(0x2E23, 16000) + Counted(2008),
                            ModelHeader(0x2E29, 512) + Counted(72)}) {
    const Encoded whole = ModelEncode(blob);
    bool succeeded = false;
    int handed_out_key_only = 0;
    int handed_out_nothing = 0;
    for (int fail_at = 1; !succeeded; ++fail_at) {
      ASSERT_LT(fail_at, 60);
      unsigned char* key = EarlierBuffer();
      unsigned char* parameters = EarlierBuffer();
      unsigned int key_size = kUntouchedSize;
      unsigned int parameters_size = kUntouchedSize;
      bool thrown = false;
      int result = 0;
      SetLastError(kUntouchedError);
      HeapWatch watch(fail_at);
      try {
        result = KRVEncodePublicKeyAndParametrs(
            0, nullptr, blob.data(), SizeOf(blob), 0, 0, &key, &key_size,
            &parameters, &parameters_size);
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      watch.Stop();
      succeeded = result == 1;
      EXPECT_TRUE(succeeded || result == 0);
      const std::size_t granted = watch.Sizes().size() - (succeeded ? 0 : 1);
      const std::size_t handed_out =
          (key != nullptr ? 1u : 0u) + (parameters != nullptr ? 1u : 0u);
      EXPECT_EQ(watch.FreedBlocks(), 2 + granted - handed_out);
      EXPECT_EQ(parameters != nullptr, succeeded);
      if (thrown) {
        EXPECT_EQ(key, nullptr);
        EXPECT_EQ(key_size, kUntouchedSize);
        EXPECT_EQ(parameters_size, kUntouchedSize);
        EXPECT_EQ(GetLastError(), kUntouchedError);
      } else {
        EXPECT_EQ(key_size, whole.key_size);
        EXPECT_EQ(parameters_size, 8u);
        EXPECT_EQ(GetLastError(), succeeded ? kUntouchedError : NTE_NO_MEMORY);
        handed_out_nothing += key == nullptr ? 1 : 0;
        handed_out_key_only += key != nullptr && !succeeded ? 1 : 0;
      }
      if (key != nullptr) {
        EXPECT_EQ(Take(key, key_size), whole.key);
      }
      std::free(parameters);
    }
    EXPECT_EQ(handed_out_nothing, 1);
    EXPECT_EQ(handed_out_key_only, 1);
  }
}

}  // namespace
}  // namespace korvan::test
