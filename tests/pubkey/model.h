// The conversions as plainly as they can be written, without a record class, as
// their model.
#ifndef KORVAN_TESTS_PUBKEY_MODEL_H_
#define KORVAN_TESTS_PUBKEY_MODEL_H_

#include <cstdint>

#include "pubkey/conversions.h"
#include "support/bytes.h"

namespace korvan::test {

// The key of a bit string: the content of a primitive universal OCTET STRING
// that is 2 or 3 bytes shorter than the whole and is all there, else the whole.
inline Bytes ModelKey(const Bytes& bits) {
  const std::size_t n = bits.size();
  if (n < 3 || bits[0] != 0x04) {
    return bits;
  }
  std::size_t header = 2;
  std::uint64_t content = bits[1];
  if (bits[1] >= 0x80) {
    const std::size_t count = bits[1] - 0x80u;
    header += count;
    if (count < 1 || count > 4 || header > n) {
      return bits;
    }
    content = 0;
    for (std::size_t i = 2; i < header; ++i) {
      content = content * 256 + bits[i];
    }
  }
  if ((content != n - 2 && content != n - 3) || header + content > n) {
    return bits;
  }
  const auto begin = bits.begin() + static_cast<std::ptrdiff_t>(header);
  return Bytes(begin, begin + static_cast<std::ptrdiff_t>(content));
}

inline Bytes ModelHeader(unsigned int algorithm, unsigned int bits) {
  const auto octet = [](unsigned int number, int shift) {
    return static_cast<unsigned char>(number >> shift);
  };
  return {0x06,
          0x20,
          0,
          0,
          octet(algorithm, 0),
          octet(algorithm, 8),
          octet(algorithm, 16),
          octet(algorithm, 24),
          'M',
          'A',
          'G',
          '1',
          octet(bits, 0),
          octet(bits, 8),
          octet(bits, 16),
          octet(bits, 24)};
}

inline Bytes ModelBlob(unsigned int algorithm, const Bytes& parameters,
                       const Bytes& bits) {
  const Bytes key = ModelKey(bits);
  return ModelHeader(algorithm, SizeOf(key) * 8) + parameters + key;
}

inline Bytes ModelOctetString(const Bytes& content) {
  Bytes length;
  for (std::size_t rest = content.size(); rest != 0; rest /= 256) {
    length.insert(length.begin(), static_cast<unsigned char>(rest));
  }
  if (content.size() < 128) {
    length.assign(1, static_cast<unsigned char>(content.size()));
  } else {
    length.insert(length.begin(),
                  static_cast<unsigned char>(0x80 + length.size()));
  }
  return Bytes{0x04} + length + content;
}

inline Encoded ModelEncode(const Bytes& blob) {
  Encoded call;
  if (blob.empty()) {
    call.error = ERROR_INVALID_PARAMETER;
    return call;
  }
  const auto word_at = [&](std::size_t at) {
    std::size_t word = 0;
    for (std::size_t i = 4; i > 0; --i) {
      word = word * 256 + blob[at + i - 1];
    }
    return word;
  };
  if (blob.size() < 16 || word_at(12) / 8 > blob.size() - 16) {
    call.error = NTE_BAD_KEY;
    return call;
  }
  const auto key_begin =
      blob.end() - static_cast<std::ptrdiff_t>(word_at(12) / 8);
  const Bytes key(key_begin, blob.end());
  const Bytes parameters(blob.begin() + 16, key_begin);
  call.result = 1;
  call.key = word_at(4) == 0x2E29 ? key : ModelOctetString(key);
  call.key_size = SizeOf(*call.key);
  call.parameters_size = SizeOf(parameters);
  if (!parameters.empty()) {
    call.parameters = parameters;
  }
  return call;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_PUBKEY_MODEL_H_
