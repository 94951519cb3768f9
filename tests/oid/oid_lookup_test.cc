// What a search finds. Which names it loads is the subject of
// oid_names_test.cc, so these tests may run in any order in one process.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <ostream>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "oid/expected_rows.h"
#include "oid/find.h"
#include "oid/registry_rows.h"
#include "support/guarded_room.h"
#include "support/untouched_error.h"

namespace korvan::test {
namespace {

// The first row that `is_wanted`, in one group or in all.
template <class IsWanted>
COidData* FirstRow(unsigned int group, IsWanted is_wanted) {
  static const std::vector<COidData*> rows = RegistryRows();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if ((group == kAllGroups || kExpectedRows[i].group == group) &&
        is_wanted(kExpectedRows[i])) {
      return rows[i];
    }
  }
  return nullptr;
}

COidData* FindOidOf(const ExpectedRow& row, unsigned int group) {
  return FindByOid(row.oid, group);
}

COidData* FindNameOf(const ExpectedRow& row, unsigned int group) {
  return FindByName(row.name, group);
}

template <std::wint_t (*ToCase)(std::wint_t)>
COidData* FindNameInCase(const ExpectedRow& row, unsigned int group) {
  std::wstring name = row.name;
  for (wchar_t& c : name) {
    c = static_cast<wchar_t>(ToCase(static_cast<std::wint_t>(c)));
  }
  return FindByName(name.c_str(), group);
}

COidData* FindAlgidOf(const ExpectedRow& row, unsigned int group) {
  return FindByAlgid(row.algid, group);
}

COidData* FindPairOf(const ExpectedRow& row, unsigned int group) {
  return FindByPair(row.algid, row.SecondAlgid(), group);
}

bool ShareOid(const ExpectedRow& row, const ExpectedRow& other) {
  return std::strcmp(row.oid, other.oid) == 0;
}

bool ShareName(const ExpectedRow& row, const ExpectedRow& other) {
  return row.name != nullptr && other.name != nullptr &&
         wcscasecmp(row.name, other.name) == 0;
}

bool ShareAlgid(const ExpectedRow& row, const ExpectedRow& other) {
  return row.algid == other.algid;
}

bool SharePair(const ExpectedRow& row, const ExpectedRow& other) {
  return row.algid == other.algid && row.SecondAlgid() == other.SecondAlgid();
}

// A kind of key: how the library is asked for the key of a row, and whether two
// rows have the same. A row without a name shares its name with no row, not
// even with itself.
struct KeyKind {
  const char* name;
  COidData* (*find)(const ExpectedRow& row, unsigned int group);
  bool (*share)(const ExpectedRow& row, const ExpectedRow& other);

  friend void PrintTo(const KeyKind& kind, std::ostream* out) {
    *out << kind.name;
  }
};

// clang-format off
const KeyKind kKeyKinds[] = {
    {"Oid",             FindOidOf,                     ShareOid},
    {"Name",            FindNameOf,                    ShareName},
    {"NameInUpperCase", FindNameInCase<std::towupper>, ShareName},
    {"NameInLowerCase", FindNameInCase<std::towlower>, ShareName},
    {"Algid",           FindAlgidOf,                   ShareAlgid},
    {"Pair",            FindPairOf,                    SharePair},
};
// clang-format on

// Where the key of a row is searched for.
struct Scope {
  const char* name;
  bool is_own_group;  // the row's, or all groups
  unsigned int flag;  // what is added to the group

