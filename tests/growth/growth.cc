// growth PART SIZE...
// Runs the operations whose input may be of any size on inputs of these sizes
// in bytes, under callgrind; growth.py compares what they took. The inputs are
// the worst that are known. The program ends in failure where an operation asks
// the heap for a block of more than four times its input and 64 KiB.

#include <korvan/korvan.h>
#include <korvan/platform/asn1_record.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "cost/measure.h"

namespace {

// The size of the largest block that was asked for, where this is looked at.
std::size_t largest_block;

void Note(std::size_t size) { largest_block = std::max(largest_block, size); }

}  // namespace

// Every library of the process calls these instead of the C library's own.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) {
  Note(size);
  return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
  Note(count * size);
  return __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
  Note(size);
  return __libc_realloc(memory, size);
}
}

namespace {

// The sizes of the inputs in bytes.
std::vector<std::size_t> sizes;

// Counts an operation on inputs of all sizes. Names end with how the cost may
// grow and with the size: growth.py reads both.
template <class Prepare, class Operation>
void Grow(const std::string& name, const std::string& growth, Prepare prepare,
          Operation operation) {
  for (const std::size_t size : sizes) {
    const std::string full_name =
        name + "/" + growth + "/" + std::to_string(size);
    auto subject = prepare(size);
    Count(full_name, [&] {
      largest_block = 0;
      operation(subject);
      return true;
    });
    if (largest_block > 4 * size + (std::size_t{64} << 10)) {
      std::fprintf(stderr, "%s: a block of %zu bytes\n", full_name.c_str(),
                   largest_block);
      std::exit(1);
    }
  }
}

const char* const kLinear = "linear";
const char* const kOrdered = "ordered";  // as n log n
const char* const kInRuns = "in_runs";   // the same, entered run by run

// `count` lines, the same ones each time, that `line` makes of numbers of one
// width.
template <class Line>
std::string Lines(std::size_t size, bool is_shuffled, Line line) {
  const std::size_t count =
      std::max<std::size_t>(1, size / line(std::to_string(10'000'000)).size());
  std::vector<std::size_t> numbers(count);
  for (std::size_t i = 0; i < count; ++i) {
    numbers[i] = 10'000'000 + i;
  }
  if (is_shuffled) {
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
  }
  std::string text;
  for (const std::size_t number : numbers) {
    text += line(std::to_string(number));
  }
  return text;
}

std::string Repeated(const std::string& line, std::size_t size) {
  std::string text;
  while (text.size() + line.size() <= size) {
    text += line;
  }
  return text;
}

struct TextKind {
  const char* name;
  const char* growth;
  std::string (*make)(std::size_t size);
};

std::string KeysInOrder(std::size_t size) {
  return "[s]\n" + Lines(size, false, [](const std::string& number) {
           return "[" + number + "=v\n";
         });
}

std::string KeysInNoOrder(std::size_t size) {
  return "[s]\n" + Lines(size, true, [](const std::string& number) {
           return "[" + number + "=v\n";
         });
}

const TextKind kTexts[] = {
    // clang-format off
    {"keys_in_order",    kOrdered, KeysInOrder},
    {"keys_in_no_order", kInRuns,  KeysInNoOrder},
    {"long_names",       kInRuns,  [](std::size_t size) { return "[s]\n" + Lines(size, true, [](const std::string& number) { return "[" + std::string(500, 'n') + number + "=v\n"; }); }},
    {"sections",         kOrdered, [](std::size_t size) { return Lines(size, true, [](const std::string& number) { return "[" + number + "]\n"; }); }},
    {"one_section",      kLinear,  [](std::size_t size) { return Repeated("[s]\n", size); }},
    {"one_key",          kLinear,  [](std::size_t size) { return "[s]\n" + Repeated("[k=v\n[K=w\n", size); }},
    {"skipped_lines",    kLinear,  [](std::size_t size) { return Repeated("# name = value\n", size); }},
    {"empty_lines",      kLinear,  [](std::size_t size) { return std::string(size, '\n'); }},
    {"lone_brackets",    kLinear,  [](std::size_t size) { return "[s]\n" + Repeated("[\n]\n", size); }},
    {"lone_equals",      kLinear,  [](std::size_t size) { return "[s]\n" + Repeated("=\n[=\n", size); }},
    {"long_value",       kLinear,  [](std::size_t size) { return "[s]\n[k=" + std::string(size, 'v'); }},
    {"blank_value",      kLinear,  [](std::size_t size) { return "[s]\n[k=" + std::string(size, ' ') + "v" + std::string(size, ' '); }},
    {"blank_line",       kLinear,  [](std::size_t size) { return "[s]\n" + std::string(size, '\t'); }},
    {"long_name",        kLinear,  [](std::size_t size) { return "[s]\n[" + std::string(size, 'n') + "=v"; }},
    {"blank_name",       kLinear,  [](std::size_t size) { return "[s]\n[" + std::string(size, ' ') + "=v"; }},
    {"long_header",      kLinear,  [](std::size_t size) { return "[" + std::string(size, 'n') + "]\n"; }},
    {"only_brackets",    kLinear,  [](std::size_t size) { return std::string(size, '['); }},
    {"only_equals",      kLinear,  [](std::size_t size) { return "[s]\n" + std::string(size, '='); }},
    {"only_returns",     kLinear,  [](std::size_t size) { return std::string(size, '\r'); }},
    {"only_nulls",       kLinear,  [](std::size_t size) { return std::string(size, '\0'); }},
    {"only_0x80",        kLinear,  [](std::size_t size) { return std::string(size, '\x80'); }},
    // clang-format on
};

constexpr const char* kFile = "growth.ini";

template <class File>
struct Subject {
  using Text = typename File::Sections::key_type;
  using Char = typename Text::value_type;

