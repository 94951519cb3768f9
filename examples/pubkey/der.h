// Reads DER of bytes that anybody may have written, never beyond their end.
#ifndef KORVAN_EXAMPLES_PUBKEY_DER_H_
#define KORVAN_EXAMPLES_PUBKEY_DER_H_

#include <cstddef>
#include <cstdint>
#include <string>

struct Bytes {
  unsigned char* at;
  std::size_t size;
};

// Takes the first record off `from`, and gives its content. False where its
// identifier is not `tag`, or where not all of it is there.
inline bool Take(Bytes& from, unsigned int tag, Bytes& content) {
  if (from.size < 2 || from.at[0] != tag) {
    return false;
  }
  std::size_t header = 2;
  std::size_t size = from.at[1];
  if (size >= 0x80) {  // so many bytes hold the size
    header += size - 0x80;
    if (header < 3 || header > 6 || header > from.size) {
      return false;
    }
    size = 0;
    for (std::size_t i = 2; i < header; ++i) {
      size = size << 8 | from.at[i];
    }
  }
  if (size > from.size - header) {
    return false;
  }
  content = {from.at + header, size};
  from = {content.at + size, from.size - header - size};
  return true;
}

// An OID with dots, or nothing where the bytes are none.
inline std::string Dotted(Bytes oid) {
  std::string text;
  std::uint64_t number = 0;
  bool ends = false;
  for (std::size_t i = 0; i < oid.size && number >> 57 == 0; ++i) {
    number = number << 7 | (oid.at[i] & 0x7F);
    ends = oid.at[i] < 0x80;
    if (ends) {  // the first number stands for two
      const std::uint64_t root = number < 80 ? number / 40 : 2;
      text += text.empty() ? std::to_string(root) + '.' +
                                 std::to_string(number - root * 40)
                           : '.' + std::to_string(number);
      number = 0;
    }
  }
  return ends ? text : "";
}

#endif  // KORVAN_EXAMPLES_PUBKEY_DER_H_
