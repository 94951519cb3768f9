// The host's functions, which take the place of the library's and of the
// platform's when the program is loaded.
#include "host/odd_host.h"

#include <dlfcn.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <new>

namespace korvan::test {

OddHost odd_host;

namespace {

bool IsTurn(int call) {
  return call == odd_host.fault_at ||
         (odd_host.goes_on && call > odd_host.fault_at);
}

// The library's own function, whose place the one below takes.
int LibrarysText(unsigned int number, char* buffer, int size) {
  using Function = int(void*, unsigned int, char*, int);
  static auto* const function = reinterpret_cast<Function*>(
      dlsym(RTLD_NEXT, "_Z17LoadString_korvanPvjPci"));
  return function(nullptr, number, buffer, size);
}

int OddText(unsigned int number, char* buffer, int size) {
  const auto count = static_cast<std::size_t>(size);
  switch (odd_host.text_fault) {
    case TextFault::kNone:
      break;
    case TextFault::kThrows:
      throw HostError();
    case TextFault::kThrowsBadAlloc:
      throw std::bad_alloc();
    case TextFault::kReportsNone:
      LibrarysText(number, buffer, size);
      return 0;
    case TextFault::kReportsNoneAndSets:
      LibrarysText(number, buffer, size);
      SetLastError(kHostsOwnError);
      return 0;
    case TextFault::kCountsNegative:
      LibrarysText(number, buffer, size);
      return -1;
    case TextFault::kCountsTooMany:
      LibrarysText(number, buffer, size);
      return INT_MAX;
    case TextFault::kCountsTooFew:
      LibrarysText(number, buffer, size);
      return 1;
    case TextFault::kFillsAll:
      std::memset(buffer, 'y', count);
      return size;
    case TextFault::kWritesNothing:
      return 5;
    case TextFault::kHoldsNul:
      std::memcpy(buffer, "x\0yz", 4);
      return 4;
    case TextFault::kHasNoCharacters:
      std::memcpy(buffer, "ab\xFF", 3);
      return 3;
  }
  return LibrarysText(number, buffer, size);
}

}  // namespace
}  // namespace korvan::test

int LoadString_korvan(void*, unsigned int number, char* buffer, int size) {
  using namespace korvan::test;
  return IsTurn(++odd_host.text_calls) ? OddText(number, buffer, size)
                                       : LibrarysText(number, buffer, size);
}

extern "C" void SetLastError(unsigned int code) {
  using namespace korvan::test;
  const ErrorFault fault =
      IsTurn(++odd_host.error_calls) ? odd_host.error_fault : ErrorFault::kNone;
  switch (fault) {
    case ErrorFault::kNone:
      odd_host.last_error = code;
      break;
    case ErrorFault::kThrows:
      throw HostError();
    case ErrorFault::kForgets:
      break;
    case ErrorFault::kChanges:
      odd_host.last_error = kHostsOwnError;
      break;
  }
}

extern "C" unsigned int GetLastError() {
  ++korvan::test::odd_host.asked_for_error;
  return korvan::test::odd_host.last_error;
}
