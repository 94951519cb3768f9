// Searches a table of its own first, and then the registry.
#include <korvan/korvan.h>

#include <cstdint>
#include <cstdio>

static korvan::COidData records[2];
static const korvan::OID_TABLE_INFO kTable = {CRYPT_PUBKEY_ALG_OID_GROUP_ID, 2,
                                              records};

static void Show(const char* name, const korvan::COidData* found) {
  std::printf("%s: %s\n", name, found == nullptr ? "none" : found->pszOID);
}

static korvan::COidData* Find(wchar_t* name) {
  korvan::COidData* const own =
      korvan::FindOIDInfoInternal(kTable, CRYPT_OID_INFO_NAME_KEY, name);
  return own != nullptr ? own
                        : korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, name,
                                              CRYPT_PUBKEY_ALG_OID_GROUP_ID);
}

int main() {
  records[0].cbSize = sizeof(CRYPT_OID_INFO);
  records[0].pszOID = "2.999.1";
  records[0].pwszName = L"Example";
  records[1].cbSize = sizeof(CRYPT_OID_INFO);
  records[1].pszOID = "2.999.2";
  // The number of a text: the first search that needs the name loads it.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  records[1].pwszName = reinterpret_cast<LPCWSTR>(std::uintptr_t{30});

  wchar_t example[] = L"EXAMPLE";
  wchar_t gost[] = L"GOST R 34.10-2001";
  wchar_t rsa[] = L"RSA";
  Show("EXAMPLE", Find(example));
  Show("GOST R 34.10-2001", Find(gost));
  Show("RSA", Find(rsa));

  // A name that was loaded into a record of one's own is one's own.
  for (korvan::COidData& record : records) {
    if ((record.dwOidFlags & 2) != 0) {
      delete[] record.pwszName;
      record.pwszName = nullptr;
    }
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// EXAMPLE: 2.999.1
// GOST R 34.10-2001: 2.999.2
// RSA: 1.2.840.113549.1.1.1
