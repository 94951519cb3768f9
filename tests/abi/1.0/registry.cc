// What a program compiled with version 1.0 knows of the registry: where its
// tables are, how a record is laid out, and which record a key finds.
#include <korvan/oid_info.h>

#include <cstdio>
#include <cstring>
#include <cwchar>

using korvan::COidData;

int main() {
  char oid[] = "1.2.643.2.2.19";
  const COidData* const found = korvan::FindOIDInfo(
      CRYPT_OID_INFO_OID_KEY, oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  if (found == nullptr || found->cbSize < sizeof(CRYPT_OID_INFO) ||
      std::strcmp(found->pszOID, oid) != 0 || found->Algid != 0x2E23 ||
      std::wcscmp(found->pwszName, L"GOST R 34.10-2001") != 0) {
    std::puts("another record is found");
    return 1;
  }
  int groups = 0;
  int records = 0;
  bool is_in_registry = false;
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    ++groups;
    records += table.cRecords;
    for (int i = 0; i < table.cRecords; ++i) {
      is_in_registry = is_in_registry || found == &table.rgRecords[i];
    }
  }
  if (groups != 9 || records < 259 || !is_in_registry) {
    std::printf("%d groups with %d records are walked\n", groups, records);
    return 1;
  }
  return 0;
}
