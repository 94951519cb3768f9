// A program that knows the library only as installed.

#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>
#include <cstring>

int main() {
  char oid[] = "1.2.643.2.2.19";
  const korvan::COidData* const found = korvan::FindOIDInfo(
      CRYPT_OID_INFO_OID_KEY, oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  char text[256] = {};
  LoadString_korvan(nullptr, 4, text, 255);
  if (found == nullptr || found->Algid != 0x2E23 ||
      found != &korvan::oid_registry[2].rgRecords[2] ||
      GetLastError() != ERROR_INVALID_PARAMETER) {
    std::puts("the installed library answers wrongly");
    return 1;
  }
  std::printf("%s is %ls\n", oid, found->pwszName);
  return 0;
}
