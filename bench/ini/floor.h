// The least that an operation on an INI document can do, whoever writes it. The
// library's interface prescribes the work that is left here: ordered maps of
// sections and keys, an object and copies of the texts for each, and strings
// that are passed and returned by value. What a library has to find out is
// known beforehand: where lines and names end, which key comes next, and which
// key is meant. Names are compared once with the right ones, byte for byte.
//
// Each object has an allocation of its own here too. The library's classes have
// no member in which a pool of objects could be.

#ifndef KORVAN_BENCH_INI_FLOOR_H_
#define KORVAN_BENCH_INI_FLOOR_H_

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ini/source.h"
#include "ini/texts.h"

// Opens a file, or ends the program.
inline int Opened(const std::string& path, int flags) {
  const int descriptor = open(path.c_str(), flags | O_CLOEXEC);
  if (descriptor < 0) {
    std::perror(path.c_str());
    std::exit(1);
  }
  return descriptor;
}

constexpr std::size_t kBlock = std::size_t{1} << 16;

// Reads a file in blocks of kBlock bytes, looks at none, and tells `take` how
// many bytes each has. Ends the program unless the file has `size` bytes.
template <class Take>
void ReadInBlocks(const std::string& path, std::size_t size, Take take) {
  static char block[kBlock];
  const int descriptor = Opened(path, O_RDONLY);
  std::size_t total = 0;
  ssize_t taken = 0;
  while ((taken = read(descriptor, block, sizeof block)) > 0) {
    total += static_cast<std::size_t>(taken);
    take(static_cast<std::size_t>(taken));
  }
  close(descriptor);
  if (total != size) {
    std::fprintf(stderr, "%s: %zu bytes instead of %zu\n", path.c_str(), total,
                 size);
    std::exit(1);
  }
}

template <class CharType>
class Floor {
 public:
  static constexpr char kName[] = "floor";
  static constexpr texts::Syntax kSyntax = texts::Syntax::kBracketed;
  using Char = CharType;
  using OutputChar = Char;
  using Text = std::basic_string<Char>;

  static Text TextOf(const std::string& utf8) {
    return texts::Decoded<Char>(utf8);
  }

  Floor() = default;
  Floor(const Floor&) = delete;
  Floor& operator=(const Floor&) = delete;

  ~Floor() {
    for (const auto& [section_name, section] : sections_) {
      for (const auto& [name, key] : section->keys) {
        delete key;
      }
      delete section;
    }
  }

  // The text must be in the order of the names. It must outlive the document.
  // It is read from its end, so that each entry comes before all that its map
  // has, and no names have to be compared.
  void Load(Source<Char>& source) {
    source_ = &source;
    const texts::Content& content = source.content();
    const texts::Sizes& sizes = source.sizes();
    const std::size_t line = sizes.name + sizes.value + 2;
    const Char* at = source.text().data() + source.text().size();
    for (std::size_t place = content.sections; place-- > 0;) {
      const std::size_t keys = texts::KeysBefore(content, place + 1) -
                               texts::KeysBefore(content, place);
      const Char* const header = at - keys * line - sizes.section - 3;
      auto* const section = new Section(this, View(header + 1, sizes.section));
      sections_.emplace_hint(sections_.begin(), section->name, section);
      for (std::size_t key = 0; key < keys; ++key) {
        at -= line;
        AddFirst(*section,
                 new Key(View(at, sizes.name),
                         View(at + sizes.name + 1, sizes.value), section));
      }
      at = header;
    }
  }

  void LoadFile(Source<Char>& source, const std::string& path) {
    ReadInBlocks(path, source.bytes().size(), [](std::size_t) {});
    Load(source);
  }

  // To be called once before the operations on one key, which it tells where
  // all keys are.
  void Index() {
    for (const auto& [section_name, section] : sections_) {
      section_index_.push_back(section);
      for (const auto& [name, key] : section->keys) {
        key_index_.push_back(key);
      }
    }
  }

  std::size_t Find(const Entry<Text>& entry) const {
    return ValueOf(*key_index_[entry.place.key], entry.section, entry.name)
        .size();
  }

  void Overwrite(const Entry<Text>& entry) {
    SetValue(*key_index_[entry.place.key], entry.section, entry.name,
             entry.other_value);
  }

  void Add(const Entry<Text>& entry) {
    AddKey(*section_index_[entry.place.section], entry.section,
           entry.other_name, entry.value);
  }

