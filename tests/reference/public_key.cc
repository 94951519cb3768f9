// The examples of <korvan/public_key.h>.
#include "reference/reference.h"

static void Convert() {
  unsigned char key[66] = {0x04, 0x40};  // an OCTET STRING of 64 bytes
  char oid[] = "1.2.643.2.2.19";
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = oid;
  info.PublicKey = {sizeof(key), key, 0};
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  if (korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size)) {
    assert(size == 16 + 64);  // at `blob`, for the provider
    std::free(blob);
  }
  assert(size == 16 + 64);
}

int main() {
  Convert();

  // A blob of a GOST R 34.10-2001 key.
  const unsigned char blob[16 + 64] = {0x06, 0x20, 0,    0,    0x23, 0x2E,
                                       0,    0,    0x4D, 0x41, 0x47, 0x31,
                                       0x00, 0x02, 0,    0};
  const unsigned int size = sizeof(blob);
  unsigned char* back = nullptr;
  unsigned char* params = nullptr;
  unsigned int back_size = 0;
  unsigned int params_size = 0;
  if (korvan::KRVEncodePublicKeyAndParametrs(0, nullptr, blob, size, 0, 0,
                                             &back, &back_size, &params,
                                             &params_size)) {
    assert(back_size == 66 && params_size == 0);
    std::free(back);
    std::free(params);
  }
  assert(back_size == 66);
}
