// Replaces the heap's functions in the libraries' tables of imports by
// functions that note each call, and refuse one where a watch asks for that.
#include "support/heap_watch.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string_view>

#include "support/replaced_imports.h"

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

const Import kHeap[] = {
    {"malloc", Address(Malloc)},       {"free", Address(Free)},
    {"_Znwm", Address(New)},           {"_Znam", Address(NewArray)},
    {"_ZdlPv", Address(Delete)},       {"_ZdaPv", Address(DeleteArray)},
    {"_ZdlPvm", Address(DeleteSized)}, {"_ZdaPvm", Address(DeleteArraySized)},
};

bool ReplaceHeap() {
  ReplaceImports(kHeap, [](std::string_view path) {
    return path.find("/libkorvan") != std::string_view::npos;
  });
  return true;
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
