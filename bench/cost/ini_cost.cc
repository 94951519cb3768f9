// What it costs to load, edit, save and destroy INI documents, narrow and wide.

#include <fcntl.h>
#include <korvan/korvan.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <memory>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "cost/measure.h"

namespace {

template <class File>
using StringOf = typename File::Sections::key_type;
template <class File>
using CharOf = typename StringOf<File>::value_type;

template <class File>
StringOf<File> FromLatin1(const std::string& text) {
  StringOf<File> converted;
  for (const char character : text) {
    converted +=
        static_cast<CharOf<File>>(static_cast<unsigned char>(character));
  }
  return converted;
}

template <class File>
struct Key {
  StringOf<File> section, name, value;
  StringOf<File> other_name;  // which no key has
};

// A text, and the keys that it holds in its order.
template <class File>
struct Text {
  std::string latin1;
  std::vector<Key<File>> keys;

  void AddHeader(const std::string& section) {
    latin1 += "[" + section + "]\n";
  }

  // The reader takes only names that begin with a bracket.
  void AddKey(const std::string& section, const std::string& name,
              const std::string& value) {
    latin1 += "[" + name + "=" + value + "\n";
    keys.push_back({FromLatin1<File>(section), FromLatin1<File>("[" + name),
                    FromLatin1<File>(value),
                    FromLatin1<File>("[Other" + name)});
  }
};

// Numbers of one width have the order of their digits.
std::string Numbered(const std::string& kind, std::size_t number) {
  return kind + std::to_string(10000 + number);
}

enum class Order { kSorted, kShuffled };

std::vector<std::size_t> Numbers(std::size_t from, std::size_t to, Order order,
                                 std::mt19937& random) {
  std::vector<std::size_t> numbers(to - from);
  std::iota(numbers.begin(), numbers.end(), from);
  if (order == Order::kShuffled) {
    std::shuffle(numbers.begin(), numbers.end(), random);
  }
  return numbers;
}

template <class File>
Text<File> KeysText(std::size_t keys, std::size_t sections, Order order) {
  const std::size_t keys_each = keys / sections;
  std::mt19937 random(1);
  Text<File> text;
  for (const std::size_t section : Numbers(0, sections, order, random)) {
    const std::string section_name = Numbered("Section", section);
    text.AddHeader(section_name);
    for (const std::size_t key : Numbers(
             section * keys_each, (section + 1) * keys_each, order, random)) {
      text.AddKey(section_name, Numbered("Key", key), Numbered("value ", key));
    }
  }
  return text;
}

// Comments, and other lines that the reader skips.
template <class File>
Text<File> SkippedText(std::size_t lines) {
  Text<File> text;
  for (std::size_t line = 0; line < lines; ++line) {
    text.latin1 += Numbered(line % 2 == 0 ? "# setting" : "setting", line) +
                   " = " + std::string(line % 60, 'v') + "\n";
  }
  return text;
}

template <class File>
Text<File> LongValueText(std::size_t size) {
  Text<File> text;
  text.AddHeader("Section");
  text.AddKey("Section", "Key", std::string(size, 'v'));
  return text;
}

// Long names in order, then many short runs of keys in none: of as few keys as
// are sorted, and of one less. No run must cost a look at all the names that
// are there.
template <class File>
Text<File> ShortRunsText() {
  Text<File> text;
  text.AddHeader("Section");
  for (std::size_t key = 0; key < 100; ++key) {
    text.AddKey("Section", Numbered("z" + std::string(500, 'z'), key), "v");
  }
  for (std::size_t run = 0; run < 50; ++run) {
    text.AddHeader("Section");
    for (std::size_t key = 0; key < 15 + run % 2; ++key) {
      text.AddKey("Section", Numbered("k", key * 7 % 17), "v");
    }
  }
  return text;
}

// Headers of few sections, in no order, again and again.
template <class File>
Text<File> RepeatedHeadersText() {
  Text<File> text;
  for (std::size_t header = 0; header < 500; ++header) {
    text.AddHeader(Numbered("Section", header * 7 % 10));
  }
  return text;
}

// Adds a header and keys in no order; `name_of` gives the name of each number
// below `count`, with which 7 must have no divisor in common.
template <class File, class NameOf>
void AddKeysInNoOrder(Text<File>& text, const std::string& section,
                      std::size_t count, NameOf name_of) {
  text.AddHeader(section);
  for (std::size_t i = 0; i < count; ++i) {
    text.AddKey(section, name_of(i * 7 % count), "v");
  }
}

// Keys in order, then some of them again in no order, so far apart that the
// next one is just found by steps, or just not.
template <class File>
Text<File> SparseRunsText() {
  constexpr std::size_t kNames = 20;
  Text<File> text;
  text.AddHeader("Section");
  for (std::size_t key = 0; key < 8 * kNames; ++key) {
    text.AddKey("Section", Numbered("Key", key), "v");
  }
  for (std::size_t run = 0; run < 10; ++run) {
    AddKeysInNoOrder(text, "Section", kNames, [run](std::size_t key) {
      return Numbered("Key", (7 + run % 2) * key);
    });
  }
  return text;
}

// Keys in no order, whose names differ in the last of the characters that
// decide most comparisons, and behind it: nine of digits, eight of any Latin
// ones. Some are the beginnings of others.
template <class File>
Text<File> LateDifferencesText() {
  Text<File> text;
  AddKeysInNoOrder(text, "Digits", 100, [](std::size_t key) {
    return std::to_string(key % 2) + "0000000" +
           std::to_string(100 + key / 4).substr(1) +
           std::string(key / 2 % 2, '0');
  });
  AddKeysInNoOrder(text, "Latin", 100, [](std::size_t key) {
    return std::string(key % 2 == 0 ? "\xC0" : "\xC1") + "000000" +
           static_cast<char>(0xFF - key);
  });
  return text;
}

// The files stand in the current folder, so that their names have the same
// length wherever that is.
constexpr const char* kInputFile = "input.ini";
constexpr const char* kOutputFile = "output.ini";

enum class Document { kEmpty, kLoaded };

// What an operation works on.
template <class File>
struct Subject {
  Subject(const Text<File>& text, Document document)
      : keys(text.keys),
        latin1(text.latin1),
        input(FromLatin1<File>(text.latin1)) {
    std::ofstream(kInputFile) << text.latin1;
    if (document == Document::kLoaded) {
      file->Load(input_file);
    }
  }

