// First use on many threads at once. ctest gives each test a process of its
// own, with a registry that nobody has used.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <vector>

#include "oid/expected_rows.h"
#include "oid/find.h"
#include "oid/registry_rows.h"
#include "support/failing_new.h"
#include "support/together.h"

namespace korvan::test {
namespace {

constexpr int kThreads = 8;

TEST(OidThreads, ThreadsThatMeetAtARecordAllComeBackWithItsOneName) {
  struct Seen {
    std::vector<const wchar_t*> names;
    std::size_t characters = 0;
    bool all_flagged = true;
  };
  const auto rows = RegistryRows();
  const auto unloaded = RowsThatHoldTextNumbers();
  Seen seen[kThreads];
  RunTogether(kThreads, [&](int thread) {
    Seen& mine = seen[thread];
    for (const int row : unloaded) {
      const COidData* const asked = rows[static_cast<std::size_t>(row)];
      const COidData* const found = FindByOid(asked->pszOID, asked->dwGroupId);
      // Plain reads of a record that was returned: they must not race.
      mine.names.push_back(found->pwszName);
      if (found->pwszName != nullptr) {
        mine.characters += std::wcslen(found->pwszName);
      }
      if (found == asked && (found->dwOidFlags & kNameIsOwned) == 0) {
        mine.all_flagged = false;
      }
    }
  });
  for (const Seen& each : seen) {
    EXPECT_EQ(each.names, seen[0].names);
    EXPECT_EQ(each.characters, seen[0].characters);
    EXPECT_TRUE(each.all_flagged);
  }
  // A search finds the first of the group's rows that have the OID.
  std::size_t asked = 0;
  for (const int row : unloaded) {
    const ExpectedRow& expected = kExpectedRows[static_cast<std::size_t>(row)];
    const auto first =
        std::ranges::find_if(kExpectedRows, [&](const ExpectedRow& each) {
          return each.group == expected.group &&
                 std::strcmp(each.oid, expected.oid) == 0;
        });
    EXPECT_STREQ(seen[0].names[asked], first->name) << "row " << row;
    ++asked;
  }
}

TEST(OidThreads, ThreadsThatMeetAtARecordLeaveOneArray) {
  const long before = LiveBlocks();
  RunTogether(kThreads, [&](int) { FindUnknownName(kAllGroups); });
  EXPECT_EQ(LiveBlocks() - before, 172);
  EXPECT_EQ(FindUnknownName(kAllGroups), nullptr);
  CleanupOidInfo();
  EXPECT_EQ(LiveBlocks(), before);
}

// Where the threads wait that are about to make the name of one record. A
// case has a process of its own, so one place serves all.
MeetingPoint making(kThreads);
std::atomic<int> made{0};

void WaitForTheOthers() {
  making.Meet();
  ++made;
}

TEST(OidThreads, ThreadsThatAllMakeOneNameKeepOneOfThem) {
  const COidData* found[kThreads] = {};
  const wchar_t* names[kThreads] = {};
  const long before = LiveBlocks();
  RunTogether(kThreads, [&](int thread) {
    const PausingNew pausing(WaitForTheOthers);
    found[thread] = FindByOid("1.2.643.2.2.19", CRYPT_PUBKEY_ALG_OID_GROUP_ID);
    names[thread] = found[thread]->pwszName;
  });
  EXPECT_EQ(made, kThreads);
  EXPECT_EQ(LiveBlocks() - before, 1);
  for (int thread = 0; thread < kThreads; ++thread) {
    EXPECT_EQ(found[thread], found[0]);
    EXPECT_EQ(names[thread], names[0]);
  }
  EXPECT_STREQ(names[0], L"GOST R 34.10-2001");
}

TEST(OidThreads, ThreadsThatSearchByNameAllFindTheirs) {
  const struct {
    const wchar_t* name;
    const COidData* record;
  } kSearches[] = {
      {L"COMMON NAME", RowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 53)},
      {L"lifetime signing", RowOf(CRYPT_ENHKEY_USAGE_OID_GROUP_ID, 30)},
      {L"no such name", nullptr},
  };
  std::atomic<int> wrong{0};
  RunTogether(kThreads, [&](int thread) {
    for (int round = 0; round < 200; ++round) {
      const auto& search = kSearches[(thread + round) % 3];
      const COidData* const found = FindByName(search.name, kAllGroups);
      wrong += found != search.record;
      wrong +=
          found != nullptr && wcscasecmp(found->pwszName, search.name) != 0;
    }
  });
  EXPECT_EQ(wrong, 0);
}

// What a walker may see of a row while its name is loaded: the text's number,
// or with the flag the whole name, which is null where the text is missing.
bool MayBeSeen(const ExpectedRow& row, LPCWSTR name, DWORD flags) {
  const auto value = reinterpret_cast<std::uintptr_t>(name);
  if (row.text_number != 0 && value == row.text_number) {
    return true;
  }
  const DWORD flag = row.text_number != 0 ? kNameIsOwned : 0;
  if ((flags & kNameIsOwned) != flag) {
    return false;
  }
  if (name == nullptr || row.name == nullptr) {
    return name == row.name;
  }
  return value >= 0x10000 && std::wcscmp(name, row.name) == 0;
}

// Half of the threads look up, the others walk the registry and read what the
// lookups write.
TEST(OidThreads, AWalkerThatReadsAtomicallyMayMeetLookups) {
  const auto rows = RegistryRows();
  ASSERT_EQ(rows.size(), kExpectedRows.size());
  std::atomic<int> wrong{0};
  RunTogether(kThreads, [&](int thread) {
    if (thread % 2 == 0) {
      wrong += FindUnknownName(kAllGroups) != nullptr;
      return;
    }
    for (int round = 0; round < 20; ++round) {
      for (std::size_t row = 0; row < rows.size(); ++row) {
        const LPCWSTR name =
            __atomic_load_n(&rows[row]->pwszName, __ATOMIC_ACQUIRE);
        const DWORD flags =
            __atomic_load_n(&rows[row]->dwOidFlags, __ATOMIC_ACQUIRE);
        wrong += !MayBeSeen(kExpectedRows[row], name, flags);
      }
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(OidThreads, ThreadsThatMixKeysOfEveryKindFindTheirs) {
  const COidData* const key = RowOf(CRYPT_PUBKEY_ALG_OID_GROUP_ID, 2);
  const COidData* const signature = RowOf(CRYPT_SIGN_ALG_OID_GROUP_ID, 2);
  std::atomic<int> wrong{0};
  RunTogether(kThreads, [&](int) {
    for (int round = 0; round < 100; ++round) {
      wrong += FindByOid("1.2.643.2.2.19", kAllGroups) != key;
      wrong += FindByName(L"gost r 34.10-2001", kAllGroups) != key;
      wrong += FindByAlgid(0x2E23, kAllGroups) != key;
      wrong += FindByPair(0x801E, 0x2E23, kAllGroups) != signature;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(OidThreads, ThreadsThatMatchOneRecordByNameLoadOneArray) {
  COidData* const record = RowOf(CRYPT_PUBKEY_ALG_OID_GROUP_ID, 2);
  const long before = LiveBlocks();
  std::atomic<int> wrong{0};
  RunTogether(kThreads, [&](int) {
    const PausingNew pausing(WaitForTheOthers);
    wchar_t name[] = L"gost r 34.10-2001";
    wchar_t other[] = L"another";
    ALG_ID algid = 0x2E23;
    wrong += !MatchOidInfo(*record, CRYPT_OID_INFO_NAME_KEY, name);
    wrong += MatchOidInfo(*record, CRYPT_OID_INFO_NAME_KEY, other);
    wrong += !MatchOidInfo(*record, CRYPT_OID_INFO_ALGID_KEY, &algid);
  });
  EXPECT_EQ(made, kThreads);
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(LiveBlocks() - before, 1);
}

// Half of the threads give records of their own the texts that the others load.
TEST(OidThreads, OwnRecordsGetTheirTextsBesideLookups) {
  std::atomic<int> wrong{0};
  RunTogether(kThreads, [&](int thread) {
    if (thread % 2 == 0) {
      wrong += FindUnknownName(kAllGroups) != nullptr;
      return;
    }
    for (int round = 0; round < 200; ++round) {
      COidData own = {};
      InitOidInfoWorker(own, 8048);
      wrong += std::wcscmp(own.pwszName, L"Common Name") != 0;
      delete[] own.pwszName;
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace korvan::test
