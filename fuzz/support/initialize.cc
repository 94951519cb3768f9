// What every target does once, before its first input.
#include <cstdlib>

// The C library never frees what it makes of LOCPATH for a built-in locale.
extern "C" const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() { return "leak:argz_add_sep"; }

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // The C library looks here for locales before it looks at the system's.
  setenv("LOCPATH", KORVAN_TEST_LOCALES, 1);
  return 0;
}