  friend void PrintTo(const Scope& scope, std::ostream* out) {
    *out << scope.name;
  }
};

// clang-format off
const Scope kScopes[] = {
    {"InItsGroup",               true,  0},
    {"InItsGroupWithTheTopBit",  true,  CRYPT_OID_DISABLE_SEARCH_DS_FLAG},
    {"InAllGroups",              false, 0},
    {"InAllGroupsWithTheTopBit", false, CRYPT_OID_DISABLE_SEARCH_DS_FLAG},
};
// clang-format on

// The rows that have a key of this kind.
std::vector<ExpectedRow> RowsWith(const KeyKind& kind) {
  std::vector<ExpectedRow> rows;
  std::ranges::copy_if(
      kExpectedRows, std::back_inserter(rows),
      [&](const ExpectedRow& row) { return kind.share(row, row); });
  return rows;
}

// The first row, in one group or in all, that has the key of `row`.
COidData* FirstWithKeyOf(const ExpectedRow& row, const KeyKind& kind,
                         unsigned int group) {
  return FirstRow(
      group, [&](const ExpectedRow& other) { return kind.share(row, other); });
}

class OidLookupByKey
    : public testing::TestWithParam<std::tuple<KeyKind, Scope>> {};

TEST_P(OidLookupByKey, TheFirstRowWithTheKeyIsFound) {
  const auto& [kind, scope] = GetParam();
  for (const ExpectedRow& row : RowsWith(kind)) {
    const unsigned int group = scope.is_own_group ? row.group : kAllGroups;
    EXPECT_EQ(kind.find(row, group | scope.flag),
              FirstWithKeyOf(row, kind, group))
        << "group " << row.group << ", OID " << row.oid;
  }
}

INSTANTIATE_TEST_SUITE_P(EveryKind, OidLookupByKey,
                         testing::Combine(testing::ValuesIn(kKeyKinds),
                                          testing::ValuesIn(kScopes)),
                         [](const auto& setting) {
                           return std::get<KeyKind>(setting.param).name +
                                  std::string("_") +
                                  std::get<Scope>(setting.param).name;
                         });

TEST(OidLookup, NothingIsFoundInAGroupThatLacksTheKey) {
  for (const KeyKind& kind : kKeyKinds) {
    for (const ExpectedRow& row : RowsWith(kind)) {
      for (const ExpectedGroup& group : kExpectedGroups) {
        EXPECT_EQ(kind.find(row, group.id), FirstWithKeyOf(row, kind, group.id))
            << kind.name << " of OID " << row.oid << " in group " << group.id;
      }
    }
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
        ASSERT_EQ(FindByOid(other.c_str(), kAllGroups) != nullptr,
                  known.count(other) == 1)
            << other;
      }
    }
  }
}

TEST(OidLookup, AnAliasRowIsFoundByItsOwnNameOnly) {
  constexpr unsigned int kGroup = CRYPT_HASH_ALG_OID_GROUP_ID;
  EXPECT_EQ(FindByOid("1.3.14.3.2.26", kGroup), RowOf(kGroup, 5));
  EXPECT_EQ(FindByName(L"sha", kGroup), RowOf(kGroup, 6));
  EXPECT_EQ(FindByOid("1.3.14.3.2.18", kGroup), RowOf(kGroup, 7));
}

TEST(OidLookup, TheFirstRsaRowWinsByOidAndByName) {
  constexpr unsigned int kGroup = CRYPT_PUBKEY_ALG_OID_GROUP_ID;
  EXPECT_EQ(FindByOid("1.2.840.113549.1.1.1", kGroup), RowOf(kGroup, 4));
  EXPECT_EQ(FindByName(L"RSA", kGroup), RowOf(kGroup, 4));
  EXPECT_EQ(FindByName(L"RSA_KEYX", kGroup), RowOf(kGroup, 7));
  EXPECT_EQ(FindByName(L"RSA_SIGN", kGroup), RowOf(kGroup, 9));
  EXPECT_EQ(FindByAlgid(CALG_RSA_KEYX, kGroup), RowOf(kGroup, 4));
  EXPECT_EQ(FindByAlgid(CALG_RSA_SIGN, kGroup), RowOf(kGroup, 8));
}

TEST(OidLookup, TheSecondPhoneIsFoundByNoKey) {
  constexpr unsigned int kGroup = CRYPT_RDN_ATTR_OID_GROUP_ID;
  EXPECT_EQ(FindByOid("2.5.4.20", kGroup), RowOf(kGroup, 23));
  EXPECT_EQ(FindByName(L"Phone", kGroup), RowOf(kGroup, 23));
  EXPECT_EQ(FindByAlgid(0, kGroup), RowOf(kGroup, 0));
}

TEST(OidLookup, AnEmptyNameIsANameAndIsFound) {
  EXPECT_EQ(FindByName(L"", kAllGroups),
            RowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 29));
  EXPECT_EQ(FindByName(L"", CRYPT_EXT_OR_ATTR_OID_GROUP_ID),
            RowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 29));
  EXPECT_EQ(FindByName(L"", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
}

TEST(OidLookup, AllGroupsAreSearchedInTheOrderOfTheRegistry) {
  EXPECT_EQ(FindByOid("2.5.4.3", kAllGroups),
            RowOf(CRYPT_RDN_ATTR_OID_GROUP_ID, 1));
  EXPECT_EQ(FindByOid("2.5.4.3", CRYPT_EXT_OR_ATTR_OID_GROUP_ID),
            RowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 53));
  EXPECT_EQ(FindByAlgid(0, kAllGroups), RowOf(CRYPT_RDN_ATTR_OID_GROUP_ID, 0));
}

