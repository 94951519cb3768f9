/* A C program that loads the library while it runs. The functions have C++
   linkage, so it asks for them by their mangled names. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

static void* Find(void* library, const char* name) {
  void* const found = dlsym(library, name);
  if (found == NULL) {
    printf("%s\n", dlerror());
  }
  return found;
}

int main(void) {
  typedef int LoadString(void*, unsigned int, char*, int);
  typedef const void* FindOidInfo(unsigned int, void*, unsigned int);
  LoadString* load_string;
  FindOidInfo* find_oid_info;
  void* const library = dlopen("libkorvan.so.1", RTLD_NOW | RTLD_LOCAL);
  void* function;
  char text[256] = "";
  char oid[] = "1.2.643.2.2.19";
  if (library == NULL) {
    printf("%s\n", dlerror());
    return 1;
  }
  function = Find(library, "_Z17LoadString_korvanPvjPci");
  memcpy(&load_string, &function, sizeof(function));
  function = Find(library, "_ZN6korvan11FindOIDInfoEjPvj");
  memcpy(&find_oid_info, &function, sizeof(function));
  if (load_string == NULL || find_oid_info == NULL) {
    return 1;
  }
  if (load_string(NULL, 30, text, 255) <= 0 || find_oid_info(1, oid, 3) == NULL) {
    printf("the loaded library answers wrongly\n");
    return 1;
  }
  printf("%s is %s\n", oid, text);
  if (dlclose(library) != 0 || dlopen("libkorvan.so.1", RTLD_NOW | RTLD_NOLOAD)) {
    printf("the library stays\n");
    return 1;
  }
  return 0;
}
