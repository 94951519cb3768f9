// Any sequence of operations on two records, beside a plain record that reads
// and writes as X.690 says, with no code of the library's.
#include <korvan/platform/asn1_record.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>

#include "support/bytes.h"
#include "support/input.h"

namespace korvan::test {
namespace {

struct PlainRecord {
  std::uint64_t tag = 0;
  std::uint64_t size = 0;
  bool constructed = false;
  Bytes content;

  int Status() const {
    return tag == 0                 ? kAsn1NoRecord
           : content.size() != size ? kAsn1ContentMissing
                                    : kAsn1Ok;
  }
};

// The number that bytes make with so many bits of each.
std::uint64_t NumberOf(const Bytes& bytes, int bits) {
  std::uint64_t number = 0;
  for (const unsigned char byte : bytes) {
    number = (number << bits) + byte % (1u << bits);
  }
  return number;
}

// How many bytes from `place` on have bit 0x80 set, and the one behind them; or
// nothing where the bytes end before.
std::optional<std::size_t> LengthOfLongNumber(const Bytes& bytes,
                                              std::size_t place) {
  for (std::size_t i = place; i < bytes.size(); ++i) {
    if (bytes[i] < 0x80) {
      return i + 1 - place;
    }
  }
  return std::nullopt;
}

Bytes Part(const Bytes& bytes, std::size_t place, std::size_t size) {
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(place);
  return Bytes(begin, begin + static_cast<std::ptrdiff_t>(size));
}

PlainRecord Read(const Bytes& bytes) {
  if (bytes.empty()) {
    return {};
  }
  std::uint64_t number = bytes[0] % 32;
  std::size_t place = 1;
  if (number == 31) {
    const std::optional<std::size_t> length = LengthOfLongNumber(bytes, place);
    // Five bytes hold 35 bits, and more hold more, unless they begin with 0.
    if (!length || *length > 5 || bytes[place] == 0x80) {
      return {};
    }
    number = NumberOf(Part(bytes, place, *length), 7);
    if (number < 31 || number >= 1u << 30) {
      return {};
    }
    place += *length;
  }
  const std::uint64_t tag = (std::uint64_t{bytes[0]} / 64 << 30) + number;
  if (tag == 0 || place == bytes.size()) {
    return {};
  }
  std::uint64_t size = bytes[place];
  ++place;
  if (size >= 0x80) {
    const std::size_t count = size - 0x80;
    if (count < 1 || count > 4 || count > bytes.size() - place) {
      return {};
    }
    size = NumberOf(Part(bytes, place, count), 8);
    place += count;
  }
  const bool is_whole = size <= bytes.size() - place;
  return {tag, size, bytes[0] / 32 % 2 == 1,
          is_whole ? Part(bytes, place, size) : Bytes()};
}

// The bytes of a number, the highest first, with so many bits in each.
Bytes BytesOf(std::uint64_t number, int bits) {
  Bytes bytes;
  for (; number != 0; number >>= bits) {
    bytes.insert(bytes.begin(),
                 static_cast<unsigned char>(number % (1u << bits)));
  }
  return bytes;
}

Bytes Written(const PlainRecord& record) {
  const std::uint64_t number = record.tag % (1u << 30);
  const auto first = static_cast<unsigned char>(
      (record.tag >> 30) * 64 + (record.constructed ? 32 : 0) +
      std::min<std::uint64_t>(number, 31));
  Bytes written = {first};
  if (number >= 31) {
    Bytes digits = BytesOf(number, 7);
    std::for_each(digits.begin(), digits.end() - 1, [](unsigned char& digit) {
      digit = static_cast<unsigned char>(digit + 0x80);
    });
    written = written + digits;
  }
  if (record.size < 0x80) {
    written.push_back(static_cast<unsigned char>(record.size));
  } else {
    const Bytes digits = BytesOf(record.size, 8);
    written.push_back(static_cast<unsigned char>(0x80 + digits.size()));
    written = written + digits;
  }
  return written + record.content;
}

// Why a record has no encoding.
int StatusOfWriting(const PlainRecord& record) {
  PlainRecord whole = record;
  whole.content.clear();
  return record.tag != 0 && ((Written(whole).size() + record.size) >> 32) != 0
             ? kAsn1TooLong
             : record.Status();
}

// The exact bytes on the heap, so that a read past their end is seen.
class Borrowed {
 public:
  explicit Borrowed(const Bytes& bytes)
      : bytes_(std::make_unique<unsigned char[]>(bytes.size())),
        own_(encoded_.data) {
    std::copy(bytes.begin(), bytes.end(), bytes_.get());
    encoded_.data = bytes_.get();
    encoded_.length = SizeOf(bytes);
  }
  Borrowed(const Borrowed&) = delete;
  Borrowed& operator=(const Borrowed&) = delete;
  ~Borrowed() { encoded_.data = own_; }

