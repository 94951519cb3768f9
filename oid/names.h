// The names of records, the one thing about a record that changes: numbers of
// the string table, which are replaced by their texts when a search first needs
// them (lazy loading).
#ifndef KORVAN_OID_NAMES_H_
#define KORVAN_OID_NAMES_H_

#include <korvan/oid_info.h>

#include <atomic>
#include <cstdint>

#include "oid/rows.h"

namespace korvan::oid {

// The life of a name in the registry:
//
//   rows with RES, MISSING                              rows with NAME
//        |                                                     |
//        v       load              the row's name, or null     v
//     number -----------> loaded -------------------------> indexed
//                           ^                                  |
//                           '----------------------------------'
//                                   load of another name
//
//   number   pwszName is a number of the string table.
//   loaded   pwszName is a text that the registry owns, or null, and bit 0x2 of
//            dwOidFlags is set.
//   indexed  The index answers for the name: it is the one that the row states,
//            or null. A load goes on to here at once, except with another text:
//            a host may have its own LoadString_korvan, and a caller may ask
//            InitOidInfoWorker for any number. Such a name stays loaded, and
//            searches by name ask the record.
//
// Who loads: every search, for the record that it returns; a search by name and
// MatchOidInfo, for each record that they ask; a caller, by InitOidInfoWorker.
// CleanupOidInfo puts null in the place of each text that the registry owns,
// under the lock that a load takes; the state stays. A caller's own record has
// no row, so its name is never indexed.
//
// How a load is published: its thread takes the one lock and writes the flag,
// then the name, then whether it is indexed; the last two are released
// (memory_order_release). If another thread was first, it writes nothing.
// Readers take no lock. They acquire what was released, so who finds a name
// indexed sees the name, and who sees the name sees the flag.
//
// A fork waits for the lock, and the child has it free.

inline LPCWSTR NameOf(COidData& record) {
  return std::atomic_ref(record.pwszName).load(std::memory_order_acquire);
}

// The number that a name is, or 0.
inline unsigned int NumberOf(LPCWSTR name) {
  const auto value = reinterpret_cast<std::uintptr_t>(name);
  return value < 0x10000 ? static_cast<unsigned int>(value) : 0;
}

// Puts the text of `number` in the place of the name `replaced`, unless the
// record has another name by then. Returns the record.
COidData& LoadName(COidData& record, LPCWSTR replaced, unsigned int number);

// Loads the record's name if it is still a number. Returns the record, so that
// a search can end in this call and needs no stack.
inline COidData& EnsureLoaded(COidData& record) {
  const LPCWSTR name = NameOf(record);
  const unsigned int number = NumberOf(name);
  return number == 0 ? record : LoadName(record, name, number);
}

// Whether the names of all these rows are indexed.
bool AreIndexed(RowRange rows);

}  // namespace korvan::oid

#endif  // KORVAN_OID_NAMES_H_
