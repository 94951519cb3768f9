// The rule that tells which keys are unwrapped, over every shape of header.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/guarded_room.h"

namespace korvan::test {
namespace {

// The key that a bit string turns into, read where a guard page follows.
Bytes KeyOf(const Bytes& bits) {
  static GuardedRoom room(70000);
  CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, {}, bits);
  info.PublicKey.pbData = room.Place(bits);
  const Converted call = Convert(info);
  EXPECT_EQ(call.result, 1);
  Bytes blob = call.blob.value();
  const Bytes header = ModelHeader(0x2E23, (SizeOf(blob) - 16) * 8);
  EXPECT_TRUE(std::equal(header.begin(), header.end(), blob.begin()));
  blob.erase(blob.begin(), blob.begin() + 16);
  return blob;
}

TEST(UnwrapRule, AnOctetStringThatFillsTheKeyIsUnwrapped) {
  EXPECT_EQ(KeyOf(Bytes{0x04, 0x40} + Counted(64)), Counted(64));
  EXPECT_EQ(KeyOf(Bytes{0x04, 0x7F} + Counted(127)), Counted(127));
  EXPECT_EQ(KeyOf(Bytes{0x04, 0x81, 0x80} + Counted(128)), Counted(128));
  EXPECT_EQ(KeyOf(Bytes{0x04, 0x81, 0xFF} + Counted(255)), Counted(255));
}

TEST(UnwrapRule, AKeyWithAHeaderOfFourBytesStaysWhole) {
  const Bytes bits = Bytes{0x04, 0x82, 0x01, 0x00} + Counted(256);
  const Converted call = Convert(kGost2001, {}, bits);
  EXPECT_EQ(call.blob, ModelHeader(0x2E23, 2080) + bits);
}

TEST(UnwrapRule, ALengthMayBeLongerThanItNeedsToBe) {
  EXPECT_EQ(KeyOf(Bytes{0x04, 0x81, 0x40} + Counted(64)), Counted(64));
  EXPECT_EQ(KeyOf(Bytes{0x04, 0x81, 0x00}), Bytes{});
}

TEST(UnwrapRule, AnOctetStringThatLeavesOneByteOverIsUnwrapped) {
  EXPECT_EQ(KeyOf(Bytes{0x04, 0x3F} + Counted(64)), Counted(63));
  EXPECT_EQ(KeyOf(Bytes{0x04, 0x00, 0x09}), Bytes{});
}

TEST(UnwrapRule, AnOctetStringThatLacksAByteStaysWhole) {
  // The lengths alone would let it pass: 128 is two less than 130.
  const Bytes bits = Bytes{0x04, 0x81, 0x80} + Counted(127);
  EXPECT_EQ(KeyOf(bits), bits);
}

TEST(UnwrapRule, AKeyOfFewerThanThreeBytesStaysWhole) {
  for (const Bytes& bits :
       {Bytes{}, Bytes{0x04}, Bytes{0x04, 0x00}, Bytes{0x04, 0x01}}) {
    EXPECT_EQ(KeyOf(bits), bits);
  }
}

TEST(UnwrapRule, AKeyWithAnyOtherIdentifierStaysWhole) {
  for (unsigned int identifier = 0; identifier < 256; ++identifier) {
    const Bytes bits =
        Bytes{static_cast<unsigned char>(identifier), 0x40} + Counted(64);
    EXPECT_EQ(KeyOf(bits), identifier == 4 ? Counted(64) : bits) << identifier;
  }
}

TEST(UnwrapRule, AKeyWhoseTagTakesSeveralBytesStaysWhole) {
  for (const Bytes& identifier :
       {Bytes{0x1F, 0x04}, Bytes{0x1F, 0x80, 0x04},
        Bytes{0x1F, 0x90, 0x80, 0x80, 0x80, 0x04},
        Bytes{0x1F, 0x82, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x04}}) {
    for (unsigned char content = 0; content < 127; ++content) {
      const Bytes bits = identifier + Bytes{content} + Counted(content);
      EXPECT_EQ(KeyOf(bits), bits);
    }
  }
}

// Every header of a content of `length` bytes, and some that only look so.
std::vector<Bytes> HeadersOf(unsigned int length) {
  const auto octet = [&](int shift) {
    return static_cast<unsigned char>(length >> shift);
  };
  const unsigned char kIdentifiers[] = {0x04, 0x24, 0x44, 0x84, 0xC4,
                                        0x03, 0x05, 0x30, 0x00, 0x1F};
  const Bytes kLengths[] = {
      {octet(0)},
      {0x81, octet(0)},
      {0x82, octet(8), octet(0)},
      {0x83, 0, octet(8), octet(0)},
      {0x84, 0, 0, octet(8), octet(0)},
      {0x84, 1, 0, octet(8), octet(0)},
      {0x85, 0, 0, 0, octet(8), octet(0)},
      {0x80},
      {0xFF},
  };
  std::vector<Bytes> headers;
  for (const unsigned char identifier : kIdentifiers) {
    for (const Bytes& form : kLengths) {
      headers.push_back(Bytes{identifier} + form);
    }
  }
  return headers;
}

// Keys of up to 300 bytes, with headers that tell of contents that fit, that
// are too short and that are too long.
TEST(UnwrapRule, EveryLengthAndFormOfHeaderIsUnwrappedAsTheModelDoes) {
  int unwrapped = 0;
  for (unsigned int n = 0; n <= 300; ++n) {
    const Bytes content = Counted(n);
    for (unsigned int length = n < 8 ? 0 : n - 8; length <= n + 2; ++length) {
      for (const Bytes& header : HeadersOf(length)) {
        Bytes bits = header + content;
        bits.resize(n);
        const Bytes key = ModelKey(bits);
        ASSERT_EQ(KeyOf(bits), key)
            << "n " << n << ", header " << testing::PrintToString(header);
        unwrapped += key.size() < n ? 1 : 0;
      }
    }
  }
  // In the short form 127 keys that the OCTET STRING fills and 128 that it
  // leaves a byte of; with one length byte 256.
  EXPECT_EQ(unwrapped, 127 + 128 + 256);
}

// The first two bytes decide most; here they take every value.
TEST(UnwrapRule, AKeyWithAnyFirstTwoBytesIsUnwrappedAsTheModelDoes) {
  for (const unsigned int n : {2u, 3u, 4u, 66u, 130u, 131u, 258u}) {
    Bytes bits = Counted(n);
    for (unsigned int both = 0; both < 0x10000; ++both) {
      bits[0] = static_cast<unsigned char>(both >> 8);
      bits[1] = static_cast<unsigned char>(both);
      const Bytes key = ModelKey(bits);
      if (KeyOf(bits) != key) {
        FAIL() << "n " << n << ", first bytes " << both;
      }
    }
  }
}

}  // namespace
}  // namespace korvan::test
