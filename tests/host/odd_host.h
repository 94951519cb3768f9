// A host with a last error and texts of its own, which fail, throw and lie as
// they are told. A program that is linked with odd_host.cc is that host.
#ifndef KORVAN_TESTS_HOST_ODD_HOST_H_
#define KORVAN_TESTS_HOST_ODD_HOST_H_

namespace korvan::test {

// What LoadString_korvan does.
enum class TextFault {
  kNone,                // what the library's does
  kThrows,              // a HostError
  kThrowsBadAlloc,      //
  kReportsNone,         // writes the text, returns 0, sets no error
  kReportsNoneAndSets,  // the same, and sets an error of its own
  kCountsNegative,      // writes the text, returns -1
  kCountsTooMany,       // writes the text, returns the largest int
  kCountsTooFew,        // writes the text, returns 1
  kFillsAll,            // writes no terminator, not even at the end
  kWritesNothing,       // and returns 5
  kHoldsNul,            // in its second place
  kHasNoCharacters,     // bytes that no locale converts
};

// What SetLastError does.
enum class ErrorFault {
  kNone,     // keeps the code
  kThrows,   // a HostError
  kForgets,  // keeps the code that was there
  kChanges,  // keeps a code of its own
};

// Thrown by the host; not derived from anything.
struct HostError {};

constexpr unsigned int kHostsOwnError = 0x20000001;

struct OddHost {
  TextFault text_fault = TextFault::kNone;
  ErrorFault error_fault = ErrorFault::kNone;
  int fault_at = 1;      // the nth call of the function, counted from 1
  bool goes_on = false;  // with all calls after it
  int text_calls = 0;
  int error_calls = 0;
  int asked_for_error = 0;  // calls of GetLastError
  unsigned int last_error = 0;
};
extern OddHost odd_host;

}  // namespace korvan::test

#endif  // KORVAN_TESTS_HOST_ODD_HOST_H_
