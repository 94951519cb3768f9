// Forks while other threads load names: no child may hang, and every child
// finds its records.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <clocale>
#include <cstddef>
#include <thread>
#include <vector>

#include "oid/find.h"
#include "oid/registry_rows.h"
#include "support/campaign.h"
#include "support/child_process.h"
#include "support/together.h"

namespace korvan::test {
namespace {

constexpr int kLoadingThreads = 16;
constexpr unsigned int kSecondsUntilHung = 20;

constexpr int kFound = 0;
constexpr int kNotFound = 1;
constexpr int kNoLocale = 2;

// Loads every name by looking for one that no record has, then looks for one.
int FindAmongAllNames() {
  const bool found = FindUnknownName(kAllGroups) == nullptr &&
                     FindByName(L"COMMON NAME", kAllGroups) ==
                         RowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 53);
  return found ? kFound : kNotFound;
}

// Makes all threads load names for the first time in `locale`, forks after
// `delay` turns of a loop, and returns what became of the child.
int ForkWhileLoading(const char* locale, int delay) {
  if (std::setlocale(LC_ALL, locale) == nullptr) {
    return kNoLocale;
  }
  MeetingPoint start(kLoadingThreads + 1);
  std::vector<std::thread> threads;
  for (int i = 0; i < kLoadingThreads; ++i) {
    threads.emplace_back([&, i] {
      const auto rows = RegistryRows();
      start.Meet();
      auto row = static_cast<std::size_t>(i);
      while (row < rows.size()) {
        FindByOid(rows[row]->pszOID, rows[row]->dwGroupId);
        row += kLoadingThreads;
      }
    });
  }
  start.Meet();
  for (std::atomic<int> turns{delay}; turns > 0; --turns) {
  }
  const pid_t child = StartChild([] {
    alarm(kSecondsUntilHung);  // which kills the child
    return FindAmongAllNames();
  });
  for (std::thread& thread : threads) {
    thread.join();
  }
  return ExitStatusOf(child);
}

// Every fork is tried in a process of its own, in which the C library has not
// yet loaded the locale's converter.
void ForkManyTimes(const char* locale) {
  const std::size_t forks = Rounds(100, 3334);  // in each of three locales
  for (std::size_t i = 0; i < forks; ++i) {
    const int delay = static_cast<int>(i % 50 * 40);
    const pid_t fresh =
        StartChild([&] { return ForkWhileLoading(locale, delay); });
    ASSERT_EQ(ExitStatusOf(fresh), kFound)
        << "fork " << i << "; " << kNotFound << ": not found, " << kNoLocale
        << ": no such locale, " << kNoExitStatus << ": hung";
  }
  Figures(forks, " forks beside ", kLoadingThreads, " loading threads in ",
          locale);
}

TEST(OidFork, AChildForkedWhileNamesLoadFindsItsRecordsInTheCLocale) {
  ForkManyTimes("C");
}

TEST(OidFork, AChildForkedWhileNamesLoadFindsItsRecordsInUtf8) {
  ForkManyTimes("C.UTF-8");
}

TEST(OidFork, AChildForkedWhileNamesLoadFindsItsRecordsInKoi8) {
  ForkManyTimes("ru_RU.KOI8-R");
}

// The handlers before a fork are called last registered first. This one comes
// after the library's, since it is registered before any library is ready.

std::atomic<bool> is_fork_watched{false};
std::atomic<bool> is_forking{false};
std::atomic<bool> is_published{false};
bool was_published_in_time = false;

void WatchFork() {
  if (is_fork_watched) {
    is_forking = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    was_published_in_time = is_published;
  }
}

void RegisterFirst() { pthread_atfork(WatchFork, nullptr, nullptr); }

[[gnu::section(".preinit_array"),
  gnu::used]] void (*const register_first)() = RegisterFirst;

TEST(OidFork, NoNameIsPublishedWhileAForkIsUnderWay) {
  is_fork_watched = true;
  std::thread publisher([] {
    while (!is_forking) {
    }
    COidData record = {};
    InitOidInfoWorker(record, 0xFFFF);
    is_published = true;
  });
  const pid_t child = StartChild([] {
    alarm(kSecondsUntilHung);  // which kills the child
    return FindAmongAllNames();
  });
  publisher.join();
  is_fork_watched = false;
  EXPECT_EQ(ExitStatusOf(child), kFound);
  EXPECT_TRUE(is_forking);
  EXPECT_FALSE(was_published_in_time);
}

}  // namespace
}  // namespace korvan::test
