// How names are ordered, and which are one name: as the C library folds them.
#include <korvan/ini_file.h>
#include <strings.h>

#include <cwchar>
#include <sstream>
#include <string>

#include "ini/shown.h"
#include "support/locales.h"

namespace korvan::test {
namespace {

TEST(IniNameOrder, NarrowNamesFoldAsTheCLibraryFoldsBytes) {
  for (const char* const name : kTestLocales) {
    const CLocale locale(name);
    for (int i = 0; i < 256; ++i) {
      for (int j = 0; j < 256; ++j) {
        const std::string left = {'x', static_cast<char>(i), 'a'};
        const std::string right = {'X', static_cast<char>(j), 'B'};
        ASSERT_EQ(korvan::ci_less_a()(left, right),
                  strcasecmp(left.c_str(), right.c_str()) < 0)
            << name << ' ' << i << ' ' << j;
      }
    }
  }
}

TEST(IniNameOrder, WideNamesFoldAsTheCLibraryFoldsCharacters) {
  const wchar_t characters[] = {0,    1,       L'A',     L'I',      L'Z',
                                L'_', L'i',    L'z',     0x130,     0x131,
                                0xC9, 0xE9,    0x416,    0x436,     0x1E9E,
                                0xDF, 0x1F600, 0x10FFFF, 0x7FFFFFFF};
  for (const char* const name : kTestLocales) {
    const CLocale locale(name);
    for (const wchar_t i : characters) {
      for (const wchar_t j : characters) {
        const std::wstring left = {L'x', L'Y', i, L'a'};
        const std::wstring right = {L'x', L'y', j, L'B'};
        ASSERT_EQ(korvan::ci_less_w()(left, right),
                  wcscasecmp(left.c_str(), right.c_str()) < 0)
            << name << ' ' << +i << ' ' << +j;
      }
    }
  }
}

TEST(IniNameOrder, OnlyWideNamesFoldLettersOfSeveralBytes) {
  const CLocale locale("C.UTF-8");
  korvan::CIniFileA narrow;
  narrow.AddSection("\xD0\x96");  // the Cyrillic letter Zhe
  narrow.AddSection("\xD0\xB6");
  EXPECT_EQ(narrow.GetSections().size(), 2u);
  korvan::CIniFileW wide;
  wide.AddSection(L"\u0416");
  wide.AddSection(L"\u0436");
  EXPECT_EQ(ContentOf(wide), "\\416;{}");
}

TEST(IniNameOrder, TurkishKeepsTheTwoLettersIApart) {
  const CLocale locale("tr_TR.UTF-8");
  korvan::CIniFileW file;
  file.AddSection(L"I");
  file.AddSection(L"i");
  EXPECT_EQ(file.GetSections().size(), 2u);
  file.AddSection(L"\u0130");  // I with a dot, which is the capital of i
  EXPECT_EQ(file.GetSections().size(), 2u);
}

// libc++ looks whether what it sorts by is an order.
TEST(IniNameOrder, KeysInNoOrderWhoseNamesGoOnBehindANulAreOneKey) {
  std::wstring text = L"[Main]\n[z=last\n";
  for (int i = 0; i < 13; ++i) {
    const std::wstring end = L"____________";
    text +=
        L"[aa" + (L'\0' + end) + static_cast<wchar_t>(L'z' - i % 3) + L"=1\n";
    text += L"[Aa" + (L'\0' + end) + L"q=2\n";
    text +=
        L"[aa" + (L'\0' + end) + static_cast<wchar_t>(L'a' + i % 3) + L"=3\n";
  }
  std::wistringstream input(text);
  korvan::CIniFileW file;
  file.Load(input);
  EXPECT_EQ(file.GetSection(L"Main")->GetKeys().size(), 2u);
  EXPECT_EQ(Shown(file.GetKeyValue(L"Main", L"[AA")), "3");
}

}  // namespace
}  // namespace korvan::test