  // `size` is what the characters of the input take in memory. In a file they
  // take less if they are wide.
  Subject(const TextKind& kind, std::size_t size) {
    const std::string bytes = kind.make(size / sizeof(Char));
    input.str(Widened(bytes));
    std::ofstream(kFile) << bytes;
    file_name = Widened(kFile);
  }

  static Text Widened(const std::string& bytes) {
    Text text;
    text.reserve(bytes.size());
    for (const char c : bytes) {
      text.push_back(static_cast<unsigned char>(c));
    }
    return text;
  }

  void Rewind() {
    input.clear();
    input.seekg(0);
  }

  std::unique_ptr<File> file = std::make_unique<File>();
  std::basic_istringstream<Char> input;
  Text file_name;
};

template <class File>
void GrowDocuments(const std::string& width) {
  using S = std::unique_ptr<Subject<File>>;
  for (const TextKind& kind : kTexts) {
    const auto prepare = [&](std::size_t size) {
      return std::make_unique<Subject<File>>(kind, size);
    };
    Grow(width + "/load/" + kind.name, kind.growth, prepare,
         [](const S& s) { s->file->Load(s->input); });
  }
  for (const char* const name :
       {"keys_in_order", "skipped_lines", "long_value"}) {
    const TextKind& kind =
        *std::ranges::find(kTexts, std::string(name), &TextKind::name);
    Grow(
        width + "/load_file/" + kind.name, kind.growth,
        [&](std::size_t size) {
          return std::make_unique<Subject<File>>(kind, size);
        },
        [](const S& s) { s->file->Load(s->file_name); });
  }
  const TextKind keys = {"keys_in_no_order", kInRuns, KeysInNoOrder};
  const auto loaded = [&](std::size_t size) {
    auto made = std::make_unique<Subject<File>>(keys, size);
    made->file->Load(made->input);
    made->Rewind();
    return made;
  };
  const auto each_key = [](const S& s, auto visit) {
    const auto& [section_name, section] = *s->file->GetSections().begin();
    std::vector<typename Subject<File>::Text> names;
    for (const auto& [name, key] : section->GetKeys()) {
      names.push_back(name);
    }
    for (const auto& name : names) {
      visit(*s->file, section_name, name);
    }
  };
  Grow(width + "/merge", kInRuns, loaded,
       [](const S& s) { s->file->Load(s->input, true); });
  Grow(width + "/get", kOrdered, loaded, [&](const S& s) {
    each_key(s, [](File& file, const auto& section, const auto& name) {
      file.GetKeyValue(section, name);
    });
  });
  Grow(width + "/set", kOrdered, loaded, [&](const S& s) {
    each_key(s, [](File& file, const auto& section, const auto& name) {
      file.SetKeyValue(section, name, name);
    });
  });
  Grow(width + "/rename", kOrdered, loaded, [&](const S& s) {
    each_key(s, [](File& file, const auto& section, const auto& name) {
      file.RenameKey(section, name, name + name);
    });
  });
  Grow(width + "/remove", kOrdered, loaded, [&](const S& s) {
    each_key(s, [](File& file, const auto& section, const auto& name) {
      file.GetSection(section)->RemoveKey(name);
    });
  });
  Grow(width + "/destroy", kLinear, loaded,
       [](const S& s) { s->file.reset(); });
  // What they write grows in a buffer that is not the library's.
  Grow(width + "/save", kLinear, loaded,
       [](const S& s) { s->file->Save(s->file_name); });
}

template <class Text>
void GrowTrimming(const std::string& width) {
  using Char = typename Text::value_type;
  const Text set = {' ', '\t', '\r', '\n'};
  const auto blanks = [](std::size_t size) {
    return std::make_unique<Text>(size / sizeof(Char), Char{' '});
  };
  using T = std::unique_ptr<Text>;
  Grow(width + "/trim_right", kLinear, blanks,
       [&](const T& text) { korvan::RTrim(*text, set); });
  Grow(width + "/trim_left", kLinear, blanks,
       [&](const T& text) { korvan::LTrim(*text, set); });
  Grow(
      width + "/trim", kLinear,
      [](std::size_t size) {
        auto text = std::make_unique<Text>(size / sizeof(Char), Char{' '});
        text->at(text->size() / 2) = Char{'x'};
        return text;
      },
      [&](const T& text) { korvan::Trim(*text, set); });
}

void GrowConversions() {
  for (const char c : {'a', '\0', '\x80'}) {
    const std::string of = c == 'a' ? "ascii" : c == '\0' ? "nulls" : "0x80";
    Grow(
        "str_to_wstr/" + of, kLinear,
        [c](std::size_t size) { return std::string(size, c); },
        [](const std::string& text) { korvan::str_to_wstr(text); });
    Grow(
        "wstr_to_str/" + of, kLinear,
        [c](std::size_t size) {
          return std::wstring(size / sizeof(wchar_t),
                              static_cast<unsigned char>(c));
        },
        [](const std::wstring& text) { korvan::wstr_to_str(text); });
  }
}

void GrowKeys() {
  const auto bytes = [](std::size_t size) {
    return std::vector<unsigned char>(size, 0x04);
  };
  using Bytes = std::vector<unsigned char>;
  for (const bool has_parameters : {false, true}) {
    Grow(has_parameters ? "long_parameters_to_blob" : "long_key_to_blob",
         kLinear, bytes, [has_parameters](Bytes& all) {
           char oid[] = "1.2.643.7.1.1.1.1";
           CERT_PUBLIC_KEY_INFO info = {};
           info.Algorithm.pszObjId = oid;
           const CRYPT_DATA_BLOB all_bytes = {static_cast<DWORD>(all.size()),
                                              all.data()};
           if (has_parameters) {
             info.Algorithm.Parameters = all_bytes;
           } else {
             info.PublicKey = {all_bytes.cbData, all_bytes.pbData, 0};
           }
           unsigned char* blob = nullptr;
           unsigned int blob_size = 0;
           korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &blob_size);
           std::free(blob);
         });
  }
  Grow("long_blob_to_key", kLinear, bytes, [](Bytes& blob) {
    unsigned char* key = nullptr;
    unsigned char* parameters = nullptr;
    unsigned int key_size = 0;
    unsigned int parameters_size = 0;
    korvan::KRVEncodePublicKeyAndParametrs(
        0, nullptr, blob.data(), static_cast<unsigned int>(blob.size()), 0, 0,
        &key, &key_size, &parameters, &parameters_size);
    std::free(key);
    std::free(parameters);
  });
  Grow("write_record", kLinear, bytes, [](const Bytes& content) {
    CASNTBaseRecord record;
    record.SetTag(4);
    record.SetEntry(content.data(), static_cast<unsigned int>(content.size()));
    int status = 0;
    record.GetEncodedRecord(&status);
  });
  Grow(
      "read_record", kLinear,
      [](std::size_t size) {
        const unsigned char header[] = {
            0x04,
            0x84,
            static_cast<unsigned char>((size - 6) >> 24),
            static_cast<unsigned char>((size - 6) >> 16),
            static_cast<unsigned char>((size - 6) >> 8),
            static_cast<unsigned char>(size - 6)};
        Bytes all(header, header + sizeof(header));
        all.resize(size);
        return std::make_unique<IdentObj>(all.data(),
                                          static_cast<unsigned int>(size));
      },
      [](const std::unique_ptr<IdentObj>& encoded) {
        CASNTBaseRecord record;
        record.SetEncodedEntry(*encoded);
      });
}