  std::size_t KeyCount() const {
    std::size_t count = 0;
    if (file != nullptr) {
      for (const auto& [name, section] : file->GetSections()) {
        count += section->GetKeys().size();
      }
    }
    return count;
  }

  const std::vector<Key<File>>& keys;
  const std::string& latin1;
  std::unique_ptr<File> file = std::make_unique<File>();
  std::basic_istringstream<CharOf<File>> input;
  std::basic_ostringstream<CharOf<File>> output;
  StringOf<File> input_file = FromLatin1<File>(kInputFile);
  StringOf<File> output_file = FromLatin1<File>(kOutputFile);
};

template <class File>
struct Operations {
  using S = Subject<File>;

  static bool LoadStream(S& s) {
    s.file->Load(s.input);
    return s.input.eof();
  }

  static bool MergeStream(S& s) {
    s.file->Load(s.input, true);
    return s.input.eof();
  }

  static bool LoadFile(S& s) { return s.file->Load(s.input_file); }

  // The whole text lies in the pipe before it is loaded.
  static bool LoadPipe(S& s) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
      return false;
    }
    const bool is_written =
        fcntl(ends[1], F_SETPIPE_SZ, static_cast<int>(s.latin1.size())) >= 0 &&
        write(ends[1], s.latin1.data(), s.latin1.size()) ==
            static_cast<ssize_t>(s.latin1.size());
    close(ends[1]);
    const bool is_loaded =
        is_written &&
        s.file->Load(FromLatin1<File>("/dev/fd/" + std::to_string(ends[0])));
    close(ends[0]);
    return is_loaded;
  }

  static bool GetValues(S& s) {
    for (const Key<File>& key : s.keys) {
      if (s.file->GetKeyValue(key.section, key.name).empty()) {
        return false;
      }
    }
    return true;
  }

  static bool SetValues(S& s) {
    for (const Key<File>& key : s.keys) {
      s.file->SetKeyValue(key.section, key.name, key.value);
    }
    return true;
  }

  static bool SetValuesInSection(S& s) {
    auto* const section = s.file->GetSections().begin()->second;
    for (const Key<File>& key : s.keys) {
      section->SetKeyValue(key.name, key.value);
    }
    return true;
  }

  static bool AddKeys(S& s) {
    for (const Key<File>& key : s.keys) {
      s.file->SetKeyValue(key.section, key.other_name, key.value);
    }
    return true;
  }

  static bool RenameKeys(S& s) {
    for (const Key<File>& key : s.keys) {
      if (!s.file->RenameKey(key.section, key.name, key.other_name)) {
        return false;
      }
    }
    return true;
  }

  static bool RemoveKeys(S& s) {
    for (const Key<File>& key : s.keys) {
      s.file->GetSection(key.section)->RemoveKey(key.name);
    }
    return true;
  }

  static bool SaveStream(S& s) {
    s.file->Save(s.output);
    return s.output.good();
  }

  static bool SaveFile(S& s) { return s.file->Save(s.output_file); }

  static bool Destroy(S& s) {
    s.file.reset();
    return true;
  }
};

