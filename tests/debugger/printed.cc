// What the tests of GDB's printers look at when main calls Stop: objects of
// each type that has a printer, and memory without an object in it.
#include <korvan/korvan.h>
#include <korvan/platform/asn1_record.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <string>

const korvan::OID_TABLE_INFO* registry = korvan::oid_registry;
korvan::COidData* record;
korvan::COidData own_record;
korvan::OID_TABLE_INFO own_table = {3, 1, &own_record};

korvan::CIniFileA settings;
korvan::CIniFileA no_sections;
korvan::CIniFileA many_sections;
korvan::CIniFileW wide_settings;
korvan::CIniFileA::CIniSectionA* section;
korvan::CIniFileA::CIniSectionA::CIniKeyA* key;

unsigned char* blob;
PUBLICKEYSTRUC short_blob = {0x07, 0x02, 0, CALG_RSA_KEYX};
IdentObj no_bytes;
IdentObj some_bytes("\x30\x06\x07", 3);

alignas(16) unsigned char zeros[0x4000];
alignas(16) unsigned char garbage[1024];
unsigned char* edge;  // of what can be read
wchar_t no_text[] = {L'a', 0xD800, 0x110000, 0x7FFFFFFF, 0};

extern "C" void Stop() {}

int main() {
  char oid[] = "1.2.643.2.2.19";
  record = korvan::FindOIDInfo(CRYPT_OID_INFO_OID_KEY, oid,
                               CRYPT_PUBKEY_ALG_OID_GROUP_ID);

  settings.SetKeyValue("Provider", "[Name", "GOST R 34.10-2001");
  settings.SetKeyValue("Provider", "[Type", "75");
  settings.SetKeyValue("Log", "[Level", "2");
  section = settings.GetSection("Provider");
  key = section->GetKey("[Type");
  for (int i = 1000; i < 1300; ++i) {
    many_sections.AddSection(std::to_string(i));
  }
  many_sections.SetKeyValue("1000", "[Odd", std::string("a\0b\n\x1B\xFF", 6));
  wide_settings.SetKeyValue(L"Provider", L"[Name", L"\x413\x41E\x421\x422");
  wide_settings.SetKeyValue(L"Provider", L"[Zeros", std::wstring(20, L'0'));

  unsigned char parameters[] = {0x05, 0x00};
  unsigned char point[64] = {};
  CERT_PUBLIC_KEY_INFO info = {{oid, {sizeof(parameters), parameters}},
                               {sizeof(point), point, 0}};
  unsigned int size = 0;
  if (korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size) == 0) {
    return 1;
  }
  std::fill(std::begin(garbage), std::end(garbage),
            static_cast<unsigned char>(0xA5));
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  // GDB tells the address, so it must be the same each time.
  void* pages = mmap(reinterpret_cast<void*>(0x100000000000), 2 * page,
                     PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
  if (pages == MAP_FAILED) {
    return 1;
  }
  edge = static_cast<unsigned char*>(pages) + page;
  if (munmap(edge, page) != 0) {
    return 1;
  }
  Stop();
  std::free(blob);
}
