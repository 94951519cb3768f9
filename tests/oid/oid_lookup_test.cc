// What a search finds. Which names it loads on the way is told elsewhere, so
// these tests may run in any order in one process.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>

#include <cstdint>
#include <cstring>
#include <cwctype>
#include <set>
#include <string>
#include <vector>

#include "oid/expected_rows.h"
#include "oid/registry_rows.h"
#include "support/guarded_room.h"

namespace {

using korvan::COidData;
using korvan::FindOIDInfo;
using korvan::FindOIDInfoInternal;
using korvan::MatchOidInfo;
using korvan::oid_registry;
using korvan::OID_TABLE_INFO;

COidData* FindByOid(std::string oid, unsigned int group) {
  return FindOIDInfo(CRYPT_OID_INFO_OID_KEY, &oid[0], group);
}

COidData* FindByName(std::wstring name, unsigned int group) {
  return FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, &name[0], group);
}

COidData* FindByAlgid(unsigned int algid, unsigned int group) {
  return FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &algid, group);
}

COidData* FindByPair(unsigned int first, unsigned int second,
                     unsigned int group) {
  unsigned int pair[2] = {first, second};
  return FindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, pair, group);
}

// The record that stands at `row` of `group`, both as the tables count them.
COidData* RowOf(unsigned int group, int row) {
  for (const OID_TABLE_INFO& table : oid_registry) {
    if (table.dwGroupId == group) {
      return &table.rgRecords[row];
    }
  }
  return nullptr;
}

// The first row that `is_wanted`, in one group or, with group 0, in all.
template <class IsWanted>
COidData* FirstRow(unsigned int group, IsWanted is_wanted) {
  const auto rows = RegistryRows();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if ((group == 0 || kExpectedRows[i].group == group) &&
        is_wanted(kExpectedRows[i])) {
      return rows[i];
    }
  }
  return nullptr;
}

wchar_t Upper(wchar_t c) {
  return static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
}

wchar_t Lower(wchar_t c) {
  return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
}

constexpr unsigned int kTopBit = 0x80000000;

TEST(OidLookup, FindsTheFirstRowOfEveryOid) {
  for (const ExpectedRow& row : kExpectedRows) {
    const auto same = [&](const ExpectedRow& other) {
      return std::strcmp(other.oid, row.oid) == 0;
    };
    SCOPED_TRACE(row.oid);
    EXPECT_EQ(FindByOid(row.oid, row.group), FirstRow(row.group, same));
    EXPECT_EQ(FindByOid(row.oid, row.group | kTopBit),
              FirstRow(row.group, same));
    EXPECT_EQ(FindByOid(row.oid, 0), FirstRow(0, same));
    EXPECT_EQ(FindByOid(row.oid, kTopBit), FirstRow(0, same));
  }
}

TEST(OidLookup, AnOidThatDiffersInOneCharacterIsAnother) {
  std::set<std::string> known;
  for (const ExpectedRow& row : kExpectedRows) {
    known.insert(row.oid);
  }
  for (const std::string& oid : known) {
    for (std::size_t at = 0; at < oid.size(); ++at) {
      for (int character = 1; character < 256; ++character) {
        std::string other = oid;
        other[at] = static_cast<char>(character);
        ASSERT_EQ(FindByOid(other, 0) != nullptr, known.count(other) == 1)
            << other;
      }
    }
  }
}

TEST(OidLookup, FindsTheFirstRowOfEveryNameInAnyCase) {
  for (const ExpectedRow& row : kExpectedRows) {
    if (row.name == nullptr) {
      continue;
    }
    const auto same = [&](const ExpectedRow& other) {
      return other.name != nullptr && wcscasecmp(other.name, row.name) == 0;
    };
    std::wstring upper = row.name;
    std::wstring lower = row.name;
    for (wchar_t& c : upper) {
      c = Upper(c);
    }
    for (wchar_t& c : lower) {
      c = Lower(c);
    }
    for (const std::wstring& name : {std::wstring(row.name), upper, lower}) {
      SCOPED_TRACE(testing::PrintToString(name));
      EXPECT_EQ(FindByName(name, row.group), FirstRow(row.group, same));
      EXPECT_EQ(FindByName(name, row.group | kTopBit),
                FirstRow(row.group, same));
      EXPECT_EQ(FindByName(name, 0), FirstRow(0, same));
      EXPECT_EQ(FindByName(name, kTopBit), FirstRow(0, same));
    }
  }
}

