#ifndef KORVAN_OID_INDEX_H_
#define KORVAN_OID_INDEX_H_

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "oid/keys.h"
#include "oid/rows.h"

// From a key to the rows that may hold it, computed at compile time. Whoever
// asks compares the rows with the key: the index only says where to look.

namespace korvan::oid {

enum class Repeats {
  kEveryRow,      // each row that shares a key leads to the next
  kOncePerGroup,  // only the first of a group stands for the key
};

using RowKeys = std::array<std::uint64_t, kRowCount>;

// The rows by key, the first row of each key in a slot of its own: every
// bucket of keys has a multiplier, chosen so that no two keys meet in a slot.
template <std::size_t kBuckets, std::size_t kSlots>
class Index {
 public:
  consteval Index(const RowKeys& keys, Repeats repeats) {
    multipliers_.fill(kMixer);
    slots_.fill(kNoRow);
    next_.fill(kNoRow);
    std::array<bool, kRowCount> entered{};
    std::array<bool, kRowCount> first{};
    for (RowNumber row = 0; row < kRowCount; ++row) {
      RowNumber before = row;
      while (before > 0 &&
             !(entered[before - 1u] && keys[before - 1u] == keys[row])) {
        --before;
      }
      first[row] = before == 0;
      if (!first[row]) {
        --before;
        if (repeats == Repeats::kOncePerGroup &&
            kRows[before].group == kRows[row].group) {
          continue;
        }
        next_[before] = row;
      }
      entered[row] = true;
    }
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket) {
      RowKeys members{};
      std::array<RowNumber, kRowCount> rows{};
      std::size_t count = 0;
      for (RowNumber row = 0; row < kRowCount; ++row) {
        if (first[row] && Bucket(keys[row]) == bucket) {
          members[count] = keys[row];
          rows[count++] = row;
        }
      }
      while (!Place(members, rows, count, multipliers_[bucket])) {
        multipliers_[bucket] += 2 * kMixer;
      }
    }
  }

  // The first row that may hold `key`, or kNoRow.
  constexpr RowNumber First(std::uint64_t key) const {
    return slots_[Slot(key, multipliers_[Bucket(key)])];
  }

  // The row after `row` with the same key, or kNoRow.
  constexpr RowNumber Next(std::uint32_t row) const { return next_[row]; }

 private:
  static constexpr std::size_t TopBits(std::uint64_t bits, std::size_t count) {
    return count == 1 ? 0 : bits >> (64 - std::countr_zero(count));
  }

  static constexpr std::size_t Bucket(std::uint64_t key) {
    return TopBits(key, kBuckets);
  }

  static constexpr std::size_t Slot(std::uint64_t key,
                                    std::uint64_t multiplier) {
    return TopBits(key * multiplier, kSlots);
  }

  // Enters all members of a bucket, or none.
  consteval bool Place(const RowKeys& members,
                       const std::array<RowNumber, kRowCount>& rows,
                       std::size_t count, std::uint64_t multiplier) {
    for (std::size_t i = 0; i < count; ++i) {
      RowNumber& slot = slots_[Slot(members[i], multiplier)];
      if (slot != kNoRow) {
        while (i-- > 0) slots_[Slot(members[i], multiplier)] = kNoRow;
        return false;
      }
      slot = rows[i];
    }
    return true;
  }

  std::array<std::uint64_t, kBuckets> multipliers_{};
  std::array<RowNumber, kSlots> slots_{};
  std::array<RowNumber, kRowCount> next_{};
};

template <class KeyOf>
consteval RowKeys KeysOfRows(KeyOf key_of) {
  RowKeys keys{};
  for (RowNumber row = 0; row < kRowCount; ++row)
    keys[row] = key_of(kRows[row]);
  return keys;
}

inline constexpr RowKeys kOidKeys = KeysOfRows([](const Row& row) {
  return OidKey(WordsOf(row.oid.data(), row.oid.size()), row.oid.size());
});
inline constexpr RowKeys kNameKeys = KeysOfRows(
    [](const Row& row) { return NameKey(row.name, row.name.size()).value(); });
inline constexpr RowKeys kAlgidKeys =
    KeysOfRows([](const Row& row) { return AlgidKey(row.algid); });
inline constexpr RowKeys kPairKeys = KeysOfRows(
    [](const Row& row) { return PairKey(row.algid, row.second_algid); });

inline constexpr Index<64, 512> kByOid(kOidKeys, Repeats::kOncePerGroup);
// A name that failed to load, or that the locale folds otherwise, lets a later
// row win, so every row of a name is kept.
inline constexpr Index<64, 512> kByName(kNameKeys, Repeats::kEveryRow);
inline constexpr Index<1, 512> kByAlgid(kAlgidKeys, Repeats::kOncePerGroup);
inline constexpr Index<1, 512> kByPair(kPairKeys, Repeats::kOncePerGroup);

template <class LengthOf>
consteval std::array<std::uint8_t, kRowCount> LengthsOfRows(
    LengthOf length_of) {
  std::array<std::uint8_t, kRowCount> lengths{};
  for (RowNumber row = 0; row < kRowCount; ++row) {
    lengths[row] = static_cast<std::uint8_t>(length_of(kRows[row]));
  }
  return lengths;
}

// A key and a row of one length are compared word by word.
inline constexpr auto kOidLengths =
    LengthsOfRows([](const Row& row) { return row.oid.size(); });
inline constexpr auto kNameLengths =
    LengthsOfRows([](const Row& row) { return row.name.size(); });

// The index against the rows: from the first row of a key its rows follow in
// the order of the table, and no row is left out but those a search can't
// return.
template <class AnyIndex>
consteval bool LeadsToEveryRow(const AnyIndex& index, const RowKeys& keys,
                               Repeats repeats) {
  for (RowNumber row = 0; row < kRowCount; ++row) {
    RowNumber met = index.First(keys[row]);
    while (met < row && kRows[met].group != kRows[row].group) {
      met = index.Next(met);
    }
    if (repeats == Repeats::kEveryRow) {
      while (met < row) met = index.Next(met);
    }
    if (met > row || keys[met] != keys[row]) return false;
    if (index.Next(row) != kNoRow && index.Next(row) <= row) return false;
  }
  return true;
}
static_assert(LeadsToEveryRow(kByOid, kOidKeys, Repeats::kOncePerGroup));
static_assert(LeadsToEveryRow(kByName, kNameKeys, Repeats::kEveryRow));
static_assert(LeadsToEveryRow(kByAlgid, kAlgidKeys, Repeats::kOncePerGroup));
static_assert(LeadsToEveryRow(kByPair, kPairKeys, Repeats::kOncePerGroup));

}  // namespace korvan::oid

#endif  // KORVAN_OID_INDEX_H_