template <class File>
void MeasureFile(const std::string& width) {
  const auto few = KeysText<File>(16, 1, Order::kSorted);
  const auto sorted = KeysText<File>(1000, 50, Order::kSorted);
  const auto shuffled = KeysText<File>(1000, 50, Order::kShuffled);
  const auto one_section = KeysText<File>(5000, 1, Order::kShuffled);
  const auto short_runs = ShortRunsText<File>();
  const auto headers = RepeatedHeadersText<File>();
  const auto sparse_runs = SparseRunsText<File>();
  const auto late = LateDifferencesText<File>();
  const auto skipped = SkippedText<File>(1000);
  const auto long_value = LongValueText<File>(100000);
  constexpr auto kEmpty = Document::kEmpty;
  constexpr auto kLoaded = Document::kLoaded;
  using Do = Operations<File>;

  const struct {
    const char* name;
    const Text<File>& text;
    Document document;
    bool (*operation)(Subject<File>&);
    std::size_t keys_after;
  } kRows[] = {
      // clang-format off
      // name                              text         document what is measured        keys after
      {"load_stream/16_sorted",            few,         kEmpty,  Do::LoadStream,         16},
      {"load_stream/1000_sorted",          sorted,      kEmpty,  Do::LoadStream,         1000},
      {"load_stream/1000_shuffled",        shuffled,    kEmpty,  Do::LoadStream,         1000},
      {"load_stream/5000_in_one_section",  one_section, kEmpty,  Do::LoadStream,         5000},
      {"load_stream/short_runs",           short_runs,  kEmpty,  Do::LoadStream,         116},
      {"load_stream/repeated_headers",     headers,     kEmpty,  Do::LoadStream,         0},
      {"load_stream/sparse_runs",          sparse_runs, kEmpty,  Do::LoadStream,         160},
      {"load_stream/late_differences",     late,        kEmpty,  Do::LoadStream,         200},
      {"load_stream/skipped_lines",        skipped,     kEmpty,  Do::LoadStream,         0},
      {"load_file/16_sorted",              few,         kEmpty,  Do::LoadFile,           16},
      {"load_file/1000_sorted",            sorted,      kEmpty,  Do::LoadFile,           1000},
      {"load_file/1000_shuffled",          shuffled,    kEmpty,  Do::LoadFile,           1000},
      {"load_file/skipped_lines",          skipped,     kEmpty,  Do::LoadFile,           0},
      {"load_file/long_value",             long_value,  kEmpty,  Do::LoadFile,           1},
      {"load_pipe/5000_in_one_section",    one_section, kEmpty,  Do::LoadPipe,           5000},
      {"merge_stream/5000_in_one_section", one_section, kLoaded, Do::MergeStream,        5000},
      {"get_values",                       shuffled,    kLoaded, Do::GetValues,          1000},
      {"set_values",                       shuffled,    kLoaded, Do::SetValues,          1000},
      {"set_values_in_section",            one_section, kLoaded, Do::SetValuesInSection, 5000},
      {"add_keys",                         shuffled,    kLoaded, Do::AddKeys,            2000},
      {"rename_keys",                      shuffled,    kLoaded, Do::RenameKeys,         1000},
      {"remove_keys",                      shuffled,    kLoaded, Do::RemoveKeys,         0},
      {"save_stream",                      shuffled,    kLoaded, Do::SaveStream,         1000},
      {"save_file",                        shuffled,    kLoaded, Do::SaveFile,           1000},
      {"destroy",                          shuffled,    kLoaded, Do::Destroy,            0},
      // clang-format on
  };
  for (const auto& row : kRows) {
    const std::string name = width + "/" + row.name;
    Subject<File> warm_up(row.text, row.document);
    row.operation(warm_up);
    Subject<File> subject(row.text, row.document);
    Count(name, [&] { return row.operation(subject); });
    Require(subject.KeyCount() == row.keys_after, name);
  }
}

}  // namespace

int main() {
  MeasureFile<korvan::CIniFileA>("ini_narrow");
  MeasureFile<korvan::CIniFileW>("ini_wide");
}