TEST(OidLookup, FindsTheFirstRowOfEveryAlgid) {
  for (const ExpectedRow& row : kExpectedRows) {
    const auto same = [&](const ExpectedRow& other) {
      return other.algid == row.algid;
    };
    SCOPED_TRACE(row.algid);
    EXPECT_EQ(FindByAlgid(row.algid, row.group), FirstRow(row.group, same));
    EXPECT_EQ(FindByAlgid(row.algid, row.group | kTopBit),
              FirstRow(row.group, same));
    EXPECT_EQ(FindByAlgid(row.algid, 0), FirstRow(0, same));
  }
}

TEST(OidLookup, FindsTheFirstRowOfEveryPair) {
  for (const ExpectedRow& row : kExpectedRows) {
    const auto same = [&](const ExpectedRow& other) {
      return other.algid == row.algid &&
             other.SecondAlgid() == row.SecondAlgid();
    };
    SCOPED_TRACE(row.oid);
    EXPECT_EQ(FindByPair(row.algid, row.SecondAlgid(), row.group),
              FirstRow(row.group, same));
    EXPECT_EQ(FindByPair(row.algid, row.SecondAlgid(), row.group | kTopBit),
              FirstRow(row.group, same));
    EXPECT_EQ(FindByPair(row.algid, row.SecondAlgid(), 0), FirstRow(0, same));
  }
}

TEST(OidLookup, FindsNothingInAGroupThatLacksTheKey) {
  for (const ExpectedRow& row : kExpectedRows) {
    for (const ExpectedGroup& group : kExpectedGroups) {
      const auto same = [&](const ExpectedRow& other) {
        return std::strcmp(other.oid, row.oid) == 0;
      };
      EXPECT_EQ(FindByOid(row.oid, group.id), FirstRow(group.id, same));
    }
  }
}

TEST(OidLookup, AnAliasRowIsFoundByItsOwnNameOnly) {
  EXPECT_EQ(FindByOid("1.3.14.3.2.26", 1), RowOf(1, 5));
  EXPECT_EQ(FindByName(L"sha", 1), RowOf(1, 6));
  EXPECT_EQ(FindByOid("1.3.14.3.2.18", 1), RowOf(1, 7));
}

TEST(OidLookup, TheFirstRsaRowWinsByOidAndByName) {
  EXPECT_EQ(FindByOid("1.2.840.113549.1.1.1", 3), RowOf(3, 4));
  EXPECT_EQ(FindByName(L"RSA", 3), RowOf(3, 4));
  EXPECT_EQ(FindByName(L"RSA_KEYX", 3), RowOf(3, 7));
  EXPECT_EQ(FindByName(L"RSA_SIGN", 3), RowOf(3, 9));
  EXPECT_EQ(FindByAlgid(CALG_RSA_KEYX, 3), RowOf(3, 4));
  EXPECT_EQ(FindByAlgid(CALG_RSA_SIGN, 3), RowOf(3, 8));
}

TEST(OidLookup, TheSecondPhoneIsShadowedForEveryKey) {
  EXPECT_EQ(FindByOid("2.5.4.20", 5), RowOf(5, 23));
  EXPECT_EQ(FindByName(L"Phone", 5), RowOf(5, 23));
  EXPECT_EQ(FindByAlgid(0, 5), RowOf(5, 0));
}

TEST(OidLookup, AnEmptyNameIsANameAndIsFound) {
  EXPECT_EQ(FindByName(L"", 0), RowOf(6, 29));
  EXPECT_EQ(FindByName(L"", 6), RowOf(6, 29));
  EXPECT_EQ(FindByName(L"", 5), nullptr);
}

TEST(OidLookup, AllGroupsAreSearchedInTheOrderOfTheRegistry) {
  EXPECT_EQ(FindByOid("2.5.4.3", 0), RowOf(5, 1));
  EXPECT_EQ(FindByOid("2.5.4.3", 6), RowOf(6, 53));
  EXPECT_EQ(FindByAlgid(0, 0), RowOf(5, 0));
}

TEST(OidLookup, ARecordWithoutExtraInformationIsAPairWith0) {
  EXPECT_EQ(FindByPair(CALG_SHA1, 0, 0), RowOf(1, 5));
  EXPECT_EQ(FindByPair(CALG_SHA1, CALG_RSA_SIGN, 4), RowOf(4, 3));
  EXPECT_EQ(FindByPair(0x801E, 0x2E23, 4), RowOf(4, 2));
  EXPECT_EQ(FindByPair(CALG_SHA1, 0, 4), nullptr);
  EXPECT_EQ(FindByPair(0, CERT_RDN_IA5_STRING, 5), RowOf(5, 5));
}

