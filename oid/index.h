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
        next_[before] = static_cast<std::uint16_t>(row);
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
  constexpr RowNumber Next(RowNumber row) const { return next_[row]; }

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
      std::uint16_t& slot = slots_[Slot(members[i], multiplier)];
      if (slot != kNoRow) {
        while (i-- > 0) slots_[Slot(members[i], multiplier)] = kNoRow;
        return false;
      }
      slot = static_cast<std::uint16_t>(rows[i]);
    }
    return true;
  }

  std::array<std::uint64_t, kBuckets> multipliers_{};
  std::array<std::uint16_t, kSlots> slots_{};
  std::array<std::uint16_t, kRowCount> next_{};
};

// Computed and proved in index.cc.
extern const Index<64, 512> kByOid;
extern const Index<64, 512> kByName;
extern const Index<1, 512> kByAlgid;
extern const Index<1, 512> kByPair;

extern const RowKeys kNameKeys;

// A key and a row of one length are compared word by word.
using RowLengths = std::array<std::uint8_t, kRowCount>;
extern const RowLengths kOidLengths;
extern const RowLengths kNameLengths;

}  // namespace korvan::oid

#endif  // KORVAN_OID_INDEX_H_
