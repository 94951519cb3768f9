// INI documents, narrow and wide, beside other libraries that build a document
// one can search, beside plain maps, and beside the least that any code can do.
//
// A benchmark is named "row/competitor"; bench/rows.py lists the rows. Where an
// iteration does an operation many times, the counter "operations" tells how
// often, and scripts/bench divides by it.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <locale>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "ini/competitors.h"
#include "ini/floor.h"
#include "ini/source.h"
#include "ini/texts.h"

namespace {

using texts::Content;

// The time that the processor has spent on this thread, in seconds: other work
// on the machine does not count.
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

void CountOperations(benchmark::State& state, std::size_t operations) {
  state.counters["operations"] = static_cast<double>(operations);
}

// The benchmarks before have left the heap in pieces.
void TidyHeap() { malloc_trim(0); }

// How often an iteration repeats what it does with a document, so that reading
// the clock does not count.
std::size_t RoundsFor(const Content& content) {
  return std::max<std::size_t>(1, 256 / content.keys);
}

template <class Document>
Source<typename Document::Char> SourceOf(Content content) {
  // The floor is no faster for a better order: it always has the best.
  if (std::is_same_v<Document, Floor<typename Document::Char>>) {
    content.is_shuffled = false;
  }
  return Source<typename Document::Char>(content, Document::kSyntax);
}

// The floor is told where its keys are before it does something with one.
template <class Document>
void Index(Document& document) {
  if constexpr (requires { document.Index(); }) {
    document.Index();
  }
}

// As many documents of one content as an iteration works on, and keys of
// theirs, by default enough to check what was loaded.
template <class Document>
struct Documents {
  explicit Documents(const Content& content, std::size_t most_entries = 1000)
      : source(SourceOf<Document>(content)),
        entries(ShuffledEntries<Document>(content, most_entries)),
        documents(RoundsFor(content)) {}

  void MakeEmpty() {
    for (std::unique_ptr<Document>& document : documents) {
      document = std::make_unique<Document>();
    }
  }
  void Load() {
    MakeEmpty();
    for (std::unique_ptr<Document>& document : documents) {
      source.Rewind();
      document->Load(source);
    }
  }

  // The same, for operations on one key.
  void LoadAndIndex() {
    Load();
    for (std::unique_ptr<Document>& document : documents) {
      Index(*document);
    }
  }