TEST(OidLookup, ARecordWithoutExtraInformationIsFoundByAPairWith0) {
  EXPECT_EQ(FindByPair(CALG_SHA1, 0, kAllGroups),
            RowOf(CRYPT_HASH_ALG_OID_GROUP_ID, 5));
  EXPECT_EQ(FindByPair(CALG_SHA1, CALG_RSA_SIGN, CRYPT_SIGN_ALG_OID_GROUP_ID),
            RowOf(CRYPT_SIGN_ALG_OID_GROUP_ID, 3));
  EXPECT_EQ(FindByPair(0x801E, 0x2E23, CRYPT_SIGN_ALG_OID_GROUP_ID),
            RowOf(CRYPT_SIGN_ALG_OID_GROUP_ID, 2));
  EXPECT_EQ(FindByPair(CALG_SHA1, 0, CRYPT_SIGN_ALG_OID_GROUP_ID), nullptr);
  EXPECT_EQ(FindByPair(0, CERT_RDN_IA5_STRING, CRYPT_RDN_ATTR_OID_GROUP_ID),
            RowOf(CRYPT_RDN_ATTR_OID_GROUP_ID, 5));
}

TEST(OidLookup, TheTopBitOfTheGroupIsIgnored) {
  EXPECT_EQ(FindByOid("1.2.643.2.2.9", CRYPT_HASH_ALG_OID_GROUP_ID |
                                           CRYPT_OID_DISABLE_SEARCH_DS_FLAG),
            RowOf(CRYPT_HASH_ALG_OID_GROUP_ID, 2));
}

TEST(OidLookup, OidsAreComparedByteForByte) {
  constexpr unsigned int kGroup = CRYPT_PUBKEY_ALG_OID_GROUP_ID;
  EXPECT_EQ(FindByOid("1.2.643.2.2.1", kGroup), nullptr);
  EXPECT_EQ(FindByOid("1.2.643.2.2.199", kGroup), nullptr);
  EXPECT_EQ(FindByOid(" 1.2.643.2.2.19", kGroup), nullptr);
  EXPECT_EQ(FindByOid("", kAllGroups), nullptr);
  EXPECT_EQ(FindByOid("2", kAllGroups), nullptr);
  EXPECT_EQ(FindByOid("2.5.4", kAllGroups), nullptr);
  EXPECT_EQ(FindByOid(std::string(100000, '1').c_str(), kAllGroups), nullptr);
}

TEST(OidLookup, AKeyThatGoesOnBehindAnOidIsAnotherKey) {
  for (const ExpectedRow& row : kExpectedRows) {
    const std::string longer = std::string(row.oid) + "7";
    const auto same = [&](const ExpectedRow& other) {
      return longer == other.oid;
    };
    EXPECT_EQ(FindByOid(longer.c_str(), kAllGroups), FirstRow(kAllGroups, same))
        << longer;
  }
}

TEST(OidLookup, AKeyThatGoesOnBehindANameIsAnotherKey) {
  for (const ExpectedRow& row : kExpectedRows) {
    if (row.name == nullptr) {
      continue;
    }
    const std::wstring longer = std::wstring(row.name) + L"~";
    EXPECT_EQ(FindByName(longer.c_str(), kAllGroups), nullptr);
    EXPECT_EQ(FindByName(longer.c_str(), row.group), nullptr);
  }
}

// The text as a key whose terminator is the last thing that may be read.
template <class Character>
const Character* AtTheEdge(GuardedRoom& room,
                           const std::basic_string<Character>& text) {
  const auto* const bytes =
      reinterpret_cast<const unsigned char*>(text.c_str());
  return reinterpret_cast<const Character*>(
      room.Place({bytes, (text.size() + 1) * sizeof(Character)}));
}

