// Looks one record up on many threads at once: all get the same name.
#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>
#include <thread>
#include <vector>

int main() {
  constexpr unsigned int kThreads = 8;
  std::vector<LPCWSTR> names(kThreads);
  std::vector<unsigned int> errors(kThreads);
  std::vector<std::thread> threads;
  for (unsigned int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      char oid[] = "1.2.643.2.2.19";
      const korvan::COidData* found = korvan::FindOIDInfo(
          CRYPT_OID_INFO_OID_KEY, oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
      names[i] = found == nullptr ? nullptr : found->pwszName;

      // A document of a thread's own needs no lock.
      korvan::CIniFileA settings;
      settings.SetKeyValueDword("Thread", "[Number", i);

      // The last error is each thread's own.
      if (i == 5) {
        LoadString_korvan(nullptr, 30, nullptr, 0);
      }
      errors[i] = GetLastError();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }

  int same = 0;
  for (LPCWSTR name : names) {
    same += name != nullptr && name == names[0] ? 1 : 0;
  }
  std::printf("%d threads have the one name \"%ls\"\n", same, names[0]);
  std::printf("last errors: thread 4 has %u, thread 5 has %u\n", errors[4],
              errors[5]);
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 8 threads have the one name "GOST R 34.10-2001"
// last errors: thread 4 has 0, thread 5 has 87
