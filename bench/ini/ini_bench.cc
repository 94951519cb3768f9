// INI documents, narrow and wide, beside other libraries that build a document
// one can search, beside the plain way, and beside what can't be had for less.
//
// A benchmark's name is "operation/competitor/size"; the size is the number of
// keys, or of bytes. scripts/bench makes a table of them.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <fstream>
#include <locale>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "competitors.h"
#include "mandated_shape.h"
#include "texts.h"

namespace {

using competitors::Source;
using texts::Content;

constexpr std::size_t kSkippedSize = 100'000'000;
constexpr std::size_t kLongLineSize = std::size_t{64} << 20;

// What a loop must not count, such as destroying what it made, is left out by
// taking the time by hand.
template <class Work>
void Time(benchmark::State& state, Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double> taken =
      std::chrono::steady_clock::now() - start;
  state.SetIterationTime(taken.count());
}

// Whoever came before has left the heap in pieces.
void TidyHeap() { malloc_trim(0); }

// A file that is gone after use.
class PassingFile {
 public:
  explicit PassingFile(const std::string& text) {
    const int descriptor = mkstemp(path_.data());
    if (descriptor < 0) {
      std::perror("mkstemp");
      std::exit(1);
    }
    close(descriptor);
    std::ofstream(path_, std::ios::binary) << text;
  }
  PassingFile(const PassingFile&) = delete;
  PassingFile& operator=(const PassingFile&) = delete;
  ~PassingFile() { unlink(path_.c_str()); }

  const std::string& path() const { return path_; }

