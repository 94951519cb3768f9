// Turns a certificate's public key into a key blob, and back.
#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>
#include <cstdlib>

// The key of data/gost2001-A.der, and the parameters of its algorithm.
static unsigned char key[] = {
    0x04, 0x40,  // OCTET STRING, 64 bytes
    0xa5, 0x21, 0x60, 0x64, 0xd2, 0xff, 0x6a, 0x1b, 0xda, 0x00, 0xda,
    0x28, 0x40, 0xa2, 0x62, 0x11, 0x9b, 0x2c, 0x6e, 0x82, 0xf7, 0x5f,
    0xc9, 0x22, 0x94, 0x88, 0x1c, 0x27, 0xcc, 0x4d, 0x41, 0xa0, 0xbc,
    0xb4, 0xdb, 0x7c, 0xc4, 0xf8, 0x8c, 0xf7, 0xf4, 0x2d, 0x66, 0x67,
    0xf4, 0x5e, 0x16, 0xa3, 0x59, 0x5e, 0x68, 0xfd, 0x51, 0xd7, 0xd5,
    0x72, 0x57, 0xd7, 0x89, 0xae, 0xea, 0x66, 0xfa, 0x05};
static unsigned char parameters[] = {0x30, 0x12, 0x06, 0x07, 0x2a, 0x85, 0x03,
                                     0x02, 0x02, 0x23, 0x01, 0x06, 0x07, 0x2a,
                                     0x85, 0x03, 0x02, 0x02, 0x1e, 0x01};

int main() {
  char oid[] = "1.2.643.2.2.19";
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = oid;
  info.Algorithm.Parameters = {sizeof(parameters), parameters};
  info.PublicKey = {sizeof(key), key, 0};

  // The outputs start as null: a buffer in them would be freed.
  unsigned char* blob = nullptr;
  unsigned int blob_size = 0;
  if (!korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &blob_size)) {
    std::fprintf(stderr, "no blob: last error 0x%X\n", GetLastError());
    return 1;
  }
  std::printf("%zu bytes of key became a blob of %u\n", sizeof(key), blob_size);

  unsigned char* bits = nullptr;
  unsigned char* params = nullptr;
  unsigned int bits_size = 0;
  unsigned int params_size = 0;
  const int done = korvan::KRVEncodePublicKeyAndParametrs(
      0, nullptr, blob, blob_size, 0, 0, &bits, &bits_size, &params,
      &params_size);
  if (done) {
    std::printf("and came back as %u bytes of key and %u of parameters\n",
                bits_size, params_size);
  }
  std::free(bits);
  std::free(params);
  std::free(blob);
  return done && std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 66 bytes of key became a blob of 100
// and came back as 66 bytes of key and 20 of parameters
