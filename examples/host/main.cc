// A process with a platform of its own calls the library.
#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>
#include <cstdlib>

int main() {
  unsigned char key[66] = {0x04, 0x40};  // OCTET STRING, 64 bytes
  char oid[] = "1.2.643.2.2.19";
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = oid;
  info.PublicKey = {sizeof(key), key, 0};

  // The library reads the key by this host's records.
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  if (!korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size)) {
    return 1;
  }
  std::printf("%zu bytes of key became a blob of %u\n", sizeof(key), size);
  std::free(blob);

  // And it tells this host's last-error code what went wrong.
  blob = nullptr;
  oid[0] = '9';
  if (!korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size)) {
    std::printf("last error 0x%X\n", GetLastError());
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 66 bytes of key became a blob of 80
// last error 0x80090008
