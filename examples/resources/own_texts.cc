// A program that defines LoadString_korvan itself: the registry calls that.
#include <korvan/korvan.h>

#include <cstdio>
#include <cstring>

// It must not look names up in the registry, or it would be called again.
int LoadString_korvan(void*, unsigned int, char* buffer, int size) {
  const char text[] = "a name of the program's own";
  const int length = static_cast<int>(sizeof(text)) - 1;
  if (length > size) {
    return 0;
  }
  std::memcpy(buffer, text, sizeof(text) - 1);
  return length;
}

int main() {
  char oid[] = "1.2.643.2.2.19";
  const korvan::COidData* found = korvan::FindOIDInfo(
      CRYPT_OID_INFO_OID_KEY, oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  if (found == nullptr) {
    return 1;
  }
  std::printf("%s is %ls\n", oid, found->pwszName);
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 1.2.643.2.2.19 is a name of the program's own
