// Loading and unloading the library in a process that has the C++ library
// already, beside a shared object with nothing in it; and the first search by
// name after loading, which fetches all names.

#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

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

void LoadAndUnload(benchmark::State& state, const char* path) {
  for (auto _ : state) {
    dlclose(Open(path));
  }
}

void LoadAllNames(benchmark::State& state) {
  using Find = void* (*)(unsigned int, void*, unsigned int);
  wchar_t nobody[] = L"\n";
  for (auto _ : state) {
    void* const library = Open(KORVAN_LIBRARY);
    const auto find =
        reinterpret_cast<Find>(dlsym(library, "_ZN6korvan11FindOIDInfoEjPvj"));
    if (find == nullptr) {
      state.SkipWithError("the library has no FindOIDInfo");
      break;
    }
    const double start = ProcessorTime();
    benchmark::DoNotOptimize(find(2, nobody, 0));
    state.SetIterationTime(ProcessorTime() - start);
    dlclose(library);
  }
}

BENCHMARK_CAPTURE(LoadAndUnload, ours, KORVAN_LIBRARY)
    ->Name("load_and_unload/ours");
BENCHMARK_CAPTURE(LoadAndUnload, empty, KORVAN_EMPTY_LIBRARY)
    ->Name("load_and_unload/limit");
BENCHMARK(LoadAllNames)->Name("load_all_names/ours")->UseManualTime();

}  // namespace