 private:
  std::string path_ = "/tmp/korvan_ini_bench_XXXXXX";
};

// The keys of a document in the types that a competitor asks for.
template <class Document>
std::vector<std::pair<typename Document::Name, typename Document::Name>>
NamesOf(const Content& content) {
  std::vector<std::pair<typename Document::Name, typename Document::Name>>
      names;
  for (const texts::Place& place : texts::PlacesOf(content)) {
    names.emplace_back(
        Document::NameOf(texts::SectionName(content, place.section)),
        Document::NameOf(
            texts::KeyName(content, Document::kSyntax, place.key)));
  }
  return names;
}

template <class Document>
bool HasAll(const Document& document, const Content& content) {
  const auto names = NamesOf<Document>(content);
  return std::all_of(names.begin(), names.end(), [&](const auto& name) {
    return document.Find(name.first, name.second) != 0;
  });
}

void CountKeys(benchmark::State& state, const Content& content) {
  state.SetItemsProcessed(state.iterations() *
                          static_cast<std::int64_t>(content.keys));
}

template <class Document, class Char>
void LoadFromMemory(benchmark::State& state, const Content& content) {
  Source<Char> source(texts::TextOf(content, Document::kSyntax));
  if (content.keys <= 1000) {
    Document document;
    document.Load(source);
    if (!HasAll(document, content)) {
      state.SkipWithError("not all keys were loaded");
    }
  }
  TidyHeap();
  for (auto _ : state) {
    source.Rewind();
    Document document;
    Time(state, [&] { document.Load(source); });
  }
  CountKeys(state, content);
}

template <class Document>
void LoadFromFile(benchmark::State& state, const Content& content) {
  const PassingFile file(texts::TextOf(content, Document::kSyntax));
  TidyHeap();
  for (auto _ : state) {
    Document document;
    Time(state, [&] { document.LoadFile(file.path()); });
  }
  CountKeys(state, content);
}

template <class Document, class Char>
void LookUp(benchmark::State& state, const Content& content) {
  TidyHeap();
  Document document;
  {
    Source<Char> source(texts::TextOf(content, Document::kSyntax));
    document.Load(source);
  }
  auto names = NamesOf<Document>(content);
  // An order that no cache and no predictor can learn.
  std::shuffle(names.begin(), names.end(), std::mt19937(2));
  for (auto _ : state) {
    std::size_t found = 0;
    Time(state, [&] {
      for (const auto& name : names) {
        found += document.Find(name.first, name.second);
      }
    });
    benchmark::DoNotOptimize(found);
  }
  CountKeys(state, content);
}

template <class Document, class Char>
void SaveToMemory(benchmark::State& state, const Content& content) {
  Document document;
  {
    Source<Char> source(texts::TextOf(content, Document::kSyntax));
    document.Load(source);
  }
  std::basic_ostringstream<typename Document::OutputChar> output;
  document.Save(output);
  for (auto _ : state) {
    output.seekp(0);
    Time(state, [&] { document.Save(output); });
  }
  CountKeys(state, content);
}

template <class Document, class Char>
void SaveToFile(benchmark::State& state, const Content& content) {
  Document document;
  {
    Source<Char> source(texts::TextOf(content, Document::kSyntax));
    document.Load(source);
  }
  const PassingFile file("");
  for (auto _ : state) {
    Time(state, [&] { document.SaveFile(file.path()); });
  }
  CountKeys(state, content);
}

template <class Document, class Char>
void Destroy(benchmark::State& state, const Content& content) {
  Source<Char> source(texts::TextOf(content, Document::kSyntax));
  TidyHeap();
  for (auto _ : state) {
    source.Rewind();
    auto document = std::make_unique<Document>();
    document->Load(source);
    Time(state, [&] { document.reset(); });
  }
  CountKeys(state, content);
}

// Filling the maps from text that is cut and sorted.
template <class Char>
void FillShape(benchmark::State& state, Content content) {
  content.is_shuffled = false;
  std::vector<std::basic_string<Char>> sections;
  for (std::size_t section = 0; section < content.sections; ++section) {
    sections.push_back(
        texts::Decoded<Char>(texts::SectionName(content, section)));
  }
  std::vector<std::pair<std::basic_string<Char>, std::basic_string<Char>>> keys;
  std::vector<shape::CutKey<Char>> cut;
  keys.reserve(content.keys);
  for (const texts::Place& place : texts::PlacesOf(content)) {
    keys.emplace_back(texts::Decoded<Char>(texts::KeyName(
                          content, texts::Syntax::kBracketed, place.key)),
                      texts::Decoded<Char>(texts::Value(content, place.key)));
    cut.push_back(
        {sections[place.section], keys.back().first, keys.back().second});
  }
  TidyHeap();
  for (auto _ : state) {
    shape::File<Char> file;
    Time(state, [&] { file.Fill(cut); });
  }
  CountKeys(state, content);
}

// Texts that are long rather than many.

using MakeText = std::string (*)(std::size_t size, texts::Syntax syntax);

template <class Document, class Char>
void ReadFromMemory(benchmark::State& state, MakeText make, std::size_t size) {
  Source<Char> source(make(size, Document::kSyntax));
  TidyHeap();
  for (auto _ : state) {
    source.Rewind();
    Document document;
    Time(state, [&] { document.Load(source); });
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

template <class Document>
void ReadFromFile(benchmark::State& state, MakeText make, std::size_t size) {
  const PassingFile file(make(size, Document::kSyntax));
  TidyHeap();
  for (auto _ : state) {
    Document document;
    Time(state, [&] { document.LoadFile(file.path()); });
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

template <class Char>
std::size_t CountLines(std::basic_string_view<Char> text) {
  std::size_t lines = 0;
  for (std::size_t begin = 0; begin < text.size(); ++lines) {
    // find() is memchr or wmemchr.
    begin = std::min(text.find('\n', begin), text.size()) + 1;
  }
  return lines;
}

template <class Char>
void FindLineEnds(benchmark::State& state, MakeText make, std::size_t size) {
  const auto text = texts::Decoded<Char>(make(size, texts::Syntax::kBracketed));
  for (auto _ : state) {
    Time(state, [&] {
      benchmark::DoNotOptimize(CountLines(std::basic_string_view<Char>(text)));
    });
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void FindLineEndsOfFile(benchmark::State& state, MakeText make,
                        std::size_t size) {
  const PassingFile file(make(size, texts::Syntax::kBracketed));
  std::vector<char> block(std::size_t{1} << 16);
  for (auto _ : state) {
    Time(state, [&] {
      const int descriptor = open(file.path().c_str(), O_RDONLY | O_CLOEXEC);
      std::size_t lines = 0;
      ssize_t taken = 0;
      while ((taken = read(descriptor, block.data(), block.size())) > 0) {
        lines += CountLines(
            std::string_view(block.data(), static_cast<std::size_t>(taken)));
      }
      close(descriptor);
      benchmark::DoNotOptimize(lines);
    });
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

// The list of all benchmarks.

std::string NameOf(std::string operation, const char* competitor,
                   std::size_t size) {
  return std::move(operation) + "/" + competitor + "/" + std::to_string(size);
}

template <class Run>
void Register(const std::string& name, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), run)->UseManualTime();
}

struct Shape {
  std::string name;
  Content content;
};

// A document of 20 lines has 2 headers.
std::vector<Shape> ShapesOf(std::size_t keys, bool is_ascii) {
  const std::size_t many = std::clamp<std::size_t>(keys / 10, 2, 1000);
  return {{"sorted_one", {keys, 1, false, is_ascii}},
          {"sorted_many", {keys, many, false, is_ascii}},
          {"shuffled_one", {keys, 1, true, is_ascii}},
          {"shuffled_many", {keys, many, true, is_ascii}}};
}

constexpr std::size_t kSizes[] = {18, 1000, 10'000, 100'000, 1'000'000};

template <class Document, class Char>
void RegisterDocument(const std::string& prefix) {
  constexpr bool kIsAscii = std::is_same_v<Char, char>;
  const char* const who = Document::kName;
  for (const std::size_t keys : kSizes) {
    for (const auto& [shape, content] : ShapesOf(keys, kIsAscii)) {
      Register(NameOf(prefix + "load_stream_" + shape, who, keys),
               [content = content](benchmark::State& state) {
                 LoadFromMemory<Document, Char>(state, content);
               });
    }
    for (const std::size_t sections : {std::size_t{1}, std::size_t{1000}}) {
      if (sections > keys) {
        continue;
      }
      const Content content{keys, sections, false, kIsAscii};
      Register(NameOf(prefix + (sections == 1 ? "lookup_one" : "lookup_many"),
                      who, keys),
               [content](benchmark::State& state) {
                 LookUp<Document, Char>(state, content);
               });
    }
  }
  for (const std::size_t keys : {std::size_t{1000}, std::size_t{1'000'000}}) {
    const Content content{keys, 1, false, kIsAscii};
    Register(NameOf(prefix + "load_file_sorted_one", who, keys),
             [content](benchmark::State& state) {
               LoadFromFile<Document>(state, content);
             });
    Content shuffled = content;
    shuffled.is_shuffled = true;
    Register(NameOf(prefix + "destroy_sorted", who, keys),
             [content](benchmark::State& state) {
               Destroy<Document, Char>(state, content);
             });
    Register(NameOf(prefix + "destroy_shuffled", who, keys),
             [shuffled](benchmark::State& state) {
               Destroy<Document, Char>(state, shuffled);
             });
    if constexpr (!std::is_same_v<Document, competitors::Inih>) {
      Register(NameOf(prefix + "save_stream", who, keys),
               [content](benchmark::State& state) {
                 SaveToMemory<Document, Char>(state, content);
               });
      Register(NameOf(prefix + "save_file", who, keys),
               [content](benchmark::State& state) {
                 SaveToFile<Document, Char>(state, content);
               });
    }
  }
  Register(NameOf(prefix + "skip_stream", who, kSkippedSize),
           [](benchmark::State& state) {
             ReadFromMemory<Document, Char>(state, texts::SkippedText,
                                            kSkippedSize);
           });
  Register(NameOf(prefix + "skip_file", who, kSkippedSize),
           [](benchmark::State& state) {
             ReadFromFile<Document>(state, texts::SkippedText, kSkippedSize);
           });
  if constexpr (!std::is_same_v<Document, competitors::Inih>) {
    Register(NameOf(prefix + "long_line_stream", who, kLongLineSize),
             [](benchmark::State& state) {
               ReadFromMemory<Document, Char>(state, texts::LongLineText,
                                              kLongLineSize);
             });
    Register(NameOf(prefix + "long_line_file", who, kLongLineSize),
             [](benchmark::State& state) {
               ReadFromFile<Document>(state, texts::LongLineText,
                                      kLongLineSize);
             });
  }
}

template <class Char>
void RegisterLimits(const std::string& prefix) {
  for (const std::size_t keys : kSizes) {
    for (const auto& [shape, content] :
         ShapesOf(keys, std::is_same_v<Char, char>)) {
      Register(NameOf(prefix + "load_stream_" + shape, "limit", keys),
               [content = content](benchmark::State& state) {
                 FillShape<Char>(state, content);
               });
    }
  }
  Register(NameOf(prefix + "skip_stream", "limit", kSkippedSize),
           [](benchmark::State& state) {
             FindLineEnds<Char>(state, texts::SkippedText, kSkippedSize);
           });
  Register(NameOf(prefix + "long_line_stream", "limit", kLongLineSize),
           [](benchmark::State& state) {
             FindLineEnds<Char>(state, texts::LongLineText, kLongLineSize);
           });
}

void RegisterAll() {
  RegisterDocument<competitors::Ours<char>, char>("ini_");
  RegisterDocument<competitors::Plain<char>, char>("ini_");
  RegisterDocument<competitors::Inih, char>("ini_");
  RegisterDocument<competitors::SimpleIni<char>, char>("ini_");
  RegisterDocument<competitors::PropertyTree<char>, char>("ini_");
  RegisterDocument<competitors::GKeyFile, char>("ini_");
  RegisterLimits<char>("ini_");
  Register(NameOf("ini_skip_file", "limit", kSkippedSize),
           [](benchmark::State& state) {
             FindLineEndsOfFile(state, texts::SkippedText, kSkippedSize);
           });
  Register(NameOf("ini_long_line_file", "limit", kLongLineSize),
           [](benchmark::State& state) {
             FindLineEndsOfFile(state, texts::LongLineText, kLongLineSize);
           });

  RegisterDocument<competitors::Ours<wchar_t>, wchar_t>("ini_wide_");
  RegisterDocument<competitors::Plain<wchar_t>, wchar_t>("ini_wide_");
  RegisterDocument<competitors::SimpleIni<wchar_t>, wchar_t>("ini_wide_");
  RegisterDocument<competitors::PropertyTree<wchar_t>, wchar_t>("ini_wide_");
  RegisterLimits<wchar_t>("ini_wide_");
}

}  // namespace

int main(int argc, char** argv) {
  // Sets the C locale too.
  std::locale::global(std::locale("C.UTF-8"));
  RegisterAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
}
