// A library that uses korvan, at work and when it is destroyed.
#include "load/user_library.h"

#include <korvan/korvan.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

#include "load/every_service.h"

namespace {

bool prints = false;

class PrintingWhenDestroyed {
 public:
  PrintingWhenDestroyed() {
    // Registered first, called last.
    std::atexit([] {
      if (prints) {
        PrintWhatIsFound("atexit of the user library");
      }
    });
  }
  PrintingWhenDestroyed(const PrintingWhenDestroyed&) = delete;
  PrintingWhenDestroyed& operator=(const PrintingWhenDestroyed&) = delete;
  ~PrintingWhenDestroyed() {
    if (prints) {
      PrintWhatIsFound("destructor of the user library");
    }
  }
};
PrintingWhenDestroyed printing;

}  // namespace

int EveryServiceWorksInUserLibrary() {
  return korvan::test::EveryServiceWorks();
}

const void* RegistryOfUserLibrary() { return &korvan::oid_registry; }
const void* NarrowLineFeedOfUserLibrary() { return &korvan::CIniFileA::LF; }
const void* WideLineFeedOfUserLibrary() { return &korvan::CIniFileW::LF; }

void PrintWhatIsFound(const char* when) {
  char oid[] = "1.2.643.2.2.19";
  const korvan::COidData* const found = korvan::FindOIDInfo(
      CRYPT_OID_INFO_OID_KEY, oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  const wchar_t* const name = found == nullptr ? nullptr : found->pwszName;
  const bool is_right =
      found != nullptr && found->Algid == 0x2E23 &&
      (name == nullptr || std::wcscmp(name, L"GOST R 34.10-2001") == 0) &&
      korvan::test::OtherServicesWork();
  const std::string line =
      std::string(when) + (name == nullptr ? ": no name\n" : ": a name\n");
  if (!is_right || write(STDOUT_FILENO, line.data(), line.size()) !=
                       static_cast<ssize_t>(line.size())) {
    _exit(3);
  }
}

void PrintAtExit() { prints = true; }
