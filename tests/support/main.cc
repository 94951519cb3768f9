// The main of every test program.
#include <gtest/gtest.h>

#include <cstdlib>

#ifdef KORVAN_TEST_ADDRESS_SANITIZER
// The C library never frees what it makes of LOCPATH for a built-in locale.
extern "C" const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() { return "leak:argz_add_sep"; }
#endif

int main(int argc, char** argv) {
  // The C library looks here for locales before it looks at the system's.
  setenv("LOCPATH", KORVAN_TEST_LOCALES, 1);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
