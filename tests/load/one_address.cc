// Exits with 0 if the library's exported data has one address: in this program,
// in another library, and where the library itself looks for it.
#include <dlfcn.h>
#include <elf.h>
#include <korvan/korvan.h>
#include <link.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

#include "load/user_library.h"

namespace {

// The kind of relocation by which code asks for an object of its own library.
#ifdef __x86_64__
constexpr unsigned long kAsks = R_X86_64_GLOB_DAT;
#else
constexpr unsigned long kAsks = R_AARCH64_GLOB_DAT;
#endif

struct Asked {
  const char* symbol;
  const void* address = nullptr;
};

// Finds the address that the loader gave the library for a symbol, in the
// relocation by which the library asks for it.
int FindInLibrary(dl_phdr_info* object, std::size_t, void* argument) {
  if (std::strstr(object->dlpi_name, "libkorvan.so") == nullptr) {
    return 0;
  }
  Asked& asked = *static_cast<Asked*>(argument);
  const ElfW(Sym)* symbols = nullptr;
  const char* strings = nullptr;
  const ElfW(Rela)* relocations = nullptr;
  std::size_t size = 0;
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    if (object->dlpi_phdr[i].p_type != PT_DYNAMIC) {
      continue;
    }
    const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(
        object->dlpi_addr + object->dlpi_phdr[i].p_vaddr);
    for (; entry->d_tag != DT_NULL; ++entry) {
      // The loader has made addresses of these.
      const auto address = entry->d_un.d_ptr;
      if (entry->d_tag == DT_SYMTAB) {
        symbols = reinterpret_cast<const ElfW(Sym)*>(address);
      } else if (entry->d_tag == DT_STRTAB) {
        strings = reinterpret_cast<const char*>(address);
      } else if (entry->d_tag == DT_RELA) {
        relocations = reinterpret_cast<const ElfW(Rela)*>(address);
      } else if (entry->d_tag == DT_RELASZ) {
        size = entry->d_un.d_val;
      }
    }
  }
  for (std::size_t i = 0; i < size / sizeof(*relocations); ++i) {
    const ElfW(Sym)& symbol = symbols[ELF64_R_SYM(relocations[i].r_info)];
    if (ELF64_R_TYPE(relocations[i].r_info) == kAsks &&
        std::strcmp(strings + symbol.st_name, asked.symbol) == 0) {
      asked.address = *reinterpret_cast<const void* const*>(
          object->dlpi_addr + relocations[i].r_offset);
    }
  }
  return 1;
}

int failures = 0;

void ExpectOne(const char* what, const void* here, const void* there) {
  if (here != there) {
    std::printf("%s: %p here, %p there\n", what, here, there);
    ++failures;
  }
}

}  // namespace

int main() {
  const void* const registry = &korvan::oid_registry;
  Asked asked = {"_ZN6korvan12oid_registryE"};
  dl_iterate_phdr(FindInLibrary, &asked);
  ExpectOne("the registry in the library", registry, asked.address);
  ExpectOne("the registry in another library", registry,
            RegistryOfUserLibrary());
  ExpectOne("the narrow LF in another library", &korvan::CIniFileA::LF,
            NarrowLineFeedOfUserLibrary());
  ExpectOne("the wide LF in another library", &korvan::CIniFileW::LF,
            WideLineFeedOfUserLibrary());
  // The library itself only ever takes the value, so its own object must have
  // the same.
  void* const library = dlopen("libkorvan.so.1", RTLD_NOW | RTLD_NOLOAD);
  for (const auto& [symbol, value] :
       {std::pair<const char*, const void*>{"_ZN6korvan9CIniFileA2LFE",
                                            korvan::CIniFileA::LF},
        {"_ZN6korvan9CIniFileW2LFE", korvan::CIniFileW::LF}}) {
    const auto* const own = static_cast<const void* const*>(
        library == nullptr ? nullptr : dlsym(library, symbol));
    ExpectOne(symbol, value, own == nullptr ? nullptr : *own);
  }
  return failures == 0 ? 0 : 1;
}