TEST(OidLookup, TheTopBitOfTheGroupIsIgnored) {
  EXPECT_EQ(FindByOid("1.2.643.2.2.9", 0x80000001), RowOf(1, 2));
}

TEST(OidLookup, ComparesOidsByteForByte) {
  EXPECT_EQ(FindByOid("1.2.643.2.2.1", 3), nullptr);
  EXPECT_EQ(FindByOid("1.2.643.2.2.199", 3), nullptr);
  EXPECT_EQ(FindByOid(" 1.2.643.2.2.19", 3), nullptr);
  EXPECT_EQ(FindByOid("", 0), nullptr);
  EXPECT_EQ(FindByOid("2", 0), nullptr);
  EXPECT_EQ(FindByOid("2.5.4", 0), nullptr);
  EXPECT_EQ(FindByOid(std::string(100000, '1'), 0), nullptr);
}

TEST(OidLookup, AKeyThatGoesOnBehindAnOidIsAnotherKey) {
  for (const ExpectedRow& row : kExpectedRows) {
    const std::string longer = std::string(row.oid) + "7";
    const auto same = [&](const ExpectedRow& other) {
      return longer == other.oid;
    };
    EXPECT_EQ(FindByOid(longer, 0), FirstRow(0, same)) << longer;
  }
}

TEST(OidLookup, AKeyThatGoesOnBehindANameIsAnotherKey) {
  for (const ExpectedRow& row : kExpectedRows) {
    if (row.name == nullptr) {
      continue;
    }
    const std::wstring longer = std::wstring(row.name) + L"~";
    EXPECT_EQ(FindByName(longer, 0), nullptr);
    EXPECT_EQ(FindByName(longer, row.group), nullptr);
  }
}

// The text as a key whose terminator is the last thing that may be read.
template <class Character>
void* AtTheEdge(korvan::test::GuardedRoom& room,
                const std::basic_string<Character>& text) {
  const auto* const bytes =
      reinterpret_cast<const unsigned char*>(text.c_str());
  return room.Place({bytes, (text.size() + 1) * sizeof(Character)});
}

TEST(OidLookup, ReadsNoFurtherThanTheKey) {
  korvan::test::GuardedRoom room(4096);
  for (const ExpectedRow& row : kExpectedRows) {
    EXPECT_NE(FindOIDInfo(1, AtTheEdge<char>(room, row.oid), row.group),
              nullptr);
    if (row.name == nullptr) {
      continue;
    }
    EXPECT_NE(FindOIDInfo(2, AtTheEdge<wchar_t>(room, row.name), row.group),
              nullptr);
  }
  for (std::size_t length = 1; length < 60; ++length) {
    const std::string oid(length, '1');
    EXPECT_EQ(FindOIDInfo(1, AtTheEdge(room, oid), 0), nullptr);
    const std::wstring name(length, L'1');
    EXPECT_EQ(FindOIDInfo(2, AtTheEdge(room, name), 0), nullptr);
  }
}

TEST(OidLookup, ANullKeyMatchesNothing) {
  for (unsigned int type = 0; type < 6; ++type) {
    EXPECT_EQ(FindOIDInfo(type, nullptr, 0), nullptr);
    EXPECT_EQ(FindOIDInfoInternal(type, nullptr, 3), nullptr);
    EXPECT_EQ(FindOIDInfoInternal(oid_registry[2], type, nullptr), nullptr);
    EXPECT_FALSE(MatchOidInfo(*RowOf(1, 5), type, nullptr));
  }
}

TEST(OidLookup, AnUnknownKeyTypeMatchesNothing) {
  char oid[] = "1.2.643.2.2.19";
  for (unsigned int type : {0u, 5u, 0x80000001u, 0xFFFFFFFFu}) {
    EXPECT_EQ(FindOIDInfo(type, oid, 0), nullptr);
    EXPECT_EQ(FindOIDInfoInternal(oid_registry[2], type, oid), nullptr);
    EXPECT_FALSE(MatchOidInfo(*RowOf(3, 2), type, oid));
  }
}

