// Ends in the way that is named, and prints what korvan's users find of it on
// the way out.
//
//   exiting return | exit | exit_beside_lookups | quick_exit | _exit
#include <korvan/oid_info.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "load/every_service.h"
#include "load/user_library.h"

namespace {

std::atomic<int> looking_up{0};

// Looks up as long as the process lives, by every kind of key but names: which
// a cleanup frees, and a thread that compares or reads one may be slow.
[[noreturn]] void LookUpForEver() {
  ++looking_up;
  for (;;) {
    for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
      for (int i = 0; i < table.cRecords; ++i) {
        const korvan::COidData& record = table.rgRecords[i];
        ALG_ID pair[] = {record.Algid, 0};
        korvan::FindOIDInfo(CRYPT_OID_INFO_OID_KEY,
                            const_cast<char*>(record.pszOID), 0);
        korvan::FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, pair, 0);
        korvan::FindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, pair, 0);
      }
    }
  }
}

// Threads meet the exit anywhere in their first use of names.
[[noreturn]] void ExitBesideLookups() {
  constexpr int kThreads = 16;
  for (int i = 0; i < kThreads; ++i) {
    std::thread(LookUpForEver).detach();
  }
  while (looking_up == 0) {
  }
  std::random_device random;
  for (std::atomic<unsigned int> turns{random() % 20000}; turns > 0; --turns) {
  }
  std::thread([] { std::exit(0); }).detach();
  for (;;) {
    pause();
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string way = argc == 2 ? argv[1] : "";
  PrintAtExit();
  std::atexit([] { PrintWhatIsFound("atexit of the program"); });
  std::at_quick_exit([] { PrintWhatIsFound("at_quick_exit of the program"); });
  if (way == "exit_beside_lookups") {
    ExitBesideLookups();
  }
  if (!korvan::test::EveryServiceWorks()) {
    std::puts("a service gives a wrong answer");
    return 1;
  }
  if (way == "exit") {
    std::exit(0);
  } else if (way == "quick_exit") {
    std::quick_exit(0);
  } else if (way == "_exit") {
    _exit(0);
  } else if (way != "return") {
    return 2;
  }
}
