// Replaces the heap's functions in all tables of imports by functions that
// count, and refuse where they are told to.
#include "support/failing_heap.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

#include "support/replaced_imports.h"

namespace korvan::test {
namespace {

thread_local FailingHeap* failing = nullptr;
thread_local int depth = 0;  // a `new` calls malloc: that is one request
long blocks = 0;

// While it lives, what the heap's functions ask of each other is not seen.
struct Inside {
  Inside() { ++depth; }
  ~Inside() { --depth; }
};

}  // namespace

bool Grant(std::size_t size, bool is_new) {
  if (failing == nullptr || depth != 0) {
    return true;
  }
  if (failing->granted_ > 0) {
    --failing->granted_;
    return true;
  }
  if (!failing->refused_) {
    failing->refused_ = true;
    failing->refused_new_ = is_new;
    failing->refused_size_ = size;
    return false;
  }
  return failing->refusal_ == Refusal::kOne;
}

namespace {

// The functions themselves. All are found before one is replaced: the search
// may use the heap.
template <class Function>
Function* Original(const char* name) {
  void* const found = dlsym(RTLD_DEFAULT, name);
  if (found == nullptr) {
    std::fprintf(stderr, "no %s\n", name);
    std::abort();
  }
  return reinterpret_cast<Function*>(found);
}

using AllocateFunction = void*(std::size_t);
using ReleaseFunction = void(void*);
using ReleaseSizedFunction = void(void*, std::size_t);

const auto original_malloc = Original<AllocateFunction>("malloc");
const auto original_calloc =
    Original<void*(std::size_t, std::size_t)>("calloc");
const auto original_realloc = Original<void*(void*, std::size_t)>("realloc");
const auto original_free = Original<ReleaseFunction>("free");
const auto original_new = Original<AllocateFunction>("_Znwm");
const auto original_new_array = Original<AllocateFunction>("_Znam");
const auto original_new_or_null =
    Original<void*(std::size_t, const std::nothrow_t&)>("_ZnwmRKSt9nothrow_t");
const auto original_delete = Original<ReleaseFunction>("_ZdlPv");
const auto original_delete_array = Original<ReleaseFunction>("_ZdaPv");
const auto original_delete_sized = Original<ReleaseSizedFunction>("_ZdlPvm");
const auto original_delete_array_sized =
    Original<ReleaseSizedFunction>("_ZdaPvm");

template <class Call>
void* Counted(Call call) {
  const Inside inside;
  void* const block = call();
  if (depth == 1 && block != nullptr) {
    ++blocks;
  }
  return block;
}

template <class Call>
void* Allocate(std::size_t size, Call call) {
  if (!Grant(size, false)) {
    errno = ENOMEM;
    return nullptr;
  }
  return Counted(call);
}

template <class Call>
void* New(std::size_t size, Call call) {
  if (!Grant(size, true)) {
    throw std::bad_alloc();
  }
  return Counted(call);
}

template <class Call>
void Release(void* block, Call call) {
  const Inside inside;
  if (depth == 1 && block != nullptr) {
    --blocks;
  }
  call();
}

void* Malloc(std::size_t size) {
  return Allocate(size, [&] { return original_malloc(size); });
}

void* Calloc(std::size_t count, std::size_t size) {
  return Allocate(count * size, [&] { return original_calloc(count, size); });
}

// A block that moves stays one block.
void* Realloc(void* block, std::size_t size) {
  if (block == nullptr) {
    return Malloc(size);
  }
  if (!Grant(size, false)) {
    errno = ENOMEM;
    return nullptr;
  }
  const Inside inside;
  return original_realloc(block, size);
}

void Free(void* block) {
  Release(block, [&] { original_free(block); });
}

void* NewOne(std::size_t size) {
  return New(size, [&] { return original_new(size); });
}

void* NewArray(std::size_t size) {
  return New(size, [&] { return original_new_array(size); });
}

void* NewOrNull(std::size_t size, const std::nothrow_t& tag) {
  return Allocate(size, [&] { return original_new_or_null(size, tag); });
}

void Delete(void* block) {
  Release(block, [&] { original_delete(block); });
}

void DeleteArray(void* block) {
  Release(block, [&] { original_delete_array(block); });
}

void DeleteSized(void* block, std::size_t size) {
  Release(block, [&] { original_delete_sized(block, size); });
}

void DeleteArraySized(void* block, std::size_t size) {
  Release(block, [&] { original_delete_array_sized(block, size); });
}

const Import kHeap[] = {
    {"malloc", Address(Malloc)},
    {"calloc", Address(Calloc)},
    {"realloc", Address(Realloc)},
    {"free", Address(Free)},
    {"_Znwm", Address(NewOne)},
    {"_Znam", Address(NewArray)},
    {"_ZnwmRKSt9nothrow_t", Address(NewOrNull)},
    {"_ZdlPv", Address(Delete)},
    {"_ZdaPv", Address(DeleteArray)},
    {"_ZdlPvm", Address(DeleteSized)},
    {"_ZdaPvm", Address(DeleteArraySized)},
};

// The loader has a heap of its own, and the kernel's page of code has none.
bool ReplaceHeap() {
  ReplaceImports(kHeap, [](std::string_view path) {
    return path.find("/ld-linux") == std::string_view::npos &&
           path.find("linux-vdso") == std::string_view::npos;
  });
  return true;
}

[[maybe_unused]] const bool is_replaced = ReplaceHeap();

}  // namespace

FailingHeap::FailingHeap(long granted, Refusal refusal)
    : granted_(granted), refusal_(refusal) {
  failing = this;
}

FailingHeap::~FailingHeap() { Stop(); }

void FailingHeap::Stop() { failing = nullptr; }

long HeapBlocks() { return blocks; }

}  // namespace korvan::test
