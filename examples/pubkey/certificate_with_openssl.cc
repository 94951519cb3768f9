// Reads a certificate by OpenSSL, and makes a key blob of its public key.
#include <korvan/korvan.h>
#include <openssl/x509.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

// Makes the blob of a certificate's public key, or returns false.
static bool Convert(const X509* certificate) {
  ASN1_OBJECT* algorithm = nullptr;
  const unsigned char* key = nullptr;
  int key_size = 0;
  X509_ALGOR* identifier = nullptr;
  X509_PUBKEY_get0_param(&algorithm, &key, &key_size, &identifier,
                         X509_get_X509_PUBKEY(certificate));
  char oid[128];
  const int oid_size = OBJ_obj2txt(oid, sizeof(oid), algorithm, 1);
  if (oid_size <= 0 || oid_size >= int{sizeof(oid)}) {
    return false;
  }
  unsigned char* parameters = nullptr;
  const int parameters_size =
      identifier->parameter == nullptr
          ? 0
          : i2d_ASN1_TYPE(identifier->parameter, &parameters);

  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = oid;
  info.Algorithm.Parameters = {static_cast<DWORD>(parameters_size), parameters};
  // The library only reads the key.
  info.PublicKey = {static_cast<DWORD>(key_size),
                    const_cast<unsigned char*>(key), 0};
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  const bool done = parameters_size >= 0 && korvan::KRVConvertPublicKeyInfo(
                                                0, &info, 0, 0, &blob, &size);
  std::printf("%s: %d and %d bytes make a blob of %u\n", oid, key_size,
              parameters_size, size);
  std::free(blob);
  OPENSSL_free(parameters);
  return done;
}

int main(int count, char** arguments) {
  std::ifstream file(count == 2 ? arguments[1] : "", std::ios::binary);
  const std::vector<unsigned char> der{std::istreambuf_iterator<char>(file),
                                       {}};
  const unsigned char* at = der.data();
  X509* const certificate = d2i_X509(nullptr, &at, long(der.size()));
  const bool done = certificate != nullptr && Convert(certificate);
  X509_free(certificate);
  return done && std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 1.2.643.2.2.19: 66 and 20 bytes make a blob of 100
