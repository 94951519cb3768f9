// The main of every test program. KORVAN_TEST_LOCALE has it set locales before
// the tests run, for example "cxx=tr_TR.UTF-8 c=C": first the global locale of
// the C++ library, then that of the C library.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>

#ifdef KORVAN_TEST_ADDRESS_SANITIZER
// The C library never frees what it makes of LOCPATH for a built-in locale.
extern "C" const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() { return "leak:argz_add_sep"; }
#endif

namespace {

// Whether all of them could be set.
bool SetLocales(const std::string& steps) {
  std::istringstream words(steps);
  for (std::string word; words >> word;) {
    if (word.starts_with("c=")) {
      if (std::setlocale(LC_ALL, word.c_str() + 2) == nullptr) {
        return false;
      }
    } else if (word.starts_with("cxx=")) {
      try {
        std::locale::global(std::locale(word.substr(4)));
      } catch (const std::runtime_error&) {
        return false;
      }
    } else {
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  // The C library looks here for locales before it looks at the system's.
  setenv("LOCPATH", KORVAN_TEST_LOCALES, 1);
  const char* const steps = std::getenv("KORVAN_TEST_LOCALE");
  if (steps != nullptr && !SetLocales(steps)) {
    std::fprintf(stderr, "KORVAN_TEST_LOCALE: can't set '%s'\n", steps);
    return 2;
  }
  testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  // The last use of a locale frees what the C++ library has made for it.
  std::locale::global(std::locale::classic());
  return result;
}
