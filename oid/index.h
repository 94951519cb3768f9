// The four indexes of the registry: from a hash code to the rows that may have
// the key, computed and proved in index.cc. An index only says where to look;
// the search compares.
#ifndef KORVAN_OID_INDEX_H_
#define KORVAN_OID_INDEX_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "oid/hash_codes.h"
#include "oid/perfect_hash.h"
#include "oid/row_chains.h"
#include "oid/rows.h"

namespace korvan::oid {

// One hash code for each row.
using HashCodes = std::array<HashCode, kRowCount>;

// A perfect hash leads to the first row with a hash code, a chain to the
// others.
template <std::size_t kBuckets, std::size_t kSlots>
class Index {
 public:
  consteval Index(const HashCodes& codes, Repeats repeats)
      : Index(SortByCode(codes), repeats) {}

  // The first row that may have a key with that hash code, or kNoRow.
  constexpr RowNumber First(HashCode code) const { return hash_.Find(code); }

  // The next row that may have the same key, or kNoRow.
  constexpr RowNumber Next(RowNumber row) const { return chains_[row]; }

 private:
  using Entries = std::array<HashEntry, kRowCount>;

  static consteval Entries SortByCode(const HashCodes& codes) {
    Entries entries{};
    for (RowNumber row = 0; row < kRowCount; ++row) {
      entries[row] = {codes[row], row};
    }
    std::sort(entries.begin(), entries.end(),
              [](const HashEntry& a, const HashEntry& b) {
                return a.code != b.code ? a.code < b.code : a.row < b.row;
              });
    return entries;
  }

  consteval Index(const Entries& entries, Repeats repeats)
      : hash_(entries), chains_(ChainRows(entries, repeats)) {}

  PerfectHash<kBuckets, kSlots> hash_;
  RowChains chains_;
};

extern const Index<64, 512> kByOid;
extern const Index<64, 512> kByName;
extern const Index<1, 512> kByAlgid;
extern const Index<1, 512> kByPair;

// What a comparison with a row needs.
using Lengths = std::array<std::uint8_t, kRowCount>;
extern const Lengths kOidLengths;
extern const Lengths kNameLengths;
extern const HashCodes kNameHashCodes;

}  // namespace korvan::oid

#endif  // KORVAN_OID_INDEX_H_
