/* Calls the library from C, by the names that C++ gives its functions. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include <wchar.h>

/* The part of COidData that is CryptoAPI's CRYPT_OID_INFO, as far as needed. */
typedef struct {
  unsigned int cbSize;
  const char* pszOID;
  const wchar_t* pwszName;
  unsigned int dwGroupId;
  unsigned int Algid;
} OidInfo;

typedef OidInfo* FindOidInfo(unsigned int type, void* key, unsigned int group);
typedef int LoadString(void* module, unsigned int number, char* text, int size);
typedef unsigned int GetLastErrorCode(void);

/* Copies a function's address to `function`, as POSIX lets a program do. */
static int Get(void* library, const char* name, void* function) {
  void* const found = dlsym(library, name);
  if (found == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 0;
  }
  memcpy(function, &found, sizeof(found));
  return 1;
}

int main(void) {
  FindOidInfo* find = NULL;
  LoadString* load = NULL;
  GetLastErrorCode* get_last_error = NULL;
  char oid[] = "1.2.643.2.2.19";
  char text[256] = "";
  const OidInfo* found;
  void* const library = dlopen("libkorvan.so.1", RTLD_NOW);
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  if (!Get(library, "_ZN6korvan11FindOIDInfoEjPvj", &find) ||
      !Get(library, "_Z17LoadString_korvanPvjPci", &load) ||
      !Get(library, "GetLastError", &get_last_error)) {
    return 1;
  }
  found = find(1, oid, 3);
  if (found != NULL) {
    printf("%s is %ls, ALG_ID 0x%X\n", oid, found->pwszName, found->Algid);
  }
  if (load(NULL, 4, text, 255) == 0) {
    printf("there is no text 4: last error %u\n", get_last_error());
  }
  return fflush(stdout) == 0 && dlclose(library) == 0 ? 0 : 1;
}
// It prints:
// 1.2.643.2.2.19 is GOST R 34.10-2001, ALG_ID 0x2E23
// there is no text 4: last error 87
