// The memory that a document holds when it is loaded, and at most while it is,
// for each of its keys. Times are of no interest here.

#include <benchmark/benchmark.h>
#include <korvan/ini_file.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "mandated_shape.h"
#include "texts.h"

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

// Runs `load` and tells what it took.
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

template <class File>
void Load(benchmark::State& state, const Content& content, Figure figure) {
  std::istringstream stream(texts::TextOf(content, texts::Syntax::kBracketed));
  Measure(state, figure, [&](auto tell) {
    stream.clear();
    stream.seekg(0);
    File file;
    file.Load(stream);
    tell();
  });
}

void Fill(benchmark::State& state, const Content& content, Figure figure) {
  std::vector<std::pair<std::string, std::string>> keys;
  std::vector<shape::CutKey<char>> cut;
  keys.reserve(content.keys);
  const std::string section = texts::SectionName(content, 0);
  for (std::size_t key = 0; key < content.keys; ++key) {
    keys.emplace_back(texts::KeyName(content, texts::Syntax::kBracketed, key),
                      texts::Value(content, key));
    cut.push_back({section, keys.back().first, keys.back().second});
  }
  Measure(state, figure, [&](auto tell) {
    shape::File<char> file;
    file.Fill(cut);
    tell();
  });
}

template <class Run>
void Register(const std::string& name, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), run)
      ->Iterations(1)
      ->Repetitions(1)
      ->Unit(benchmark::kMillisecond);
}

const bool is_registered = [] {
  for (const bool is_shuffled : {false, true}) {
    for (const Figure figure : {Figure::kHeld, Figure::kPeak}) {
      std::string operation =
          figure == Figure::kHeld ? "ini_memory_held" : "ini_memory_peak";
      const std::string size = std::to_string(kKeys);
      operation += is_shuffled ? "_shuffled/" : "_sorted/";
      const Content content{kKeys, 1, is_shuffled, true};
      Register(operation + "ours/" + size, [=](benchmark::State& state) {
        Load<korvan::CIniFileA>(state, content, figure);
      });
      Register(operation + "plain/" + size, [=](benchmark::State& state) {
        Load<shape::File<char>>(state, content, figure);
      });
      Register(operation + "limit/" + size,
               [=](benchmark::State& state) { Fill(state, content, figure); });
    }
  }
  return true;
}();

}  // namespace