TEST(OidLookup, ASearchThatFindsReadsNoFurtherThanTheKey) {
  GuardedRoom room(4096);
  for (const ExpectedRow& row : kExpectedRows) {
    EXPECT_NE(FindByOid(AtTheEdge<char>(room, row.oid), row.group), nullptr);
    if (row.name != nullptr) {
      EXPECT_NE(FindByName(AtTheEdge<wchar_t>(room, row.name), row.group),
                nullptr);
    }
  }
}

TEST(OidLookup, ASearchThatFindsNothingReadsNoFurtherThanTheKey) {
  GuardedRoom room(4096);
  for (std::size_t length = 1; length < 60; ++length) {
    const std::string oid(length, '1');
    EXPECT_EQ(FindByOid(AtTheEdge(room, oid), kAllGroups), nullptr);
    const std::wstring name(length, L'1');
    EXPECT_EQ(FindByName(AtTheEdge(room, name), kAllGroups), nullptr);
  }
}

// Only a mistake makes such a key, and then it may be long.
TEST(OidLookup, OfAKeyThatIsTooLongOneCharacterTooManyIsReadAndNoMore) {
  std::string oid;
  std::wstring name;
  for (const ExpectedRow& row : kExpectedRows) {
    oid.resize(std::max(oid.size(), std::string(row.oid).size() + 1), '1');
    if (row.name != nullptr) {
      name.resize(std::max(name.size(), std::wcslen(row.name) + 1), L'1');
    }
  }
  GuardedRoom room(4096);
  const auto at_the_edge = [&](const auto& text) {
    const auto bytes = std::as_bytes(std::span(text));
    return reinterpret_cast<decltype(text.data())>(room.Place(
        {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}));
  };
  EXPECT_EQ(FindByOid(at_the_edge(oid), kAllGroups), nullptr);
  EXPECT_EQ(FindByName(at_the_edge(name), kAllGroups), nullptr);
}

TEST(OidLookup, ANullKeyMatchesNothing) {
  for (const unsigned int type :
       {0u, CRYPT_OID_INFO_OID_KEY, CRYPT_OID_INFO_NAME_KEY,
        CRYPT_OID_INFO_ALGID_KEY, CRYPT_OID_INFO_SIGN_KEY, kUnknownKeyType}) {
    EXPECT_EQ(FindOIDInfo(type, nullptr, kAllGroups), nullptr);
    EXPECT_EQ(FindOIDInfoInternal(type, nullptr, CRYPT_PUBKEY_ALG_OID_GROUP_ID),
              nullptr);
    EXPECT_EQ(FindOIDInfoInternal(oid_registry[2], type, nullptr), nullptr);
    EXPECT_FALSE(
        MatchOidInfo(*RowOf(CRYPT_HASH_ALG_OID_GROUP_ID, 5), type, nullptr));
  }
}

TEST(OidLookup, AnUnknownKeyTypeMatchesNothing) {
  char oid[] = "1.2.643.2.2.19";
  for (const unsigned int type :
       {0u, kUnknownKeyType, 0x80000000 | CRYPT_OID_INFO_OID_KEY,
        0xFFFFFFFFu}) {
    EXPECT_EQ(FindOIDInfo(type, oid, kAllGroups), nullptr);
    EXPECT_EQ(FindOIDInfoInternal(oid_registry[2], type, oid), nullptr);
    EXPECT_FALSE(
        MatchOidInfo(*RowOf(CRYPT_PUBKEY_ALG_OID_GROUP_ID, 2), type, oid));
  }
}

