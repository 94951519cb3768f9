// A host whose record classes lie at their nth call, or from there on, and
// whose SetLastError throws: whatever they say, the outputs of a conversion fit
// each other, nothing is left of the host's objects, and the next conversion
// works.
#include <gtest/gtest.h>
#include <korvan/platform/asn1_record.h>
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

#include "pubkey/conversions.h"
#include "pubkey/host_platform/host_faults.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/campaign.h"
#include "support/heap_watch.h"
#include "support/settings.h"

namespace korvan::test {
namespace {

struct HostFaultsTest : testing::Test {
  void SetUp() override { host_faults = {}; }
  void TearDown() override { host_faults = {}; }
};

const Bytes kParameters = Counted(18);

// Public keys: wrapped in the two ways that are unwrapped, wrapped in others,
// bare, malformed, short.
const std::vector<Bytes>& Keys() {
  static const std::vector<Bytes> keys = {
      ModelOctetString(Counted(64)),
      ModelOctetString(Counted(128)),
      ModelOctetString(Counted(300)),
      ModelOctetString(Counted(64)) + Bytes{7},
      Counted(64),
      {0x04, 0x40, 1, 2},
      {0x04},
      {},
  };
  return keys;
}

std::vector<HostFaults> Lies(int calls) {
  std::vector<int> turns(static_cast<std::size_t>(calls));
  std::iota(turns.begin(), turns.end(), 1);
  std::vector<HostFaults> lies = {{}};
  Vary(lies, &HostFaults::lie_at_call, turns);
  Vary(lies, &HostFaults::lies_on, {false, true});
  Vary(lies, &HostFaults::lie, {0, 1, 2, 3});
  return lies;
}

bool IsPartOf(const Bytes& part, const Bytes& whole) {
  return std::search(whole.begin(), whole.end(), part.begin(), part.end()) !=
             whole.end() ||
         part.empty();
}

// Made up by the host in host_platform.cc.
bool IsMadeUp(const Bytes& bytes) {
  return std::ranges::count(bytes, 0xCC) ==
         static_cast<std::ptrdiff_t>(bytes.size());
}

// What the host encodes of a key when it lies. Its calls are, in their order: a
// record and its two buffers, SetTag, SetEntry, whose bytes go into a buffer
// that is made and copied, and GetEncodedRecord, whose bytes go so too.
Bytes EncodedUnder(const HostFaults& lies, Bytes content) {
  constexpr unsigned char kMadeUp = 0xCC;
  const auto shorten = [&](Bytes& bytes) {
    bytes.resize(bytes.empty() || lies.lie == 0 ? 0 : bytes.size() - 1);
  };
  if (lies.lies_on) {
    return {};  // the last copy is never made
  }
  if (lies.lie_at_call == 6) {
    shorten(content);
  }
  if (lies.lie_at_call == 5 || lies.lie_at_call == 7) {
    content.clear();
  }
  Bytes encoding = ModelOctetString(content);
  switch (lies.lie_at_call) {
    case 4:
      encoding[0] = 0;
      break;
    case 8:
      encoding = lies.lie == 2 ? Bytes{} : Bytes{kMadeUp};
      break;
    case 9:
      shorten(encoding);
      break;
    case 10:
      encoding.clear();
      break;
    default:
      break;
  }
  return encoding;
}

TEST_F(HostFaultsTest, ABlobFitsItsHeaderWhateverTheHostSaysOfTheKey) {
  std::size_t tried = 0;
  for (const Bytes& bits : Keys()) {
    host_faults = {};
    const Converted whole = Convert(kGost2001, kParameters, bits);
    for (const HostFaults& lies : Lies(host_faults.calls)) {
      SCOPED_TRACE(std::to_string(bits.size()) + " bytes, lie " +
                   std::to_string(lies.lie) + " at call " +
                   std::to_string(lies.lie_at_call));
      host_faults = lies;
      const Converted call = Convert(kGost2001, kParameters, bits);
      EXPECT_EQ(host_faults.alive, 0);
      EXPECT_EQ(call.result, 1);
      EXPECT_EQ(call.error, kUntouchedError);
      ASSERT_TRUE(call.blob.has_value());
      ASSERT_EQ(call.blob->size(), call.size);
      ASSERT_GE(call.size, 16 + kParameters.size());
      const Bytes key(call.blob->begin() + 16 +
                          static_cast<std::ptrdiff_t>(kParameters.size()),
                      call.blob->end());
      EXPECT_EQ(*call.blob,
                ModelHeader(0x2E23, SizeOf(key) * 8) + kParameters + key);
      EXPECT_TRUE(IsPartOf(key, bits) || IsMadeUp(key));
      host_faults = {};
      EXPECT_EQ(Convert(kGost2001, kParameters, bits), whole);
      ++tried;
    }
    EXPECT_EQ(whole.blob, ModelBlob(0x2E23, kParameters, bits));
  }
  Figures(tried, " lies of record classes to conversions to a blob");
}

TEST_F(HostFaultsTest, PartsOfABlobFitTheirSizesWhateverTheHostEncodes) {
  std::size_t tried = 0;
  for (const unsigned int size : {0u, 1u, 64u, 128u, 300u}) {
    const Bytes blob =
        ModelHeader(0x2E23, size * 8) + kParameters + Counted(size);
    host_faults = {};
    const Encoded whole = Encode(blob);
    // The host asks for an encoding last, and fills a buffer in two calls more.
    const int encoding_call = host_faults.calls - 2;
    for (const HostFaults& lies : Lies(host_faults.calls)) {
      SCOPED_TRACE(std::to_string(size) + " bytes, lie " +
                   std::to_string(lies.lie) + " at call " +
                   std::to_string(lies.lie_at_call));
      host_faults = lies;
      HeapWatch watch;
      const Encoded call = Encode(blob);
      watch.Stop();
      EXPECT_EQ(host_faults.alive, 0);
      // Two of the lies report that there is no encoding.
      const bool has_no_encoding =
          lies.lie < 2 && (lies.lie_at_call == encoding_call ||
                           (lies.lies_on && lies.lie_at_call < encoding_call));
      EXPECT_EQ(call.result, has_no_encoding ? 0 : 1);
      if (call.result == 0) {
        const Encoded failed = {0,  DIGSIG_E_ENCODE, {}, kUntouchedSize,
                                {}, kUntouchedSize};
        EXPECT_EQ(call, failed);
      } else {
        const Bytes key = EncodedUnder(lies, Counted(size));
        const Encoded split = {1,           kUntouchedError,
                               key,         SizeOf(key),
                               kParameters, SizeOf(kParameters)};
        EXPECT_EQ(call, split);
        // The sizes can't tell of a buffer that is larger or smaller.
        const std::vector<std::size_t> asked = watch.Sizes();
        ASSERT_GE(asked.size(), 2u);
        EXPECT_EQ(asked[asked.size() - 2], key.size());
        EXPECT_EQ(asked.back(), kParameters.size());
      }
      host_faults = {};
      EXPECT_EQ(Encode(blob), whole);
      ++tried;
    }
    EXPECT_EQ(whole, ModelEncode(blob));
  }
  Figures(tried, " lies of record classes to splits of a blob");
}

// What a failing call of each kind leaves, when the host throws instead of
// keeping the error.
TEST_F(HostFaultsTest, AnErrorThatTheHostThrowsAtLeavesTheOutputsOfTheError) {
  host_faults.encoding_status = 3;
  host_faults.throw_at_error = 2;  // the first is the test's own
  const Bytes blob = ModelHeader(0x2E23, 8) + Bytes{9};
  unsigned char* key = EarlierBuffer();
  unsigned char* parameters = EarlierBuffer();
  unsigned int key_size = kUntouchedSize;
  unsigned int parameters_size = kUntouchedSize;
  SetLastError(kUntouchedError);
  EXPECT_THROW(KRVEncodePublicKeyAndParametrs(
                   0, nullptr, blob.data(), SizeOf(blob), 0, 0, &key, &key_size,
                   &parameters, &parameters_size),
               std::string);
  EXPECT_EQ(key, nullptr);
  EXPECT_EQ(parameters, nullptr);
  EXPECT_EQ(key_size, kUntouchedSize);
  EXPECT_EQ(parameters_size, kUntouchedSize);
  EXPECT_EQ(host_faults.alive, 0);
  host_faults = {};
  EXPECT_EQ(Encode(blob), ModelEncode(blob));
}

}  // namespace
}  // namespace korvan::test