  Source<typename Document::Char> source;
  std::vector<Entry<typename Document::Text>> entries;
  std::vector<std::unique_ptr<Document>> documents;
};

template <class Document>
bool HasAll(Document& document,
            const std::vector<Entry<typename Document::Text>>& entries) {
  Index(document);
  return std::all_of(entries.begin(), entries.end(), [&](const auto& entry) {
    return document.Find(entry) == entry.value.size();
  });
}

// Stops a benchmark whose operation did not do what it should: a failure's time
// is worth nothing.
void Require(benchmark::State& state, bool succeeded) {
  if (!succeeded) {
    state.SkipWithError("the operation failed");
  }
}

// Loading.

template <class Document>
void Load(benchmark::State& state, const Content& content) {
  Documents<Document> all(content);
  TidyHeap();
  for (auto _ : state) {
    all.MakeEmpty();
    Time(state, [&] {
      for (const auto& document : all.documents) {
        all.source.Rewind();
        document->Load(all.source);
      }
    });
  }
  Require(state, HasAll(*all.documents.front(), all.entries));
  CountOperations(state, all.documents.size());
}

template <class Document>
void LoadFile(benchmark::State& state, const Content& content) {
  Documents<Document> all(content);
  const TemporaryFile file(all.source.bytes());
  TidyHeap();
  for (auto _ : state) {
    all.MakeEmpty();
    Time(state, [&] {
      for (const auto& document : all.documents) {
        document->LoadFile(all.source, file.path());
      }
    });
  }
  Require(state, HasAll(*all.documents.front(), all.entries));
  CountOperations(state, all.documents.size());
}

// Reading and saving, which leave a document as it is, and overwriting, which
// may be done again and again: all on one document.

// Pointers to entries in random order: to each entry equally often, and more
// than a branch predictor can learn.
template <class AnyEntry>
std::vector<const AnyEntry*> RandomOrder(const std::vector<AnyEntry>& entries) {
  std::vector<const AnyEntry*> order;
  do {
    for (const AnyEntry& entry : entries) {
      order.push_back(&entry);
    }
  } while (order.size() < 8000);
  std::shuffle(order.begin(), order.end(), std::mt19937(3));
  return order;
}

template <class Document>
void Find(benchmark::State& state, const Content& content) {
  TidyHeap();
  Documents<Document> all(content, content.keys);
  all.LoadAndIndex();
  const Document& document = *all.documents.front();
  const auto order = RandomOrder(all.entries);
  std::size_t size = 0;
  for (auto _ : state) {
    size = 0;
    Time(state, [&] {
      for (const auto* entry : order) {
        size += document.Find(*entry);
      }
    });
  }
  Require(state, size == order.size() * all.entries.front().value.size());
  CountOperations(state, order.size());
}

template <class Document>
void Overwrite(benchmark::State& state, const Content& content) {
  TidyHeap();
  Documents<Document> all(content, content.keys);
  all.LoadAndIndex();
  Document& document = *all.documents.front();
  const auto order = RandomOrder(all.entries);
  const std::size_t size = document.List();
  for (auto _ : state) {
    Time(state, [&] {
      for (const auto* entry : order) {
        document.Overwrite(*entry);
      }
    });
  }
  Require(state, document.List() == size + content.keys);
  CountOperations(state, order.size());
}

template <class Document>
void List(benchmark::State& state, const Content& content) {
  Documents<Document> all(content);
  all.Load();
  const Document& document = *all.documents.front();
  std::size_t size = 0;
  for (auto _ : state) {
    Time(state, [&] {
      for (std::size_t round = 0; round < RoundsFor(content); ++round) {
        size = document.List();
        benchmark::DoNotOptimize(size);
      }
    });
  }
  const auto& entry = all.entries.front();
  Require(state,
          size == content.keys * (entry.name.size() + entry.value.size()));
  CountOperations(state, RoundsFor(content));
}

template <class Document>
void Save(benchmark::State& state, const Content& content) {
  Documents<Document> all(content);
  all.Load();
  Document& document = *all.documents.front();
  std::basic_ostringstream<typename Document::OutputChar> output;
  // The buffer grows now, and not while the time is taken.
  document.Save(output);
  for (auto _ : state) {
    Time(state, [&] {
      for (std::size_t round = 0; round < RoundsFor(content); ++round) {
        output.seekp(0);
        document.Save(output);
      }
    });
  }
  Require(state, output.good());
  CountOperations(state, RoundsFor(content));
}

template <class Document>
void SaveFile(benchmark::State& state, const Content& content) {
  Documents<Document> all(content);
  all.Load();
  Document& document = *all.documents.front();
  const TemporaryFile file("");
  for (auto _ : state) {
    Time(state, [&] { document.SaveFile(file.path()); });
  }
  Document saved;
  saved.LoadFile(all.source, file.path());
  Require(state, HasAll(saved, all.entries));
}

// Edits that change how many keys there are, or their names: each iteration
// edits all keys of fresh documents.
template <class Document, class Edit>
void EditAll(benchmark::State& state, const Content& content, Edit edit,
             std::size_t keys_after, std::size_t longer_by) {
  Documents<Document> all(content, content.keys);
  TidyHeap();
  for (auto _ : state) {
    all.LoadAndIndex();
    Time(state, [&] {
      for (const auto& document : all.documents) {
        for (const auto& entry : all.entries) {
          edit(*document, entry);
        }
      }
    });
  }
  const auto& entry = all.entries.front();
  Require(state, all.documents.front()->List() ==
                     keys_after * (entry.name.size() + entry.value.size()) +
                         longer_by);
  CountOperations(state, all.documents.size() * content.keys);
}

template <class Document>
void Add(benchmark::State& state, const Content& content) {
  EditAll<Document>(
      state, content,
      [](Document& document, const auto& entry) { document.Add(entry); },
      2 * content.keys, content.keys);
}

template <class Document>
void Remove(benchmark::State& state, const Content& content) {
  EditAll<Document>(
      state, content,
      [](Document& document, const auto& entry) { document.Remove(entry); }, 0,
      0);
}

template <class Document>
void Rename(benchmark::State& state, const Content& content) {
  EditAll<Document>(
      state, content,
      [](Document& document, const auto& entry) { document.Rename(entry); },
      content.keys, content.keys);
}

template <class Document>
void Destroy(benchmark::State& state, const Content& content) {
  Documents<Document> all(content);
  TidyHeap();
  for (auto _ : state) {
    all.Load();
    Time(state, [&] {
      for (auto& document : all.documents) {
        document.reset();
      }
    });
  }
  CountOperations(state, all.documents.size());
}

// Texts that are long rather than many: of as many bytes in memory, whatever a
// character takes.

template <class Char>
constexpr std::size_t kSkippedChars = 100'000'000 / sizeof(Char);
template <class Char>
constexpr std::size_t kLongLineChars = (std::size_t{64} << 20) / sizeof(Char);

using MakeText = std::string (*)(std::size_t size, texts::Syntax syntax);

template <class Document>
void LoadLong(benchmark::State& state, MakeText make, std::size_t size) {
  Source<typename Document::Char> source(make(size, Document::kSyntax));
  TidyHeap();
  for (auto _ : state) {
    source.Rewind();
    Document document;
    Time(state, [&] { document.Load(source); });
  }
}

template <class Document>
void LoadLongFile(benchmark::State& state, MakeText make, std::size_t size) {
  Source<typename Document::Char> source(make(size, Document::kSyntax));
  const TemporaryFile file(source.bytes());
  TidyHeap();
  for (auto _ : state) {
    Document document;
    Time(state, [&] { document.LoadFile(source, file.path()); });
  }
}

// Brings all of a text into the processor, a word of each cache line.
template <class Char>
void ReadText(benchmark::State& state) {
  constexpr std::size_t kCacheLine = 64 / sizeof(Char);
  const Source<Char> source(
      texts::SkippedText(kSkippedChars<Char>, texts::Syntax::kBracketed));
  for (auto _ : state) {
    Time(state, [&] {
      const auto text = source.text();
      unsigned int sum = 0;
      for (std::size_t at = 0; at < text.size(); at += kCacheLine) {
        sum += static_cast<unsigned int>(text[at]);
      }
      benchmark::DoNotOptimize(sum);
    });
  }
}

template <class Char>
void ReadSkippedFile(benchmark::State& state) {
  const std::string text =
      texts::SkippedText(kSkippedChars<Char>, texts::Syntax::kBracketed);
  const TemporaryFile file(text);
  for (auto _ : state) {
    Time(state,
         [&] { ReadInBlocks(file.path(), text.size(), [](std::size_t) {}); });
  }
}

// Copies a value of which all is known but its text.
template <class Char>
void CopyValue(benchmark::State& state) {
  const std::basic_string<Char> text(kLongLineChars<Char>, 'v');
  TidyHeap();
  for (auto _ : state) {
    std::unique_ptr<std::basic_string<Char>> value;
    Time(state,
         [&] { value = std::make_unique<std::basic_string<Char>>(text); });
  }
}

// The same from a file: each block is copied while it is in the caches.
template <class Char>
void ReadAndCopyValue(benchmark::State& state) {
  constexpr std::size_t kSize = kLongLineChars<Char>;
  const TemporaryFile file(std::string(kSize, 'v'));
  const std::basic_string<Char> block(kBlock, 'v');
  TidyHeap();
  for (auto _ : state) {
    std::basic_string<Char> value;
    Time(state, [&] {
      value.reserve(kSize);
      ReadInBlocks(file.path(), kSize,
                   [&](std::size_t count) { value.append(block, 0, count); });
    });
  }
}

// The list of all benchmarks.

// Large documents take seconds to make, and their figures differ little.
enum class Size { kSmall, kLarge };

template <class Run>
void Register(const std::string& row, const std::string& competitor, Size size,
              Run run) {
  auto* const registered =
      benchmark::RegisterBenchmark((row + "/" + competitor).c_str(), run);
  registered->UseManualTime();
  if (size == Size::kLarge) {
    registered->Repetitions(3);
  }
}

template <class Char>
std::string RowName(const std::string& row) {
  return (std::is_same_v<Char, char> ? "ini_narrow_" : "ini_wide_") + row;
}

// "1000_in_50_shuffled": keys, sections where there is more than one, order.
std::string NameOf(const Content& content) {
  std::string name = std::to_string(content.keys);
  if (content.sections > 1) {
    name += "_in_" + std::to_string(content.sections);
  }
  return name + (content.is_shuffled ? "_shuffled" : "");
}

template <class Document>
void AddRow(const std::string& operation, Content content,
            void (*run)(benchmark::State&, const Content&)) {
  using Char = typename Document::Char;
  content.is_ascii = std::is_same_v<Char, char>;
  std::string competitor = Document::kName;
  // These walk the maps, which nobody can leave out: how fast depends on where
  // the objects happen to lie.
  if (competitor == "floor" &&
      (operation == "list" || operation == "save" || operation == "destroy")) {
    competitor = "yardstick";
  }
  const Size size = content.keys >= 100'000 ? Size::kLarge : Size::kSmall;
  Register(RowName<Char>(operation + "_" + NameOf(content)), competitor, size,
           [=](benchmark::State& state) { run(state, content); });
}

template <competitors::Competitor Document>
void AddRows() {
  const auto shuffled = [](Content content) {
    content.is_shuffled = true;
    return content;
  };
  constexpr Content kFew = {16, 1, false, true};
  constexpr Content kMany = {1000, 50, false, true};
  for (const Content& content : {kFew, kMany}) {
    AddRow<Document>("load", content, Load<Document>);
    AddRow<Document>("load_file", content, LoadFile<Document>);
    AddRow<Document>("find", content, Find<Document>);
    AddRow<Document>("destroy", content, Destroy<Document>);
    if constexpr (competitors::CanSave<Document>) {
      AddRow<Document>("save", content, Save<Document>);
      AddRow<Document>("save_file", content, SaveFile<Document>);
    }
    if constexpr (competitors::CanEdit<Document>) {
      AddRow<Document>("overwrite", content, Overwrite<Document>);
      AddRow<Document>("add", content, Add<Document>);
      AddRow<Document>("remove", content, Remove<Document>);
      AddRow<Document>("list", content, List<Document>);
    }
    if constexpr (competitors::CanRename<Document>) {
      AddRow<Document>("rename", content, Rename<Document>);
    }
  }
  AddRow<Document>("load_file", shuffled(kMany), LoadFile<Document>);

  for (const std::size_t keys : {1000u, 10'000u, 100'000u, 1'000'000u}) {
    const Content content = {keys, 1, false, true};
    AddRow<Document>("load", content, Load<Document>);
    AddRow<Document>("load", shuffled(content), Load<Document>);
    AddRow<Document>("find", content, Find<Document>);
  }
  constexpr Content kMost = {1'000'000, 1, false, true};
  constexpr Content kMostInMany = {1'000'000, 1000, false, true};
  AddRow<Document>("load", kMostInMany, Load<Document>);
  AddRow<Document>("load", shuffled(kMostInMany), Load<Document>);
  AddRow<Document>("load_file", kMost, LoadFile<Document>);
  AddRow<Document>("destroy", kMost, Destroy<Document>);
  AddRow<Document>("destroy", shuffled(kMost), Destroy<Document>);
  if constexpr (competitors::CanSave<Document>) {
    AddRow<Document>("save", kMost, Save<Document>);
    AddRow<Document>("save_file", kMost, SaveFile<Document>);
  }
}

template <competitors::Competitor Document>
void AddLongRows() {
  using Char = typename Document::Char;
  const auto add = [](const char* row, MakeText make, std::size_t size,
                      void (*run)(benchmark::State&, MakeText, std::size_t)) {
    Register(RowName<Char>(row), Document::kName, Size::kLarge,
             [=](benchmark::State& state) { run(state, make, size); });
  };
  add("load_skipped_100MB", texts::SkippedText, kSkippedChars<Char>,
      LoadLong<Document>);
  add("load_file_skipped_100MB", texts::SkippedText, kSkippedChars<Char>,
      LoadLongFile<Document>);
  // inih cuts the line.
  if constexpr (!std::is_same_v<Document, competitors::Inih>) {
    add("load_line_64MB", texts::LongLineText, kLongLineChars<Char>,
        LoadLong<Document>);
    add("load_file_line_64MB", texts::LongLineText, kLongLineChars<Char>,
        LoadLongFile<Document>);
  }
}

template <class Char>
void AddLongFloors() {
  const auto add = [](const char* row, const char* competitor,
                      void (*run)(benchmark::State&)) {
    Register(RowName<Char>(row), competitor, Size::kLarge, run);
  };
  add("load_skipped_100MB", "floor", ReadText<Char>);
  add("load_line_64MB", "floor", CopyValue<Char>);
  // Mapping the file may take less, and so may other blocks.
  add("load_file_skipped_100MB", "yardstick", ReadSkippedFile<Char>);
  add("load_file_line_64MB", "yardstick", ReadAndCopyValue<Char>);
}

template <competitors::Competitor... Kinds>
void AddAll() {
  (AddRows<Kinds>(), ...);
  (AddLongRows<Kinds>(), ...);
}

}  // namespace

int main(int argc, char** argv) {
  // Sets the C locale too.
  std::locale::global(std::locale("C.UTF-8"));
  AddAll<competitors::Ours<char>, competitors::Plain<char>,
         competitors::GKeyFile, competitors::SimpleIni<char>,
         competitors::PropertyTree<char>, competitors::Inih>();
  AddRows<Floor<char>>();
  AddLongFloors<char>();
  AddAll<competitors::Ours<wchar_t>, competitors::Plain<wchar_t>,
         competitors::SimpleIni<wchar_t>, competitors::PropertyTree<wchar_t>>();
  AddRows<Floor<wchar_t>>();
  AddLongFloors<wchar_t>();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
}
