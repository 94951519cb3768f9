// A two-level perfect hash, computed by the compiler: one multiplication leads
// from a hash code to the row that was entered for it, with no search and no
// second attempt.
#ifndef KORVAN_OID_PERFECT_HASH_H_
#define KORVAN_OID_PERFECT_HASH_H_

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "oid/hash_codes.h"
#include "oid/rows.h"

namespace korvan::oid {

struct HashEntry {
  HashCode code;
  RowNumber row;
};

// First level: the top bits of a hash code are the number of its bucket, and
// every bucket has a multiplier. Second level: the top bits of hash code times
// multiplier are the number of a slot, and every slot has room for one row. The
// compiler tries multiplier after multiplier for a bucket, until each of its
// hash codes has a slot of its own.
//
// Sizes: 64 buckets and 512 slots hold the 217 OIDs in 1,536 bytes, after 227
// tries; the names are alike. 256 slots would save 512 bytes and take half a
// million tries, 16 buckets would save 384 bytes and take still more, and 128
// buckets would cost 512 bytes and save one try. The 33 ALG_IDs and the 45
// pairs need one bucket and one try; of the OIDs, none of 20 million
// multipliers separates all. A sorted array takes 518 bytes, and eight
// comparisons a search.
template <std::size_t kBuckets, std::size_t kSlots>
class PerfectHash {
 public:
  // Enters the first row of each hash code. The entries are in the order of
  // their hash codes.
  template <std::size_t kCount>
  consteval explicit PerfectHash(std::array<HashEntry, kCount> entries) {
    multipliers_.fill(kMixer);
    slots_.fill(kNoRow);
    const auto end = std::unique(entries.begin(), entries.end(),
                                 [](const HashEntry& a, const HashEntry& b) {
                                   return a.code == b.code;
                                 });
    for (auto first = entries.begin(); first != end;) {
      const std::size_t bucket = BucketOf(first->code);
      const auto last = std::find_if(first, end, [&](const HashEntry& entry) {
        return BucketOf(entry.code) != bucket;
      });
      while (!Place({first, last}, multipliers_[bucket])) {
        multipliers_[bucket] += 2 * kMixer;
      }
      first = last;
    }
  }

  // The row entered for `code`. For a hash code that was not entered it is any
  // row or kNoRow, so the caller compares.
  constexpr RowNumber Find(HashCode code) const {
    return slots_[SlotOf(code, multipliers_[BucketOf(code)])];
  }

 private:
  // A number below `count`, which is a power of two.
  static constexpr std::size_t TopBits(std::uint64_t bits, std::size_t count) {
    return count == 1 ? 0 : bits >> (64 - std::countr_zero(count));
  }

  static constexpr std::size_t BucketOf(HashCode code) {
    return TopBits(code, kBuckets);
  }

  static constexpr std::size_t SlotOf(HashCode code, std::uint64_t multiplier) {
    return TopBits(code * multiplier, kSlots);
  }

  // Enters all rows of a bucket, or none.
  consteval bool Place(std::span<const HashEntry> bucket,
                       std::uint64_t multiplier) {
    for (std::size_t i = 0; i < bucket.size(); ++i) {
      std::uint16_t& slot = slots_[SlotOf(bucket[i].code, multiplier)];
      if (slot != kNoRow) {
        while (i-- > 0) {
          slots_[SlotOf(bucket[i].code, multiplier)] = kNoRow;
        }
        return false;
      }
      slot = static_cast<std::uint16_t>(bucket[i].row);
    }
    return true;
  }

  std::array<std::uint64_t, kBuckets> multipliers_{};
  std::array<std::uint16_t, kSlots> slots_{};
};

// With the first multiplier, 2 and 5 would share a slot.
static_assert([] {
  constexpr PerfectHash<2, 4> kHash(std::array<HashEntry, 4>{
      {{2, 20}, {5, 50}, {5, 51}, {~HashCode{0}, 90}}});
  return kHash.Find(2) == 20 && kHash.Find(5) == 50 &&
         kHash.Find(~HashCode{0}) == 90;
}());

}  // namespace korvan::oid

#endif  // KORVAN_OID_PERFECT_HASH_H_
