// The tables as they stand before any lookup. No test here looks anything up.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <string>

#include "oid/expected_rows.h"
#include "oid/registry_rows.h"

namespace korvan::test {
namespace {

TEST(OidTables, TheRegistryIsNineGroupsInSearchOrder) {
  ASSERT_EQ(std::size(oid_registry), 9u);
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_EQ(oid_registry[i].dwGroupId, kExpectedGroups[i].id);
    EXPECT_EQ(oid_registry[i].cRecords, kExpectedGroups[i].count);
  }
}

TEST(OidTables, GroupIdsAreCryptoApisAndOneOfTheProviders) {
  EXPECT_EQ(oid_registry[0].dwGroupId, CRYPT_HASH_ALG_OID_GROUP_ID);
  EXPECT_EQ(oid_registry[1].dwGroupId, CRYPT_ENCRYPT_ALG_OID_GROUP_ID);
  EXPECT_EQ(oid_registry[2].dwGroupId, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  EXPECT_EQ(oid_registry[3].dwGroupId, CRYPT_SIGN_ALG_OID_GROUP_ID);
  EXPECT_EQ(oid_registry[4].dwGroupId, CRYPT_RDN_ATTR_OID_GROUP_ID);
  EXPECT_EQ(oid_registry[5].dwGroupId, CRYPT_EXT_OR_ATTR_OID_GROUP_ID);
  EXPECT_EQ(oid_registry[6].dwGroupId, CRYPT_ENHKEY_USAGE_OID_GROUP_ID);
  EXPECT_EQ(oid_registry[7].dwGroupId, CRYPT_POLICY_OID_GROUP_ID);
  EXPECT_EQ(oid_registry[8].dwGroupId, PARAMSET_OID_GROUP_ID);
}

TEST(OidTables, EveryRecordIsAsStatedFieldByField) {
  const auto rows = RegistryRows();
  ASSERT_EQ(rows.size(), 259u);
  ASSERT_EQ(kExpectedRows.size(), 259u);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    SCOPED_TRACE("row " + std::to_string(i));
    const COidData& record = *rows[i];
    const ExpectedRow& expected = kExpectedRows[i];
    EXPECT_EQ(record.cbSize, 64u);
    EXPECT_STREQ(record.pszOID, expected.oid);
    EXPECT_EQ(record.dwGroupId, expected.group);
    if (expected.text_number != 0) {
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(record.pwszName),
                expected.text_number);
    } else {
      EXPECT_STREQ(record.pwszName, expected.name);
    }
    EXPECT_EQ(record.Algid, expected.algid);
    EXPECT_EQ(record.dwValue, expected.algid);
    EXPECT_EQ(record.dwLength, expected.algid);
    ASSERT_EQ(record.ExtraInfo.cbData, 4 * expected.extra.size());
    if (expected.extra.empty()) {
      EXPECT_EQ(record.ExtraInfo.pbData, nullptr);
    } else {
      EXPECT_EQ(std::memcmp(record.ExtraInfo.pbData, expected.extra.data(),
                            record.ExtraInfo.cbData),
                0);
    }
    EXPECT_STREQ(record.pwszCNGAlgid, expected.cng);
    EXPECT_STREQ(record.pwszCNGExtraAlgid, expected.cng_extra);
    EXPECT_EQ(record.dwOidFlags, expected.mark);
  }
}

TEST(OidTables, ARecordBeginsWithACryptOidInfo) {
  static_assert(sizeof(COidData) == 72, "64 bytes, the flags, padding");
  static_assert(offsetof(COidData, dwOidFlags) == 64, "flags come last");
  COidData record = *RowOf(CRYPT_PUBKEY_ALG_OID_GROUP_ID, 2);
  CRYPT_OID_INFO info;
  std::memcpy(&info, &record, sizeof info);
  EXPECT_EQ(info.cbSize, sizeof info);
  EXPECT_STREQ(info.pszOID, "1.2.643.2.2.19");
  EXPECT_EQ(info.dwGroupId, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  EXPECT_EQ(info.Algid, 0x2E23u);
  EXPECT_EQ(info.ExtraInfo.cbData, 0u);
  EXPECT_STREQ(info.pwszCNGAlgid, L"GOST R 34.10-2001");
  EXPECT_STREQ(info.pwszCNGExtraAlgid, L"");
}

TEST(OidTables, ATableIsItsIdItsCountAndItsRecords) {
  static_assert(offsetof(OID_TABLE_INFO, dwGroupId) == 0, "");
  static_assert(offsetof(OID_TABLE_INFO, cRecords) == 4, "");
  static_assert(offsetof(OID_TABLE_INFO, rgRecords) == 8, "");
  static_assert(sizeof(OID_TABLE_INFO) == 16, "");
  for (const OID_TABLE_INFO& table : oid_registry) {
    EXPECT_EQ(table.rgRecords[0].dwGroupId, table.dwGroupId);
    EXPECT_EQ(table.rgRecords[table.cRecords - 1].dwGroupId, table.dwGroupId);
  }
}

}  // namespace
}  // namespace korvan::test
