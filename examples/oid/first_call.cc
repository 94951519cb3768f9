// Looks an algorithm up by its OID.
#include <korvan/korvan.h>

#include <cstdio>

int main() {
  char oid[] = "1.2.643.2.2.19";
  const korvan::COidData* found = korvan::FindOIDInfo(
      CRYPT_OID_INFO_OID_KEY, oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  if (found == nullptr) {
    return 1;
  }
  const bool written = std::printf("%s is %ls, ALG_ID 0x%X\n", oid,
                                   found->pwszName, found->Algid) > 0;
  return written && std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 1.2.643.2.2.19 is GOST R 34.10-2001, ALG_ID 0x2E23
