// Reads a certificate's public key without a library for that, and makes a key
// blob of it.
#include <korvan/korvan.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "examples/pubkey/der.h"

// What X.509 puts before the key, and the key. `from` is left with whatever
// stands behind the certificate.
static bool TakePublicKey(Bytes& from, Bytes& oid, Bytes& parameters,
                          Bytes& bits) {
  Bytes certificate, contents, info, skipped;
  if (!Take(from, 0x30, certificate) || !Take(certificate, 0x30, contents)) {
    return false;
  }
  Take(contents, 0xA0, skipped);  // the version may be absent
  // The parameters are what stands behind the OID, as they are encoded.
  return Take(contents, 0x02, skipped) &&  // serial number
         Take(contents, 0x30, skipped) &&  // signature algorithm
         Take(contents, 0x30, skipped) &&  // issuer
         Take(contents, 0x30, skipped) &&  // validity
         Take(contents, 0x30, skipped) &&  // subject
         Take(contents, 0x30, info) && Take(info, 0x30, parameters) &&
         Take(parameters, 0x06, oid) && Take(info, 0x03, bits) &&
         bits.size >= 1 && bits.at[0] <= 7;
}

int main(int count, char** arguments) {
  std::ifstream file(count == 2 ? arguments[1] : "", std::ios::binary);
  std::vector<unsigned char> der{std::istreambuf_iterator<char>(file), {}};
  Bytes from = {der.data(), der.size()};
  Bytes oid, parameters, bits;
  if (der.size() > 1 << 20 || !TakePublicKey(from, oid, parameters, bits)) {
    std::fprintf(stderr, "no certificate in DER\n");
    return 1;
  }
  std::string dotted = Dotted(oid);
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = dotted.data();
  info.Algorithm.Parameters = {DWORD(parameters.size), parameters.at};
  // The number of unused bits stands before the content.
  info.PublicKey = {DWORD(bits.size - 1), bits.at + 1, bits.at[0]};
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  const int done =
      korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size);
  std::printf("%s: %zu and %zu bytes make a blob of %u\n", dotted.c_str(),
              bits.size - 1, parameters.size, size);
  std::free(blob);
  return done && std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 1.2.643.2.2.19: 66 and 20 bytes make a blob of 100
