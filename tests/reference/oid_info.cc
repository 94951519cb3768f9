// The examples of <korvan/oid_info.h>.
#include "reference/reference.h"

int main() {
  char oid[] = "1.2.643.2.2.19";
  const korvan::COidData* found = korvan::FindOIDInfo(
      CRYPT_OID_INFO_OID_KEY, oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  assert(found != nullptr && found->Algid == 0x2E23);
  assert(std::wcscmp(found->pwszName, L"GOST R 34.10-2001") == 0);

  wchar_t text[] = L"common name";
  const korvan::COidData* named =
      korvan::FindOIDInfoInternal(CRYPT_OID_INFO_NAME_KEY, text, 0);
  assert(named != nullptr && std::strcmp(named->pszOID, "2.5.4.3") == 0);

  char own_oid[] = "2.999.1";
  korvan::COidData own = {};
  own.pszOID = own_oid;
  own.pwszName = L"An algorithm of our own";
  const korvan::OID_TABLE_INFO table = {3, 1, &own};
  assert(korvan::FindOIDInfoInternal(table, 1, own_oid) == &own);

  ALG_ID wanted = CALG_RSA_KEYX;
  korvan::COidData& first = korvan::oid_registry[2].rgRecords[0];
  assert(!korvan::MatchOidInfo(first, CRYPT_OID_INFO_ALGID_KEY, &wanted));

  korvan::COidData mine = {};
  korvan::InitOidInfoWorker(mine, 8048);
  assert(std::wcscmp(mine.pwszName, L"Common Name") == 0);
  delete[] mine.pwszName;

  {
    const korvan::COidData& record = *found;
    LPCWSTR name = __atomic_load_n(&record.pwszName, __ATOMIC_ACQUIRE);
    DWORD flags = __atomic_load_n(&record.dwOidFlags, __ATOMIC_ACQUIRE);
    assert(name == found->pwszName && (flags & 0x2) != 0);
  }

  korvan::CleanupOidInfo();
  assert(named->pwszName == nullptr);

  { const korvan::COidInfoCleanupHelper cleanup; }
}
