// What a host's own record classes make the conversions do.
#include <gtest/gtest.h>
#include <korvan/platform/asn1_record.h>
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <cstdlib>
#include <string>

#include "pubkey/conversions.h"
#include "pubkey/host_platform/host_faults.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/heap_watch.h"

namespace korvan::test {
namespace {

class HostPlatform : public testing::Test {
 protected:
  void SetUp() override { host_faults = {}; }
  void TearDown() override {
    EXPECT_EQ(host_faults.alive, 0);
    host_faults = {};
  }
};

const Bytes kWrapped = Bytes{0x04, 0x40} + Counted(64);

TEST_F(HostPlatform, ConversionsCallTheHostsRecordClasses) {
  Convert(kGost2001, {}, kWrapped);
  EXPECT_GT(host_faults.calls, 0);
}

TEST_F(HostPlatform, AKeyIsTakenWholeWhenTheHostGivesItsContentAStatus) {
  for (const int status : {-1, 1}) {
    host_faults.content_status = status;
    EXPECT_EQ(Convert(kGost2001, {}, kWrapped).blob,
              ModelHeader(0x2E23, 66 * 8) + kWrapped);
  }
}

TEST_F(HostPlatform, AKeyIsTakenWholeWhenTheHostGivesAShorterOrLongerContent) {
  for (const int excess : {-1, 1}) {
    host_faults.content_excess = excess;
    EXPECT_EQ(Convert(kGost2001, {}, kWrapped).blob,
              ModelHeader(0x2E23, 66 * 8) + kWrapped);
  }
}

TEST_F(HostPlatform, AKeyIsUnwrappedOnlyWhenTheHostTellsTwoOrThreeBytesLess) {
  for (int size = 0; size <= 70; ++size) {
    host_faults.content_size = size;
    const bool is_unwrapped = size == 64 || size == 63;
    EXPECT_EQ(Convert(kGost2001, {}, kWrapped).blob,
              is_unwrapped
                  ? ModelHeader(0x2E23, static_cast<unsigned int>(size) * 8) +
                        Bytes(static_cast<std::size_t>(size), 0xCC)
                  : ModelHeader(0x2E23, 66 * 8) + kWrapped)
        << size;
  }
}

TEST_F(HostPlatform, AHostMayThrowForMalformedBytes) {
  const Bytes bits = {0x04, 0x80};
  const CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, {}, bits);
  host_faults.throw_for_malformed = true;
  unsigned char* blob = EarlierBuffer();
  unsigned int size = kUntouchedSize;
  SetLastError(kUntouchedError);
  EXPECT_THROW(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size),
               std::string);
  EXPECT_EQ(blob, nullptr);
  EXPECT_EQ(size, kUntouchedSize);
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

TEST_F(HostPlatform, AHostMayThrowAtEveryCallOfAConversionToABlob) {
  Convert(kGost2001, {}, kWrapped);
  const int calls = host_faults.calls;
  const CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, {}, kWrapped);
  for (int call = 1; call <= calls; ++call) {
    host_faults.calls = 0;
    host_faults.throw_at_call = call;
    unsigned char* blob = EarlierBuffer();
    unsigned int size = kUntouchedSize;
    SetLastError(kUntouchedError);
    HeapWatch watch;
    EXPECT_THROW(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size),
                 std::string);
    watch.Stop();
    EXPECT_EQ(blob, nullptr);
    EXPECT_EQ(size, kUntouchedSize);
    EXPECT_EQ(GetLastError(), kUntouchedError);
    EXPECT_EQ(host_faults.alive, 0);
  }
}

TEST_F(HostPlatform, AHostMayThrowAtEveryCallOfASplit) {
  const Bytes blob = ModelHeader(0x2E23, 512) + Counted(72);
  Encode(blob);
  const int calls = host_faults.calls;
  for (int call = 1; call <= calls; ++call) {
    host_faults.calls = 0;
    host_faults.throw_at_call = call;
    unsigned char* key = EarlierBuffer();
    unsigned char* parameters = EarlierBuffer();
    unsigned int key_size = kUntouchedSize;
    unsigned int parameters_size = kUntouchedSize;
    SetLastError(kUntouchedError);
    EXPECT_THROW(KRVEncodePublicKeyAndParametrs(
                     0, nullptr, blob.data(), SizeOf(blob), 0, 0, &key,
                     &key_size, &parameters, &parameters_size),
                 std::string);
    EXPECT_EQ(key, nullptr);
    EXPECT_EQ(parameters, nullptr);
    EXPECT_EQ(key_size, kUntouchedSize);
    EXPECT_EQ(parameters_size, kUntouchedSize);
    EXPECT_EQ(GetLastError(), kUntouchedError);
    EXPECT_EQ(host_faults.alive, 0);
  }
}

TEST_F(HostPlatform, ASplitFailsWhenTheHostCannotEncode) {
  const Encoded failed = {0,  DIGSIG_E_ENCODE, {}, kUntouchedSize,
                          {}, kUntouchedSize};
  for (const int status : {3, -3}) {
    host_faults.encoding_status = status;
    EXPECT_EQ(Encode(ModelHeader(0x2E23, 8) + Bytes{7, 9}), failed);
  }
  // A bare key needs no encoder.
  EXPECT_EQ(Encode(ModelHeader(0x2E29, 8) + Bytes{7, 9}),
            ModelEncode(ModelHeader(0x2E29, 8) + Bytes{7, 9}));
}

TEST_F(HostPlatform, TheHostIsAskedToEncodeEvenForSizesAlone) {
  const Bytes blob = ModelHeader(0x2E23, 8) + Bytes{9};
  host_faults.encoding_status = 3;
  unsigned int key_size = kUntouchedSize;
  unsigned int parameters_size = kUntouchedSize;
  EXPECT_EQ(
      KRVEncodePublicKeyAndParametrs(0, nullptr, blob.data(), 17, 0, 0, nullptr,
                                     &key_size, nullptr, &parameters_size),
      0);
  EXPECT_EQ(GetLastError(), DIGSIG_E_ENCODE);
  EXPECT_EQ(key_size, kUntouchedSize);
}

TEST_F(HostPlatform, ConversionsSetTheHostsLastError) {
  Convert("1.2.3", {}, {});
  EXPECT_EQ(GetLastError(), NTE_BAD_ALGID);
}

}  // namespace
}  // namespace korvan::test
