#include "oid/index.h"

#include <cstddef>
#include <cstdint>

#include "oid/keys.h"
#include "oid/rows.h"

namespace korvan::oid {
namespace {

// What `value_of` gives for each row.
template <class Value, class ValueOf>
consteval std::array<Value, kRowCount> OfEachRow(ValueOf value_of) {
  std::array<Value, kRowCount> values{};
  for (RowNumber row = 0; row < kRowCount; ++row) {
    values[row] = static_cast<Value>(value_of(kRows[row]));
  }
  return values;
}

constexpr RowKeys kOidKeys = OfEachRow<std::uint64_t>([](const Row& row) {
  return OidKey(WordsOf(row.oid.data(), row.oid.size()), row.oid.size());
});
constexpr RowKeys kAlgidKeys = OfEachRow<std::uint64_t>(
    [](const Row& row) { return AlgidKey(row.algid); });
constexpr RowKeys kPairKeys = OfEachRow<std::uint64_t>(
    [](const Row& row) { return PairKey(row.algid, row.second_algid); });

// The index against the rows: from the first row of a key its rows follow in
// the order of the table, and no row is left out but those a search can't
// return.
template <class AnyIndex>
consteval bool LeadsToEveryRow(const AnyIndex& index, const RowKeys& keys,
                               Repeats repeats) {
  for (RowNumber row = 0; row < kRowCount; ++row) {
    RowNumber met = index.First(keys[row]);
    while (met < row && (repeats == Repeats::kEveryRow ||
                         kRows[met].group != kRows[row].group)) {
      met = index.Next(met);
    }
    if (met > row || keys[met] != keys[row]) return false;
    if (index.Next(row) <= row) return false;
  }
  return true;
}

}  // namespace

constexpr RowKeys kNameKeys = OfEachRow<std::uint64_t>([](const Row& row) {
  return NameKey(row.name.text, row.name.text.size()).value();
});
constexpr Index<64, 512> kByOid(kOidKeys, Repeats::kOncePerGroup);
static_assert(LeadsToEveryRow(kByOid, kOidKeys, Repeats::kOncePerGroup));

// A name that failed to load, or that the locale folds otherwise, lets a later
// row win, so every row of a name is kept.
constexpr Index<64, 512> kByName(kNameKeys, Repeats::kEveryRow);
static_assert(LeadsToEveryRow(kByName, kNameKeys, Repeats::kEveryRow));

constexpr Index<1, 512> kByAlgid(kAlgidKeys, Repeats::kOncePerGroup);
static_assert(LeadsToEveryRow(kByAlgid, kAlgidKeys, Repeats::kOncePerGroup));

constexpr Index<1, 512> kByPair(kPairKeys, Repeats::kOncePerGroup);
static_assert(LeadsToEveryRow(kByPair, kPairKeys, Repeats::kOncePerGroup));

constexpr RowLengths kOidLengths =
    OfEachRow<std::uint8_t>([](const Row& row) { return row.oid.size(); });
constexpr RowLengths kNameLengths = OfEachRow<std::uint8_t>(
    [](const Row& row) { return row.name.text.size(); });

}  // namespace korvan::oid