void GrowSearches() {
  Grow(
      "find_by_long_oid", kLinear,
      [](std::size_t size) { return "1.2.643" + std::string(size, '1'); },
      [](std::string& oid) {
        korvan::FindOIDInfo(CRYPT_OID_INFO_OID_KEY, oid.data(), 0);
      });
  Grow(
      "find_by_long_name", kLinear,
      [](std::size_t size) {
        return std::wstring(size / sizeof(wchar_t), L'G');
      },
      [](std::wstring& name) {
        korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, name.data(), 0);
      });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("usage: growth PART SIZE...\n", stderr);
    return 2;
  }
  const std::string part = argv[1];
  for (int i = 2; i < argc; ++i) {
    sizes.push_back(std::stoul(argv[i]));
  }
  if (part == "narrow") {
    GrowDocuments<korvan::CIniFileA>("narrow");
    GrowTrimming<std::string>("narrow");
  } else if (part == "wide") {
    GrowDocuments<korvan::CIniFileW>("wide");
    GrowTrimming<std::wstring>("wide");
  } else {
    GrowConversions();
    GrowKeys();
    // The names of the registry are loaded once in a process.
    wchar_t nobody[] = L"\n";
    korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, nobody, 0);
    GrowSearches();
  }
  std::remove(kFile);
}
