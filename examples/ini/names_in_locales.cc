// Which names are one name, in four locales.
#include <korvan/korvan.h>

#include <clocale>
#include <cstdio>

static const char* Finds(const wchar_t* wanted, const wchar_t* name) {
  korvan::CIniFileW document;
  document.AddSection(name);
  return document.GetSection(wanted) == nullptr ? "no" : "yes";
}

static const char* Finds(const char* wanted, const char* name) {
  korvan::CIniFileA document;
  document.AddSection(name);
  return document.GetSection(wanted) == nullptr ? "no" : "yes";
}

static const char* FindsRecord(wchar_t* name) {
  const void* found = korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, name, 0);
  return found == nullptr ? "no" : "yes";
}

int main() {
  wchar_t given_name[] = L"GIVENNAME";  // the record's name is "GivenName"
  for (const char* name : {"C", "C.UTF-8", "ru_RU.UTF-8", "tr_TR.UTF-8"}) {
    // No document may live while the locale changes.
    if (std::setlocale(LC_ALL, name) == nullptr) {
      std::fprintf(stderr, "there is no locale %s\n", name);
      return 1;
    }
    std::printf("%s: ID is id: %s", name, Finds(L"ID", L"id"));
    std::printf(", ЖУК is жук: %s", Finds(L"ЖУК", L"жук"));
    std::printf(", narrow: %s", Finds("ЖУК", "жук"));
    std::printf(", GIVENNAME: %s\n", FindsRecord(given_name));
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// C: ID is id: yes, ЖУК is жук: no, narrow: no, GIVENNAME: yes
// C.UTF-8: ID is id: yes, ЖУК is жук: yes, narrow: no, GIVENNAME: yes
// ru_RU.UTF-8: ID is id: yes, ЖУК is жук: yes, narrow: no, GIVENNAME: yes
// tr_TR.UTF-8: ID is id: no, ЖУК is жук: yes, narrow: no, GIVENNAME: no
