// Replaces the heap's functions in the libraries' tables of imports by
// functions that note each call, and refuse one where a watch asks for that.
#include "support/heap_watch.h"

#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <new>
#include <string_view>

namespace korvan::test {

// The watch of this thread, or null.
thread_local HeapWatch* watch = nullptr;

bool Grant(std::size_t size) {
  if (watch == nullptr) {
    return true;
  }
  if (watch->requests_ < HeapWatch::kMost) {
    watch->sizes_[watch->requests_] = size;
  }
  return ++watch->requests_ != watch->fail_at_;
}

void NoteFreed(void* memory) {
  if (watch == nullptr) {
    return;
  }
  if (watch->frees_ < HeapWatch::kMost) {
    watch->freed_[watch->frees_] = memory;
  }
  ++watch->frees_;
}

namespace {

void* Malloc(std::size_t size) {
  return Grant(size) ? std::malloc(size) : nullptr;
}

void Free(void* memory) {
  NoteFreed(memory);
  std::free(memory);
}

void* New(std::size_t size) {
  return Grant(size) ? ::operator new(size) : throw std::bad_alloc();
}

void* NewArray(std::size_t size) {
  return Grant(size) ? ::operator new[](size) : throw std::bad_alloc();
}

void Delete(void* memory) {
  NoteFreed(memory);
  ::operator delete(memory);
}

void DeleteArray(void* memory) {
  NoteFreed(memory);
  ::operator delete[](memory);
}

void DeleteSized(void* memory, std::size_t /*size*/) { Delete(memory); }

void DeleteArraySized(void* memory, std::size_t /*size*/) {
  DeleteArray(memory);
}

struct Import {
  std::string_view name;
  void* stand_in;
};

template <class Function>
void* Address(Function* function) {
  return reinterpret_cast<void*>(function);
}

const Import kHeap[] = {
    {"malloc", Address(Malloc)},       {"free", Address(Free)},
    {"_Znwm", Address(New)},           {"_Znam", Address(NewArray)},
    {"_ZdlPv", Address(Delete)},       {"_ZdaPv", Address(DeleteArray)},
    {"_ZdlPvm", Address(DeleteSized)}, {"_ZdaPvm", Address(DeleteArraySized)},
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

// Called for each library of the process. Sets `replaced` where the library is
// the project's and imports the heap.
int ReplaceHeapOf(dl_phdr_info* object, std::size_t /*size*/, void* replaced) {
  if (std::string_view(object->dlpi_name).find("/libkorvan") ==
      std::string_view::npos) {
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
              kHeap, std::string_view(names + symbol.st_name), &Import::name);
          if (import != std::end(kHeap)) {
            Replace(object->dlpi_addr + relocation.r_offset, import->stand_in);
            *static_cast<bool*>(replaced) = true;
          }
        });
  };
  replace_all(value[DT_RELA], value[DT_RELASZ]);
  replace_all(value[DT_JMPREL], value[DT_PLTRELSZ]);
  return 0;
}

bool ReplaceHeap() {
  bool replaced = false;
  dl_iterate_phdr(ReplaceHeapOf, &replaced);
  if (!replaced) {
    std::fputs("no library of the project imports the heap\n", stderr);
    std::abort();
  }
  return replaced;
}

}  // namespace

HeapWatch::HeapWatch(int fail_at) : fail_at_(fail_at) {
  [[maybe_unused]] static const bool replaced = ReplaceHeap();
  watch = this;
}

HeapWatch::~HeapWatch() { Stop(); }

void HeapWatch::Stop() { watch = nullptr; }

std::vector<std::size_t> HeapWatch::Sizes() const {
  return std::vector<std::size_t>(sizes_, sizes_ + std::min(requests_, kMost));
}

std::vector<void*> HeapWatch::Freed() const {
  return std::vector<void*>(freed_, freed_ + std::min(frees_, kMost));
}

std::size_t HeapWatch::FreedBlocks() const {
  const std::vector<void*> all = Freed();
  return all.size() - static_cast<std::size_t>(
                          std::ranges::count(all, static_cast<void*>(nullptr)));
}

}  // namespace korvan::test
