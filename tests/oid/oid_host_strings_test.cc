// What names become when a host replaces the string function, and when the C
// library converts no text: this program's LoadString_korvan and mbsrtowcs take
// the place of theirs, as a host's would.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <korvan/string_resources.h>

#include <clocale>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>

#include "oid/find.h"
#include "oid/registry_rows.h"

namespace korvan::test {
namespace {

std::string text;
bool reports_none = false;

// What the conversion gives that fills the array, as if another thread had
// changed the locale since the one that counted the characters.
enum class Filling { kWorks, kFails, kConvertsNothing };
Filling filling = Filling::kWorks;

std::unique_ptr<const wchar_t[]> NameMadeOf(const std::string& from,
                                            COidData& record) {
  text = from;
  record = {};
  record.pwszName = L"mine";
  InitOidInfoWorker(record, 1);
  return std::unique_ptr<const wchar_t[]>(record.pwszName);
}

TEST(OidHostStrings, ATextOfOneCharacterIsAName) {
  COidData record;
  const auto name = NameMadeOf("x", record);
  ASSERT_NE(name, nullptr);
  EXPECT_STREQ(name.get(), L"x");
}

TEST(OidHostStrings, ATextThatTheLocaleCanNotConvertLeavesNoName) {
  ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
  for (const std::size_t length : {0u, 3u, 200u}) {
    COidData record;
    EXPECT_EQ(NameMadeOf(std::string(length, 'x') + '\xFF', record), nullptr);
    EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
  }
}

TEST(OidHostStrings, ATextThatTheHostReportsAsNoneLeavesNoName) {
  reports_none = true;
  COidData record;
  EXPECT_EQ(NameMadeOf("written all the same", record), nullptr);
  EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
  reports_none = false;
}

TEST(OidHostStrings, ATextThatBeginsWithItsEndLeavesNoName) {
  COidData record;
  EXPECT_EQ(NameMadeOf(std::string("\0x", 2), record), nullptr);
  EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
}

TEST(OidHostStrings, ATextThatCanNoLongerBeConvertedOnceCountedLeavesNoName) {
  for (const Filling outcome : {Filling::kFails, Filling::kConvertsNothing}) {
    filling = outcome;
    COidData record;
    EXPECT_EQ(NameMadeOf("counted", record), nullptr);
    EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
  }
  filling = Filling::kWorks;
}

TEST(OidHostStrings, ATextOfSeveralBytesACharacterIsAsLongAsItsCharacters) {
  ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
  COidData record;
  const auto name = NameMadeOf("\xD0\x98\xD0\xBC\xD1\x8F", record);
  ASSERT_NE(name, nullptr);
  EXPECT_STREQ(name.get(), L"\x0418\x043C\x044F");
}

TEST(OidHostStrings, ATextIsReadUpToItsFirst256Bytes) {
  for (std::size_t length : {255u, 256u, 257u}) {
    COidData record;
    const auto name = NameMadeOf(std::string(length, 'y'), record);
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(std::wstring(name.get()),
              std::wstring(length < 256 ? length : 256, L'y'));
  }
}

TEST(OidHostStrings, ARecordOfTheRegistryIsFoundByTheHostsTextOnly) {
  text = "A name of the host";
  COidData& record = *RowOf(CRYPT_POLICY_OID_GROUP_ID, 0);
  EXPECT_EQ(FindByName(L"all issuance policies", CRYPT_POLICY_OID_GROUP_ID),
            nullptr);
  EXPECT_EQ(FindByName(L"a NAME of the host", CRYPT_POLICY_OID_GROUP_ID),
            &record);
}

}  // namespace
}  // namespace korvan::test

std::size_t mbsrtowcs(wchar_t* to, const char** from, std::size_t size,
                      std::mbstate_t* state) noexcept {
  using korvan::test::Filling;
  using korvan::test::filling;
  if (to != nullptr) {
    // No text is longer. Of an impossible size the C library writes nothing.
    EXPECT_LE(size, 256u);
  }
  if (to != nullptr && filling != Filling::kWorks) {
    return filling == Filling::kFails ? static_cast<std::size_t>(-1) : 0;
  }
  return mbsnrtowcs(to, from, std::strlen(*from) + 1, size, state);
}

int LoadString_korvan(void*, unsigned int, char* buffer, int size) {
  using korvan::test::reports_none;
  using korvan::test::text;
  const int length = static_cast<int>(text.size());
  const int copied = length < size ? length : size;
  std::memcpy(buffer, text.data(), static_cast<std::size_t>(copied));
  return reports_none ? 0 : copied;
}
