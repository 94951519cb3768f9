// Loading and unloading the library in a process that has the C++ library
// already, beside a shared object with nothing in it; and the first search by
// name after loading, which loads all names.

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <korvan/oid_info.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <cwchar>
#include <string>
#include <vector>

namespace {

// In seconds, and of this thread: the others do not count.
double ProcessorTime() {
  timespec time = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) +
         static_cast<double>(time.tv_nsec) * 1e-9;
}

void* Open(const char* path) {
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(1);
  }
  return library;
}

void* Symbol(void* library, const char* name) {
  void* const symbol = dlsym(library, name);
  if (symbol == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(1);
  }
  return symbol;
}

// Searches for a name that no record has, which loads all names.
void SearchForNobody(void* library) {
  static wchar_t nobody[] = L"\n";
  const auto find = reinterpret_cast<decltype(&korvan::FindOIDInfo)>(
      Symbol(library, "_ZN6korvan11FindOIDInfoEjPvj"));
  benchmark::DoNotOptimize(find(CRYPT_OID_INFO_NAME_KEY, nobody, 0));
}

void LoadAndUnload(benchmark::State& state, const char* path) {
  for (auto _ : state) {
    dlclose(Open(path));
  }
}

void LoadNames(benchmark::State& state) {
  for (auto _ : state) {
    void* const library = Open(KORVAN_LIBRARY);
    const double start = ProcessorTime();
    SearchForNobody(library);
    state.SetIterationTime(ProcessorTime() - start);
    dlclose(library);
  }
}

// The names that the registry loads and owns.
std::vector<std::wstring> OwnedNames() {
  constexpr DWORD kIsOwned = 0x2;
  void* const library = Open(KORVAN_LIBRARY);
  SearchForNobody(library);
  std::vector<std::wstring> names;
  const auto* const registry = static_cast<decltype(&korvan::oid_registry)>(
      Symbol(library, "_ZN6korvan12oid_registryE"));
  for (const korvan::OID_TABLE_INFO& table : *registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      const korvan::COidData& record = table.rgRecords[i];
      if ((record.dwOidFlags & kIsOwned) != 0 && record.pwszName != nullptr) {
        names.emplace_back(record.pwszName);
      }
    }
  }
  dlclose(library);
  return names;
}

// Each name is a new[] array, by the library's interface.
void CopyNames(benchmark::State& state) {
  const std::vector<std::wstring> names = OwnedNames();
  std::vector<wchar_t*> copies(names.size());
  for (auto _ : state) {
    const double start = ProcessorTime();
    for (std::size_t i = 0; i < names.size(); ++i) {
      copies[i] = new wchar_t[names[i].size() + 1];
      std::wmemcpy(copies[i], names[i].c_str(), names[i].size() + 1);
    }
    benchmark::ClobberMemory();
    state.SetIterationTime(ProcessorTime() - start);
    for (wchar_t* const copy : copies) {
      delete[] copy;
    }
  }
}

BENCHMARK_CAPTURE(LoadAndUnload, ours, KORVAN_LIBRARY)
    ->Name("load_library/ours");
BENCHMARK_CAPTURE(LoadAndUnload, empty, KORVAN_EMPTY_LIBRARY)
    ->Name("load_library/floor");
BENCHMARK(LoadNames)->Name("load_all_names/ours")->UseManualTime();
BENCHMARK(CopyNames)->Name("load_all_names/floor")->UseManualTime();

}  // namespace
