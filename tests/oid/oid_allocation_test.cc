// What a failing allocation leaves behind. ctest gives each test a process of
// its own, with a registry that nobody has used.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>

#include <new>

#include "oid/registry_rows.h"
#include "support/failing_new.h"

namespace {

using korvan::COidData;
using korvan::FindOIDInfo;
using korvan::test::FailingNew;
using korvan::test::LastNewSize;
using korvan::test::LiveBlocks;
using korvan::test::NewCalls;

char gost2001[] = "1.2.643.2.2.19";
wchar_t gost2001_name[] = L"GOST R 34.10-2001";

TEST(OidAllocation, ANameTakesOneAllocation) {
  const long calls = NewCalls();
  const long live = LiveBlocks();
  ASSERT_NE(FindOIDInfo(1, gost2001, 3), nullptr);
  EXPECT_EQ(NewCalls() - calls, 1);
  EXPECT_EQ(LiveBlocks() - live, 1);
}

TEST(OidAllocation, ANameTakesItsCharactersAndATerminator) {
  ASSERT_NE(FindOIDInfo(1, gost2001, 3), nullptr);
  EXPECT_EQ(LastNewSize(), sizeof(gost2001_name));
}

TEST(OidAllocation, ResolvedRecordsAreFoundWithoutAny) {
  wchar_t missing[] = L"no such name";
  FindOIDInfo(2, missing, 0);
  const long calls = NewCalls();
  unsigned int pair[] = {0x801E, 0x2E23};
  EXPECT_NE(FindOIDInfo(1, gost2001, 0), nullptr);
  EXPECT_NE(FindOIDInfo(2, gost2001_name, 0), nullptr);
  EXPECT_NE(FindOIDInfo(3, pair, 0), nullptr);
  EXPECT_NE(FindOIDInfo(4, pair, 0), nullptr);
  EXPECT_EQ(FindOIDInfo(2, missing, 0), nullptr);
  EXPECT_EQ(NewCalls(), calls);
}

TEST(OidAllocation, ThatFailsPassesOutAndLeavesTheNameNullForGood) {
  const long live = LiveBlocks();
  bool thrown = false;
  {
    FailingNew failing(0);
    try {
      FindOIDInfo(1, gost2001, 3);
    } catch (const std::bad_alloc&) {
      thrown = true;
    }
  }
  EXPECT_TRUE(thrown);
  COidData* const found = FindOIDInfo(1, gost2001, 3);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->pwszName, nullptr);
  EXPECT_EQ(found->dwOidFlags, 3u);
  EXPECT_EQ(LiveBlocks(), live);
  // The other record with a GOST name of group 3 is still to be loaded.
  EXPECT_EQ(FindOIDInfo(2, gost2001_name, 3), nullptr);
}

TEST(OidAllocation, ThatFailsOnTheWayOfASearchLosesThatRowOnly) {
  bool thrown = false;
  {
    FailingNew failing(2);
    try {
      FindOIDInfo(2, gost2001_name, 3);
    } catch (const std::bad_alloc&) {
      thrown = true;
    }
  }
  EXPECT_TRUE(thrown);
  const COidData* const rows = korvan::oid_registry[2].rgRecords;
  EXPECT_STREQ(rows[0].pwszName, L"GOST R 34.10-94");
  EXPECT_STREQ(rows[1].pwszName, L"GOST R 34.10-94");
  EXPECT_EQ(rows[2].pwszName, nullptr);
  EXPECT_EQ(rows[2].dwOidFlags, 3u);
  EXPECT_TRUE(HoldsTextNumber(rows[3]));
  wchar_t dh[] = L"gost r 34.10-2001 dh";
  EXPECT_EQ(FindOIDInfo(2, dh, 3), &rows[3]);
}

TEST(OidAllocation, ThatFailsLeavesAnOwnRecordWithoutAName) {
  COidData record = {};
  record.pwszName = L"mine";
  {
    FailingNew failing(0);
    EXPECT_THROW(korvan::InitOidInfoWorker(record, 8048), std::bad_alloc);
  }
  EXPECT_EQ(record.pwszName, nullptr);
  EXPECT_EQ(record.dwOidFlags, 2u);
}

TEST(OidAllocation, CleanupFreesEveryName) {
  const long live = LiveBlocks();
  wchar_t missing[] = L"no such name";
  FindOIDInfo(2, missing, 0);
  EXPECT_EQ(LiveBlocks() - live, 172);
  korvan::CleanupOidInfo();
  EXPECT_EQ(LiveBlocks(), live);
}

}  // namespace
