// Finds the tables of imports in memory, and writes to them.
#include "support/replaced_imports.h"

#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace korvan::test {
namespace {

struct Replacement {
  std::span<const Import> imports;
  bool (*is_chosen)(std::string_view path);
  bool is_done;
};

// Replaces an entry of a table, which the loader may have made read-only. Its
// page stays writable: other data may share it.
void Replace(ElfW(Addr) entry, void* stand_in) {
  const auto page = static_cast<ElfW(Addr)>(sysconf(_SC_PAGESIZE));
  void* const start = reinterpret_cast<void*>(entry / page * page);
  if (mprotect(start, page, PROT_READ | PROT_WRITE) != 0) {
    std::perror("mprotect");
    std::abort();
  }
  *reinterpret_cast<void**>(entry) = stand_in;
}

// Called for each library of the process, and for the program.
int ReplaceImportsOf(dl_phdr_info* object, std::size_t /*size*/, void* data) {
  auto& replacement = *static_cast<Replacement*>(data);
  if (!replacement.is_chosen(object->dlpi_name)) {
    return 0;
  }
  const ElfW(Phdr)* const dynamic =
      std::find_if(object->dlpi_phdr, object->dlpi_phdr + object->dlpi_phnum,
                   [](const auto& part) { return part.p_type == PT_DYNAMIC; });
  ElfW(Addr) value[DT_NUM] = {};
  for (auto* entry = reinterpret_cast<const ElfW(Dyn)*>(object->dlpi_addr +
                                                        dynamic->p_vaddr);
       entry->d_tag != DT_NULL; ++entry) {
    if (entry->d_tag < DT_NUM) {
      value[entry->d_tag] = entry->d_un.d_ptr;
    }
  }
  const auto* const symbols =
      reinterpret_cast<const ElfW(Sym)*>(value[DT_SYMTAB]);
  const auto* const names = reinterpret_cast<const char*>(value[DT_STRTAB]);
  const auto replace_all = [&](ElfW(Addr) table, ElfW(Addr) size) {
    const auto* const relocations = reinterpret_cast<const ElfW(Rela)*>(table);
    std::for_each(
        relocations, relocations + size / sizeof(ElfW(Rela)),
        [&](const ElfW(Rela) & relocation) {
          const auto& symbol = symbols[ELF64_R_SYM(relocation.r_info)];
          const auto import = std::ranges::find(
              replacement.imports, std::string_view(names + symbol.st_name),
              &Import::name);
          if (import != replacement.imports.end()) {
            Replace(object->dlpi_addr + relocation.r_offset, import->stand_in);
            replacement.is_done = true;
          }
        });
  };
  replace_all(value[DT_RELA], value[DT_RELASZ]);
  replace_all(value[DT_JMPREL], value[DT_PLTRELSZ]);
  return 0;
}

}  // namespace

void ReplaceImports(std::span<const Import> imports,
                    bool (*is_chosen)(std::string_view path)) {
  Replacement replacement = {imports, is_chosen, false};
  dl_iterate_phdr(ReplaceImportsOf, &replacement);
  if (!replacement.is_done) {
    std::fputs("no import was found to replace\n", stderr);
    std::abort();
  }
}

}  // namespace korvan::test
