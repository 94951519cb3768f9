// The registry's records by their number, counted from 0 in search order.
#ifndef KORVAN_TESTS_OID_REGISTRY_ROWS_H_
#define KORVAN_TESTS_OID_REGISTRY_ROWS_H_

#include <korvan/oid_info.h>

#include <cstdint>
#include <set>
#include <vector>

inline std::vector<korvan::COidData*> RegistryRows() {
  std::vector<korvan::COidData*> rows;
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      rows.push_back(&table.rgRecords[i]);
    }
  }
  return rows;
}

// The number of the first row of a group.
inline int FirstRowOf(unsigned int group) {
  int first = 0;
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    if (table.dwGroupId == group) {
      break;
    }
    first += table.cRecords;
  }
  return first;
}

inline bool HoldsTextNumber(const korvan::COidData& record) {
  const auto name = reinterpret_cast<std::uintptr_t>(record.pwszName);
  return name != 0 && name < 0x10000;
}

inline std::set<int> RowsThatHoldTextNumbers() {
  std::set<int> numbers;
  int row = 0;
  for (const korvan::COidData* record : RegistryRows()) {
    if (HoldsTextNumber(*record)) {
      numbers.insert(row);
    }
    ++row;
  }
  return numbers;
}

#endif  // KORVAN_TESTS_OID_REGISTRY_ROWS_H_
