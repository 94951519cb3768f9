// What it costs to load the library, to find names where others are not loaded,
// to load all names of its registry, as the first search by name does, and to
// unload it. The program has the C++ library already. It is not linked to ours,
// which could then not be unloaded.

#include <dlfcn.h>
#include <korvan/oid_info.h>

#include "cost/measure.h"

namespace {

using Find = decltype(&korvan::FindOIDInfo);

void* library;
Find find;

bool Load() {
  library = dlopen(KORVAN_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  return library != nullptr;
}

bool FindFunction() {
  find = reinterpret_cast<Find>(dlsym(library, "_ZN6korvan11FindOIDInfoEjPvj"));
  return find != nullptr;
}

bool LoadAllNames() {
  wchar_t nobody[] = L"\n";
  return find(CRYPT_OID_INFO_NAME_KEY, nobody, 0) == nullptr;
}

// The last names of two groups, whose neighbours are not loaded. The search
// must ask for no other group's rows.
bool FindNamesOfGroups() {
  wchar_t encryption[] = L"CMSRC2wrap";
  wchar_t attribute[] = L"Code division FSS";
  return find(CRYPT_OID_INFO_NAME_KEY, encryption,
              CRYPT_ENCRYPT_ALG_OID_GROUP_ID) != nullptr &&
         find(CRYPT_OID_INFO_NAME_KEY, attribute,
              CRYPT_RDN_ATTR_OID_GROUP_ID) != nullptr;
}

bool Unload() { return dlclose(library) == 0; }

bool IsUnloaded() {
  return dlopen(KORVAN_LIBRARY, RTLD_NOW | RTLD_NOLOAD) == nullptr;
}

}  // namespace

int main() {
  // Once before it counts: the first time binds symbols of the C library.
  Require(Load() && FindFunction() && FindNamesOfGroups(), "warm-up");
  Count("find_names_of_loaded_groups", FindNamesOfGroups);
  Require(LoadAllNames() && Unload(), "warm-up");
  Count("load_library", Load);
  Require(FindFunction(), "find_function");
  Count("load_all_names", LoadAllNames);
  Count("unload_library", Unload);
  Require(IsUnloaded(), "unload_library");
}
