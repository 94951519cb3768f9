// The bundled record classes: what they read, report and write.
#include <gtest/gtest.h>
#include <korvan/platform/asn1_record.h>

#include <memory>
#include <new>
#include <ostream>
#include <string>

#include "support/bytes.h"
#include "support/guarded_room.h"
#include "support/heap_watch.h"

namespace korvan::test {
namespace {

constexpr unsigned int kInPlace = 528;

Bytes BytesOf(const IdentObj& buffer) {
  return {buffer.data, buffer.data + buffer.length};
}

IdentObj BufferOf(const Bytes& bytes) { return {bytes.data(), SizeOf(bytes)}; }

TEST(IdentObj, ANewBufferIsEmpty) {
  const IdentObj buffer;
  EXPECT_EQ(buffer.length, 0u);
  EXPECT_NE(buffer.data, nullptr);
}

TEST(IdentObj, ABufferMayBeMadeOfNoBytesAtNoAddress) {
  const IdentObj buffer(nullptr, 0);
  EXPECT_EQ(buffer.length, 0u);
  EXPECT_NE(buffer.data, nullptr);
}

TEST(IdentObj, ABufferHoldsACopyOfBytesOfAnyLength) {
  for (const std::size_t count : {1u, 64u, 527u, 528u, 529u, 100000u}) {
    Bytes bytes = Counted(count);
    const IdentObj buffer = BufferOf(bytes);
    bytes.assign(count, 0);
    EXPECT_EQ(BytesOf(buffer), Counted(count));
  }
}

TEST(IdentObj, ABufferReadsNoByteThatItWasNotGiven) {
  GuardedRoom room(5000);
  for (const std::size_t count : {0u, 1u, 64u, 528u, 529u, 5000u}) {
    const unsigned char* const bytes = room.Place(Counted(count));
    EXPECT_EQ(BytesOf(IdentObj(bytes, static_cast<unsigned int>(count))),
              Counted(count));
  }
}

TEST(IdentObj, ABufferTakesNoHeapForWhatFitsInPlace) {
  const Bytes bytes = Counted(kInPlace);
  HeapWatch watch;
  {
    const IdentObj buffer(bytes.data(), kInPlace);
    IdentObj copy(buffer);
    copy = buffer;
  }
  watch.Stop();
  EXPECT_TRUE(watch.Sizes().empty());
  EXPECT_TRUE(watch.Freed().empty());
}

TEST(IdentObj, ABufferTakesTheHeapOnceForMoreAndGivesItBack) {
  const Bytes bytes = Counted(kInPlace + 1);
  HeapWatch watch;
  { const IdentObj buffer(bytes.data(), kInPlace + 1); }
  watch.Stop();
  EXPECT_EQ(watch.Sizes().size(), 1u);
  EXPECT_EQ(watch.Freed().size(), 1u);
}

TEST(IdentObj, ACopyOutlivesItsSource) {
  for (const std::size_t count : {0u, 64u, 600u}) {
    auto source = std::make_unique<IdentObj>(BufferOf(Counted(count)));
    const IdentObj copy(*source);
    source.reset();
    EXPECT_EQ(BytesOf(copy), Counted(count));
  }
}

TEST(IdentObj, AnAssignedBufferOutlivesItsSourceWhateverItHeld) {
  for (const std::size_t held : {0u, 64u, 600u, 700u}) {
    for (const std::size_t count : {0u, 1u, 64u, 600u, 800u}) {
      IdentObj buffer = BufferOf(Bytes(held, 0xEE));
      auto source = std::make_unique<IdentObj>(BufferOf(Counted(count)));
      EXPECT_EQ(&(buffer = *source), &buffer);
      source.reset();
      EXPECT_EQ(BytesOf(buffer), Counted(count));
    }
  }
}

TEST(IdentObj, ABufferMayBeAssignedToItself) {
  for (const std::size_t count : {0u, 64u, 600u}) {
    IdentObj buffer = BufferOf(Counted(count));
    const IdentObj& same = buffer;
    buffer = same;
    EXPECT_EQ(BytesOf(buffer), Counted(count));
  }
}

TEST(IdentObj, AnAssignmentGivesBackWhatTheBufferHeld) {
  const Bytes bytes = Counted(600);
  const IdentObj large(bytes.data(), 600);
  for (const unsigned int count : {0u, 64u, kInPlace}) {
    const IdentObj small(bytes.data(), count);
    IdentObj buffer(bytes.data(), 600);
    HeapWatch watch;
    buffer = large;
    buffer = small;
    watch.Stop();
    EXPECT_EQ(watch.Sizes().size(), 1u);
    EXPECT_EQ(watch.Freed().size(), 2u);
  }
}

TEST(IdentObj, ABufferWithoutMemoryThrows) {
  const Bytes bytes = Counted(600);
  HeapWatch watch(1);
  EXPECT_THROW(IdentObj(bytes.data(), 600), std::bad_alloc);
}

TEST(IdentObj, AFailedAssignmentLeavesTheBufferAsItWas) {
  const IdentObj source = BufferOf(Counted(600));
  IdentObj buffer = BufferOf({1, 2, 3});
  {
    HeapWatch watch(1);
    EXPECT_THROW(buffer = source, std::bad_alloc);
  }
  EXPECT_EQ(BytesOf(buffer), (Bytes{1, 2, 3}));
}

// What a record gives after bytes were read, in one comparable value.
struct Reading {
  bool whole;
  unsigned int tag;
  bool constructed;
  unsigned int size;
  int status;
  Bytes content;