  void Remove(const Entry<Text>& entry) {
    RemoveFirst(*section_index_[entry.place.section], entry.section,
                entry.name);
  }

  void Rename(const Entry<Text>& entry) {
    RenameFirst(*key_index_[entry.place.key], entry.section, entry.name,
                entry.other_name);
  }

  std::size_t List() const {
    std::size_t size = 0;
    for (const auto& [section_name, section] : sections_) {
      for (const auto& [name, key] : section->keys) {
        size += key->name.size() + Copied(key->value).size();
      }
    }
    return size;
  }

  // The text goes to a buffer that is as large as the text that was loaded.
  void Save(std::basic_ostream<Char>&) {
    saved_.resize(source_->text().size());
    Char* at = saved_.data();
    for (const auto& [section_name, section] : sections_) {
      *at++ = '[';
      Append(section->name, at);
      *at++ = ']';
      *at++ = '\n';
      for (const auto& [name, key] : section->keys) {
        Append(key->name, at);
        *at++ = '=';
        Append(key->value, at);
        *at++ = '\n';
      }
    }
  }

  void SaveFile(const std::string& path) {
    const int descriptor = Opened(path, O_WRONLY | O_TRUNC);
    std::string_view left = source_->bytes();
    while (!left.empty()) {
      const ssize_t written = write(descriptor, left.data(), left.size());
      if (written < 0) {
        std::perror(path.c_str());
        std::exit(1);
      }
      left.remove_prefix(static_cast<std::size_t>(written));
    }
    close(descriptor);
  }

 private:
  // Lets each entry come before all that a map has.
  struct ComesFirst {
    bool operator()(const Text&, const Text&) const { return true; }
  };

  using View = std::basic_string_view<Char>;

  struct Section;

  struct Key {
    Key(View key_name, View key_value, Section* key_owner)
        : name(key_name), value(key_value), owner(key_owner) {}
    Key(const Text& key_name, Text&& key_value, Section* key_owner)
        : name(key_name), value(std::move(key_value)), owner(key_owner) {}

    Text name;
    Text value;
    Section* owner;
  };

  using Keys = std::map<Text, Key*, ComesFirst>;

  struct Section {
    Section(Floor* file, View section_name) : owner(file), name(section_name) {}

    Floor* owner;
    Text name;
    Keys keys;
  };

  static bool Is(const Key& key, const Text& section, const Text& name) {
    return key.owner->name == section && key.name == name;
  }

  static void AddFirst(Section& section, Key* key) {
    section.keys.emplace_hint(section.keys.begin(), key->name, key);
  }

  // Calls that take strings by value, as the library's are.

  [[gnu::noinline]] static Text Copied(const Text& value) { return value; }

  [[gnu::noinline]] static Text ValueOf(const Key& key, Text section,
                                        Text name) {
    return Is(key, section, name) ? key.value : Text();
  }

  [[gnu::noinline]] static void SetValue(Key& key, Text section, Text name,
                                         Text value) {
    if (Is(key, section, name)) {
      key.value = std::move(value);
    }
  }

  [[gnu::noinline]] static void AddKey(Section& section, Text section_name,
                                       Text name, Text value) {
    if (section.name == section_name) {
      AddFirst(section, new Key(name, std::move(value), &section));
    }
  }

  // Any key of the section will do: all cost the same.
  [[gnu::noinline]] static void RemoveFirst(Section& section, Text section_name,
                                            Text name) {
    if (section.name == section_name && !name.empty()) {
      delete section.keys.begin()->second;
      section.keys.erase(section.keys.begin());
    }
  }

  [[gnu::noinline]] static void RenameFirst(Key& key, Text section, Text name,
                                            Text other_name) {
    if (Is(key, section, name)) {
      Keys& keys = key.owner->keys;
      auto node = keys.extract(keys.begin());
      key.name = other_name;
      node.key() = std::move(other_name);
      keys.insert(keys.begin(), std::move(node));
    }
  }

  static void Append(const Text& text, Char*& at) {
    std::memcpy(at, text.data(), text.size() * sizeof(Char));
    at += text.size();
  }

  std::map<Text, Section*, ComesFirst> sections_;
  std::vector<Section*> section_index_;
  std::vector<Key*> key_index_;
  Text saved_;
  Source<Char>* source_ = nullptr;
};

#endif  // KORVAN_BENCH_INI_FLOOR_H_
