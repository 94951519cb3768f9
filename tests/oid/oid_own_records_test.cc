// Searches in a caller's own table, and matches of a caller's own record.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>

#include <cstdint>

#include "oid/registry_rows.h"

namespace korvan::test {
namespace {

COidData OwnRecord(const char* oid, const wchar_t* name) {
  COidData record = {};
  record.pszOID = oid;
  record.pwszName = name;
  return record;
}

TEST(OidOwnTable, ACallersTableIsSearchedInItsOwnOrder) {
  COidData records[] = {OwnRecord("1.1", L"one"), OwnRecord("1.2", L"two"),
                        OwnRecord("1.1", L"Two")};
  records[2].Algid = 7;
  const OID_TABLE_INFO table = {99, 3, records};
  char oid[] = "1.1";
  wchar_t name[] = L"TWO";
  unsigned int algid = 7;
  unsigned int pair[2] = {7, 0};
  EXPECT_EQ(FindOIDInfoInternal(table, CRYPT_OID_INFO_OID_KEY, oid),
            &records[0]);
  EXPECT_EQ(FindOIDInfoInternal(table, CRYPT_OID_INFO_NAME_KEY, name),
            &records[1]);
  EXPECT_EQ(FindOIDInfoInternal(table, CRYPT_OID_INFO_ALGID_KEY, &algid),
            &records[2]);
  EXPECT_EQ(FindOIDInfoInternal(table, CRYPT_OID_INFO_SIGN_KEY, pair),
            &records[2]);
}

TEST(OidOwnTable, ACallersTableWithoutRecordsHoldsNothing) {
  COidData record = OwnRecord("1.1", L"one");
  char oid[] = "1.1";
  EXPECT_EQ(FindOIDInfoInternal(OID_TABLE_INFO{1, 0, &record},
                                CRYPT_OID_INFO_OID_KEY, oid),
            nullptr);
  EXPECT_EQ(FindOIDInfoInternal(OID_TABLE_INFO{1, -5, &record},
                                CRYPT_OID_INFO_OID_KEY, oid),
            nullptr);
  EXPECT_EQ(FindOIDInfoInternal(OID_TABLE_INFO{1, 5, nullptr},
                                CRYPT_OID_INFO_OID_KEY, oid),
            nullptr);
}

TEST(OidOwnTable, WhereThereAreNoRecordsTheKeyIsNotLookedAt) {
  COidData record = OwnRecord("1.1", L"one");
  void* const wild = reinterpret_cast<void*>(8);  // nothing lives there
  for (const OID_TABLE_INFO& table :
       {OID_TABLE_INFO{1, 0, &record}, OID_TABLE_INFO{1, -5, &record},
        OID_TABLE_INFO{1, 5, nullptr}}) {
    EXPECT_EQ(FindOIDInfoInternal(table, CRYPT_OID_INFO_ALGID_KEY, wild),
              nullptr);
  }
}

TEST(OidOwnTable, ACallersTableMayPointIntoTheRegistry) {
  char oid[] = "1.2.840.113549.1.1.1";
  wchar_t name[] = L"rsa";
  constexpr unsigned int kGroup = CRYPT_PUBKEY_ALG_OID_GROUP_ID;
  const OID_TABLE_INFO later = {kGroup, 10, RowOf(kGroup, 7)};
  EXPECT_EQ(FindOIDInfoInternal(later, CRYPT_OID_INFO_OID_KEY, oid),
            RowOf(kGroup, 7));
  EXPECT_EQ(FindOIDInfoInternal(later, CRYPT_OID_INFO_NAME_KEY, name),
            RowOf(kGroup, 8));
  const OID_TABLE_INFO shorter = {kGroup, 4, RowOf(kGroup, 0)};
  EXPECT_EQ(FindOIDInfoInternal(shorter, CRYPT_OID_INFO_OID_KEY, oid), nullptr);
  EXPECT_EQ(FindOIDInfoInternal(shorter, CRYPT_OID_INFO_NAME_KEY, name),
            nullptr);
}

TEST(OidOwnTable, ACopyOfATableOfTheRegistryIsSearchedAlike) {
  const OID_TABLE_INFO copy = oid_registry[2];
  char oid[] = "1.2.840.113549.1.1.1";
  EXPECT_EQ(FindOIDInfoInternal(copy, CRYPT_OID_INFO_OID_KEY, oid),
            RowOf(CRYPT_PUBKEY_ALG_OID_GROUP_ID, 4));
}

TEST(OidOwnRecord, ARecordWithoutAnOidMatchesNoOid) {
  COidData record = OwnRecord(nullptr, L"one");
  char oid[] = "";
  EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_OID_KEY, oid));
}

TEST(OidOwnRecord, OidsOfRecordsAreMatchedCaseSensitively) {
  COidData record = OwnRecord("1.a", nullptr);
  char same[] = "1.a";
  char other[] = "1.A";
  EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_OID_KEY, same));
  EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_OID_KEY, other));
}

TEST(OidOwnRecord, ARecordWithoutANameMatchesNoName) {
  COidData record = OwnRecord("1.1", nullptr);
  wchar_t name[] = L"";
  EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_NAME_KEY, name));
}

TEST(OidOwnRecord, NamesWithUnitsBeyondUnicodeAreComparedToTheirEnd) {
  wchar_t name[] = L"?a";
  wchar_t other[] = L"?b";
  name[0] = other[0] = static_cast<wchar_t>(0x80000000);
  COidData record = OwnRecord("1.1", name);
  EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_NAME_KEY, name));
  EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_NAME_KEY, other));
}

TEST(OidOwnRecord, ASecondAlgidIsReadOnlyFromFourBytesOrMore) {
  unsigned int words[] = {5, 6};
  COidData record = OwnRecord("1.1", L"one");
  record.Algid = 7;
  record.ExtraInfo.pbData = reinterpret_cast<BYTE*>(words);
  unsigned int with_word[2] = {7, 5};
  unsigned int without[2] = {7, 0};
  for (DWORD size : {0u, 3u}) {
    record.ExtraInfo.cbData = size;
    EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_SIGN_KEY, with_word))
        << size;
    EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_SIGN_KEY, without)) << size;
  }
  for (DWORD size : {4u, 8u}) {
    record.ExtraInfo.cbData = size;
    EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_SIGN_KEY, with_word))
        << size;
    EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_SIGN_KEY, without))
        << size;
  }
  record.ExtraInfo.pbData = nullptr;
  EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_SIGN_KEY, without));
}

TEST(OidOwnRecord, ANameUpTo0xFFFFIsTheNumberOfAText) {
  // No text has this number.
  COidData record =
      OwnRecord("1.1", reinterpret_cast<LPCWSTR>(std::uintptr_t{0xFFFF}));
  wchar_t name[] = L"one";
  EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_NAME_KEY, name));
  EXPECT_EQ(record.pwszName, nullptr);
  EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
}

TEST(OidOwnRecord, ANameOf0x10000OrMoreIsAPointer) {
  const auto pointer = reinterpret_cast<LPCWSTR>(std::uintptr_t{0x10000});
  COidData record = OwnRecord("1.1", pointer);
  char oid[] = "1.1";
  EXPECT_EQ(FindOIDInfoInternal(OID_TABLE_INFO{1, 1, &record},
                                CRYPT_OID_INFO_OID_KEY, oid),
            &record);
  EXPECT_EQ(record.pwszName, pointer);
  EXPECT_EQ(record.dwOidFlags, 0u);
}

}  // namespace
}  // namespace korvan::test
