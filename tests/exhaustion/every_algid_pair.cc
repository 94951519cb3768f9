// All pairs of the ALG_IDs that records have, and of their neighbours, in all
// groups and by both kinds of key.
#include <korvan/oid_info.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "exhaustion/every.h"
#include "oid/find.h"
#include "oid/registry_rows.h"

namespace korvan::test {
namespace {

constexpr unsigned int kGroups[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 19, 20, 21};

unsigned int FirstExtraWord(const COidData& record) {
  unsigned int word = 0;
  if (record.ExtraInfo.cbData >= sizeof(word)) {
    std::memcpy(&word, record.ExtraInfo.pbData, sizeof(word));
  }
  return word;
}

std::vector<unsigned int> Algids() {
  std::set<unsigned int> found = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  for (const COidData* record : RegistryRows()) {
    for (const unsigned int algid : {record->Algid, FirstExtraWord(*record)}) {
      found.insert({algid - 1, algid, algid + 1});
    }
  }
  return {found.begin(), found.end()};
}

// The first record that `matches`, in a group or in all.
template <class Matches>
const COidData* First(unsigned int group, Matches matches) {
  for (const COidData* record : RegistryRows()) {
    if ((group == kAllGroups || record->dwGroupId == group) &&
        matches(*record)) {
      return record;
    }
  }
  return nullptr;
}

class Check {
 public:
  explicit Check(const std::vector<unsigned int>& algids) : algids_(algids) {}

  std::string operator()(std::uint64_t number) const {
    const unsigned int hash = algids_[number % algids_.size()];
    const unsigned int key = algids_[number / algids_.size()];
    for (const unsigned int group : kGroups) {
      const auto has_hash = [&](const COidData& record) {
        return record.Algid == hash;
      };
      const auto has_pair = [&](const COidData& record) {
        return record.Algid == hash && FirstExtraWord(record) == key;
      };
      if (FindByPair(hash, key, group) != First(group, has_pair) ||
          FindByAlgid(hash, group) != First(group, has_hash)) {
        return std::to_string(hash) + " and " + std::to_string(key) +
               " in group " + std::to_string(group);
      }
    }
    return "";
  }

 private:
  const std::vector<unsigned int>& algids_;
};

}  // namespace
}  // namespace korvan::test

int main() {
  const std::vector<unsigned int> algids = korvan::test::Algids();
  return korvan::test::LookAtEvery("pairs of ALG_IDs, in 13 groups",
                                   algids.size() * algids.size(),
                                   [&] { return korvan::test::Check(algids); });
}