  const IdentObj& encoded() const { return encoded_; }

 private:
  std::unique_ptr<unsigned char[]> bytes_;
  IdentObj encoded_;
  unsigned char* own_;
};

Bytes BytesOf(const IdentObj& buffer) {
  return Bytes(buffer.data, buffer.data + buffer.length);
}

class Records {
 public:
  explicit Records(Input& input) : input_(input) {}

  void Run() {
    do {
      Step();
      ExpectSame(0);
      ExpectSame(1);
    } while (input_.remaining_bytes() != 0);
  }

 private:
  Bytes AnyBytes() {
    Bytes bytes = input_.ConsumeBytes<unsigned char>(
        OneIn(input_, 4) ? 4096 : Below(input_, 64));
    // More than stand in a buffer itself.
    if (OneIn(input_, 4)) {
      bytes.resize(bytes.size() + 500 + Below(input_, 64), 0x55);
    }
    return bytes;
  }

  void Step() {
    const std::size_t number = Below(input_, 2);
    CASNTBaseRecord& record = records_[number];
    PlainRecord& plain = plain_[number];
    int status = 0;
    switch (Below(input_, 8)) {
      case 1:
        plain.tag = AnyTag();
        plain.constructed = false;
        record.SetTag(static_cast<unsigned int>(plain.tag));
        break;
      case 2:
        plain.content = AnyBytes();
        plain.size = plain.content.size();
        record.SetEntry(plain.content.data(), SizeOf(plain.content));
        break;
      case 3:
        plain = Read(BytesOf(records_[1 - number].GetEncodedRecord(&status)));
        record.SetEncodedEntry(
            IdentObj(records_[1 - number].GetEncodedRecord(&status)));
        break;
      case 4:
        // Its own content, read as a record.
        plain = Read(BytesOf(record.GetRecord(&status)));
        record.SetEncodedEntry(record.GetRecord(&status));
        break;
      case 5: {
        // A part of its own content.
        const IdentObj& content = record.GetRecord(&status);
        const std::size_t size = content.length / 2;
        plain.content = Part(plain.content, plain.content.size() - size, size);
        plain.size = size;
        record.SetEntry(content.data + (content.length - size),
                        static_cast<unsigned int>(size));
        break;
      }
      case 6:
        Copy();
        break;
      default: {
        const Bytes bytes = AnyBytes();
        plain = Read(bytes);
        const Borrowed borrowed(bytes);
        Expect(record.SetEncodedEntry(borrowed.encoded()) ==
               (plain.Status() == kAsn1Ok));
        break;
      }
    }
  }

  std::uint64_t AnyTag() {
    return input_.ConsumeBool() ? Below(input_, 64)
                                : input_.ConsumeIntegral<std::uint32_t>();
  }

  // Buffers of any two sizes, copied and assigned.
  void Copy() {
    const Bytes bytes = AnyBytes();
    const Bytes others = AnyBytes();
    IdentObj buffer(bytes.data(), SizeOf(bytes));
    const IdentObj other(others.data(), SizeOf(others));
    const IdentObj copy(buffer);
    buffer = *&buffer;
    Expect(BytesOf(copy) == bytes && BytesOf(buffer) == bytes);
    buffer = other;
    Expect(BytesOf(buffer) == others && BytesOf(copy) == bytes);
    buffer = copy;
    Expect(BytesOf(buffer) == bytes && BytesOf(other) == others);
    buffer = IdentObj();
    Expect(buffer.length == 0 && buffer.data != nullptr);
  }

  void ExpectSame(std::size_t number) const {
    const CASNTBaseRecord& record = records_[number];
    const PlainRecord& plain = plain_[number];
    Expect(record.GetTag() == plain.tag);
    Expect(record.GetEntrySize() == plain.size);
    Expect(record.GetIsConstraction() == plain.constructed);
    int status = kAsn1Ok;
    Expect(BytesOf(record.GetRecord(&status)) == plain.content);
    Expect(status == plain.Status());
    status = kAsn1Ok;
    const Bytes written = BytesOf(record.GetEncodedRecord(&status));
    Expect(status == StatusOfWriting(plain));
    Expect(written == (status == kAsn1Ok ? Written(plain) : Bytes()));
  }

  Input& input_;
  CASNTBaseRecord records_[2];
  PlainRecord plain_[2];
};

}  // namespace
}  // namespace korvan::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  korvan::test::Input input(data, size);
  korvan::test::Records(input).Run();
  return 0;
}
