#ifndef KORVAN_BENCH_INI_MANDATED_SHAPE_H_
#define KORVAN_BENCH_INI_MANDATED_SHAPE_H_

#include <strings.h>

#include <cwchar>
#include <istream>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// The maps and objects that the library's interface demands, without the
/// library: once filled as one would first write it, and once with nothing
/// done but filling.

namespace shape {

inline bool IsLess(const std::string& left, const std::string& right) {
  return strcasecmp(left.c_str(), right.c_str()) < 0;
}

inline bool IsLess(const std::wstring& left, const std::wstring& right) {
  return wcscasecmp(left.c_str(), right.c_str()) < 0;
}

template <class Char>
struct Less {
  bool operator()(const std::basic_string<Char>& left,
                  const std::basic_string<Char>& right) const {
    return IsLess(left, right);
  }
};

/// A key, cut out of a text.
template <class Char>
struct CutKey {
  std::basic_string_view<Char> section;
  std::basic_string_view<Char> name;
  std::basic_string_view<Char> value;
};

template <class Char>
class File {
 public:
  using String = std::basic_string<Char>;

  struct Section;

  struct Key {
    String name;
    String value;
    Section* owner;
  };

  struct Section {
    File* owner;
    String name;
    std::map<String, Key*, Less<Char>> keys;
  };

  File() = default;
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  ~File() {
    for (const auto& section : sections_) {
      for (const auto& key : section.second->keys) {
        delete key.second;
      }
      delete section.second;
    }
  }

  /// Reads as the standard library suggests it: std::getline, and strings
  /// handed on.
  void Load(std::basic_istream<Char>& input) {
    static const String blanks = {' ', '\t'};
    static const String line_ends = {'\n', '\r'};
    static const String white = {' ', '\t', '\r', '\n'};
    Section* section = nullptr;
    String line;
    while (std::getline(input, line)) {
      line.erase(0, line.find_first_not_of(blanks));
      line.erase(line.find_last_not_of(line_ends) + 1);
      if (line.empty() || line[0] != '[') {
        continue;
      }
      if (line[line.find_last_not_of(white)] == ']') {
        section = AddSection(line.substr(1, line.size() - 2));
        continue;
      }
      const auto equals = line.find('=');
      if (equals != String::npos && section != nullptr) {
        AddKey(*section, line.substr(0, equals))->value =
            line.substr(equals + 1);
      }
    }
  }

  /// Fills the maps with keys in their order, each entered where it belongs.
  void Fill(const std::vector<CutKey<Char>>& keys) {
    Section* section = nullptr;
    for (const CutKey<Char>& key : keys) {
      if (section == nullptr || section->name != key.section) {
        section = new Section{this, String(key.section), {}};
        sections_.emplace_hint(sections_.end(), section->name, section);
      }
      section->keys.emplace_hint(
          section->keys.end(), key.name,
          new Key{String(key.name), String(key.value), section});
    }
  }

  void Save(std::basic_ostream<Char>& output) const {
    const Char line_feed[] = {'\n', '\0'};
    for (const auto& section : sections_) {
      output << Char{'['} + section.second->name + Char{']'} << line_feed;
      for (const auto& key : section.second->keys) {
        output << key.second->name + Char{'='} + key.second->value << line_feed;
      }
    }
  }

  String Value(const String& section_name, const String& key_name) const {
    const auto section = sections_.find(section_name);
    if (section == sections_.end()) {
      return String();
    }
    const auto key = section->second->keys.find(key_name);
    return key == section->second->keys.end() ? String() : key->second->value;
  }

 private:
  static void Trim(String& name) {
    static const String blanks = {' ', '\t'};
    name.erase(name.find_last_not_of(blanks) + 1);
    name.erase(0, name.find_first_not_of(blanks));
  }

  Section* AddSection(String name) {
    Trim(name);
    const auto found = sections_.find(name);
    if (found != sections_.end()) {
      return found->second;
    }
    return sections_[name] = new Section{this, name, {}};
  }

  Key* AddKey(Section& section, String name) {
    Trim(name);
    const auto found = section.keys.find(name);
    if (found != section.keys.end()) {
      return found->second;
    }
    return section.keys[name] = new Key{name, String(), &section};
  }

  std::map<String, Section*, Less<Char>> sections_;
};

}  // namespace shape

#endif  // KORVAN_BENCH_INI_MANDATED_SHAPE_H_
