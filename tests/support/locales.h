// Sets a locale for the rest of a block.
#ifndef KORVAN_TESTS_SUPPORT_LOCALES_H_
#define KORVAN_TESTS_SUPPORT_LOCALES_H_

#include <gtest/gtest.h>

#include <clocale>
#include <locale>
#include <string>

namespace korvan::test {

// Those that the tests have, which fold and encode in different ways.
inline constexpr const char* kTestLocales[] = {
    "C",
    "C.UTF-8",
    "ru_RU.UTF-8",
    "ru_RU.KOI8-R",
    "ru_RU.CP1251",
    "tr_TR.UTF-8",
    "tr_TR.ISO-8859-9",
    "de_DE.ISO-8859-1",
    "ja_JP.SHIFT_JIS",
    "ja_JP.EUC-JP",
    "zh_CN.GB18030",
};

// The C library's locale, while it lives; then it is the former one again.
class CLocale {
 public:
  explicit CLocale(const char* name)
      : former_(std::setlocale(LC_ALL, nullptr)) {
    EXPECT_NE(std::setlocale(LC_ALL, name), nullptr) << name;
  }
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;
  ~CLocale() { std::setlocale(LC_ALL, former_.c_str()); }

 private:
  std::string former_;
};

// The C++ library's locale, which also sets the C library's if it has a name.
// Then both are the former ones again.
class CxxLocale {
 public:
  explicit CxxLocale(const std::locale& locale)
      : former_c_(std::setlocale(LC_ALL, nullptr)),
        former_(std::locale::global(locale)) {}
  explicit CxxLocale(const char* name) : CxxLocale(std::locale(name)) {}
  CxxLocale(const CxxLocale&) = delete;
  CxxLocale& operator=(const CxxLocale&) = delete;
  ~CxxLocale() {
    std::locale::global(former_);
    std::setlocale(LC_ALL, former_c_.c_str());
  }

 private:
  std::string former_c_;
  std::locale former_;
};

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_LOCALES_H_
