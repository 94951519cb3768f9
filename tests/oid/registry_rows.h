// The registry's records by their number, counted from 0 in search order.
#ifndef KORVAN_TESTS_OID_REGISTRY_ROWS_H_
#define KORVAN_TESTS_OID_REGISTRY_ROWS_H_

#include <korvan/oid_info.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

namespace korvan::test {

// The bits of a record's flags.
constexpr unsigned int kMark = 0x1;
constexpr unsigned int kNameIsOwned = 0x2;

inline std::vector<COidData*> RegistryRows() {
  std::vector<COidData*> rows;
  for (const OID_TABLE_INFO& table : oid_registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      rows.push_back(&table.rgRecords[i]);
    }
  }
  return rows;
}

// The number of the first row of a group.
inline int FirstRowOf(unsigned int group) {
  int first = 0;
  for (const OID_TABLE_INFO& table : oid_registry) {
    if (table.dwGroupId == group) {
      break;
    }
    first += table.cRecords;
  }
  return first;
}

// The record that stands at `row` of a group, counted from 0 there.
inline COidData* RowOf(unsigned int group, int row) {
  return RegistryRows().at(static_cast<std::size_t>(FirstRowOf(group) + row));
}

inline bool HoldsTextNumber(const COidData& record) {
  const auto name = reinterpret_cast<std::uintptr_t>(record.pwszName);
  return name != 0 && name < 0x10000;
}

inline std::set<int> RowsThatHoldTextNumbers() {
  std::set<int> numbers;
  int row = 0;
  for (const COidData* record : RegistryRows()) {
    if (HoldsTextNumber(*record)) {
      numbers.insert(row);
    }
    ++row;
  }
  return numbers;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_OID_REGISTRY_ROWS_H_