TEST(OidLookup, AnUnknownGroupHoldsNothing) {
  for (unsigned int group : {9u, 10u, 19u, 21u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    EXPECT_EQ(FindByOid("2.5.4.3", group), nullptr);
    EXPECT_EQ(FindByName(L"CN", group), nullptr);
    EXPECT_EQ(FindByAlgid(0, group), nullptr);
    EXPECT_EQ(FindByPair(0, 0, group), nullptr);
  }
}

TEST(OidLookup, AnUnknownNameIsNotFound) {
  EXPECT_EQ(FindByName(L"no such name", 0), nullptr);
  EXPECT_EQ(FindByName(L"CNN", 5), nullptr);
  EXPECT_EQ(FindByName(L"Common Name", 5), nullptr);
  EXPECT_EQ(FindByName(std::wstring(100000, L'a'), 0), nullptr);
}

TEST(OidLookup, AnUnknownAlgidIsNotFound) {
  for (unsigned int algid = 0; algid < 0x10000; ++algid) {
    const auto same = [&](const ExpectedRow& other) {
      return other.algid == algid;
    };
    ASSERT_EQ(FindByAlgid(algid, 0), FirstRow(0, same)) << algid;
  }
  EXPECT_EQ(FindByAlgid(0xFFFFFFFF, 0), nullptr);
}

TEST(OidLookup, AnUnknownPairIsNotFound) {
  for (const ExpectedRow& first : kExpectedRows) {
    if (first.algid == 0) {
      continue;
    }
    for (const ExpectedRow& second : kExpectedRows) {
      for (unsigned int word : {second.algid, second.SecondAlgid()}) {
        const auto same = [&](const ExpectedRow& other) {
          return other.algid == first.algid && other.SecondAlgid() == word;
        };
        ASSERT_EQ(FindByPair(first.algid, word, 0), FirstRow(0, same))
            << first.algid << ", " << word;
      }
    }
  }
}

TEST(OidLookup, KeysOfNumbersNeedNoAlignment) {
  alignas(8) unsigned char bytes[16] = {};
  const unsigned int pair[2] = {0x801E, 0x2E23};
  std::memcpy(bytes + 1, pair, sizeof pair);
  EXPECT_EQ(FindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, bytes + 1, 4), RowOf(4, 2));
  EXPECT_EQ(FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, bytes + 1, 1), RowOf(1, 2));
}

TEST(OidLookup, TheThreeEntryPointsAgree) {
  char oid[] = "1.2.643.2.2.19";
  COidData* const row = RowOf(3, 2);
  EXPECT_EQ(FindOIDInfo(1, oid, 3), row);
  EXPECT_EQ(FindOIDInfoInternal(1, oid, 3), row);
  EXPECT_EQ(FindOIDInfoInternal(oid_registry[2], 1, oid), row);
  EXPECT_EQ(FindOIDInfoInternal(oid_registry[1], 1, oid), nullptr);
}

TEST(OidLookup, LeavesTheLastErrorAloneWhereNoTextIsMissing) {
  FindByName(L"no such name", 0);
  SetLastError(12345);
  FindByOid("1.2.643.2.2.19", 3);
  FindByOid("no OID", 3);
  FindByName(L"no such name", 0);
  FindByAlgid(1, 0);
  FindByPair(1, 1, 0);
  unsigned int word = 0;
  FindOIDInfo(9, &word, 9);
  FindOIDInfo(1, nullptr, 0);
  EXPECT_EQ(GetLastError(), 12345u);
}

// A caller's own records.

COidData OwnRecord(const char* oid, const wchar_t* name) {
  COidData record = {};
  record.pszOID = oid;
  record.pwszName = name;
  return record;
}

TEST(OwnOidTable, IsSearchedInItsOwnOrder) {
  COidData records[] = {OwnRecord("1.1", L"one"), OwnRecord("1.2", L"two"),
                        OwnRecord("1.1", L"Two")};
  records[2].Algid = 7;
  const OID_TABLE_INFO table = {99, 3, records};
  char oid[] = "1.1";
  wchar_t name[] = L"TWO";
  unsigned int algid = 7;
  unsigned int pair[2] = {7, 0};
  EXPECT_EQ(FindOIDInfoInternal(table, 1, oid), &records[0]);
  EXPECT_EQ(FindOIDInfoInternal(table, 2, name), &records[1]);
  EXPECT_EQ(FindOIDInfoInternal(table, 3, &algid), &records[2]);
  EXPECT_EQ(FindOIDInfoInternal(table, 4, pair), &records[2]);
}

TEST(OwnOidTable, WithoutRecordsHoldsNothing) {
  COidData record = OwnRecord("1.1", L"one");
  char oid[] = "1.1";
  EXPECT_EQ(FindOIDInfoInternal(OID_TABLE_INFO{1, 0, &record}, 1, oid),
            nullptr);
  EXPECT_EQ(FindOIDInfoInternal(OID_TABLE_INFO{1, -5, &record}, 1, oid),
            nullptr);
  EXPECT_EQ(FindOIDInfoInternal(OID_TABLE_INFO{1, 5, nullptr}, 1, oid),
            nullptr);
}

