// A program whose host has declared the CryptoAPI already.
#include <cstdio>

#include "headers/host_cryptoapi.h"

#define KORVAN_HOST_CRYPTOAPI
#include <korvan/korvan.h>

int main() {
  char name[] = "GOST R 34.10-2001";
  wchar_t wide_name[sizeof(name)] = {};
  for (unsigned int i = 0; i < sizeof(name); ++i) {
    wide_name[i] = static_cast<unsigned char>(name[i]);
  }
  const korvan::COidData* const found =
      korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, wide_name, 0);
  if (found == nullptr) {
    std::puts("no record has the name");
    return 1;
  }
  std::printf("%s is %s\n", name, found->pszOID);
  return 0;
}
