#ifndef KORVAN_OID_REGISTRY_H_
#define KORVAN_OID_REGISTRY_H_

#include <korvan/oid_info.h>

#include "oid/rows.h"

namespace korvan::oid {

// All records of the registry, group after group; oid_registry's tables are
// ranges of it. Row numbers count from its start.
extern COidData records[kRowCount];

}  // namespace korvan::oid

#endif  // KORVAN_OID_REGISTRY_H_