TEST(OwnOidTable, MayPointIntoTheLibrarysRows) {
  char oid[] = "1.2.840.113549.1.1.1";
  wchar_t name[] = L"rsa";
  const OID_TABLE_INFO later = {3, 10, oid_registry[2].rgRecords + 7};
  EXPECT_EQ(FindOIDInfoInternal(later, 1, oid), RowOf(3, 7));
  EXPECT_EQ(FindOIDInfoInternal(later, 2, name), RowOf(3, 8));
  const OID_TABLE_INFO shorter = {3, 4, oid_registry[2].rgRecords};
  EXPECT_EQ(FindOIDInfoInternal(shorter, 1, oid), nullptr);
  EXPECT_EQ(FindOIDInfoInternal(shorter, 2, name), nullptr);
}

TEST(OwnOidTable, ACopyOfALibrarysTableIsSearchedAlike) {
  const OID_TABLE_INFO copy = oid_registry[2];
  char oid[] = "1.2.840.113549.1.1.1";
  EXPECT_EQ(FindOIDInfoInternal(copy, 1, oid), RowOf(3, 4));
}

TEST(OwnOidRecord, WithoutAnOidMatchesNoOid) {
  COidData record = OwnRecord(nullptr, L"one");
  char oid[] = "";
  EXPECT_FALSE(MatchOidInfo(record, 1, oid));
}

TEST(OwnOidRecord, MatchesItsOidCaseSensitively) {
  COidData record = OwnRecord("1.a", nullptr);
  char same[] = "1.a";
  char other[] = "1.A";
  EXPECT_TRUE(MatchOidInfo(record, 1, same));
  EXPECT_FALSE(MatchOidInfo(record, 1, other));
}

TEST(OwnOidRecord, WithoutANameMatchesNoName) {
  COidData record = OwnRecord("1.1", nullptr);
  wchar_t name[] = L"";
  EXPECT_FALSE(MatchOidInfo(record, 2, name));
}

TEST(OwnOidRecord, NamesWithUnitsBeyondUnicodeAreComparedToTheirEnd) {
  wchar_t name[] = L"?a";
  wchar_t other[] = L"?b";
  name[0] = other[0] = static_cast<wchar_t>(0x80000000);
  COidData record = OwnRecord("1.1", name);
  EXPECT_TRUE(MatchOidInfo(record, 2, name));
  EXPECT_FALSE(MatchOidInfo(record, 2, other));
}

TEST(OwnOidRecord, TheSecondWordIsReadOnlyFromFourBytesOrMore) {
  unsigned int words[] = {5, 6};
  COidData record = OwnRecord("1.1", L"one");
  record.Algid = 7;
  record.ExtraInfo.pbData = reinterpret_cast<BYTE*>(words);
  unsigned int with_word[2] = {7, 5};
  unsigned int without[2] = {7, 0};
  for (DWORD size : {0u, 3u}) {
    record.ExtraInfo.cbData = size;
    EXPECT_FALSE(MatchOidInfo(record, 4, with_word)) << size;
    EXPECT_TRUE(MatchOidInfo(record, 4, without)) << size;
  }
  for (DWORD size : {4u, 8u}) {
    record.ExtraInfo.cbData = size;
    EXPECT_TRUE(MatchOidInfo(record, 4, with_word)) << size;
    EXPECT_FALSE(MatchOidInfo(record, 4, without)) << size;
  }
  record.ExtraInfo.pbData = nullptr;
  EXPECT_TRUE(MatchOidInfo(record, 4, without));
}

TEST(OwnOidRecord, ANumberOf0x10000OrMoreIsAPointer) {
  // 0xFFFF is still a number, and no text has it.
  COidData record =
      OwnRecord("1.1", reinterpret_cast<LPCWSTR>(std::uintptr_t{0xFFFF}));
  wchar_t name[] = L"one";
  EXPECT_FALSE(MatchOidInfo(record, 2, name));
  EXPECT_EQ(record.pwszName, nullptr);
  EXPECT_EQ(record.dwOidFlags, 2u);
  // 0x10000 is a pointer: handed out as it is, since an OID search only
  // replaces numbers.
  const auto pointer = reinterpret_cast<LPCWSTR>(std::uintptr_t{0x10000});
  record = OwnRecord("1.1", pointer);
  char oid[] = "1.1";
  EXPECT_EQ(FindOIDInfoInternal(OID_TABLE_INFO{1, 1, &record}, 1, oid),
            &record);
  EXPECT_EQ(record.pwszName, pointer);
  EXPECT_EQ(record.dwOidFlags, 0u);
}

}  // namespace
