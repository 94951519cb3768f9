// What oidinfo prints of its lookups: columns, TSV or JSON.
#ifndef KORVAN_TOOLS_OID_REPORT_H_
#define KORVAN_TOOLS_OID_REPORT_H_

#include <korvan/oid_info.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/oid_search.h"
#include "tools/program.h"

namespace korvan::tools {

// What an order asks for, and what there is.
struct Lookup {
  std::optional<Key> key;  // none where a group or all is listed
  DWORD group = 0;
  Records records;
  const COidData* returned = nullptr;  // by the library's own lookup
  std::vector<std::wstring> suggestions;
  std::vector<std::wstring> hidden;
};

// A type of key, as FindOIDInfo numbers it.
struct TypeName {
  DWORD type;
  const char* option;
  const char* name;
};
constexpr TypeName kTypeNames[] = {
    {CRYPT_OID_INFO_OID_KEY, "oid", "OID"},
    {CRYPT_OID_INFO_NAME_KEY, "name", "name"},
    {CRYPT_OID_INFO_ALGID_KEY, "algid", "ALG_ID"},
    {CRYPT_OID_INFO_SIGN_KEY, "sign", "pair of ALG_IDs"},
};

inline const TypeName& NameOfType(DWORD type) { return kTypeNames[type - 1]; }

// Prints all lookups on standard output.
void Print(const std::vector<Lookup>& lookups, Format format);

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_OID_REPORT_H_
