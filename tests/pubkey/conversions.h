// The two conversions as functions of values.
#ifndef KORVAN_TESTS_PUBKEY_CONVERSIONS_H_
#define KORVAN_TESTS_PUBKEY_CONVERSIONS_H_

#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>

#include "support/bytes.h"
#include "support/untouched_error.h"

namespace korvan::test {

constexpr char kGost2001[] = "1.2.643.2.2.19";
constexpr char kRsa[] = "1.2.840.113549.1.1.1";
constexpr char kOwnGost94[] = "1.3.6.1.4.1.86913.2.1.2.2";

// A size that no call sets, so that a test can tell whether one was set.
constexpr unsigned int kUntouchedSize = 0xDDDDDDDD;

// An output buffer as an earlier call leaves it.
inline unsigned char* EarlierBuffer() {
  return static_cast<unsigned char*>(std::malloc(5));
}

// The bytes of an output buffer, which is freed; nothing where it is null.
inline std::optional<Bytes> Take(unsigned char* buffer, unsigned int size) {
  if (buffer == nullptr) {
    return std::nullopt;
  }
  Bytes bytes(buffer, buffer + size);
  std::free(buffer);
  return bytes;
}

// A public key info that borrows the bytes.
inline CERT_PUBLIC_KEY_INFO InfoOf(const char* oid, const Bytes& parameters,
                                   const Bytes& bits) {
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = const_cast<char*>(oid);
  info.Algorithm.Parameters.cbData = SizeOf(parameters);
  info.Algorithm.Parameters.pbData = const_cast<BYTE*>(parameters.data());
  info.PublicKey.cbData = SizeOf(bits);
  info.PublicKey.pbData = const_cast<BYTE*>(bits.data());
  return info;
}

// How a conversion to a blob ended.
struct Converted {
  int result = 0;
  unsigned int error = kUntouchedError;
  std::optional<Bytes> blob;
  unsigned int size = kUntouchedSize;

  friend bool operator==(const Converted&, const Converted&) = default;
  friend void PrintTo(const Converted& call, std::ostream* out) {
    *out << "result " << call.result << ", last error " << std::hex
         << call.error << ", size " << call.size << ", blob "
         << (call.blob ? std::to_string(call.blob->size()) + " bytes" : "none");
  }
};

inline Converted Convert(const CERT_PUBLIC_KEY_INFO& info) {
  Converted call;
  unsigned char* blob = nullptr;
  SetLastError(call.error);
  call.result = KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &call.size);
  call.error = GetLastError();
  call.blob = Take(blob, call.size);
  return call;
}

inline Converted Convert(const char* oid, const Bytes& parameters,
                         const Bytes& bits) {
  return Convert(InfoOf(oid, parameters, bits));
}

// How a split of a blob ended.
struct Encoded {
  int result = 0;
  unsigned int error = kUntouchedError;
  std::optional<Bytes> key;
  unsigned int key_size = kUntouchedSize;
  std::optional<Bytes> parameters;
  unsigned int parameters_size = kUntouchedSize;

  friend bool operator==(const Encoded&, const Encoded&) = default;
  friend void PrintTo(const Encoded& call, std::ostream* out) {
    *out << "result " << call.result << ", last error " << std::hex
         << call.error << ", key size " << call.key_size << ", key "
         << (call.key ? std::to_string(call.key->size()) + " bytes" : "none")
         << ", parameters size " << call.parameters_size << ", parameters "
         << (call.parameters
                 ? std::to_string(call.parameters->size()) + " bytes"
                 : "none");
  }
};

inline Encoded Encode(const unsigned char* blob, unsigned int size) {
  Encoded call;
  unsigned char* key = nullptr;
  unsigned char* parameters = nullptr;
  SetLastError(call.error);
  call.result = KRVEncodePublicKeyAndParametrs(
      0, nullptr, blob, size, 0, 0, &key, &call.key_size, &parameters,
      &call.parameters_size);
  call.error = GetLastError();
  call.key = Take(key, call.key_size);
  call.parameters = Take(parameters, call.parameters_size);
  return call;
}

inline Encoded Encode(const Bytes& blob) {
  return Encode(blob.data(), SizeOf(blob));
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_PUBKEY_CONVERSIONS_H_
