#include <korvan/platform/asn1_record.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

namespace {

using Bytes = std::span<const unsigned char>;

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

std::optional<unsigned int> TakeOctet(Bytes& rest) {
  if (rest.empty()) {
    return std::nullopt;
  }
  const unsigned int octet = rest.front();
  rest = rest.subspan(1);
  return octet;
}

// What stands before a record's content.
struct Header {
  unsigned int tag;
  bool constructed;
  unsigned int size;
};

std::optional<unsigned int> TakeLongNumber(Bytes& rest) {
  unsigned int number = 0;
  std::optional<unsigned int> octet;
  do {
    octet = TakeOctet(rest);
    if (!octet || number > kNumberBits >> 7) {
      return std::nullopt;
    }
    number = number << 7 | (*octet & ~kMoreFollows);
    if (number == 0) {
      return std::nullopt;
    }
  } while ((*octet & kMoreFollows) != 0);
  return number < kLongNumber ? std::nullopt : std::optional(number);
}

std::optional<unsigned int> TakeSize(Bytes& rest) {
  const auto first = TakeOctet(rest);
  if (!first || *first < kLongLength) {
    return first;
  }
  const unsigned int count = *first & ~kLongLength;
  if (count == 0 || count > sizeof(unsigned int) || count > rest.size()) {
    return std::nullopt;
  }
  unsigned int size = 0;
  for (const unsigned int octet : rest.first(count)) {
    size = size << 8 | octet;
  }
  rest = rest.subspan(count);
  return size;
}

std::optional<Header> TakeHeader(Bytes& rest) {
  const auto identifier = TakeOctet(rest);
  if (!identifier) {
    return std::nullopt;
  }
  auto number = std::optional(*identifier & kLongNumber);
  if (number == kLongNumber) {
    number = TakeLongNumber(rest);
  }
  if (!number) {
    return std::nullopt;
  }
  const unsigned int tag = (*identifier & kClassBits) << kClassShift | *number;
  const auto size = TakeSize(rest);
  if (tag == 0 || !size) {
    return std::nullopt;
  }
  return Header{tag, (*identifier & kConstructedBit) != 0, *size};
}

int BitWidth(unsigned int number) {
  return static_cast<int>(std::bit_width(number));
}

// The octets of a header in their shortest form.
class EncodedHeader {
 public:
  explicit EncodedHeader(const Header& header) {
    const unsigned int number = header.tag & kNumberBits;
    const unsigned int identifier = (header.tag >> kClassShift & kClassBits) |
                                    (header.constructed ? kConstructedBit : 0);
    if (number < kLongNumber) {
      Put(identifier | number);
    } else {
      Put(identifier | kLongNumber);
      for (int shift = (BitWidth(number) - 1) / 7 * 7; shift > 0; shift -= 7) {
        Put(kMoreFollows | number >> shift);
      }
      Put(number & ~kMoreFollows);
    }
    if (header.size < kLongLength) {
      Put(header.size);
    } else {
      const int count = (BitWidth(header.size) + 7) / 8;
      Put(kLongLength | static_cast<unsigned int>(count));
      for (int shift = (count - 1) * 8; shift >= 0; shift -= 8) {
        Put(header.size >> shift);
      }
    }
  }

  Bytes octets() const { return Bytes(octets_, count_); }

 private:
  void Put(unsigned int octet) {
    octets_[count_++] = static_cast<unsigned char>(octet);
  }

  // One octet and five of a 30-bit number, one and four of a 32-bit length.
  unsigned char octets_[11];
  std::size_t count_ = 0;
};

// memmove and memcpy want pointers even for no bytes.
void Copy(unsigned char* to, const void* from, unsigned int count) {
  if (count != 0) {
    std::memmove(to, from, count);
  }
}

}  // namespace

IdentObj::IdentObj() noexcept : length(0), data(room_) {}

IdentObj::IdentObj(const void* bytes, unsigned int count)
    : length(count), data(FindRoom(count)) {
  Copy(data, bytes, count);
}

IdentObj::IdentObj(const IdentObj& other)
    : IdentObj(other.data, other.length) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): Assign copies first.
IdentObj& IdentObj::operator=(const IdentObj& other) {
  Assign(other.data, other.length);
  return *this;
}

IdentObj::~IdentObj() { Hold(room_, 0); }

unsigned char* IdentObj::FindRoom(unsigned int count) {
  return count <= sizeof(room_) ? room_ : new unsigned char[count];
}

void IdentObj::Hold(unsigned char* room, unsigned int count) noexcept {
  if (data != room_) {
    delete[] data;
  }
  data = room;
  length = count;
}

void IdentObj::Assign(const void* bytes, unsigned int count) {
  // The bytes may be this buffer's own: they go only when they are copied.
  unsigned char* const room = FindRoom(count);
  Copy(room, bytes, count);
  Hold(room, count);
}

CASNTBaseRecord::CASNTBaseRecord() noexcept
    : tag_(0), size_(0), constructed_(false) {}

CASNTBaseRecord::~CASNTBaseRecord() = default;

bool CASNTBaseRecord::SetEncodedEntry(const IdentObj& encoded) {
  Bytes rest(encoded.data, encoded.length);
  const Header header = TakeHeader(rest).value_or(Header{});
  const bool whole = header.tag != 0 && header.size <= rest.size();
  content_.Assign(rest.data(), whole ? header.size : 0);
  tag_ = header.tag;
  size_ = header.size;
  constructed_ = header.constructed;
  return whole;
}

unsigned int CASNTBaseRecord::GetTag() const noexcept { return tag_; }

unsigned int CASNTBaseRecord::GetEntrySize() const noexcept { return size_; }

bool CASNTBaseRecord::GetIsConstraction() const noexcept {
  return constructed_;
}

const IdentObj& CASNTBaseRecord::GetRecord(int* status) const noexcept {
  if (const Asn1Status found = Status(); found != kAsn1Ok) {
    *status = found;
  }
  return content_;
}

void CASNTBaseRecord::SetTag(unsigned int tag) noexcept {
  tag_ = tag;
  constructed_ = false;
}

void CASNTBaseRecord::SetEntry(const void* bytes, unsigned int count) {
  content_.Assign(bytes, count);
  size_ = count;
}

const IdentObj& CASNTBaseRecord::GetEncodedRecord(int* status) const {
  const EncodedHeader header({tag_, constructed_, size_});
  const Bytes octets = header.octets();
  const std::uint64_t total = octets.size() + std::uint64_t{size_};
  Asn1Status found = Status();
  if (tag_ != 0 && total > std::numeric_limits<unsigned int>::max()) {
    found = kAsn1TooLong;
  }
  if (found != kAsn1Ok) {
    *status = found;
    encoding_.Hold(encoding_.room_, 0);
    return encoding_;
  }
  const auto count = static_cast<unsigned int>(total);
  encoding_.Hold(encoding_.FindRoom(count), count);
  std::ranges::copy(octets, encoding_.data);
  Copy(encoding_.data + octets.size(), content_.data, size_);
  return encoding_;
}

Asn1Status CASNTBaseRecord::Status() const noexcept {
  if (tag_ == 0) {
    return kAsn1NoRecord;
  }
  return content_.length == size_ ? kAsn1Ok : kAsn1ContentMissing;
}
