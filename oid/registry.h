// The records of the registry. To learn this folder, read it in this order:
//   tables/       the rows, a page for each group
//   rows.h        the rows as constants, and the groups
//   registry.h    the records, which are what callers get
//   names.h       how names are loaded
//   index.h       from a key to its rows, with hash_codes.h, perfect_hash.h and
//                 row_chains.h
//   keys.h        what callers search by
//   lookup.cc     the searches
#ifndef KORVAN_OID_REGISTRY_H_
#define KORVAN_OID_REGISTRY_H_

#include <korvan/oid_info.h>

#include "oid/rows.h"

namespace korvan::oid {

// Group after group: the tables of oid_registry are ranges of it, and a row
// number is an index into it.
extern COidData records[kRowCount];

}  // namespace korvan::oid

#endif  // KORVAN_OID_REGISTRY_H_
