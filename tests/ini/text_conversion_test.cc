// Conversion of wide text to narrow and back, whose results may lose their end.
#include <korvan/text.h>

#include <string>

#include "ini/shown.h"
#include "support/locales.h"

namespace korvan::test {
namespace {

TEST(WideToNarrow, AsciiIsUnchanged) {
  EXPECT_EQ(wstr_to_str(L"abc"), "abc");
  EXPECT_EQ(wstr_to_str(L""), "");
}

TEST(WideToNarrow, TheLengthStaysWhereACharacterTakesMoreBytes) {
  const CLocale locale("C.UTF-8");
  EXPECT_EQ(Shown(wstr_to_str(L"\u00e9")), "\\0;");
  EXPECT_EQ(Shown(wstr_to_str(L"a\u00e9")), "a\\0;");
  EXPECT_EQ(Shown(wstr_to_str(L"\u00e9a")), "\\c3;\\a9;");
  EXPECT_EQ(Shown(wstr_to_str(L"\u0416\u0416\u0416")), "\\d0;\\96;\\0;");
}

TEST(WideToNarrow, TheFirstByteOfACharacterThatDoesNotFitStaysInShiftJis) {
  const CLocale locale("ja_JP.SHIFT_JIS");
  EXPECT_EQ(Shown(wstr_to_str(L"\u3042a")), "\\82;\\a0;");
  EXPECT_EQ(Shown(wstr_to_str(L"a\u3042")), "a\\82;");
}

TEST(WideToNarrow, ConversionEndsSilentlyAtACharacterItCannotConvert) {
  const CLocale locale("C");
  EXPECT_EQ(Shown(wstr_to_str(L"ab\u0416cd")), "ab\\0;\\0;\\0;");
}

TEST(WideToNarrow, ConversionIsThatOfTheCLibrarysLocale) {
  const CLocale locale("ru_RU.KOI8-R");
  EXPECT_EQ(Shown(wstr_to_str(L"\u0416")), "\\f6;");
}

TEST(WideToNarrow, ConversionEndsAtTheFirstNul) {
  EXPECT_EQ(Shown(wstr_to_str(std::wstring(L"a\0b", 3))), "a\\0;\\0;");
}

TEST(NarrowToWide, AsciiIsUnchanged) {
  EXPECT_EQ(str_to_wstr("abc"), L"abc");
  EXPECT_EQ(str_to_wstr(""), L"");
}

TEST(NarrowToWide, TheLengthStaysWhereACharacterTookMoreBytes) {
  const CLocale locale("C.UTF-8");
  EXPECT_EQ(Shown(str_to_wstr("\xc3\xa9")), "\\e9;\\0;");
  EXPECT_EQ(Shown(str_to_wstr("\xc3\xa9zz")), "\\e9;zz\\0;");
}

TEST(NarrowToWide, ConversionEndsSilentlyAtBytesItCannotConvert) {
  const CLocale locale("C.UTF-8");
  EXPECT_EQ(Shown(str_to_wstr("ab\xff"
                              "cd")),
            "ab\\0;\\0;\\0;");
}

TEST(NarrowToWide, ConversionEndsAtTheFirstNul) {
  EXPECT_EQ(Shown(str_to_wstr(std::string("a\0b", 3))), "a\\0;\\0;");
}

}  // namespace
}  // namespace korvan::test
