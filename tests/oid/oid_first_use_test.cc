// The first use of every record by every kind of key, on many threads at once,
// again and again: each round has a process of its own, in which nobody has
// used the registry or converted a character.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>

#include <algorithm>
#include <atomic>
#include <clocale>
#include <cstddef>
#include <cwchar>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "oid/expected_rows.h"
#include "oid/find.h"
#include "oid/registry_rows.h"
#include "support/campaign.h"
#include "support/child_process.h"
#include "support/failing_new.h"
#include "support/together.h"

namespace korvan::test {
namespace {

constexpr int kThreads = 16;
constexpr long kNamesThatLoad = 172;

constexpr int kAllFound = 0;
constexpr int kWrong = 1;
constexpr int kNoLocale = 2;
constexpr int kNotOneArrayAName = 3;

enum class KeyType { kOid, kName, kAlgid, kPair };
constexpr KeyType kKeyTypes[] = {KeyType::kOid, KeyType::kName, KeyType::kAlgid,
                                 KeyType::kPair};

// A search by the key of a row, and the row that it must find: the first of the
// group that has the key.
struct Search {
  KeyType type;
  const ExpectedRow* asked;
  std::size_t found;
};

bool HaveOneKey(KeyType type, const ExpectedRow& a, const ExpectedRow& b) {
  switch (type) {
    case KeyType::kOid:
      return std::string(a.oid) == b.oid;
    case KeyType::kName:
      return a.name != nullptr && wcscasecmp(a.name, b.name) == 0;
    case KeyType::kAlgid:
      return a.algid == b.algid;
    case KeyType::kPair:
      return a.algid == b.algid && a.SecondAlgid() == b.SecondAlgid();
  }
  return false;
}

// Every row by every key that it has.
std::vector<Search> EverySearch() {
  std::vector<Search> searches;
  for (const ExpectedRow& asked : kExpectedRows) {
    for (const KeyType type : kKeyTypes) {
      if (type == KeyType::kName && asked.name == nullptr) {
        continue;
      }
      const auto found =
          std::ranges::find_if(kExpectedRows, [&](const ExpectedRow& row) {
            return row.group == asked.group && HaveOneKey(type, row, asked);
          });
      searches.push_back(
          {type, &asked,
           static_cast<std::size_t>(found - kExpectedRows.begin())});
    }
  }
  return searches;
}

const COidData* Find(const Search& search) {
  const ExpectedRow& row = *search.asked;
  switch (search.type) {
    case KeyType::kOid:
      return FindByOid(row.oid, row.group);
    case KeyType::kName:
      return FindByName(row.name, row.group);
    case KeyType::kAlgid:
      return FindByAlgid(row.algid, row.group);
    case KeyType::kPair:
      return FindByPair(row.algid, row.SecondAlgid(), row.group);
  }
  return nullptr;
}

// Whether the search finds the record it must, with the name it must have. The
// reads are plain: those of a record that was returned must not race.
bool Succeeds(const Search& search, const std::vector<COidData*>& records) {
  const COidData* const found = Find(search);
  if (found != records[search.found]) {
    return false;
  }
  const ExpectedRow& row = kExpectedRows[search.found];
  const bool is_owned = (found->dwOidFlags & kNameIsOwned) != 0;
  return is_owned == (row.text_number != 0) &&
         (row.name == nullptr ? found->pwszName == nullptr
                              : std::wcscmp(found->pwszName, row.name) == 0);
}

// All threads make all searches, in many orders.
int SearchTogether(const char* locale, std::vector<Search> searches,
                   std::size_t round) {
  if (std::setlocale(LC_ALL, locale) == nullptr) {
    return kNoLocale;
  }
  const std::vector<COidData*> records = RegistryRows();
  std::vector<std::vector<Search>> orders;
  std::mt19937 random(static_cast<std::mt19937::result_type>(round));
  for (int thread = 0; thread < kThreads; ++thread) {
    // Some threads meet at each record, others go apart.
    if (thread % 4 != 1) {
      std::ranges::shuffle(searches, random);
    }
    orders.push_back(searches);
  }
  std::atomic<int> wrong{0};
  const long before = LiveBlocks();
  RunTogether(kThreads, [&](int thread) {
    for (const Search& search : orders[static_cast<std::size_t>(thread)]) {
      wrong += !Succeeds(search, records);
    }
  });
  if (wrong != 0) {
    return kWrong;
  }
  return LiveBlocks() - before == kNamesThatLoad ? kAllFound
                                                 : kNotOneArrayAName;
}

TEST(OidFirstUse, ThreadsFindEveryRecordByEveryKeyFromTheFirstCallOn) {
  const std::vector<Search> searches = EverySearch();
  const char* const locales[] = {"C", "C.UTF-8", "ru_RU.KOI8-R"};
  const std::size_t rounds = Rounds(20, 1000);
  for (std::size_t round = 0; round < rounds; ++round) {
    const char* const locale = locales[round % std::size(locales)];
    const pid_t fresh =
        StartChild([&] { return SearchTogether(locale, searches, round); });
    ASSERT_EQ(ExitStatusOf(fresh), kAllFound)
        << "round " << round << " in " << locale << "; " << kWrong
        << ": another record or name, " << kNoLocale << ": no such locale, "
        << kNotOneArrayAName << ": names were lost or made twice";
  }
  Figures(rounds, " processes of ", kThreads, " threads, ", searches.size(),
          " searches each");
}

}  // namespace
}  // namespace korvan::test
