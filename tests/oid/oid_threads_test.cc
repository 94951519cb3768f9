// First use on many threads at once. ctest gives each test a process of its
// own, with a registry that nobody has used.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <string>
#include <thread>
#include <vector>

#include "oid/find.h"
#include "oid/registry_rows.h"
#include "support/failing_new.h"

namespace korvan::test {
namespace {

constexpr int kThreads = 8;

// Runs `work(thread number)` on all threads, which start together.
template <class Work>
void Together(Work work) {
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting > 0) {
      }
      work(i);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST(OidThreads, ThatMeetAtARecordAllComeBackWithItsOneName) {
  struct Seen {
    std::vector<const wchar_t*> names;
    std::size_t characters = 0;
    bool all_flagged = true;
  };
  const auto rows = RegistryRows();
  const auto unloaded = RowsThatHoldTextNumbers();
  Seen seen[kThreads];
  Together([&](int thread) {
    Seen& mine = seen[thread];
    for (const int row : unloaded) {
      const COidData* const asked = rows[static_cast<std::size_t>(row)];
      const COidData* const found = FindByOid(asked->pszOID, asked->dwGroupId);
      // Plain reads of what was handed out: they must not race.
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
}

TEST(OidThreads, ThatMeetAtARecordLeaveOneArray) {
  const long before = LiveBlocks();
  Together([&](int) { FindUnknownName(kAllGroups); });
  EXPECT_EQ(LiveBlocks() - before, 172);
  EXPECT_EQ(FindUnknownName(kAllGroups), nullptr);
  CleanupOidInfo();
  EXPECT_EQ(LiveBlocks(), before);
}

// Threads that have all come to make the name of one record.
std::atomic<int> making{0};

void WaitForTheOthers() {
  ++making;
  while (making < kThreads) {
  }
}

TEST(OidThreads, ThatAllMakeTheSameNameKeepOne) {
  const COidData* found[kThreads] = {};
  const wchar_t* names[kThreads] = {};
  const long before = LiveBlocks();
  Together([&](int thread) {
    const PausingNew pausing(WaitForTheOthers);
    found[thread] = FindByOid("1.2.643.2.2.19", CRYPT_PUBKEY_ALG_OID_GROUP_ID);
    names[thread] = found[thread]->pwszName;
  });
  EXPECT_EQ(making, kThreads);
  EXPECT_EQ(LiveBlocks() - before, 1);
  for (int thread = 0; thread < kThreads; ++thread) {
    EXPECT_EQ(found[thread], found[0]);
    EXPECT_EQ(names[thread], names[0]);
  }
  EXPECT_STREQ(names[0], L"GOST R 34.10-2001");
}

TEST(OidThreads, ThatSearchByNameAllFindTheirs) {
  std::atomic<int> found{0};
  Together([&](int thread) {
    for (int round = 0; round < 200; ++round) {
      const wchar_t* const kNames[] = {L"COMMON NAME", L"lifetime signing",
                                       L"no such name"};
      COidData* const record =
          FindByName(kNames[(thread + round) % 3], kAllGroups);
      if (record != nullptr && record->pwszName[0] != L'\0') {
        ++found;
      }
    }
  });
  // Of 200 rounds, 66 or 67 ask for the name that is not there.
  int missing = 0;
  for (int thread = 0; thread < kThreads; ++thread) {
    for (int round = 0; round < 200; ++round) {
      missing += (thread + round) % 3 == 2;
    }
  }
  EXPECT_EQ(found, kThreads * 200 - missing);
}

// Half of the threads look up, the others walk the registry and read what the
// lookups write.
TEST(OidThreads, AWalkerThatReadsAtomicallyMayMeetLookups) {
  std::atomic<int> wrong{0};
  Together([&](int thread) {
    if (thread % 2 == 0) {
      wrong += FindUnknownName(kAllGroups) != nullptr;
      return;
    }
    for (int round = 0; round < 20; ++round) {
      for (COidData* const record : RegistryRows()) {
        const LPCWSTR name =
            __atomic_load_n(&record->pwszName, __ATOMIC_ACQUIRE);
        const DWORD flags =
            __atomic_load_n(&record->dwOidFlags, __ATOMIC_ACQUIRE);
        const bool is_pointer =
            reinterpret_cast<std::uintptr_t>(name) >= 0x10000;
        // A loaded name is whole, and is seen with its flag.
        wrong += is_pointer && std::wcslen(name) > 46;
        wrong += name == nullptr && (flags & kNameIsOwned) == 0;
      }
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(OidThreads, ThatMixKeysOfEveryKindFindTheirs) {
  std::atomic<int> wrong{0};
  Together([&](int) {
    for (int round = 0; round < 100; ++round) {
      wrong +=
          FindByOid("1.2.643.2.2.19", CRYPT_PUBKEY_ALG_OID_GROUP_ID)->Algid !=
          0x2E23;
      wrong += FindByName(L"gost r 34.10-2001", CRYPT_PUBKEY_ALG_OID_GROUP_ID)
                   ->Algid != 0x2E23;
      wrong += FindByAlgid(0x2E23, kAllGroups)->Algid != 0x2E23;
      wrong += FindByPair(0x801E, 0x2E23, CRYPT_SIGN_ALG_OID_GROUP_ID)->Algid !=
               0x801E;
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace korvan::test
