// Chains of the rows that share a hash code: from one row to the next, in the
// order of the table.
#ifndef KORVAN_OID_ROW_CHAINS_H_
#define KORVAN_OID_ROW_CHAINS_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "oid/perfect_hash.h"
#include "oid/rows.h"

namespace korvan::oid {

enum class Repeats {
  kEveryRow,      // a chain has every row of its hash code
  kOncePerGroup,  // only the first in each group: no search returns another
};

// For each row the one after it in its chain, or kNoRow.
using RowChains = std::array<std::uint16_t, kRowCount>;

// `rows` are in the order of their hash codes, and in the order of the table
// where these are equal.
consteval RowChains ChainRows(const std::array<HashEntry, kRowCount>& rows,
                              Repeats repeats) {
  RowChains next{};
  next.fill(kNoRow);
  HashEntry last = rows[0];
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (rows[i].code == last.code) {
      if (repeats == Repeats::kOncePerGroup &&
          kRows[rows[i].row].group == kRows[last.row].group) {
        continue;
      }
      next[last.row] = static_cast<std::uint16_t>(rows[i].row);
    }
    last = rows[i];
  }
  return next;
}

}  // namespace korvan::oid

#endif  // KORVAN_OID_ROW_CHAINS_H_
