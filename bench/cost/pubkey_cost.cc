// What it costs to turn a public key into a key blob and back, and to ask for
// the sizes alone.

#include <korvan/korvan.h>

#include <cstddef>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "cost/measure.h"

namespace {

using Bytes = std::vector<unsigned char>;

struct Buffer {
  Buffer() = default;
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  ~Buffer() { std::free(bytes); }

  unsigned char* bytes = nullptr;
  unsigned int size = 0;
};

int ToBlob(const CERT_PUBLIC_KEY_INFO& info, Buffer& blob) {
  return korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob.bytes,
                                         &blob.size);
}

// `header` and `content` are the bit string of a certificate's key.
void MeasureKey(const std::string& size, std::string oid, Bytes parameters,
                Bytes header, std::size_t content) {
  Bytes bits = std::move(header);
  bits.insert(bits.end(), content, 0x5A);
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = oid.data();
  info.Algorithm.Parameters = {static_cast<DWORD>(parameters.size()),
                               parameters.data()};
  info.PublicKey = {static_cast<DWORD>(bits.size()), bits.data(), 0};
  Buffer blob;
  ToBlob(info, blob);

  const auto a_buffer = [] { return Buffer(); };
  Measure("key_to_blob/" + size, a_buffer,
          [&](Buffer& made) { return ToBlob(info, made) == 1; });

  struct Parts {
    Buffer key, parameters;
  };
  Measure(
      "blob_to_key/" + size, [] { return Parts(); },
      [&](Parts& parts) {
        return korvan::KRVEncodePublicKeyAndParametrs(
                   0, nullptr, blob.bytes, blob.size, 0, 0, &parts.key.bytes,
                   &parts.key.size, &parts.parameters.bytes,
                   &parts.parameters.size) == 1;
      });

  Measure("blob_to_key_sizes/" + size, [&] {
    unsigned int key_size = 0;
    unsigned int parameters_size = 0;
    return korvan::KRVEncodePublicKeyAndParametrs(
               0, nullptr, blob.bytes, blob.size, 0, 0, nullptr, &key_size,
               nullptr, &parameters_size) == 1;
  });
}

}  // namespace

int main() {
  // SEQUENCE of the OIDs of a key's and of a hash's parameter sets.
  const Bytes gost = {0x30, 0x12, 0x06, 0x07, 0x2A, 0x85, 0x03,
                      0x02, 0x02, 0x23, 0x01, 0x06, 0x07, 0x2A,
                      0x85, 0x03, 0x02, 0x02, 0x1E, 0x01};
  const Bytes null = {0x05, 0x00};
  // The first two are OCTET STRINGs, to be unwrapped; RSA's SEQUENCE is not.
  MeasureKey("64", "1.2.643.2.2.19", gost, {0x04, 0x40}, 64);
  MeasureKey("128", "1.2.643.2.2.19", gost, {0x04, 0x81, 0x80}, 128);
  MeasureKey("270", "1.2.840.113549.1.1.1", null, {0x30, 0x82, 0x01, 0x0A},
             266);
}
