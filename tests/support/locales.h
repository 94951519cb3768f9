// Sets a locale for the rest of a block.
#ifndef KORVAN_TESTS_SUPPORT_LOCALES_H_
#define KORVAN_TESTS_SUPPORT_LOCALES_H_

#include <gtest/gtest.h>

#include <clocale>
#include <locale>

namespace korvan::test {

// The C library's locale, while it lives; then it is "C" again.
class CLocale {
 public:
  explicit CLocale(const char* name) {
    EXPECT_NE(std::setlocale(LC_ALL, name), nullptr) << name;
  }
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;
  ~CLocale() { std::setlocale(LC_ALL, "C"); }
};

// The C++ library's locale, which also sets the C library's if it has a name.
class CxxLocale {
 public:
  explicit CxxLocale(const std::locale& locale)
      : former_(std::locale::global(locale)) {}
  explicit CxxLocale(const char* name) : CxxLocale(std::locale(name)) {}
  CxxLocale(const CxxLocale&) = delete;
  CxxLocale& operator=(const CxxLocale&) = delete;
  ~CxxLocale() { std::locale::global(former_); }

 private:
  std::locale former_;
};

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_LOCALES_H_
