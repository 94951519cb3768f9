#ifndef KORVAN_OID_NAMES_H_
#define KORVAN_OID_NAMES_H_

#include <korvan/oid_info.h>

#include <atomic>
#include <cstdint>

#include "oid/rows.h"

// The names of records, which are the one thing about them that changes: from
// the number of a text to the text.

namespace korvan::oid {

// A name is loaded while other threads look at it.
inline LPCWSTR NameOf(COidData& record) {
  return std::atomic_ref(record.pwszName).load(std::memory_order_acquire);
}

inline bool IsTextNumber(LPCWSTR name) {
  const auto value = reinterpret_cast<std::uintptr_t>(name);
  return value != 0 && value < 0x10000;
}

// Puts the text whose number is the record's name, `number`, in the place of
// that number, or null where there is none to be had.
COidData& Loaded(COidData& record, LPCWSTR number);

// The record with its name loaded if it was still a number.
inline COidData& Resolved(COidData& record) {
  const LPCWSTR name = NameOf(record);
  return IsTextNumber(name) ? Loaded(record, name) : record;
}

// Whether the name of each row in `rows` is settled: it is the one that the
// row states, or null, and stays so. While it is not, only the record itself
// can tell.
bool AreNamesSettled(RowRange rows);

}  // namespace korvan::oid

#endif  // KORVAN_OID_NAMES_H_
