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
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
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

// The time that the processor has spent on this thread, in seconds: who else
// is at work on the machine does not count.
double ProcessorTime() {
  timespec time = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) +
         static_cast<double>(time.tv_nsec) * 1e-9;
}

// What a loop must not count, such as destroying what it made, is left out by
// taking the time by hand.
template <class Work>
void Time(benchmark::State& state, Work work) {
  const double start = ProcessorTime();
  work();
  state.SetIterationTime(ProcessorTime() - start);
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

// The sizes at which each shape of a document is loaded. Wide documents are
// loaded less often: the plain way takes ten seconds for the largest.
struct Shape {
  const char* name;
  bool is_in_many_sections;
  bool is_shuffled;
  std::vector<std::size_t> sizes;
  std::vector<std::size_t> wide_sizes;
};

// A document of 20 lines has 18 keys and 2 headers.
const std::vector<Shape>& Shapes() {
  static const std::vector<Shape> shapes = {
      {"sorted_one",
       false,
       false,
       {1000, 10'000, 100'000, 1'000'000},
       {1000, 10'000, 100'000, 1'000'000}},
      {"sorted_many",
       true,
       false,
       {18, 1000, 10'000, 100'000, 1'000'000},
       {18, 1'000'000}},
      {"shuffled_one",
       false,
       true,
       {1000, 10'000, 100'000, 1'000'000},
       {1'000'000}},
      {"shuffled_many", true, true, {18, 1000, 1'000'000}, {1'000'000}},
  };
  return shapes;
}

template <class Char>
constexpr bool kIsNarrow = std::is_same_v<Char, char>;

Content ContentOf(const Shape& shape, std::size_t keys, bool is_ascii) {
  const std::size_t many = std::clamp<std::size_t>(keys / 10, 2, 1000);
  return {keys, shape.is_in_many_sections ? many : 1, shape.is_shuffled,
          is_ascii};
}

template <class Char, class RegisterOne>
void ForEachLoad(const std::string& prefix, RegisterOne register_one) {
  for (const Shape& shape : Shapes()) {
    for (const std::size_t keys :
         kIsNarrow<Char> ? shape.sizes : shape.wide_sizes) {
      register_one(prefix + "load_stream_" + shape.name,
                   ContentOf(shape, keys, kIsNarrow<Char>));
    }
  }
}

// Long texts have as many bytes in memory, whatever a character takes.
template <class Char>
constexpr std::size_t kSkippedChars = kSkippedSize / sizeof(Char);
template <class Char>
constexpr std::size_t kLongLineChars = kLongLineSize / sizeof(Char);

template <class Document, class Char>
void RegisterDocument(const std::string& prefix) {
  const auto add = [&](const char* operation, const Content& content,
                       void (*run)(benchmark::State&, const Content&)) {
    Register(NameOf(prefix + operation, Document::kName, content.keys),
             [=](benchmark::State& state) { run(state, content); });
  };
  ForEachLoad<Char>(prefix,
                    [](const std::string& operation, const Content& content) {
                      Register(NameOf(operation, Document::kName, content.keys),
                               [=](benchmark::State& state) {
                                 LoadFromMemory<Document, Char>(state, content);
                               });
                    });
  for (const std::size_t keys : {1000, 10'000, 100'000, 1'000'000}) {
    const Content content{keys, 1, false, kIsNarrow<Char>};
    if (kIsNarrow<Char> || keys == 1000 || keys == 1'000'000) {
      add("lookup_one", content, LookUp<Document, Char>);
    }
    if (keys == 1000 || keys == 1'000'000) {
      add("load_file_sorted_one", content, LoadFromFile<Document>);
      if constexpr (!std::is_same_v<Document, competitors::Inih>) {
        add("save_stream", content, SaveToMemory<Document, Char>);
        add("save_file", content, SaveToFile<Document, Char>);
      }
    }
  }
  constexpr std::size_t kMost = 1'000'000;
  add("destroy_sorted", {kMost, 1, false, kIsNarrow<Char>},
      Destroy<Document, Char>);
  if constexpr (kIsNarrow<Char>) {
    add("destroy_shuffled", {kMost, 1, true, true}, Destroy<Document, Char>);
    add("lookup_many", {kMost, 1000, false, true}, LookUp<Document, Char>);
  }

  const auto add_text =
      [&](const char* operation, MakeText make, std::size_t size,
          void (*run)(benchmark::State&, MakeText, std::size_t)) {
        Register(NameOf(prefix + operation, Document::kName, size),
                 [=](benchmark::State& state) { run(state, make, size); });
      };
  add_text("skip_stream", texts::SkippedText, kSkippedChars<Char>,
           ReadFromMemory<Document, Char>);
  add_text("skip_file", texts::SkippedText, kSkippedChars<Char>,
           ReadFromFile<Document>);
  if constexpr (!std::is_same_v<Document, competitors::Inih>) {
    add_text("long_line_stream", texts::LongLineText, kLongLineChars<Char>,
             ReadFromMemory<Document, Char>);
    add_text("long_line_file", texts::LongLineText, kLongLineChars<Char>,
             ReadFromFile<Document>);
  }
}

template <class Char>
void RegisterLimits(const std::string& prefix) {
  ForEachLoad<Char>(prefix, [](const std::string& operation,
                               const Content& content) {
    Register(NameOf(operation, "limit", content.keys),
             [=](benchmark::State& state) { FillShape<Char>(state, content); });
  });
  Register(NameOf(prefix + "skip_stream", "limit", kSkippedChars<Char>),
           [](benchmark::State& state) {
             FindLineEnds<Char>(state, texts::SkippedText, kSkippedChars<Char>);
           });
  Register(NameOf(prefix + "long_line_stream", "limit", kLongLineChars<Char>),
           [](benchmark::State& state) {
             FindLineEnds<Char>(state, texts::LongLineText,
                                kLongLineChars<Char>);
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
