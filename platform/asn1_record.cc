// One ASN.1 record and its byte buffer, as asn1_record.h states them. The
// content of a record has room before it, so that its encoding is made in
// place.
#include <korvan/platform/asn1_record.h>

#include <cstddef>
#include <cstring>
#include <span>

namespace {

using ByteView = std::span<const unsigned char>;

constexpr unsigned int kClassBits = 0xC0;
constexpr unsigned int kConstructedBit = 0x20;
// The number bits of an identifier whose tag number follows, and the least
// number that needs such an identifier.
constexpr unsigned int kLongNumber = 0x1F;
constexpr unsigned int kMoreFollows = 0x80;
constexpr unsigned int kLongLength = 0x80;
// From the class in an identifier octet to the class in a tag.
constexpr int kClassShift = 24;
constexpr unsigned int kNumberBits = 0x3FFFFFFF;

// The Take functions take something from the front of `rest`, and return false
// if it is missing or malformed. Their results are plain: an optional goes
// through memory, which costs more than all the rest of the reading.

bool TakeOctet(ByteView& rest, unsigned int& octet) {
  if (rest.empty()) {
    return false;
  }
  octet = rest.front();
  rest = rest.subspan(1);
  return true;
}

bool TakeLongNumber(ByteView& rest, unsigned int& number) {
  unsigned int octet = 0;
  number = 0;
  do {
    if (!TakeOctet(rest, octet) || number > kNumberBits >> 7) {
      return false;
    }
    number = number << 7 | (octet & ~kMoreFollows);
    if (number == 0) {
      return false;
    }
  } while ((octet & kMoreFollows) != 0);
  return number >= kLongNumber;
}

bool TakeSize(ByteView& rest, unsigned int& size) {
  if (!TakeOctet(rest, size)) {
    return false;
  }
  if (size < kLongLength) {
    return true;
  }
  const unsigned int count = size & ~kLongLength;
  if (count == 0 || count > sizeof(size) || count > rest.size()) {
    return false;
  }
  size = 0;
  for (const unsigned int octet : rest.first(count)) {
    size = size << 8 | octet;
  }
  rest = rest.subspan(count);
  return true;
}

// What precedes a record's content. Tag 0 means that there is no header.
struct Header {
  unsigned int tag = 0;
  unsigned int size = 0;
  bool constructed = false;
};

Header TakeHeader(ByteView& rest) {
  unsigned int identifier = 0;
  if (!TakeOctet(rest, identifier)) {
    return {};
  }
  unsigned int number = identifier & kLongNumber;
  if (number == kLongNumber && !TakeLongNumber(rest, number)) {
    return {};
  }
  const unsigned int tag = (identifier & kClassBits) << kClassShift | number;
  unsigned int size = 0;
  if (tag == 0 || !TakeSize(rest, size)) {
    return {};
  }
  return {tag, size, (identifier & kConstructedBit) != 0};
}

// Writes a header in its shortest form so that it ends at `end`, and returns
// where it begins. It has 11 octets at most: an identifier octet and five of a
// 30-bit number, a length octet and four of a 32-bit length.
unsigned char* PutHeader(const Header& header, unsigned char* end) {
  const auto put = [&](unsigned int octet) {
    *--end = static_cast<unsigned char>(octet);
  };
  if (header.size < kLongLength) {
    put(header.size);
  } else {
    unsigned int count = 0;
    for (unsigned int rest = header.size; rest != 0; rest >>= 8) {
      put(rest);
      ++count;
    }
    put(kLongLength | count);
  }
  const unsigned int number = header.tag & kNumberBits;
  const unsigned int identifier = (header.tag >> kClassShift & kClassBits) |
                                  (header.constructed ? kConstructedBit : 0);
  if (number < kLongNumber) {
    put(identifier | number);
  } else {
    put(number & ~kMoreFollows);
    for (unsigned int rest = number >> 7; rest != 0; rest >>= 7) {
      put(rest | kMoreFollows);
    }
    put(identifier | kLongNumber);
  }
  return end;
}

// memmove does not allow null, not even for no bytes.
void Copy(unsigned char* to, const void* from, unsigned int count) {
  if (count != 0) {
    std::memmove(to, from, count);
  }
}

}  // namespace

