// A program compiled with version 1.0 turns a public key into a blob, and back.
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main() {
  unsigned char key[66] = {0x04, 0x40, 1, 2, 3};
  unsigned char parameters[3] = {0x05, 0x01, 0x07};
  char oid[] = "1.2.643.2.2.19";
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = oid;
  info.Algorithm.Parameters.cbData = sizeof(parameters);
  info.Algorithm.Parameters.pbData = parameters;
  info.PublicKey.cbData = sizeof(key);
  info.PublicKey.pbData = key;
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  const unsigned char header[] = {0x06, 0x20, 0,   0,   0x23, 0x2E, 0, 0,
                                  'M',  'A',  'G', '1', 0,    2,    0, 0};
  if (!korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size) ||
      size != 83 || std::memcmp(blob, header, sizeof(header)) != 0) {
    std::puts("another blob is made");
    return 1;
  }
  unsigned char* parts[2] = {};
  unsigned int sizes[2] = {};
  const int done = korvan::KRVEncodePublicKeyAndParametrs(
      0, nullptr, blob, size, 0, 0, &parts[0], &sizes[0], &parts[1], &sizes[1]);
  const bool is_same = done && sizes[0] == 66 && sizes[1] == 3 &&
                       std::memcmp(parts[0], key, 66) == 0 &&
                       std::memcmp(parts[1], parameters, 3) == 0;
  std::free(parts[0]);
  std::free(parts[1]);
  std::free(blob);
  if (!is_same) {
    std::puts("other parts come back");
    return 1;
  }
  korvan::KRVConvertPublicKeyInfo(0, nullptr, 0, 0, &parts[0], &sizes[0]);
  if (GetLastError() != ERROR_INVALID_PARAMETER) {
    std::puts("another error is told");
    return 1;
  }
  return 0;
}
