// The registry without indexes, as the model of the lookups.
#ifndef KORVAN_TESTS_OID_PLAIN_REGISTRY_H_
#define KORVAN_TESTS_OID_PLAIN_REGISTRY_H_

#include <korvan/oid_info.h>
#include <korvan/string_resources.h>

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <span>
#include <string>
#include <vector>

#include "oid/find.h"
#include "oid/registry_rows.h"

namespace korvan::test {

// Copies of the registry's records, searched one after the other: the library's
// lookups must do the same. Make it before the first lookup.
class PlainRegistry {
 public:
  struct Row {
    COidData record;
    std::wstring loaded;
  };

  PlainRegistry() {
    for (const COidData* record : RegistryRows()) {
      rows_.push_back({*record, {}});
    }
    for (const OID_TABLE_INFO& table : oid_registry) {
      group_ids_.push_back(table.dwGroupId);
      counts_.push_back(table.cRecords);
    }
  }

  const std::vector<Row>& Rows() const { return rows_; }

  // Adds a caller's own record behind those of the registry, and returns its
  // number. Do this before the first name is loaded.
  int Add(const COidData& own) {
    rows_.push_back({own, {}});
    return static_cast<int>(rows_.size()) - 1;
  }

  // The number of the row that matches, or -1.
  int Find(unsigned int key_type, void* key, unsigned int group_id) {
    if (key == nullptr) {
      return -1;
    }
    group_id &= ~CRYPT_OID_DISABLE_SEARCH_DS_FLAG;
    for (std::size_t table = 0; table < counts_.size(); ++table) {
      if (group_id != kAllGroups && group_ids_[table] != group_id) {
        continue;
      }
      const int row = FindInTable(table, key_type, key);
      if (row >= 0) {
        return row;
      }
    }
    return -1;
  }

  int FindInTable(std::size_t table, unsigned int key_type, void* key) {
    int first = 0;
    for (std::size_t i = 0; i < table; ++i) {
      first += counts_[i];
    }
    return FindInRows(first, counts_[table], key_type, key);
  }

  int FindInRows(int first, int count, unsigned int key_type, void* key) {
    for (int row = first; row < first + count; ++row) {
      if (Matches(row, key_type, key)) {
        Resolve(row);
        return row;
      }
    }
    return -1;
  }

  bool Matches(int row, unsigned int key_type, void* key) {
    const COidData& record = At(row).record;
    unsigned int words[2] = {};
    switch (key_type) {
      case CRYPT_OID_INFO_OID_KEY:
        return record.pszOID != nullptr &&
               std::strcmp(record.pszOID, static_cast<char*>(key)) == 0;
      case CRYPT_OID_INFO_NAME_KEY:
        Resolve(row);
        return record.pwszName != nullptr &&
               wcscasecmp(record.pwszName, static_cast<wchar_t*>(key)) == 0;
      case CRYPT_OID_INFO_ALGID_KEY:
        std::memcpy(words, key, 4);
        return record.Algid == words[0];
      case CRYPT_OID_INFO_SIGN_KEY: {
        std::memcpy(words, key, 8);
        unsigned int second = 0;
        if (record.ExtraInfo.pbData != nullptr &&
            record.ExtraInfo.cbData >= 4) {
          std::memcpy(&second, record.ExtraInfo.pbData, 4);
        }
        return record.Algid == words[0] && second == words[1];
      }
      default:
        return false;
    }
  }

  void Load(int row, unsigned int number) {
    Row& loading = At(row);
    loading.record.pwszName = nullptr;
    loading.record.dwOidFlags |= kNameIsOwned;
    char text[256 + 1] = {};  // a host's text may have no end
    if (LoadString_korvan(nullptr, number, text, 256) == 0) {
      return;
    }
    const char* rest = text;
    std::mbstate_t state{};
    const std::size_t count = std::mbsrtowcs(nullptr, &rest, 0, &state);
    if (count == 0 || count == static_cast<std::size_t>(-1)) {
      return;
    }
    std::wstring name(count, L'\0');
    std::mbsrtowcs(&name[0], &rest, count, &state);
    loading.loaded = name;
    loading.record.pwszName = loading.loaded.c_str();
  }

  void Cleanup() {
    // A caller's own names are the caller's.
    for (Row& row : std::span(rows_).first(RegistryRows().size())) {
      if ((row.record.dwOidFlags & kNameIsOwned) == 0) {
        continue;
      }
      row.record.dwOidFlags &= ~kNameIsOwned;
      row.record.pwszName = nullptr;
    }
  }

 private:
  Row& At(int row) { return rows_[static_cast<std::size_t>(row)]; }

  void Resolve(int row) {
    const COidData& record = At(row).record;
    if (HoldsTextNumber(record)) {
      Load(row, static_cast<unsigned int>(
                    reinterpret_cast<std::uintptr_t>(record.pwszName)));
    }
  }

  std::vector<Row> rows_;
  std::vector<unsigned int> group_ids_;
  std::vector<int> counts_;
};

}  // namespace korvan::test

#endif  // KORVAN_TESTS_OID_PLAIN_REGISTRY_H_