  friend bool operator==(const Reading&, const Reading&) = default;
  friend void PrintTo(const Reading& reading, std::ostream* out) {
    *out << (reading.whole ? "whole" : "not whole") << ", tag " << std::hex
         << reading.tag << (reading.constructed ? ", constructed" : "")
         << ", size " << reading.size << ", status " << reading.status
         << ", content " << testing::PrintToString(reading.content);
  }
};

const Reading kBlank = {false, 0, false, 0, kAsn1NoRecord, {}};

Reading ReadingOf(const CASNTBaseRecord& record, bool whole) {
  Reading reading{whole,
                  record.GetTag(),
                  record.GetIsConstraction(),
                  record.GetEntrySize(),
                  kAsn1Ok,
                  {}};
  reading.content = BytesOf(record.GetRecord(&reading.status));
  return reading;
}

Reading Read(const Bytes& encoded) {
  CASNTBaseRecord record;
  const bool whole = record.SetEncodedEntry(BufferOf(encoded));
  return ReadingOf(record, whole);
}

Bytes Encode(unsigned int tag, const Bytes& content) {
  CASNTBaseRecord record;
  record.SetTag(tag);
  record.SetEntry(content.data(), SizeOf(content));
  int status = 0;
  const Bytes encoded = BytesOf(record.GetEncodedRecord(&status));
  EXPECT_EQ(status, kAsn1Ok);
  return encoded;
}

TEST(Asn1Record, ANewRecordIsBlank) {
  const CASNTBaseRecord record;
  EXPECT_EQ(ReadingOf(record, false), kBlank);
}

TEST(Asn1Record, TagLengthAndContentAreRead) {
  EXPECT_EQ(Read({0x04, 0x03, 1, 2, 3}),
            (Reading{true, 4, false, 3, kAsn1Ok, {1, 2, 3}}));
}

TEST(Asn1Record, ARecordWithoutContentIsRead) {
  EXPECT_EQ(Read({0x05, 0x00}), (Reading{true, 5, false, 0, kAsn1Ok, {}}));
}

TEST(Asn1Record, TheConstructedBitIsRead) {
  EXPECT_EQ(Read({0x30, 0x02, 0x05, 0x00}),
            (Reading{true, 16, true, 2, kAsn1Ok, {0x05, 0x00}}));
}

TEST(Asn1Record, OnlyTheFirstRecordOfTheBytesIsRead) {
  EXPECT_EQ(Read({0x04, 0x01, 7, 0x02, 0x01, 9}),
            (Reading{true, 4, false, 1, kAsn1Ok, {7}}));
}

TEST(Asn1Record, AContentThatIsThereLeavesTheStatusAlone) {
  CASNTBaseRecord record;
  record.SetEncodedEntry(BufferOf({0x04, 0x00}));
  int status = 77;
  record.GetRecord(&status);
  EXPECT_EQ(status, 77);
  record.GetEncodedRecord(&status);
  EXPECT_EQ(status, 77);
}

TEST(Asn1Record, ATagHasItsClassInTheTopBits) {
  EXPECT_EQ(Read({0x04, 0x00}).tag, 4u);
  EXPECT_EQ(Read({0x44, 0x00}).tag, 0x40000004u);
  EXPECT_EQ(Read({0x84, 0x00}).tag, 0x80000004u);
  EXPECT_EQ(Read({0xC4, 0x00}).tag, 0xC0000004u);
  EXPECT_EQ(Read({0xA0, 0x00}).tag, 0x80000000u);
}

TEST(Asn1Record, TagNumbersOfSeveralBytesAreRead) {
  EXPECT_EQ(Read({0x1E, 0x00}).tag, 30u);
  EXPECT_EQ(Read({0x1F, 0x1F, 0x00}).tag, 31u);
  EXPECT_EQ(Read({0x1F, 0x7F, 0x00}).tag, 127u);
  EXPECT_EQ(Read({0x5F, 0x81, 0x00, 0x00}).tag, 0x40000080u);
  EXPECT_EQ(Read({0xBF, 0x82, 0x83, 0x04, 0x01, 9}),
            (Reading{true, 0x80008184, true, 1, kAsn1Ok, {9}}));
  EXPECT_EQ(Read({0xDF, 0x83, 0xFF, 0xFF, 0xFF, 0x7F, 0x00}).tag, 0xFFFFFFFFu);
}

TEST(Asn1Record, LengthsOfOneToFourBytesAreReadMinimalOrNot) {
  for (const Bytes& header :
       {Bytes{0x04, 0x02}, Bytes{0x04, 0x81, 0x02},
        Bytes{0x04, 0x82, 0x00, 0x02}, Bytes{0x04, 0x83, 0x00, 0x00, 0x02},
        Bytes{0x04, 0x84, 0x00, 0x00, 0x00, 0x02}}) {
    EXPECT_EQ(Read(header + Bytes{8, 9}),
              (Reading{true, 4, false, 2, kAsn1Ok, {8, 9}}));
  }
  EXPECT_EQ(Read(Bytes{0x04, 0x83, 0x01, 0x02, 0x03} + Counted(0x010203)),
            (Reading{true, 4, false, 0x010203, kAsn1Ok, Counted(0x010203)}));
}

TEST(Asn1Record, NoBytesAreABlankRecord) { EXPECT_EQ(Read({}), kBlank); }

TEST(Asn1Record, ATruncatedIdentifierIsABlankRecord) {
  EXPECT_EQ(Read({0x1F}), kBlank);
  EXPECT_EQ(Read({0x1F, 0x81}), kBlank);
  EXPECT_EQ(Read({0x1F, 0x81, 0x82}), kBlank);
}

TEST(Asn1Record, ATagNumberThatBeginsWithZerosIsABlankRecord) {
  EXPECT_EQ(Read({0x1F, 0x80, 0x1F, 0x00}), kBlank);
  EXPECT_EQ(Read({0x9F, 0x80, 0x1F, 0x00}), kBlank);
  EXPECT_EQ(Read({0x1F, 0x80, 0x80, 0x80, 0x80, 0x04, 0x00}), kBlank);
}

TEST(Asn1Record, AnIdentifierLongerThanItsNumberNeedsIsABlankRecord) {
  EXPECT_EQ(Read({0x1F, 0x00, 0x00}), kBlank);
  EXPECT_EQ(Read({0x1F, 0x04, 0x00}), kBlank);
  EXPECT_EQ(Read({0x9F, 0x1E, 0x00}), kBlank);
}

TEST(Asn1Record, ATagNumberOfMoreThanThirtyBitsIsABlankRecord) {
  EXPECT_EQ(Read({0x1F, 0x84, 0x80, 0x80, 0x80, 0x00, 0x00}), kBlank);
  // In 32 bits this number would be 4.
  EXPECT_EQ(Read({0x1F, 0x90, 0x80, 0x80, 0x80, 0x04, 0x00}), kBlank);
  EXPECT_EQ(Read({0x1F, 0x83, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0x00}), kBlank);
}

TEST(Asn1Record, TheEndOfContentsMarkIsABlankRecord) {
  EXPECT_EQ(Read({0x00, 0x00}), kBlank);
  EXPECT_EQ(Read({0x20, 0x01, 1}), kBlank);
}

TEST(Asn1Record, AMissingOrTruncatedLengthIsABlankRecord) {
  EXPECT_EQ(Read({0x04}), kBlank);
  EXPECT_EQ(Read({0x1F, 0x1F}), kBlank);
  EXPECT_EQ(Read({0x04, 0x81}), kBlank);
  EXPECT_EQ(Read({0x04, 0x82, 0x00}), kBlank);
  EXPECT_EQ(Read({0x04, 0x84, 0x00, 0x00, 0x00}), kBlank);
}

TEST(Asn1Record, AnIndefiniteLengthIsABlankRecord) {
  EXPECT_EQ(Read({0x04, 0x80, 1, 2, 0x00, 0x00}), kBlank);
  EXPECT_EQ(Read({0x24, 0x80, 0x04, 0x00, 0x00, 0x00}), kBlank);
}

TEST(Asn1Record, ALengthOfMoreThanFourBytesIsABlankRecord) {
  EXPECT_EQ(Read({0x04, 0x85, 0, 0, 0, 0, 1, 9}), kBlank);
  EXPECT_EQ(Read(Bytes{0x04, 0xFF} + Bytes(127) + Bytes{1}), kBlank);
}

TEST(Asn1Record, ARecordWhoseContentIsMissingHasTagAndLength) {
  EXPECT_EQ(Read({0x04, 0x01}),
            (Reading{false, 4, false, 1, kAsn1ContentMissing, {}}));
  EXPECT_EQ(Read(Bytes{0x04, 0x81, 0x80} + Counted(127)),
            (Reading{false, 4, false, 128, kAsn1ContentMissing, {}}));
  EXPECT_EQ(Read({0x30, 0x84, 0xFF, 0xFF, 0xFF, 0xFF}),
            (Reading{false, 16, true, 0xFFFFFFFF, kAsn1ContentMissing, {}}));
}

TEST(Asn1Record, ARecordReadsNoByteThatItWasNotGiven) {
  const Bytes longest = {0xBF, 0x81, 0x82, 0x03, 0x84, 0, 0, 0, 4, 1, 2, 3, 4};
  GuardedRoom room(longest.size());
  for (std::size_t count = 0; count <= longest.size(); ++count) {
    // A buffer is read where it stands, so that the page behind it guards.
    IdentObj encoded;
    unsigned char* const own = encoded.data;
    encoded.data = room.Place({longest.data(), count});
    encoded.length = static_cast<unsigned int>(count);
    CASNTBaseRecord record;
    EXPECT_EQ(record.SetEncodedEntry(encoded), count == longest.size());
    encoded.data = own;
  }
}

TEST(Asn1Record, ARecordOutlivesTheBytesThatItRead) {
  CASNTBaseRecord record;
  bool whole = false;
  {
    const auto encoded =
        std::make_unique<IdentObj>(BufferOf(Bytes{0x04, 0x02, 1, 2}));
    whole = record.SetEncodedEntry(*encoded);
  }
  EXPECT_EQ(ReadingOf(record, whole),
            (Reading{true, 4, false, 2, kAsn1Ok, {1, 2}}));
}

TEST(Asn1Record, ARecordCanReadTheRecordInsideItself) {
  for (const std::size_t count : {3u, 600u, 70000u}) {
    CASNTBaseRecord record;
    const Bytes inner = Encode(2, Counted(count));
    ASSERT_TRUE(record.SetEncodedEntry(BufferOf(Encode(4, inner))));
    int status = 0;
    const bool whole = record.SetEncodedEntry(record.GetRecord(&status));
    EXPECT_EQ(ReadingOf(record, whole),
              (Reading{true, 2, false, static_cast<unsigned int>(count),
                       kAsn1Ok, Counted(count)}));
  }
}

TEST(Asn1Record, ARecordThatReadsAgainForgetsWhatItHeld) {
  CASNTBaseRecord record;
  record.SetEncodedEntry(BufferOf({0x30, 0x02, 0x05, 0x00}));
  EXPECT_EQ(ReadingOf(record, record.SetEncodedEntry(BufferOf({0x04, 0x80}))),
            kBlank);
  record.SetEncodedEntry(BufferOf({0x30, 0x02, 0x05, 0x00}));
  EXPECT_EQ(ReadingOf(record, record.SetEncodedEntry(BufferOf({0x04, 0x01}))),
            (Reading{false, 4, false, 1, kAsn1ContentMissing, {}}));
}

TEST(Asn1Record, AFailedReadLeavesTheRecordAsItWas) {
  const IdentObj encoded = BufferOf(Encode(4, Counted(600)));
  CASNTBaseRecord record;
  record.SetEncodedEntry(BufferOf({0x30, 0x02, 0x05, 0x00}));
  {
    HeapWatch watch(1);
    EXPECT_THROW(record.SetEncodedEntry(encoded), std::bad_alloc);
  }
  EXPECT_EQ(ReadingOf(record, true),
            (Reading{true, 16, true, 2, kAsn1Ok, {0x05, 0x00}}));
}

TEST(Asn1Record, AKeyOf512BytesAndItsHeaderTakeNoHeap) {
  const IdentObj encoded = BufferOf(Encode(4, Counted(512)));
  HeapWatch watch;
  {
    CASNTBaseRecord record;
    record.SetEncodedEntry(encoded);
    int status = 0;
    const IdentObj key = record.GetRecord(&status);
    record.SetTag(4);
    record.SetEntry(key.data, key.length);
    record.GetEncodedRecord(&status);
  }
  watch.Stop();
  EXPECT_TRUE(watch.Sizes().empty());
}

TEST(Asn1Record, MalformedBytesNeverThrowEvenWithoutMemory) {
  const IdentObj malformed =
      BufferOf(Bytes{0x04, 0x84, 0xFF, 0xFF, 0xFF, 0xFF} + Counted(1000));
  CASNTBaseRecord record;
  HeapWatch watch(1);
  EXPECT_NO_THROW(record.SetEncodedEntry(malformed));
}

TEST(Asn1Record, ARecordIsEncodedInDer) {
  EXPECT_EQ(Encode(4, {}), (Bytes{0x04, 0x00}));
  EXPECT_EQ(Encode(4, {1, 2}), (Bytes{0x04, 0x02, 1, 2}));
}

TEST(Asn1Record, ARecordIsEncodedWithTheShortestLength) {
  EXPECT_EQ(Encode(4, Counted(127)), (Bytes{0x04, 0x7F} + Counted(127)));
  EXPECT_EQ(Encode(4, Counted(128)), (Bytes{0x04, 0x81, 0x80} + Counted(128)));
  EXPECT_EQ(Encode(4, Counted(255)), (Bytes{0x04, 0x81, 0xFF} + Counted(255)));
  EXPECT_EQ(Encode(4, Counted(256)),
            (Bytes{0x04, 0x82, 0x01, 0x00} + Counted(256)));
  EXPECT_EQ(Encode(4, Counted(65535)),
            (Bytes{0x04, 0x82, 0xFF, 0xFF} + Counted(65535)));
  EXPECT_EQ(Encode(4, Counted(65536)),
            (Bytes{0x04, 0x83, 0x01, 0x00, 0x00} + Counted(65536)));
  EXPECT_EQ(Encode(4, Counted(0x1020304)),
            (Bytes{0x04, 0x84, 0x01, 0x02, 0x03, 0x04} + Counted(0x1020304)));
}

TEST(Asn1Record, ARecordIsEncodedWithItsClassAndTheShortestNumber) {
  EXPECT_EQ(Encode(30, {}), (Bytes{0x1E, 0x00}));
  EXPECT_EQ(Encode(31, {}), (Bytes{0x1F, 0x1F, 0x00}));
  EXPECT_EQ(Encode(127, {}), (Bytes{0x1F, 0x7F, 0x00}));
  EXPECT_EQ(Encode(128, {}), (Bytes{0x1F, 0x81, 0x00, 0x00}));
  EXPECT_EQ(Encode(0x40000004, {}), (Bytes{0x44, 0x00}));
  EXPECT_EQ(Encode(0x80000000, {}), (Bytes{0x80, 0x00}));
  EXPECT_EQ(Encode(0xC0008184, {}), (Bytes{0xDF, 0x82, 0x83, 0x04, 0x00}));
  EXPECT_EQ(Encode(0xFFFFFFFF, {}),
            (Bytes{0xDF, 0x83, 0xFF, 0xFF, 0xFF, 0x7F, 0x00}));
}

TEST(Asn1Record, ARecordGivesBackTheTagThatItWasGiven) {
  CASNTBaseRecord record;
  record.SetTag(4);
  EXPECT_EQ(record.GetTag(), 4u);
  EXPECT_FALSE(record.GetIsConstraction());
}

TEST(Asn1Record, ANewTagMakesARecordPrimitiveAndLeavesItsContent) {
  CASNTBaseRecord record;
  record.SetEncodedEntry(BufferOf({0x30, 0x02, 0x05, 0x00}));
  record.SetTag(4);
  EXPECT_EQ(ReadingOf(record, true),
            (Reading{true, 4, false, 2, kAsn1Ok, {0x05, 0x00}}));
}

TEST(Asn1Record, ANewContentLeavesTagAndConstructedBit) {
  CASNTBaseRecord record;
  record.SetEncodedEntry(BufferOf({0x30, 0x02, 0x05, 0x00}));
  record.SetEntry("\x02\x01\x07", 3);
  int status = 0;
  EXPECT_EQ(BytesOf(record.GetEncodedRecord(&status)),
            (Bytes{0x30, 0x03, 0x02, 0x01, 0x07}));
  EXPECT_EQ(status, kAsn1Ok);
}

TEST(Asn1Record, TagAndContentMayBeSetInAnyOrder) {
  CASNTBaseRecord record;
  record.SetEntry("\x07", 1);
  record.SetTag(4);
  int status = 0;
  EXPECT_EQ(BytesOf(record.GetEncodedRecord(&status)), (Bytes{0x04, 0x01, 7}));
  EXPECT_EQ(status, kAsn1Ok);
}

TEST(Asn1Record, ARecordIsWholeAgainWhenItsMissingContentIsSet) {
  CASNTBaseRecord record;
  record.SetEncodedEntry(BufferOf({0x04, 0x05, 1}));
  record.SetEntry("\x07", 1);
  EXPECT_EQ(ReadingOf(record, true),
            (Reading{true, 4, false, 1, kAsn1Ok, {7}}));
}

TEST(Asn1Record, ARecordMayTakeAPartOfItsOwnContent) {
  CASNTBaseRecord record;
  record.SetEncodedEntry(
      BufferOf(Bytes{0x04, 0x82, 0x02, 0x58} + Counted(600)));
  int status = 0;
  const IdentObj& content = record.GetRecord(&status);
  record.SetEntry(content.data + 1, 599);
  EXPECT_EQ(BytesOf(record.GetRecord(&status)), Bytes(BytesOf(content)));
  EXPECT_EQ(content.length, 599u);
  EXPECT_EQ(content.data[0], 2);
}

TEST(Asn1Record, ARecordWithoutATagHasNoEncoding) {
  CASNTBaseRecord record;
  record.SetEntry("\x07", 1);
  int status = 0;
  EXPECT_EQ(record.GetEncodedRecord(&status).length, 0u);
  EXPECT_EQ(status, kAsn1NoRecord);
}

TEST(Asn1Record, ARecordWithoutItsContentHasNoEncoding) {
  CASNTBaseRecord record;
  record.SetEncodedEntry(BufferOf({0x04, 0x05, 1}));
  int status = 0;
  EXPECT_EQ(record.GetEncodedRecord(&status).length, 0u);
  EXPECT_EQ(status, kAsn1ContentMissing);
}

TEST(Asn1Record, ARecordThatLosesItsTagGivesNoStaleEncoding) {
  CASNTBaseRecord record;
  record.SetTag(4);
  int status = 0;
  EXPECT_EQ(record.GetEncodedRecord(&status).length, 2u);
  record.SetTag(0);
  EXPECT_EQ(record.GetEncodedRecord(&status).length, 0u);
  EXPECT_EQ(status, kAsn1NoRecord);
}

TEST(Asn1Record, ARecordThatLosesItsTagKeepsItsContentAndReportsIt) {
  CASNTBaseRecord record;
  const Bytes content = {0xAA, 0xBB};
  record.SetTag(4);
  record.SetEntry(content.data(), SizeOf(content));
  record.SetTag(0);
  int status = kAsn1Ok;
  EXPECT_EQ(BytesOf(record.GetRecord(&status)), content);
  EXPECT_EQ(status, kAsn1NoRecord);
}

TEST(Asn1Record, ARecordWithoutAContentCanBeEncodedTwice) {
  CASNTBaseRecord record;
  record.SetTag(0xFFFFFFFF);
  int status = 0;
  const Bytes encoding = {0xDF, 0x83, 0xFF, 0xFF, 0xFF, 0x7F, 0x00};
  EXPECT_EQ(BytesOf(record.GetEncodedRecord(&status)), encoding);
  EXPECT_EQ(BytesOf(record.GetEncodedRecord(&status)), encoding);
  EXPECT_EQ(status, kAsn1Ok);
}

TEST(Asn1Record, ARecordIsEncodedAnewAfterEveryChange) {
  CASNTBaseRecord record;
  record.SetTag(4);
  int status = 0;
  EXPECT_EQ(BytesOf(record.GetEncodedRecord(&status)), (Bytes{0x04, 0x00}));
  const Bytes content = Counted(600);
  record.SetEntry(content.data(), 600);
  EXPECT_EQ(BytesOf(record.GetEncodedRecord(&status)),
            (Bytes{0x04, 0x82, 0x02, 0x58} + content));
  record.SetEntry(nullptr, 0);
  EXPECT_EQ(BytesOf(record.GetEncodedRecord(&status)), (Bytes{0x04, 0x00}));
}

TEST(Asn1Record, AFailedChangeOfTheContentLeavesTheRecordAsItWas) {
  const Bytes content = Counted(600);
  CASNTBaseRecord record;
  record.SetTag(4);
  record.SetEntry("\x07", 1);
  {
    HeapWatch watch(1);
    EXPECT_THROW(record.SetEntry(content.data(), 600), std::bad_alloc);
  }
  EXPECT_EQ(ReadingOf(record, true),
            (Reading{true, 4, false, 1, kAsn1Ok, {7}}));
}

TEST(Asn1Record, ANewTagTakesNoMemory) {
  const Bytes content = Counted(600);
  CASNTBaseRecord record;
  record.SetEntry(content.data(), 600);
  HeapWatch watch(1);
  record.SetTag(4);
  record.SetTag(0xFFFFFFFF);
  watch.Stop();
  EXPECT_TRUE(watch.Sizes().empty());
}

TEST(Asn1Record, AnEncodingTakesNoMemory) {
  const Bytes content = Counted(600);
  CASNTBaseRecord record;
  record.SetTag(0xFFFFFFFF);
  record.SetEntry(content.data(), 600);
  int status = 0;
  HeapWatch watch;
  const IdentObj& encoding = record.GetEncodedRecord(&status);
  watch.Stop();
  EXPECT_TRUE(watch.Sizes().empty());
  EXPECT_EQ(
      BytesOf(encoding),
      (Bytes{0xDF, 0x83, 0xFF, 0xFF, 0xFF, 0x7F, 0x82, 0x02, 0x58} + content));
}

TEST(Asn1Record, TheContentStaysValidWhileTheEncodingIsRead) {
  CASNTBaseRecord record;
  record.SetTag(4);
  record.SetEntry("\x07", 1);
  int status = 0;
  const IdentObj& content = record.GetRecord(&status);
  const IdentObj& encoding = record.GetEncodedRecord(&status);
  EXPECT_EQ(BytesOf(content), Bytes{7});
  EXPECT_EQ(BytesOf(encoding), (Bytes{0x04, 0x01, 7}));
}

TEST(Asn1Record, ACopyOfAnEncodingOutlivesTheRecord) {
  for (const std::size_t count : {1u, 600u}) {
    auto record = std::make_unique<CASNTBaseRecord>();
    const Bytes content = Counted(count);
    record->SetTag(2);
    record->SetEntry(content.data(), static_cast<unsigned int>(count));
    int status = 0;
    const IdentObj copy(record->GetEncodedRecord(&status));
    record.reset();
    EXPECT_EQ(Read(BytesOf(copy)).content, content);
  }
}

TEST(Asn1Record, ARecordOfFourGibibytesHasNoEncoding) {
  CASNTBaseRecord record;
  int status = 0;
  // With its six header bytes this one takes 0xFFFFFFFF bytes.
  record.SetEncodedEntry(BufferOf({0x04, 0x84, 0xFF, 0xFF, 0xFF, 0xF9}));
  EXPECT_EQ(record.GetEncodedRecord(&status).length, 0u);
  EXPECT_EQ(status, kAsn1ContentMissing);
  record.SetEncodedEntry(BufferOf({0x04, 0x84, 0xFF, 0xFF, 0xFF, 0xFA}));
  EXPECT_EQ(record.GetEncodedRecord(&status).length, 0u);
  EXPECT_EQ(status, kAsn1TooLong);
  record.SetTag(0);
  record.GetEncodedRecord(&status);
  EXPECT_EQ(status, kAsn1NoRecord);
}

}  // namespace
}  // namespace korvan::test