TEST(OidLookup, AnUnknownGroupHoldsNothing) {
  for (const unsigned int group :
       {kUnknownGroup, 10u, 19u, 21u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    EXPECT_EQ(FindByOid("2.5.4.3", group), nullptr);
    EXPECT_EQ(FindByName(L"CN", group), nullptr);
    EXPECT_EQ(FindByAlgid(0, group), nullptr);
    EXPECT_EQ(FindByPair(0, 0, group), nullptr);
  }
}

TEST(OidLookup, AnUnknownNameIsNotFound) {
  EXPECT_EQ(FindUnknownName(kAllGroups), nullptr);
  EXPECT_EQ(FindByName(L"CNN", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_EQ(FindByName(L"Common Name", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_EQ(FindByName(std::wstring(100000, L'a').c_str(), kAllGroups),
            nullptr);
}

TEST(OidLookup, EveryAlgidOf16BitsIsFoundInItsFirstRowOrNotAtAll) {
  for (unsigned int algid = 0; algid < 0x10000; ++algid) {
    const auto same = [&](const ExpectedRow& other) {
      return other.algid == algid;
    };
    ASSERT_EQ(FindByAlgid(algid, kAllGroups), FirstRow(kAllGroups, same))
        << algid;
  }
}

TEST(OidLookup, AnAlgidOf32BitsIsNotFound) {
  EXPECT_EQ(FindByAlgid(0xFFFFFFFF, kAllGroups), nullptr);
  EXPECT_EQ(FindByAlgid(0x10000 | CALG_SHA1, kAllGroups), nullptr);
}

TEST(OidLookup, EveryPairOfKnownAlgidsIsFoundInItsFirstRowOrNotAtAll) {
  for (const ExpectedRow& first : kExpectedRows) {
    if (first.algid == 0) {
      continue;
    }
    for (const ExpectedRow& second : kExpectedRows) {
      for (unsigned int word : {second.algid, second.SecondAlgid()}) {
        const auto same = [&](const ExpectedRow& other) {
          return other.algid == first.algid && other.SecondAlgid() == word;
        };
        ASSERT_EQ(FindByPair(first.algid, word, kAllGroups),
                  FirstRow(kAllGroups, same))
            << first.algid << ", " << word;
      }
    }
  }
}

TEST(OidLookup, KeysOfNumbersNeedNoAlignment) {
  alignas(8) unsigned char bytes[16] = {};
  const unsigned int pair[2] = {0x801E, 0x2E23};
  std::memcpy(bytes + 1, pair, sizeof pair);
  EXPECT_EQ(FindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, bytes + 1,
                        CRYPT_SIGN_ALG_OID_GROUP_ID),
            RowOf(CRYPT_SIGN_ALG_OID_GROUP_ID, 2));
  EXPECT_EQ(FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, bytes + 1,
                        CRYPT_HASH_ALG_OID_GROUP_ID),
            RowOf(CRYPT_HASH_ALG_OID_GROUP_ID, 2));
}

TEST(OidLookup, TheThreeEntryPointsAgree) {
  constexpr unsigned int kGroup = CRYPT_PUBKEY_ALG_OID_GROUP_ID;
  char oid[] = "1.2.643.2.2.19";
  COidData* const row = RowOf(kGroup, 2);
  EXPECT_EQ(FindOIDInfo(CRYPT_OID_INFO_OID_KEY, oid, kGroup), row);
  EXPECT_EQ(FindOIDInfoInternal(CRYPT_OID_INFO_OID_KEY, oid, kGroup), row);
  EXPECT_EQ(FindOIDInfoInternal(oid_registry[2], CRYPT_OID_INFO_OID_KEY, oid),
            row);
  EXPECT_EQ(FindOIDInfoInternal(oid_registry[1], CRYPT_OID_INFO_OID_KEY, oid),
            nullptr);
}

TEST(OidLookup, ASearchThatMeetsNoMissingTextLeavesTheLastErrorAlone) {
  FindUnknownName(kAllGroups);  // loads every name
  SetLastError(kUntouchedError);
  FindByOid("1.2.643.2.2.19", CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  FindByOid("no OID", CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  FindUnknownName(kAllGroups);
  FindByAlgid(1, kAllGroups);
  FindByPair(1, 1, kAllGroups);
  unsigned int word = 0;
  FindOIDInfo(kUnknownKeyType, &word, kUnknownGroup);
  FindOIDInfo(CRYPT_OID_INFO_OID_KEY, nullptr, kAllGroups);
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

TEST(OidLookup, AMatchThatMeetsNoMissingTextLeavesTheLastErrorAlone) {
  COidData* const row = RowOf(CRYPT_PUBKEY_ALG_OID_GROUP_ID, 2);
  wchar_t name[] = L"GOST R 34.10-2001";
  char oid[] = "no OID";
  SetLastError(kUntouchedError);
  EXPECT_TRUE(MatchOidInfo(*row, CRYPT_OID_INFO_NAME_KEY, name));
  EXPECT_FALSE(MatchOidInfo(*row, CRYPT_OID_INFO_OID_KEY, oid));
  EXPECT_FALSE(MatchOidInfo(*row, CRYPT_OID_INFO_OID_KEY, nullptr));
  EXPECT_FALSE(MatchOidInfo(*row, kUnknownKeyType, oid));
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

}  // namespace
}  // namespace korvan::test
