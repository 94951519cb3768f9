// What a failing allocation leaves behind. ctest gives each test a process of
// its own, with a registry that nobody has used.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>

#include <new>

#include "oid/find.h"
#include "oid/registry_rows.h"
#include "support/failing_new.h"

namespace korvan::test {
namespace {

constexpr char kGost2001[] = "1.2.643.2.2.19";
constexpr wchar_t kGost2001Name[] = L"GOST R 34.10-2001";

TEST(OidAllocation, ANameTakesOneAllocation) {
  const long calls = NewCalls();
  const long live = LiveBlocks();
  ASSERT_NE(FindByOid(kGost2001, CRYPT_PUBKEY_ALG_OID_GROUP_ID), nullptr);
  EXPECT_EQ(NewCalls() - calls, 1);
  EXPECT_EQ(LiveBlocks() - live, 1);
}

TEST(OidAllocation, ANameTakesItsCharactersAndATerminator) {
  ASSERT_NE(FindByOid(kGost2001, CRYPT_PUBKEY_ALG_OID_GROUP_ID), nullptr);
  EXPECT_EQ(LastNewSize(), sizeof(kGost2001Name));
}

TEST(OidAllocation, LoadedRecordsAreFoundWithoutAnAllocation) {
  FindUnknownName(kAllGroups);
  const long calls = NewCalls();
  EXPECT_NE(FindByOid(kGost2001, kAllGroups), nullptr);
  EXPECT_NE(FindByName(kGost2001Name, kAllGroups), nullptr);
  EXPECT_NE(FindByAlgid(0x801E, kAllGroups), nullptr);
  EXPECT_NE(FindByPair(0x801E, 0x2E23, kAllGroups), nullptr);
  EXPECT_EQ(FindUnknownName(kAllGroups), nullptr);
  EXPECT_EQ(NewCalls(), calls);
}

TEST(OidAllocation, AFailedAllocationPassesOutAndLeavesTheNameNullForGood) {
  const long live = LiveBlocks();
  {
    FailingNew failing(0);
    EXPECT_THROW(FindByOid(kGost2001, CRYPT_PUBKEY_ALG_OID_GROUP_ID),
                 std::bad_alloc);
  }
  COidData* const found = FindByOid(kGost2001, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->pwszName, nullptr);
  EXPECT_EQ(found->dwOidFlags, kMark | kNameIsOwned);
  EXPECT_EQ(LiveBlocks(), live);
  // No other record of the group has that name.
  EXPECT_EQ(FindByName(kGost2001Name, CRYPT_PUBKEY_ALG_OID_GROUP_ID), nullptr);
}

TEST(OidAllocation, AFailedAllocationOnTheWayOfASearchLosesThatNameOnly) {
  {
    FailingNew failing(2);
    EXPECT_THROW(FindByName(kGost2001Name, CRYPT_PUBKEY_ALG_OID_GROUP_ID),
                 std::bad_alloc);
  }
  const COidData* const rows = RowOf(CRYPT_PUBKEY_ALG_OID_GROUP_ID, 0);
  EXPECT_STREQ(rows[0].pwszName, L"GOST R 34.10-94");
  EXPECT_STREQ(rows[1].pwszName, L"GOST R 34.10-94");
  EXPECT_EQ(rows[2].pwszName, nullptr);
  EXPECT_EQ(rows[2].dwOidFlags, kMark | kNameIsOwned);
  EXPECT_TRUE(HoldsTextNumber(rows[3]));
  EXPECT_EQ(FindByName(L"gost r 34.10-2001 dh", CRYPT_PUBKEY_ALG_OID_GROUP_ID),
            &rows[3]);
}

TEST(OidAllocation, AFailedAllocationLeavesACallersRecordWithoutAName) {
  COidData record = {};
  record.pwszName = L"mine";
  {
    FailingNew failing(0);
    EXPECT_THROW(InitOidInfoWorker(record, 8048), std::bad_alloc);
  }
  EXPECT_EQ(record.pwszName, nullptr);
  EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
}

TEST(OidAllocation, CleanupFreesEveryName) {
  const long live = LiveBlocks();
  FindUnknownName(kAllGroups);
  EXPECT_EQ(LiveBlocks() - live, 172);
  CleanupOidInfo();
  EXPECT_EQ(LiveBlocks(), live);
}

}  // namespace
}  // namespace korvan::test