// Only the bytes that `length` counts are read, and these are copied in before.
// cppcheck-suppress uninitMemberVar
IdentObj::IdentObj() : length(0), data(room_ + kHeaderRoom), heap_(nullptr) {}

IdentObj::IdentObj(const void* bytes, unsigned int count) : IdentObj() {
  Assign(bytes, count);
}

IdentObj::IdentObj(const IdentObj& other)
    : IdentObj(other.data, other.length) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): Assign copies first.
IdentObj& IdentObj::operator=(const IdentObj& other) {
  Assign(other.data, other.length);
  return *this;
}

IdentObj::~IdentObj() { delete[] heap_; }

void IdentObj::Assign(const void* bytes, unsigned int count) {
  if (heap_ != nullptr || count > kMostInPlace) {
    return AssignElsewhere(bytes, count);
  }
  length = count;
  Copy(data, bytes, count);
}

void IdentObj::AssignElsewhere(const void* bytes, unsigned int count) {
  unsigned char* const heap =
      count <= kMostInPlace
          ? nullptr
          : new unsigned char[std::size_t{kHeaderRoom} + count];
  unsigned char* const place = (heap == nullptr ? room_ : heap) + kHeaderRoom;
  // The bytes may be this buffer's own, so they are freed after the copy.
  Copy(place, bytes, count);
  delete[] heap_;
  heap_ = heap;
  data = place;
  length = count;
}

CASNTBaseRecord::CASNTBaseRecord() : tag_(0), size_(0), constructed_(false) {}

CASNTBaseRecord::~CASNTBaseRecord() = default;

bool CASNTBaseRecord::SetEncodedEntry(const IdentObj& encoded) {
  ByteView rest(encoded.data, encoded.length);
  const Header header = TakeHeader(rest);
  const bool whole = header.tag != 0 && header.size <= rest.size();
  content_.Assign(rest.data(), whole ? header.size : 0);
  tag_ = header.tag;
  size_ = header.size;
  constructed_ = header.constructed;
  return whole;
}

unsigned int CASNTBaseRecord::GetTag() const { return tag_; }

unsigned int CASNTBaseRecord::GetEntrySize() const { return size_; }

bool CASNTBaseRecord::GetIsConstraction() const { return constructed_; }

const IdentObj& CASNTBaseRecord::GetRecord(int* status) const {
  if (const Asn1Status found = FindStatus(); found != kAsn1Ok) {
    *status = found;
  }
  return content_;
}

void CASNTBaseRecord::SetTag(unsigned int tag) {
  tag_ = tag;
  constructed_ = false;
}

void CASNTBaseRecord::SetEntry(const void* bytes, unsigned int count) {
  content_.Assign(bytes, count);
  size_ = count;
}

const IdentObj& CASNTBaseRecord::GetEncodedRecord(int* status) const {
  encoding_.data = PutHeader({tag_, size_, constructed_}, content_.data);
  const std::ptrdiff_t total = content_.data - encoding_.data + size_;
  encoding_.length = static_cast<unsigned int>(total);
  Asn1Status found = FindStatus();
  if (tag_ != 0 && total != encoding_.length) {
    found = kAsn1TooLong;
  }
  if (found != kAsn1Ok) {
    *status = found;
    encoding_.length = 0;
  }
  return encoding_;
}

Asn1Status CASNTBaseRecord::FindStatus() const {
  if (tag_ == 0) {
    return kAsn1NoRecord;
  }
  return content_.length == size_ ? kAsn1Ok : kAsn1ContentMissing;
}
