// Lookups whose results surprise.
#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>

static void Show(const char* what, const korvan::COidData* found) {
  if (found == nullptr) {
    std::printf("%s: none\n", what);
  } else {
    std::printf("%s: %s, \"%ls\"\n", what, found->pszOID,
                found->pwszName == nullptr ? L"" : found->pwszName);
  }
}

int main() {
  char cn[] = "2.5.4.3";
  char rsa[] = "1.2.840.113549.1.1.1";
  ALG_ID rsa_sign[] = {CALG_RSA_SIGN};
  ALG_ID sha1_and_none[] = {CALG_SHA1, 0};
  wchar_t rsa_sign_name[] = L"rsa_sign";
  // The first record of an OID is found. Groups are searched in turn.
  Show("2.5.4.3", korvan::FindOIDInfo(CRYPT_OID_INFO_OID_KEY, cn, 0));
  Show("2.5.4.3 in group 6",
       korvan::FindOIDInfo(CRYPT_OID_INFO_OID_KEY, cn, 6));
  Show("RSA's OID", korvan::FindOIDInfo(CRYPT_OID_INFO_OID_KEY, rsa, 0));
  Show("0x2400", korvan::FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, rsa_sign, 0));
  Show("rsa_sign",
       korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, rsa_sign_name, 0));
  // A record without extra information counts as 0 in a pair.
  Show("{0x8004, 0}",
       korvan::FindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, sha1_and_none, 0));

  // A number that has no text leaves no name, and the string table's error.
  char phone[] = "2.5.4.20";
  SetLastError(0);
  const korvan::COidData* found =
      korvan::FindOIDInfo(CRYPT_OID_INFO_OID_KEY, phone, 6);
  std::printf("2.5.4.20 in group 6: %s, last error %u\n",
              found == nullptr             ? "not found"
              : found->pwszName == nullptr ? "found without a name"
                                           : "found",
              GetLastError());

  // What was loaded is gone for good after a cleanup.
  korvan::CleanupOidInfo();
  Show("2.5.4.3 in group 6, after the cleanup",
       korvan::FindOIDInfo(CRYPT_OID_INFO_OID_KEY, cn, 6));
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 2.5.4.3: 2.5.4.3, "CN"
// 2.5.4.3 in group 6: 2.5.4.3, "Common Name"
// RSA's OID: 1.2.840.113549.1.1.1, "RSA"
// 0x2400: 1.2.840.113549.1.1.1, "RSA"
// rsa_sign: 1.2.840.113549.1.1.1, "RSA_SIGN"
// {0x8004, 0}: 1.3.14.3.2.26, "sha1"
// 2.5.4.20 in group 6: found without a name, last error 87
// 2.5.4.3 in group 6, after the cleanup: 2.5.4.3, ""
