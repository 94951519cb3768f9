// Reads the last-error code where a call has failed, and only there.
#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>
#include <cstdlib>

static const char* NameOf(unsigned int error) {
  switch (error) {
    case ERROR_INVALID_PARAMETER:
      return "ERROR_INVALID_PARAMETER, an argument is wrong";
    case NTE_BAD_KEY:
      return "NTE_BAD_KEY, the blob holds no key";
    case NTE_BAD_ALGID:
      return "NTE_BAD_ALGID, the algorithm is unknown";
    case NTE_NO_MEMORY:
      return "NTE_NO_MEMORY, no memory";
    case DIGSIG_E_ENCODE:
      return "DIGSIG_E_ENCODE, the key can't be encoded";
    default:
      return "none of the library's";
  }
}

static void Convert(char* oid) {
  unsigned char key[] = {1, 2, 3, 4};
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = oid;
  info.PublicKey = {sizeof(key), key, 0};
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  if (korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size)) {
    std::printf("%s: a blob of %u bytes\n", oid, size);
  } else {
    const unsigned int error = GetLastError();
    std::printf("%s: 0x%X, %s\n", oid, error, NameOf(error));
  }
  std::free(blob);
}

int main() {
  char unknown[] = "2.999";
  char rsa[] = "1.2.840.113549.1.1.1";
  Convert(unknown);
  Convert(rsa);
  std::printf("success left 0x%X\n", GetLastError());
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 2.999: 0x80090008, NTE_BAD_ALGID, the algorithm is unknown
// 1.2.840.113549.1.1.1: a blob of 20 bytes
// success left 0x80090008
