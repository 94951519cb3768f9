// This host's records: with tags below 31 and contents of up to 65535 bytes,
// which is enough for keys.
#include <korvan/platform/asn1_record.h>

bool CASNTBaseRecord::SetEncodedEntry(const IdentObj& encoded) {
  *this = CASNTBaseRecord();
  const unsigned char* const bytes = encoded.data;
  if (encoded.length < 2) {
    return false;
  }
  const unsigned int octets = bytes[1] < 0x80 ? 0 : bytes[1] - 0x80U;
  if (octets > 2 || encoded.length < 2 + octets) {
    return false;
  }
  unsigned int size = octets == 0 ? bytes[1] : 0;
  for (unsigned int i = 0; i < octets; ++i) {
    size = size * 256 + bytes[2 + i];
  }
  if (size > encoded.length - 2 - octets) {
    return false;
  }
  tag_ = bytes[0] & 0xDFU;
  is_constructed_ = (bytes[0] & 0x20) != 0;
  content_ = IdentObj(bytes + 2 + octets, size);
  return true;
}

const IdentObj& CASNTBaseRecord::GetRecord(int*) const { return content_; }

void CASNTBaseRecord::SetEntry(const void* bytes, unsigned int count) {
  content_ = IdentObj(bytes, count);
}

const IdentObj& CASNTBaseRecord::GetEncodedRecord(int* status) const {
  const unsigned int size = content_.length;
  const auto octet = [](unsigned int number) {
    return static_cast<unsigned char>(number);
  };
  if (size > 0xFFFF) {
    *status = 1;
    return encoding_;
  }
  std::vector<unsigned char> bytes = {octet(tag_)};
  if (size >= 0x80) {
    bytes.push_back(size < 0x100 ? 0x81 : 0x82);
  }
  if (size >= 0x100) {
    bytes.push_back(octet(size >> 8));
  }
  bytes.push_back(octet(size));
  bytes.insert(bytes.end(), content_.data, content_.data + size);
  encoding_ = IdentObj(bytes.data(), static_cast<unsigned int>(bytes.size()));
  return encoding_;
}
