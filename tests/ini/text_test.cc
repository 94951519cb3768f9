// The text helpers: trimming, and conversion of wide text.
#include <korvan/text.h>

#include <string>

#include "ini/ini_twins.h"

namespace {

using korvan::str_to_wstr;
using korvan::wstr_to_str;

template <class Twin>
class TrimTest : public testing::Test {
 protected:
  using String = std::basic_string<typename Twin::Char>;
  using Trimming = void (*)(String&, const String&);

  static std::string Trimmed(Trimming trim, String text, String set) {
    trim(text, set);
    return Shown(text);
  }
};
TYPED_TEST_SUITE(TrimTest, Twins, TwinNames);

TYPED_TEST(TrimTest, TrimErasesAtBothEndsAndNothingInside) {
  EXPECT_EQ(this->Trimmed(korvan::Trim, " \t a b \t"_t, " \t"_t), "a b");
  EXPECT_EQ(this->Trimmed(korvan::Trim, "a \t b"_t, " \t"_t), "a \\9; b");
  EXPECT_EQ(this->Trimmed(korvan::Trim, "xxaxx"_t, " \t"_t), "xxaxx");
}

TYPED_TEST(TrimTest, ATextOfNothingButTheSetBecomesEmpty) {
  for (const auto trim : {typename TestFixture::Trimming{korvan::Trim},
                          typename TestFixture::Trimming{korvan::LTrim},
                          typename TestFixture::Trimming{korvan::RTrim}}) {
    EXPECT_EQ(this->Trimmed(trim, "   "_t, " \t"_t), "");
    EXPECT_EQ(this->Trimmed(trim, ""_t, " \t"_t), "");
  }
}

TYPED_TEST(TrimTest, LTrimErasesAtTheLeftOnly) {
  EXPECT_EQ(this->Trimmed(korvan::LTrim, "\n\rx\r"_t, "\n\r"_t), "x\\d;");
}

TYPED_TEST(TrimTest, RTrimErasesAtTheRightOnly) {
  EXPECT_EQ(this->Trimmed(korvan::RTrim, "\rx\n\r\n"_t, "\n\r"_t), "\\d;x");
}

TYPED_TEST(TrimTest, AnEmptySetChangesNothing) {
  EXPECT_EQ(this->Trimmed(korvan::RTrim, "abc "_t, ""_t), "abc ");
  EXPECT_EQ(this->Trimmed(korvan::LTrim, " abc"_t, ""_t), " abc");
  EXPECT_EQ(this->Trimmed(korvan::Trim, " abc "_t, ""_t), " abc ");
}

TYPED_TEST(TrimTest, EveryCharacterOfTheSetStandsForItself) {
  EXPECT_EQ(this->Trimmed(korvan::Trim, "cabXbac"_t, "abcab"_t), "X");
  EXPECT_EQ(this->Trimmed(korvan::Trim, "-a-z-"_t, "a-z"_t), "");
}

TYPED_TEST(TrimTest, NulIsACharacterLikeOthersInTextAndSet) {
  EXPECT_EQ(this->Trimmed(korvan::Trim, "\0a\0b\0"_t, "\0"_t), "a\\0;b");
  EXPECT_EQ(this->Trimmed(korvan::Trim, " \0 "_t, " "_t), "\\0;");
}

TYPED_TEST(TrimTest, TheTextMayBeItsOwnSet) {
  for (const auto trim : {typename TestFixture::Trimming{korvan::Trim},
                          typename TestFixture::Trimming{korvan::LTrim},
                          typename TestFixture::Trimming{korvan::RTrim}}) {
    typename TestFixture::String text = "abc"_t;
    trim(text, text);
    EXPECT_EQ(Shown(text), "");
  }
}

TEST(WstrToStr, GivesAsciiUnchanged) {
  EXPECT_EQ(wstr_to_str(L"abc"), "abc");
  EXPECT_EQ(wstr_to_str(L""), "");
}

TEST(WstrToStr, KeepsTheLengthWhereACharacterTakesMoreBytes) {
  const CLocale locale("C.UTF-8");
  EXPECT_EQ(Shown(wstr_to_str(L"\u00e9")), "\\0;");
  EXPECT_EQ(Shown(wstr_to_str(L"a\u00e9")), "a\\0;");
  EXPECT_EQ(Shown(wstr_to_str(L"\u00e9a")), "\\c3;\\a9;");
  EXPECT_EQ(Shown(wstr_to_str(L"\u0416\u0416\u0416")), "\\d0;\\96;\\0;");
}

TEST(WstrToStr, EndsUnreportedAtACharacterItCannotConvert) {
  EXPECT_EQ(Shown(wstr_to_str(L"ab\u0416cd")), "ab\\0;\\0;\\0;");
}

TEST(WstrToStr, ConvertsInTheCLibrarysLocale) {
  const CLocale locale("ru_RU.KOI8-R");
  EXPECT_EQ(Shown(wstr_to_str(L"\u0416")), "\\f6;");
}

TEST(WstrToStr, EndsAtTheFirstNul) {
  EXPECT_EQ(Shown(wstr_to_str(std::wstring(L"a\0b", 3))), "a\\0;\\0;");
}

TEST(StrToWstr, GivesAsciiUnchanged) {
  EXPECT_EQ(str_to_wstr("abc"), L"abc");
  EXPECT_EQ(str_to_wstr(""), L"");
}

TEST(StrToWstr, KeepsTheLengthWhereACharacterTookMoreBytes) {
  const CLocale locale("C.UTF-8");
  EXPECT_EQ(Shown(str_to_wstr("\xc3\xa9")), "\\e9;\\0;");
  EXPECT_EQ(Shown(str_to_wstr("\xc3\xa9zz")), "\\e9;zz\\0;");
}

TEST(StrToWstr, EndsUnreportedAtBytesItCannotConvert) {
  const CLocale locale("C.UTF-8");
  EXPECT_EQ(Shown(str_to_wstr("ab\xff"
                              "cd")),
            "ab\\0;\\0;\\0;");
}

TEST(StrToWstr, EndsAtTheFirstNul) {
  EXPECT_EQ(Shown(str_to_wstr(std::string("a\0b", 3))), "a\\0;\\0;");
}

}  // namespace
