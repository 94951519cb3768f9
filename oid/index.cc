// The four indexes, computed by the compiler and proved against the rows.
#include "oid/index.h"

#include <cstddef>
#include <cstdint>

#include "oid/hash_codes.h"
#include "oid/row_chains.h"
#include "oid/rows.h"

namespace korvan::oid {
namespace {

constexpr auto kOidHashCodes = OfEachRow<HashCode>([](const Row& row) {
  return OidHashCode(WordsOf(row.oid.data(), row.oid.size()), row.oid.size());
});
constexpr auto kAlgidHashCodes = OfEachRow<HashCode>(
    [](const Row& row) { return AlgidHashCode(row.algid); });
constexpr auto kPairHashCodes = OfEachRow<HashCode>(
    [](const Row& row) { return PairHashCode(row.algid, row.second_algid); });

// Whether the index leads from the hash code of each row to that row, past
// earlier rows alone: the rows of a hash code come in the order of the table.
// Of the rows that a group repeats, it leads to the first.
template <class AnyIndex>
consteval bool LeadsToEveryRow(const AnyIndex& index, const HashCodes& codes,
                               Repeats repeats) {
  for (RowNumber row = 0; row < kRowCount; ++row) {
    RowNumber met = index.First(codes[row]);
    while (met < row && (repeats == Repeats::kEveryRow ||
                         kRows[met].group != kRows[row].group)) {
      met = index.Next(met);
    }
    if (met > row || codes[met] != codes[row]) {
      return false;
    }
    if (index.Next(row) <= row) {
      return false;
    }
  }
  return true;
}

}  // namespace

constexpr HashCodes kNameHashCodes = OfEachRow<HashCode>([](const Row& row) {
  return NameHashCode(row.name.text, row.name.text.size()).value();
});

constexpr Index<64, 512> kByOid(kOidHashCodes, Repeats::kOncePerGroup);
static_assert(LeadsToEveryRow(kByOid, kOidHashCodes, Repeats::kOncePerGroup));

// A name that failed to load, or that the locale folds in another way, lets a
// later row win, so every row of a name is kept.
constexpr Index<64, 512> kByName(kNameHashCodes, Repeats::kEveryRow);
static_assert(LeadsToEveryRow(kByName, kNameHashCodes, Repeats::kEveryRow));

constexpr Index<1, 512> kByAlgid(kAlgidHashCodes, Repeats::kOncePerGroup);
static_assert(LeadsToEveryRow(kByAlgid, kAlgidHashCodes,
                              Repeats::kOncePerGroup));

constexpr Index<1, 512> kByPair(kPairHashCodes, Repeats::kOncePerGroup);
static_assert(LeadsToEveryRow(kByPair, kPairHashCodes, Repeats::kOncePerGroup));

constexpr Lengths kOidLengths = OfEachRow<std::uint8_t>(kOidLengthOf);
constexpr Lengths kNameLengths = OfEachRow<std::uint8_t>(kNameLengthOf);

}  // namespace korvan::oid
