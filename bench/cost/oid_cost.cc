// What lookups cost: in the OID registry by each kind of key, in the string
// table by number. Each operation asks for all keys, one after the other.

#include <korvan/korvan.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "cost/measure.h"

namespace {

using korvan::COidData;

struct Pair {
  ALG_ID first;
  ALG_ID second;
};

// A record's key, one like it that no record has, and the record's group.
template <class Key>
struct Case {
  Key hit;
  Key miss;
  DWORD group;
};

void* PlaceOf(std::string& key) { return key.data(); }
void* PlaceOf(std::wstring& key) { return key.data(); }
void* PlaceOf(ALG_ID& key) { return &key; }
void* PlaceOf(Pair& key) { return &key; }

template <class Key>
void MeasureSearches(const std::string& kind, DWORD key_type,
                     std::vector<Case<Key>> cases) {
  for (const bool is_hit : {true, false}) {
    for (const bool is_own_group : {true, false}) {
      Measure(kind + (is_hit ? "/hit" : "/miss") +
                  (is_own_group ? "/own_group" : "/all_groups"),
              [&] {
                std::size_t found = 0;
                for (Case<Key>& one : cases) {
                  void* const key = PlaceOf(is_hit ? one.hit : one.miss);
                  const DWORD group = is_own_group ? one.group : 0;
                  found += korvan::FindOIDInfo(key_type, key, group) != nullptr;
                }
                return found == (is_hit ? cases.size() : 0);
              });
    }
  }
}

// The registry's records, their names loaded.
std::vector<COidData*> Records() {
  wchar_t nobody[] = L"\n";
  korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, nobody, 0);
  std::vector<COidData*> records;
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      records.push_back(&table.rgRecords[i]);
    }
  }
  return records;
}

std::vector<Case<std::string>> Oids(const std::vector<COidData*>& records) {
  std::vector<Case<std::string>> cases;
  for (const COidData* record : records) {
    const std::string oid = record->pszOID;
    std::string missing = oid;
    missing.back() = '~';
    cases.push_back({oid, missing, record->dwGroupId});
  }
  return cases;
}

std::wstring AsStored(std::wstring name) { return name; }

std::wstring InOtherCase(std::wstring name) {
  for (wchar_t& character : name) {
    if ((character >= L'A' && character <= L'Z') ||
        (character >= L'a' && character <= L'z')) {
      character ^= L' ';  // upper case and lower case differ in this bit
    }
  }
  return name;
}

std::vector<Case<std::wstring>> Names(const std::vector<COidData*>& records,
                                      std::wstring (&spelling)(std::wstring)) {
  std::vector<Case<std::wstring>> cases;
  for (const COidData* record : records) {
    if (record->pwszName == nullptr || record->pwszName[0] == L'\0') {
      continue;
    }
    const std::wstring name = spelling(record->pwszName);
    std::wstring missing = name;
    missing.back() = L'~';
    cases.push_back({name, missing, record->dwGroupId});
  }
  return cases;
}

// A bit that no record's ALG_ID has.
constexpr ALG_ID kMissingAlgid = 0x10000;

std::vector<Case<ALG_ID>> Algids(const std::vector<COidData*>& records) {
  std::vector<Case<ALG_ID>> cases;
  for (const COidData* record : records) {
    if (record->Algid != 0) {
      cases.push_back(
          {record->Algid, record->Algid | kMissingAlgid, record->dwGroupId});
    }
  }
  return cases;
}

std::vector<Case<Pair>> Pairs(const std::vector<COidData*>& records) {
  std::vector<Case<Pair>> cases;
  for (const COidData* record : records) {
    if (record->Algid != 0) {
      Pair pair{record->Algid, 0};
      if (record->ExtraInfo.cbData >= sizeof pair.second) {
        std::memcpy(&pair.second, record->ExtraInfo.pbData, sizeof pair.second);
      }
      const Pair missing{pair.first, pair.second | kMissingAlgid};
      cases.push_back({pair, missing, record->dwGroupId});
    }
  }
  return cases;
}

// The numbers up to 9000 that have a text, or those that have none.
std::vector<unsigned int> Numbers(bool has_text) {
  std::vector<unsigned int> numbers;
  for (unsigned int number = 0; number < 9000; ++number) {
    char text[256];
    if ((LoadString_korvan(nullptr, number, text, sizeof text) > 0) ==
        has_text) {
      numbers.push_back(number);
    }
  }
  return numbers;
}

void MeasureTexts(const std::string& name, bool has_text) {
  const std::vector<unsigned int> numbers = Numbers(has_text);
  Measure(name, [&] {
    std::size_t found = 0;
    for (const unsigned int number : numbers) {
      char text[256];
      found += LoadString_korvan(nullptr, number, text, sizeof text) > 0;
    }
    return found == (has_text ? numbers.size() : 0);
  });
}

}  // namespace

int main() {
  const std::vector<COidData*> records = Records();
  MeasureSearches("find_by_oid", CRYPT_OID_INFO_OID_KEY, Oids(records));
  MeasureSearches("find_by_name_stored_case", CRYPT_OID_INFO_NAME_KEY,
                  Names(records, AsStored));
  MeasureSearches("find_by_name_other_case", CRYPT_OID_INFO_NAME_KEY,
                  Names(records, InOtherCase));
  MeasureSearches("find_by_algid", CRYPT_OID_INFO_ALGID_KEY, Algids(records));
  MeasureSearches("find_by_pair", CRYPT_OID_INFO_SIGN_KEY, Pairs(records));
  MeasureTexts("text_by_number/hit", true);
  MeasureTexts("text_by_number/miss", false);
}
