/* The names by which C reaches the library's functions, all looked up. */
#include <dlfcn.h>
#include <stdio.h>

static const char* const names[] = {
    /* FindOIDInfo(unsigned int, void*, unsigned int) */
    "_ZN6korvan11FindOIDInfoEjPvj",
    /* FindOIDInfoInternal(unsigned int, void*, unsigned int) */
    "_ZN6korvan19FindOIDInfoInternalEjPvj",
    /* FindOIDInfoInternal(const OID_TABLE_INFO&, unsigned int, void*) */
    "_ZN6korvan19FindOIDInfoInternalERKNS_14OID_TABLE_INFOEjPv",
    /* MatchOidInfo(COidData&, unsigned int, void*) */
    "_ZN6korvan12MatchOidInfoERNS_8COidDataEjPv",
    /* InitOidInfoWorker(COidData&, unsigned int) */
    "_ZN6korvan17InitOidInfoWorkerERNS_8COidDataEj",
    /* CleanupOidInfo() */
    "_ZN6korvan14CleanupOidInfoEv",
    /* oid_registry, the nine tables */
    "_ZN6korvan12oid_registryE",
    "_ZN6korvan23KRVConvertPublicKeyInfoEjPK21_CERT_PUBLIC_KEY_INFOjjPPhPj",
    "_ZN6korvan30KRVEncodePublicKeyAndParametrsEjPKcPKhjjjPPhPjS5_S6_",
    "_Z17LoadString_korvanPvjPci",
    /* Of libkorvan_platform.so.1, which is loaded with the library. */
    "GetLastError",
    "SetLastError",
};

int main(void) {
  const size_t count = sizeof(names) / sizeof(names[0]);
  void* const library = dlopen("libkorvan.so.1", RTLD_NOW);
  size_t found = 0;
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  for (size_t i = 0; i < count; ++i) {
    if (dlsym(library, names[i]) != NULL) {
      ++found;
    }
  }
  printf("%zu of %zu names are found\n", found, count);
  return fflush(stdout) == 0 && dlclose(library) == 0 ? 0 : 1;
}
// It prints:
// 12 of 12 names are found
