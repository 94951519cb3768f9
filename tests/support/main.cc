#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv) {
  // The C library looks here for locales before it looks at the system's.
  setenv("LOCPATH", KORVAN_TEST_LOCALES, 1);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
