// The memory that a document holds when it is loaded, and at most while it is,
// for each of its keys. Times are of no interest here.

#include <benchmark/benchmark.h>
#include <korvan/ini_file.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "ini/floor.h"
#include "ini/source.h"
#include "ini/texts.h"
#include "support/plain_ini.h"

namespace {

std::size_t held = 0;
std::size_t most = 0;

std::size_t SizeOf(void* block) {
  return malloc_usable_size(block) + sizeof(std::size_t);
}

}  // namespace

// Kept out of line: where one of a pair is inlined and the other is not, the
// compiler takes them for mismatched.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const block = std::malloc(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  held += SizeOf(block);
  most = std::max(most, held);
  return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
  if (block != nullptr) {
    held -= SizeOf(block);
    std::free(block);
  }
}

void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

namespace {

using texts::Content;

constexpr std::size_t kKeys = 1'000'000;

enum class Figure { kHeld, kPeak };

// Runs `load`, which calls what it is given while the document is loaded.
template <class Load>
void Measure(benchmark::State& state, Figure figure, Load load) {
  for (auto _ : state) {
    const std::size_t before = held;
    most = held;
    load([&] {
      const std::size_t bytes =
          (figure == Figure::kHeld ? held : most) - before;
      state.counters["bytes_per_key"] =
          static_cast<double>(bytes) / static_cast<double>(kKeys);
    });
  }
}

template <class Document>
void Load(benchmark::State& state, const Content& content, Figure figure) {
  Source<char> source(content, texts::Syntax::kBracketed);
  Measure(state, figure, [&](auto tell) {
    source.Rewind();
    Document document;
    document.Load(source.stream(), false);
    tell();
  });
}

void LoadFloor(benchmark::State& state, const Content& content, Figure figure) {
  Source<char> source(content, texts::Syntax::kBracketed);
  Measure(state, figure, [&](auto tell) {
    Floor<char> document;
    document.Load(source);
    tell();
  });
}

const bool is_registered = [] {
  for (const bool is_shuffled : {false, true}) {
    for (const Figure figure : {Figure::kHeld, Figure::kPeak}) {
      std::string row = figure == Figure::kHeld ? "ini_narrow_memory_held_"
                                                : "ini_narrow_memory_peak_";
      row += std::to_string(kKeys) + (is_shuffled ? "_shuffled/" : "/");
      const Content content = {kKeys, 1, is_shuffled, true};
      const Content sorted = {kKeys, 1, false, true};
      const auto add = [&](const char* competitor, auto run) {
        benchmark::RegisterBenchmark((row + competitor).c_str(), run)
            ->Iterations(1)
            ->Repetitions(1)
            ->Unit(benchmark::kMillisecond);
      };
      add("ours", [=](benchmark::State& state) {
        Load<korvan::CIniFileA>(state, content, figure);
      });
      add("plain maps", [=](benchmark::State& state) {
        Load<korvan::test::PlainIni<char>>(state, content, figure);
      });
      add("floor",
          [=](benchmark::State& state) { LoadFloor(state, sorted, figure); });
    }
  }
  return true;
}();

}  // namespace
