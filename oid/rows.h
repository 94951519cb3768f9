// The registry's rows as plain constants, for the compiler to check and to
// compute the index from. registry.cc lays down the records that callers get,
// from the same pages.
#ifndef KORVAN_OID_ROWS_H_
#define KORVAN_OID_ROWS_H_

#include <korvan/cryptoapi.h>
#include <korvan/oid_info.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace korvan::oid {

struct RowName {
  std::uint16_t number;   // in the string table; 0: the row has the name itself
  std::string_view text;  // empty, too, where the number has no text
};

struct Row {
  DWORD group;
  std::string_view oid;
  RowName name;
  ALG_ID algid;
  ALG_ID second_algid;  // first word of the extra information, or 0
};

consteval DWORD FirstWord(DWORD first = 0, DWORD = 0, DWORD = 0) {
  return first;
}

inline constexpr Row kRows[] = {
#define NAME(text) (RowName{0, text})
#define RES(number, text) (RowName{number, text})
#define MISSING(number) (RowName{number, {}})
#define EXTRA(...) FirstWord(__VA_ARGS__)
#define RECORD(group, oid, name, algid, extra, cng, cng_extra, mark) \
  {group, oid, name, algid, extra},
#include "oid/tables/registry.inc"
#undef RECORD
#undef EXTRA
#undef MISSING
#undef RES
#undef NAME
};

// 32 bits to compute with; where row numbers are stored, 16 are enough, also
// for kNoRow.
using RowNumber = std::uint32_t;
inline constexpr RowNumber kRowCount = std::size(kRows);
inline constexpr RowNumber kNoRow = 0xFFFF;
static_assert(kRowCount == 259);

// What `value_of` gives for each row.
template <class Value, class ValueOf>
consteval std::array<Value, kRowCount> OfEachRow(ValueOf value_of) {
  std::array<Value, kRowCount> values{};
  for (RowNumber row = 0; row < kRowCount; ++row) {
    values[row] = static_cast<Value>(value_of(kRows[row]));
  }
  return values;
}

// OIDs are numbers with dots between them.
static_assert(std::ranges::all_of(
    kRows,
    [](std::string_view oid) {
      return !oid.empty() && oid.front() != '.' && oid.back() != '.' &&
             oid.find_first_not_of("0123456789.") == oid.npos;
    },
    &Row::oid));

// Names of printable ASCII are the same in every locale.
static_assert(std::ranges::all_of(
    kRows,
    [](const RowName& name) {
      return std::ranges::all_of(name.text,
                                 [](char c) { return c >= 0x20 && c <= 0x7E; });
    },
    &Row::name));

// Rows `begin` up to but not including `end`.
struct RowRange {
  RowNumber begin;
  RowNumber end;
};

inline constexpr RowRange kWholeRegistry = {0, kRowCount};

// A group's rows stand together.
struct Group {
  DWORD id;
  RowRange rows;
};

inline constexpr std::size_t kGroupCount = std::size(oid_registry);

// The groups in the order of their rows, which is the order of their ids.
consteval std::array<Group, kGroupCount> GroupsOfRows() {
  std::array<Group, kGroupCount> groups{};
  std::size_t count = 0;
  for (RowNumber row = 0; row < kRowCount;) {
    Group& group = groups[count++];
    group = {kRows[row].group, {row, row}};
    while (row < kRowCount && kRows[row].group == group.id) {
      group.rows.end = ++row;
    }
  }
  return groups;
}
inline constexpr auto kGroups = GroupsOfRows();
static_assert(std::ranges::is_sorted(kRows, {}, &Row::group));
static_assert(kGroups.back().rows.end == kRowCount);

}  // namespace korvan::oid

#endif  // KORVAN_OID_ROWS_H_
